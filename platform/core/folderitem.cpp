#include "platform/core/folderitem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>
#include <filesystem>
#include <memory>
#include <system_error>

#include "platform/core/bundle.h"

namespace orvelin {

namespace {

std::optional<struct statx> status(const std::string& path, unsigned wanted) {
  struct statx status {};
  if (::statx(AT_FDCWD, path.c_str(), 0, wanted, &status) != 0) return {};
  return status;
}

/// Why a file could not be made, given the error. Where its folder is missing, that is what could
/// not be made, and what counts is what kept it from being made.
Failure whyNotCreated(const std::string& path, int error) {
  if (error != ENOENT && error != ENOTDIR)
    return Failure::ofSystem("Impossible de créer le fichier", path, error);
  const auto folder = std::filesystem::path(path).parent_path();
  const std::string above = folder.parent_path().string();
  struct statvfs disk {};
  if (::access(above.c_str(), W_OK | X_OK) != 0 || ::statvfs(above.c_str(), &disk) != 0)
    error = errno;
  else if (disk.f_bavail == 0 || (disk.f_files > 0 && disk.f_favail == 0))
    error = ENOSPC;
  return Failure::ofSystem("Impossible de créer le dossier", folder.string(), error);
}

/// When the folder's entries last changed; nothing while that is too short ago for the next change
/// to be sure to show.
std::optional<std::pair<std::int64_t, std::uint32_t>> changeOf(const std::string& path) {
  constexpr std::int64_t coarsest = 2;  // seconds, the clock of memory cards
  const auto found = status(path, STATX_MTIME);
  if (!found || found->stx_mtime.tv_sec + coarsest >= std::time(nullptr)) return {};
  return std::pair{found->stx_mtime.tv_sec, found->stx_mtime.tv_nsec};
}

}  // namespace

std::string FolderItem::Name() const {
  const auto end = path_.find_last_not_of('/');
  if (end == std::string::npos) return path_;
  const auto begin = path_.find_last_of('/', end) + 1;
  return path_.substr(begin, end + 1 - begin);
}

bool FolderItem::Exists() const { return status(path_, STATX_TYPE).has_value(); }

bool FolderItem::Directory() const {
  if (listedAsFolder_) return *listedAsFolder_;
  const auto found = status(path_, STATX_TYPE);
  return found && S_ISDIR(found->stx_mode);
}

FolderItem::Identity FolderItem::identity() const {
  const auto found = status(path_, STATX_INO);
  if (!found) return {};
  const auto device = std::uint64_t{found->stx_dev_major} << 32 | found->stx_dev_minor;
  return std::pair{device, std::uint64_t{found->stx_ino}};
}

Date FolderItem::ModificationDate() const {
  const auto found = status(path_, STATX_MTIME);
  return found ? Date::ofInstant(found->stx_mtime.tv_sec) : Date();
}

Date FolderItem::CreationDate() const {
  const auto found = status(path_, STATX_BTIME);
  if (!found || !(found->stx_mask & STATX_BTIME)) return ModificationDate();
  return Date::ofInstant(found->stx_btime.tv_sec);
}

std::string FolderItem::childPath(const std::string& name) const {
  return path_.ends_with('/') ? path_ + name : path_ + "/" + name;
}

Ref<FolderItem> FolderItem::Child(const std::string& name) const {
  const bool designates = !name.empty() && name != "." && name != ".." &&
                          name.find('/') == std::string::npos &&
                          name.find('\0') == std::string::npos;
  if (!designates)
    return Failure{"Impossible de désigner « " + name + " » dans", path_,
                   "ce nom ne convient pas à un élément"};
  std::string path = childPath(name);
  if (name.size() > NAME_MAX || path.size() >= PATH_MAX)
    return Failure::ofSystem("Impossible de désigner l'élément", path, ENAMETOOLONG);
  return makeRef<FolderItem>(std::move(path));
}

int FolderItem::Count() {
  // Whoever counts at each step of a walk must not list the folder each time.
  if (!listing_ || !changed_ || changed_ != changeOf(path_)) list();
  return static_cast<int>(listing_->size());
}

void FolderItem::list() {
  changed_ = changeOf(path_);
  listing_.emplace();
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path_.c_str()), ::closedir);
  int error = folder ? 0 : errno;
  while (folder) {
    errno = 0;
    const dirent* entry = ::readdir(folder.get());
    if (!entry) {
      error = errno;
      break;
    }
    std::string name = entry->d_name;
    if (name != "." && name != "..") listing_->push_back({std::move(name), entry->d_type});
  }
  if (error) report(Failure::ofSystem("Impossible de parcourir le dossier", path_, error));
  std::sort(listing_->begin(), listing_->end(),
            [](const Entry& a, const Entry& b) { return a.name < b.name; });
}

