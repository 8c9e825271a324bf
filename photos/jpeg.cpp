#include "photos/digiitem.h"
#include "platform/core/text.h"

namespace orvelin {

bool DigiItem::isJPEG(const Ref<FolderItem>& f) {
  if (!f) return false;
  const Ref<BinaryStream> stream = f->OpenAsBinaryFile();
  if (!stream) {
    report(*stream.why());
    return false;
  }
  // The four letters alone decide; a JPEG that begins with another segment is converted.
  stream->Read(6);
  return equalTexts(stream->Read(4), "JFIF");
}

void DigiItem::copyAsJPEG(const Ref<FolderItem>& source, const Ref<FolderItem>& target) {
  if (!source || !target) return;
  const Ref<Picture> picture = source->OpenAsPicture();
  if (picture) target->SaveAsJPEG(picture);
}

}  // namespace orvelin
