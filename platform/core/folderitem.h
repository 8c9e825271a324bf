#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "platform/core/binarystream.h"
#include "platform/core/date.h"
#include "platform/core/listing.h"
#include "platform/core/picture.h"
#include "platform/core/ref.h"

namespace orvelin {

/// A file or folder on disk, which may not exist yet. Names are the file system's own bytes.
class FolderItem {
 public:
  explicit FolderItem(std::string path) : path_(std::move(path)) {}

  const std::string& Path() const { return path_; }
  /// The last component of the path.
  std::string Name() const;
  /// Whether there is such an entry; an alias that leads nowhere counts as none.
  bool Exists() const;
  /// Whether it is a folder now.
  bool Directory() const;
  /// Whether it is a regular file now, and no alias to one.
  bool RegularFile() const;
  /// Device and inode, the same by whatever path the item is reached; empty when it does not exist.
  using Identity = std::optional<std::pair<std::uint64_t, std::uint64_t>>;
  Identity identity() const;
  /// The times as local readings; 1970-01-01 00:00:00, and a line in the log, for an item that
  /// can't be read. Where the file system keeps no creation time, this is the modification time.
  Date ModificationDate() const;
  Date CreationDate() const;

  /// The item of that name in this folder, existing or not; nil for a name that can designate none.
  Ref<FolderItem> Child(const std::string& name) const;
  /// The folder that holds this item, by its path.
  Ref<FolderItem> Parent() const;
  /// How many entries the folder has, hidden ones included; 0 when it can't be listed. Lists the
  /// folder on the first call, later only where it may have changed since.
  int Count();
  /// The entry at an index from 1 of the last listing, nil outside it. An alias gives its target;
  /// one that leads nowhere gives an item that does not exist.
  Ref<FolderItem> Item(int index);

  /// Creates the folder. Logs a failure, unless the folder exists or its parent is missing: what
  /// kept the parent from being created has been logged then.
  void CreateAsFolder() const;
  /// Creates the file, or truncates it, and opens it for writing; nil on failure. A symlink, or a
  /// file that can't be opened for writing, is replaced by a new file. The name of a file type has
  /// no effect: Linux keeps no type and creator codes.
  Ref<BinaryStream> CreateBinaryFile(const std::string& fileType) const;
  /// Opens the file for reading; nil when that can't be done or it is no regular file.
  Ref<BinaryStream> OpenAsBinaryFile() const;
  /// Opens the file as a picture; nil when it is none. See Picture for what is decoded when.
  Ref<Picture> OpenAsPicture() const;
  /// Saves the picture here, whole or not at all, replacing an older file.
  void SaveAsJPEG(const Ref<Picture>& picture) const;
  /// Copies this file's bytes and modification time to `target`, whole or not at all, replacing an
  /// older file; `target` may be this very file.
  void CopyFileTo(const Ref<FolderItem>& target) const;
  /// Deletes the file; logs a failure.
  void Delete() const;

 private:
  std::string childPath(const std::string& name) const;

  std::string path_;
  std::optional<Listing> listing_;
};

/// The item at a path relative to the folder in which the application's bundle lies, or at an
/// absolute one; that folder itself for an empty path.
Ref<FolderItem> GetFolderItem(const std::string& path);

}  // namespace orvelin
