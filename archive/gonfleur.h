#pragma once

#include <cstdint>

#include "platform/core/binarystream.h"
#include "platform/core/folderitem.h"
#include "platform/core/ref.h"

namespace orvelin {

/// Unpacks and packs folder archives; see entryhead.h for their format. Neither reports whether it
/// did all of its work. A name that designates nothing, or a file that can't be created, ends the
/// unpacking as a nil failure; what has been created stays.
class GonfleurClass {
 public:
  /// Recreates the tree that `archive` holds inside the folder `destination`, merging with what is
  /// there; files of the same name are replaced. Does nothing when either is nil or of the wrong
  /// kind.
  void Gonfler(const Ref<FolderItem>& archive, const Ref<FolderItem>& destination) const;

  /// Packs the folder `source`, with everything in it, into the new file `archive`. Does nothing
  /// when either is nil or of the wrong kind. A file that can't be opened has no entry but stays in
  /// the count of its folder, so that a reader takes the next entry in its place.
  void Degonfler(const Ref<FolderItem>& source, const Ref<FolderItem>& archive) const;

  /// Writes the entry of the folder, with everything in it, to an archive; `archive.failed()` says
  /// afterwards whether a write failed.
  static void packFolder(BinaryStream& archive, FolderItem& folder);

 private:
  static void expanding(BinaryStream& stream, const FolderItem& folder, std::int32_t count);
  static void compressing(BinaryStream& stream, FolderItem& folder);
};

}  // namespace orvelin
