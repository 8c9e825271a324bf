#include "platform/core/folderitem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <system_error>

#include "platform/core/bundle.h"
#include "platform/core/file.h"

namespace orvelin {

namespace fs = std::filesystem;

namespace {

std::optional<struct statx> status(const fs::path& path, unsigned wanted, int flags = 0) {
  struct statx status = {};
  if (::statx(AT_FDCWD, path.c_str(), flags, wanted, &status) != 0) return {};
  return status;
}

bool isWritable(const fs::path& folder) {
  return ::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

/// Guesses why the folder could not be created. Returns an `errno` value; ENOENT if unknown.
int whyMissing(const fs::path& folder) {
  const fs::path above = folder.parent_path();
  struct statvfs disk = {};
  if (!isWritable(above) || ::statvfs(above.c_str(), &disk) != 0) return errno;
  return disk.f_bavail == 0 || (disk.f_files > 0 && disk.f_favail == 0) ? ENOSPC : ENOENT;
}

// If the folder is the cause, the next two functions name the folder instead of the file: its files
// then all give the same line, which is logged once.

/// Why a file could not be opened for reading.
Failure whyNotRead(const fs::path& path, int error) {
  const fs::path folder = path.parent_path();
  if (::faccessat(AT_FDCWD, folder.c_str(), X_OK, AT_EACCESS) != 0)
    return Failure::ofSystem("Impossible de parcourir le dossier", folder, errno);
  return Failure::ofSystem("Impossible de lire", path, error);
}

/// Why `action` could not create or write a file.
Failure whyNotWritten(const std::string& action, const fs::path& path, int error) {
  std::error_code ignored;
  fs::path folder = path.parent_path();
  const bool full = error == ENOSPC || error == EDQUOT;
  const bool refused = error == EACCES || error == EPERM || error == EROFS;
  if (full || (refused && !isWritable(folder)))
    return Failure::ofSystem("Impossible d’écrire dans le dossier", folder, error);
  if (error != ENOENT && error != ENOTDIR) return Failure::ofSystem(action, path, error);
  if (error == ENOENT) error = whyMissing(folder);
  while (error == ENOTDIR && !fs::exists(folder, ignored)) folder = folder.parent_path();
  return Failure::ofSystem("Impossible de créer le dossier", folder, error);
}

}  // namespace

FolderItem::FolderItem(fs::path path) : path_(std::move(path)) {
  if (!path_.has_filename()) path_ = path_.parent_path();
}

std::string FolderItem::Name() const { return path_.has_filename() ? path_.filename() : path_; }

bool FolderItem::Exists() const { return status(path_, STATX_TYPE).has_value(); }

bool FolderItem::Directory() const {
  const auto found = status(path_, STATX_TYPE);
  return found && S_ISDIR(found->stx_mode);
}

bool FolderItem::RegularFile() const {
  const auto found = status(path_, STATX_TYPE, AT_SYMLINK_NOFOLLOW);
  return found && S_ISREG(found->stx_mode);
}

FolderItem::Identity FolderItem::identity() const {
  const auto found = status(path_, STATX_INO);
  if (!found) return {};
  const auto device = std::uint64_t{found->stx_dev_major} << 32 | found->stx_dev_minor;
  return std::pair{device, std::uint64_t{found->stx_ino}};
}

Date FolderItem::ModificationDate() const {
  const auto found = status(path_, STATX_MTIME);
  if (found) return Date::ofInstant(found->stx_mtime.tv_sec);
  report(whyNotRead(path_, errno));
  return {};
}

Date FolderItem::CreationDate() const {
  const auto found = status(path_, STATX_BTIME);
  if (!found || !(found->stx_mask & STATX_BTIME)) return ModificationDate();
  return Date::ofInstant(found->stx_btime.tv_sec);
}

std::string FolderItem::targetName() const { return std::string(WholeFile::targetOf(Name())); }

Ref<FolderItem> FolderItem::Child(const std::string& name) const {
  const bool isName = !name.empty() && name != "." && name != ".." &&
                      name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
  if (!isName)
    return Failure{"Impossible de désigner «\u00A0" + name + "\u00A0» dans", path_,
                   "ce nom ne convient pas à un élément"};
  fs::path path = path_ / name;
  if (name.size() > NAME_MAX || path.native().size() >= PATH_MAX)
    return Failure::ofSystem("Impossible de désigner l’élément", path, ENAMETOOLONG);
  return makeRef<FolderItem>(std::move(path));
}

Ref<FolderItem> FolderItem::Parent() const { return makeRef<FolderItem>(path_.parent_path()); }

int FolderItem::Count() {
  if (!listing_ || !listing_->isCurrent()) listing_.emplace(path_);
  return static_cast<int>(listing_->names().size());
}

Ref<FolderItem> FolderItem::Item(int index) {
  if (!listing_) listing_.emplace(path_);
  const auto& names = listing_->names();
  if (index < 1 || static_cast<std::size_t>(index) > names.size())
    return Failure{"Impossible de désigner l’élément n° " + std::to_string(index) + " de", path_,
                   "le dossier n’en a pas autant"};
  fs::path path = path_ / names[static_cast<std::size_t>(index) - 1];
  std::error_code error;
  if (fs::is_symlink(path, error))
    if (const fs::path target = fs::canonical(path, error); !error) path = target;
  return makeRef<FolderItem>(std::move(path));
}

void FolderItem::CreateAsFolder() const {
  if (::mkdir(path_.c_str(), 0777) == 0) return;
  int error = errno;
  if (error == ENOENT || error == ENOTDIR) return;
  if (error == EEXIST) {
    if (Directory()) return;
    error = ENOTDIR;
  }
  report(Failure::ofSystem("Impossible de créer le dossier", path_, error));
}

Ref<BinaryStream> FolderItem::CreateBinaryFile(const std::string&) const {
  File file = File::createInPlace(path_);
  if (!file.isOpen()) return whyNotWritten("Impossible de créer le fichier", path_, file.error());
  return makeRef<BinaryStream>(std::move(file), path_.native(), BinaryStream::Use::Writing);
}

Ref<BinaryStream> FolderItem::OpenAsBinaryFile() const {
  File file = File::openToRead(path_);
  if (!file.isOpen()) return whyNotRead(path_, file.error());
  return makeRef<BinaryStream>(std::move(file), path_.native(), BinaryStream::Use::Reading);
}

Ref<Picture> FolderItem::OpenAsPicture() const {
  File file = File::openToRead(path_);
  if (file.isOpen()) return Picture::read(std::move(file), path_);
  const Failure failure = whyNotRead(path_, file.error());
  report(failure);
  return failure;
}

void FolderItem::SaveAsJPEG(const Ref<Picture>& picture) const {
  WholeFile target(path_);
  if (target.file().isOpen() && !picture->encodeAsJPEG(target.file())) return;
  if (!target.commit())
    report(whyNotWritten("Impossible d’enregistrer l’image", path_, target.error()));
}

void FolderItem::CopyFileTo(const Ref<FolderItem>& target) const {
  File source = File::openToRead(path_);
  if (!source.isOpen()) return report(whyNotRead(path_, source.error()));
  WholeFile copy(target->path_);
  const bool copied = copy.file().isOpen() && copy.file().appendRestOf(source);
  if (source.error() != 0) return report(whyNotRead(path_, source.error()));
  if (copied) copy.file().copyTimeOf(source);
  if (!copied || !copy.commit())
    report(whyNotWritten("Impossible de copier vers", target->path_, copy.error()));
}

void FolderItem::Delete() const {
  if (::unlink(path_.c_str()) != 0)
    report(Failure::ofSystem("Impossible de supprimer", path_, errno));
}

Ref<FolderItem> GetFolderItem(const fs::path& path) {
  return makeRef<FolderItem>(bundleFolder().parent_path() / path);
}

}  // namespace orvelin
