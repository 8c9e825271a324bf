#include <cstdint>

#include "photos/digiitem.h"
#include "platform/core/text.h"

namespace orvelin {

std::string DigiItem::BuildData() const {
  const std::string lineEnd = Chr(13) + Chr(10);
  const std::string folder = "/dcim/" + retFolder + "/";

  std::string record;
  record += "[Std]" + lineEnd;
  record += "QTY=1" + lineEnd;
  record += "FILE=" + folder + placedName() + lineEnd;
  // Where the picture came from, as if it lay here; no file of this name is ever written.
  record += "ORIGINAL=" + folder + theFol->Name() + lineEnd;
  record += "TIMESTAMP=" + dateToTimeStamp(theFol->ModificationDate());

  const Ref<FolderItem> place = ParentFolder->Child(placedName());
  if (isJPEG(theFol))
    theFol->CopyFileTo(place);
  else
    copyAsJPEG(theFol, place);
  return record;
}

std::string DigiItem::dateToTimeStamp(Date d) {
  // The year is shifted, not the instant: month, day and hour stay as the calendar reads them.
  d.Year(d.Year() - 66);
  return Lowercase("0x" + Hex(static_cast<std::int64_t>(Floor(d.TotalSeconds()))));
}

}  // namespace orvelin
