#include "archive/gonfleur.h"

#include <string>

#include "archive/entryhead.h"
#include "platform/core/background.h"
#include "platform/core/text.h"

namespace orvelin {

namespace {

EntryHead headOf(const FolderItem& item, std::int32_t number) {
  return {item.Name(), item.ModificationDate(), item.CreationDate(), number};
}

/// The file's length as stored in an entry: the low 32 bits, as a signed number.
std::int32_t storedLength(const BinaryStream& file) {
  return static_cast<std::int32_t>(file.Length() & 0xffffffff);
}

}  // namespace

void GonfleurClass::Gonfler(const Ref<FolderItem>& archive,
                            const Ref<FolderItem>& destination) const {
  if (!archive || !destination) return;
  if (!destination->Directory() || archive->Directory()) return;
  const Ref<BinaryStream> stream = archive->OpenAsBinaryFile();
  if (!stream) return report(stream.why());
  stream->LittleEndian(false);
  expanding(*stream, *destination, 1);
}

void GonfleurClass::expanding(BinaryStream& stream, const FolderItem& folder, std::int32_t count) {
  for (std::int32_t left = count; left > 0; --left) {
    const std::string tag = stream.ReadPString();
    if (equalTexts(tag, folderTag)) {
      const EntryHead head = readHead(stream);
      const Ref<FolderItem> subfolder = folder.Child(head.name);
      subfolder->CreateAsFolder();
      expanding(stream, *subfolder, head.number);
    } else if (equalTexts(tag, fileTag)) {
      const EntryHead head = readHead(stream);
      const Ref<BinaryStream> file = folder.Child(head.name)->CreateBinaryFile("empty");
      file->Write(stream.Read(head.number));
      file->Close();
    }
    RuntimeBackgroundTask();
  }
}

void GonfleurClass::Degonfler(const Ref<FolderItem>& source, const Ref<FolderItem>& archive) const {
  if (!source || !archive) return;
  if (!source->Directory() || archive->Directory()) return;
  const Ref<BinaryStream> stream = archive->CreateBinaryFile("text");
  if (!stream) return report(stream.why());
  packFolder(*stream, *source);
}

void GonfleurClass::packFolder(BinaryStream& archive, FolderItem& folder) {
  archive.LittleEndian(false);
  archive.WritePString(folderTag);
  writeHead(archive, headOf(folder, folder.Count()));
  compressing(archive, folder);
}

void GonfleurClass::compressing(BinaryStream& stream, FolderItem& folder) {
  const int count = folder.Count();
  for (int i = 1; i <= count; ++i) {
    const Ref<FolderItem> item = folder.Item(i);
    if (item->Directory()) {
      packFolder(stream, *item);
    } else if (const Ref<BinaryStream> file = item->OpenAsBinaryFile()) {
      const std::int32_t length = storedLength(*file);
      stream.WritePString(fileTag);
      writeHead(stream, headOf(*item, length));
      stream.Write(file->Read(length));
      file->Close();
    } else {
      report(file.why());
    }
    RuntimeBackgroundTask();
  }
}

}  // namespace orvelin