Ref<FolderItem> FolderItem::Item(int index) {
  if (!listing_) list();
  if (index < 1 || static_cast<std::size_t>(index) > listing_->size())
    return Failure{"Impossible de désigner l'élément n° " + std::to_string(index) + " de", path_,
                   "le dossier n'en a pas autant"};
  const Entry& entry = (*listing_)[static_cast<std::size_t>(index) - 1];
  auto item = makeRef<FolderItem>(childPath(entry.name));
  std::error_code error;
  if (entry.type != DT_LNK && entry.type != DT_UNKNOWN)
    item->listedAsFolder_ = entry.type == DT_DIR;
  else if (std::filesystem::is_symlink(item->path_, error))
    if (auto target = std::filesystem::canonical(item->path_, error); !error)
      item->path_ = target.string();
  return item;
}

void FolderItem::CreateAsFolder() const {
  if (::mkdir(path_.c_str(), 0777) == 0) return;
  const int error = errno;
  if (error != EEXIST || !Directory())
    report(Failure::ofSystem("Impossible de créer le dossier", path_, error));
}

Ref<BinaryStream> FolderItem::CreateBinaryFile(const std::string&) const {
  File file = File::createInPlace(path_);
  if (!file.isOpen()) return whyNotCreated(path_, file.error());
  return makeRef<BinaryStream>(std::move(file), path_, BinaryStream::Use::Writing);
}

Ref<BinaryStream> FolderItem::OpenAsBinaryFile() const {
  File file = File::openToRead(path_);
  if (!file.isOpen())
    return Failure::ofSystem("Impossible d'ouvrir le fichier", path_, file.error());
  return makeRef<BinaryStream>(std::move(file), path_, BinaryStream::Use::Reading);
}

Ref<Picture> FolderItem::OpenAsPicture() const {
  const Ref<BinaryStream> stream = OpenAsBinaryFile();
  if (stream) return Picture::read(*stream, path_);
  report(*stream.why());
  return *stream.why();
}

void FolderItem::SaveAsJPEG(const Ref<Picture>& picture) const {
  WholeFile target(path_);
  const auto write = [&](std::string_view bytes) { return target.file().write(bytes); };
  if (target.file().isOpen() && picture->encodeAsJPEG(write) && target.putInPlace()) return;
  report(target.error()
             ? Failure::ofSystem("Impossible d'enregistrer l'image", path_, target.error())
             : Failure{"Impossible de convertir l'image", picture->path(),
                       "illisible ou trop grande"});
}

void FolderItem::CopyFileTo(const Ref<FolderItem>& target) const {
  File source = File::openToRead(path_);
  if (!source.isOpen())
    return report(Failure::ofSystem("Impossible de copier", path_, source.error()));
  WholeFile copy(target->path_);
  const bool copied = copy.file().isOpen() && copy.file().writeRestOf(source);
  if (copied) copy.file().takeTimeOf(source);
  if (!copied || !copy.putInPlace())
    report(Failure::ofSystem("Impossible de copier vers", target->path_, copy.error()));
}

Ref<FolderItem> GetFolderItem(const std::string& path) {
  const std::filesystem::path base = bundleFolder().parent_path();
  return makeRef<FolderItem>(path.empty() ? base.string() : (base / path).string());
}

}  // namespace orvelin
