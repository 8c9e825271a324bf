#include "archive/entryhead.h"

namespace orvelin {

EntryHead readHead(BinaryStream& archive) {
  EntryHead head;
  head.name = archive.ReadPString();
  head.modified.TotalSeconds(archive.ReadDouble());
  head.created.TotalSeconds(archive.ReadDouble());
  head.number = archive.ReadLong();
  return head;
}

void writeHead(BinaryStream& archive, const EntryHead& head) {
  archive.WritePString(head.name);
  archive.WriteDouble(head.modified.TotalSeconds());
  archive.WriteDouble(head.created.TotalSeconds());
  archive.WriteLong(head.number);
}

}  // namespace orvelin
