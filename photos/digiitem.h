#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/core/folderitem.h"
#include "platform/core/ref.h"

namespace orvelin {

/// One picture to be placed on the DigiFilm.
class DigiItem {
 public:
  /// Takes its number from `index`, the position from 0 that it is about to have in the list, and
  /// makes its numbered folder under `root`'s "dcim" at once. A nil `root` is a failure.
  DigiItem(Ref<FolderItem> theFile, const Ref<FolderItem>& root, std::int32_t index);

  /// The picture's record for the order file, without a last line end. Puts the picture in its
  /// place too, copied or converted; whether that succeeded makes no difference to the record.
  std::string BuildData() const;

 private:
  std::string placedName() const;
  static std::string dateToTimeStamp(Date d);
  static bool isJPEG(const Ref<FolderItem>& f);
  static void copyAsJPEG(const Ref<FolderItem>& source, const Ref<FolderItem>& target);

  Ref<FolderItem> theFol;        // the source picture
  std::int32_t fileIndex;        // from 1, in scan order, running on across folders
  Ref<FolderItem> ParentFolder;  // the numbered folder that receives the picture
  std::string retFolder;         // its name, "100k6230"
};

/// The list of a build's pictures, in the order of their numbers.
using DigiItems = std::vector<Ref<DigiItem>>;

}  // namespace orvelin
