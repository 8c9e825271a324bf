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
  /// `index` is the item's position in the list, from 0. Creates the item's numbered folder in the
  /// folder "dcim" of `root`; throws NilObjectException if `root` is nil.
  DigiItem(Ref<FolderItem> theFile, const Ref<FolderItem>& root, std::int32_t index);

  /// Returns the record for the order file and places the picture: copies it if it is a JFIF file,
  /// else converts it. The record is the same if placing fails.
  std::string BuildData() const;

 private:
  std::string fileName() const;
  std::string record() const;
  void placePicture() const;
  static std::string dateToTimeStamp(Date d);
  static bool isJPEG(const Ref<FolderItem>& f);  // whether it is a JFIF file
  static void copyAsJPEG(const Ref<FolderItem>& source, const Ref<FolderItem>& target);

  Ref<FolderItem> theFol;        // the source picture
  std::int32_t fileIndex;        // from 1, in the order of the scan, counted across folders
  Ref<FolderItem> ParentFolder;  // the numbered folder that receives the picture
  std::string retFolder;         // its name, such as "100k6230"
};

/// The pictures of a build, in the order of their numbers.
using DigiItems = std::vector<Ref<DigiItem>>;

}  // namespace orvelin
