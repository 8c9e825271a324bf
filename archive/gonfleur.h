#pragma once

#include <cstdint>

#include "platform/core/binarystream.h"
#include "platform/core/folderitem.h"
#include "platform/core/ref.h"

namespace orvelin {

/// Unpacks and packs folder archives; entryhead.h defines their format. The functions don't return
/// whether they unpacked or packed everything.
class GonfleurClass {
 public:
  /// Unpacks `archive` into the folder `destination`. Merges folders and replaces files that exist.
  /// Does nothing if either is nil, or if the archive is a folder or the destination is not. Throws
  /// NilObjectException if a name is invalid or a file can't be created; keeps what is unpacked.
  void Gonfler(const Ref<FolderItem>& archive, const Ref<FolderItem>& destination) const;

  /// Packs the folder `source` and its contents into the file `archive`, replacing it. Does nothing
  /// if either is nil, or if `source` isn't a folder or `archive` is. A file that can't be opened
  /// is counted in its folder but gets no entry, so unpacking takes the entry after the folder for
  /// the folder's last one.
  void Degonfler(const Ref<FolderItem>& source, const Ref<FolderItem>& archive) const;

  /// Writes the entry of the folder, with its contents, to an archive. Check `archive.failed()`
  /// afterwards.
  static void packFolder(BinaryStream& archive, FolderItem& folder);

 private:
  static void expanding(BinaryStream& stream, const FolderItem& folder, std::int32_t count);
  static void compressing(BinaryStream& stream, FolderItem& folder);
};

}  // namespace orvelin
