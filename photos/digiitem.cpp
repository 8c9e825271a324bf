#include "photos/digiitem.h"

#include <utility>

#include "platform/core/text.h"

namespace orvelin {

namespace {

/// Returns the child `name`; creates it as a folder if it does not exist.
Ref<FolderItem> subfolder(const FolderItem& parent, const std::string& name) {
  Ref<FolderItem> folder = parent.Child(name);
  if (!folder->Exists()) folder->CreateAsFolder();
  return folder;
}

}  // namespace

DigiItem::DigiItem(Ref<FolderItem> theFile, const Ref<FolderItem>& root, std::int32_t index)
    : theFol(std::move(theFile)), fileIndex(index + 1) {
  // 51 pictures per folder; the first folder has 50, because fileIndex starts at 1. Folders are
  // numbered 100, 102, 104...
  const double number = 100.0 + 2.0 * Floor(fileIndex / 51.0);
  retFolder = Str(number) + "k6230";
  ParentFolder = subfolder(*root, "dcim");
  ParentFolder = subfolder(*ParentFolder, retFolder);
}

std::string DigiItem::fileName() const { return Format(fileIndex, "000") + ".jpg"; }

std::string DigiItem::BuildData() const {
  // The record first: if the picture is placed onto its own source, the source's time changes.
  std::string text = record();
  placePicture();
  return text;
}

std::string DigiItem::record() const {
  const std::string lineEnd = Chr(13) + Chr(10);
  const std::string folder = "/dcim/" + retFolder + "/";

  std::string text;
  text += "[Std]" + lineEnd;
  text += "QTY=1" + lineEnd;
  text += "FILE=" + folder + fileName() + lineEnd;
  // The source's name, but in the folder of the copy. No file of this name is written.
  text += "ORIGINAL=" + folder + theFol->Name() + lineEnd;
  text += "TIMESTAMP=" + dateToTimeStamp(theFol->ModificationDate());
  return text;
}

void DigiItem::placePicture() const {
  const Ref<FolderItem> target = ParentFolder->Child(fileName());
  if (isJPEG(theFol))
    theFol->CopyFileTo(target);
  else
    copyAsJPEG(theFol, target);
}

std::string DigiItem::dateToTimeStamp(Date d) {
  // Shift only the year, not the instant: month, day and time of day stay the same.
  d.Year(d.Year() - 66);
  return Lowercase("0x" + Hex(static_cast<std::int64_t>(Floor(d.TotalSeconds()))));
}

bool DigiItem::isJPEG(const Ref<FolderItem>& f) {
  if (!f) return false;
  const Ref<BinaryStream> stream = f->OpenAsBinaryFile();
  if (!stream) {
    report(stream.why());
    return false;
  }
  // Only bytes 6 to 9 count: a JPEG that starts with another segment is converted.
  stream->Read(6);
  return equalTexts(stream->Read(4), "JFIF");
}

void DigiItem::copyAsJPEG(const Ref<FolderItem>& source, const Ref<FolderItem>& target) {
  if (!source || !target) return;
  const Ref<Picture> picture = source->OpenAsPicture();
  if (picture) target->SaveAsJPEG(picture);
}

}  // namespace orvelin
