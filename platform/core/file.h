#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace orvelin {

/// An open regular file; the destructor closes it. A failed call sets `error`.
class File {
 public:
  /// Opens for reading. Fails if it is not a regular file; does not wait on a FIFO.
  static File openToRead(const std::filesystem::path& path);
  /// Creates or truncates the file for writing in place. Replaces a symlink, or a regular file that
  /// can't be opened for writing, with a new file.
  static File createInPlace(const std::filesystem::path& path);
  /// Creates a new file for writing; first removes a file or symlink of that name.
  static File createNew(const std::filesystem::path& path);

  File(const File&) = delete;
  File& operator=(const File&) = delete;
  File(File&& other) noexcept;
  File& operator=(File&&) = delete;
  ~File();

  bool isOpen() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }
  /// The `errno` of the last failure; 0 if there was none.
  int error() const { return error_; }
  /// Size in bytes when the file was opened.
  std::int64_t size() const { return size_; }

  /// Reads up to `count` bytes. Returns 0 at the end of the file, and on failure.
  std::size_t readSome(char* bytes, std::size_t count);
  /// Writes all the bytes. Returns false on failure.
  bool write(std::string_view bytes);
  /// Appends the unread rest of `source`. Returns false on failure. A read error sets `error` of
  /// both files; it is ESTALE if `source` was truncated. Runs the background task.
  bool appendRestOf(File& source);
  /// Truncates the file to nothing and resets `error`.
  void clear();
  /// Sets the modification time to that of `source`; ignores failure.
  void copyTimeOf(const File& source);
  /// Returns false if close() reports a delayed write error.
  bool close();

 private:
  File(int descriptor, int error, std::int64_t size = 0)
      : descriptor_(descriptor), error_(error), size_(size) {}
  static File createReplacing(const std::filesystem::path& path);
  static File opened(int descriptor);
  bool setError();

  int descriptor_;
  int error_;
  std::int64_t size_;
};

/// Writes a file atomically: to the hidden temporary file `.NAME.orvelin` in the same folder, which
/// `commit` renames. Replaces a temporary file that a killed program left.
class WholeFile {
 public:
  explicit WholeFile(const std::filesystem::path& path);
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;
  /// Removes the temporary file if it was not committed.
  ~WholeFile();

  /// The temporary file, to be written.
  File& file() { return file_; }
  /// Renames the temporary file to its final name, replacing an older file. Returns false, with
  /// `error` set, if this or an earlier call failed.
  bool commit();
  int error() const { return renameError_ ? renameError_ : file_.error(); }

  /// The name of the file that a temporary file of this name becomes; empty if `tempName` is not
  /// the name of a temporary file.
  static std::string_view targetOf(std::string_view tempName);

 private:
  std::filesystem::path path_;
  std::filesystem::path tempPath_;
  File file_;
  bool committed_ = false;
  int renameError_ = 0;
};

}  // namespace orvelin
