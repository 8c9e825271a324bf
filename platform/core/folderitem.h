#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "platform/core/binarystream.h"
#include "platform/core/date.h"
#include "platform/core/listing.h"
#include "platform/core/picture.h"
#include "platform/core/ref.h"

namespace orvelin {

/// The path of a file or folder, which need not exist. Names are the file system's bytes, without
/// an encoding.
class FolderItem {
 public:
  /// Ignores a slash at the end of the path.
  explicit FolderItem(std::filesystem::path path);

  const std::filesystem::path& Path() const { return path_; }
  /// The last component of the path; "/" for the root.
  std::string Name() const;
  /// Whether it exists; false for a dangling symlink.
  bool Exists() const;
  /// Whether it is a folder, or a symlink to one.
  bool Directory() const;
  /// Whether it is a regular file; false for a symlink.
  bool RegularFile() const;
  /// Device and inode: equal for two paths to the same file. Empty if it does not exist.
  using Identity = std::optional<std::pair<std::uint64_t, std::uint64_t>>;
  Identity identity() const;
  /// The times in local time. If stat fails, logs it and returns 1970-01-01 00:00:00. If the file
  /// system has no creation time, returns the modification time.
  Date ModificationDate() const;
  Date CreationDate() const;
  /// If this is named like a temporary file of CopyFileTo or SaveAsJPEG, the final name of that
  /// file; else empty.
  std::string targetName() const;

  /// The entry of that name in this folder, which may not exist. Nil if no entry can have the name:
  /// empty, ".", "..", with a slash or NUL, or too long.
  Ref<FolderItem> Child(const std::string& name) const;
  /// The folder that contains this item, by its path.
  Ref<FolderItem> Parent() const;
  /// The number of entries, hidden ones included; if listing fails, of those read before. Lists the
  /// folder on the first call, and again if it may have changed.
  int Count();
  /// The entry at an index from 1 in the last listing; nil if out of range. A symlink gives its
  /// target; a dangling one gives an item that does not exist.
  Ref<FolderItem> Item(int index);

  /// Creates the folder. Logs a failure, except if the folder exists, or if the parent is missing
  /// or a file: writing there will fail too and be reported.
  void CreateAsFolder() const;
  /// Creates or truncates the file and opens it for writing; nil on failure. Replaces a symlink, or
  /// a file that can't be opened for writing, with a new file. `fileType` has no effect: Linux has
  /// no type and creator codes.
  Ref<BinaryStream> CreateBinaryFile(const std::string& fileType) const;
  /// Opens the file for reading; nil on failure, and if it is not a regular file.
  Ref<BinaryStream> OpenAsBinaryFile() const;
  /// Opens the file as a picture and has its header inspected; see Picture::read. If the file can't
  /// be opened, logs that and returns nil.
  Ref<Picture> OpenAsPicture() const;
  /// Writes the picture to this file as JPEG, atomically, replacing an older file. Logs a failure.
  void SaveAsJPEG(const Ref<Picture>& picture) const;
  /// Copies content and modification time to `target`, atomically, replacing an older file.
  /// `target` may be this file. Logs a failure.
  void CopyFileTo(const Ref<FolderItem>& target) const;
  /// Deletes the file. Logs a failure.
  void Delete() const;

 private:
  std::filesystem::path path_;
  std::optional<Listing> listing_;
};

/// The item at an absolute path, or at a path relative to the folder that contains the bundle; that
/// folder itself if `path` is empty.
Ref<FolderItem> GetFolderItem(const std::filesystem::path& path);

}  // namespace orvelin
