#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/core/binarystream.h"
#include "platform/core/date.h"
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
  /// Whether it is a folder; for an entry of a listing, whether it was one when that was made.
  bool Directory() const;
  /// What tells this item from all others, whatever path it is reached by; empty when it does not
  /// exist.
  using Identity = std::optional<std::pair<std::uint64_t, std::uint64_t>>;
  Identity identity() const;
  /// The times as local readings, 1970-01-01 00:00:00 for an item that does not exist. Where the
  /// file system keeps no creation time, the modification time stands for it.
  Date ModificationDate() const;
  Date CreationDate() const;

  /// The item of that name in this folder, existing or not; nil for a name that can designate none.
  Ref<FolderItem> Child(const std::string& name) const;
  /// How many entries the folder has now, hidden ones included, listed in ascending order of the
  /// bytes of their names; 0, told on standard error, when it can't be listed.
  int Count();
  /// The entry at an index from 1 of the last listing, nil outside it. An alias gives its target;
  /// one that leads nowhere gives an item that does not exist.
  Ref<FolderItem> Item(int index);

  /// Makes the folder; a failure, but not an existing folder, is told on standard error.
  void CreateAsFolder() const;
  /// Opens the file for writing, made anew and empty; nil on failure. The name of a file type has
  /// no effect: Linux keeps no type and creator codes.
  Ref<BinaryStream> CreateBinaryFile(const std::string& fileType) const;
  /// Opens the file for reading; nil when that can't be done or it is no regular file.
  Ref<BinaryStream> OpenAsBinaryFile() const;
  /// Opens the file as a picture; nil when it is none. See Picture for what is decoded when.
  Ref<Picture> OpenAsPicture() const;
  /// Saves the picture here, whole or not at all, in place of an older file.
  void SaveAsJPEG(const Ref<Picture>& picture) const;
  /// Copies this file's bytes and modification time to `target`, whole or not at all, in place of
  /// an older file; `target` may be this very file.
  void CopyFileTo(const Ref<FolderItem>& target) const;

 private:
  struct Entry {
    std::string name;
    unsigned char type;  // as the listing tells it: DT_DIR, DT_LNK, DT_UNKNOWN ...
  };
  std::string childPath(const std::string& name) const;
  void list();

  std::string path_;
  std::optional<bool> listedAsFolder_;
  std::optional<std::vector<Entry>> listing_;
  // The folder's time when it was listed; empty when that can't tell a change from none.
  std::optional<std::pair<std::int64_t, std::uint32_t>> changed_;
};

/// The item at a path relative to the folder in which the application's bundle lies, or at an
/// absolute one; that folder itself for an empty path.
Ref<FolderItem> GetFolderItem(const std::string& path);

}  // namespace orvelin
