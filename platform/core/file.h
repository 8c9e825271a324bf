#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvelin {

/// An open regular file; the destructor closes it. A call that fails leaves its reason in `error`.
class File {
 public:
  /// Opens for reading; never waits on a FIFO and never opens a device.
  static File openToRead(const std::string& path);
  /// Creates or truncates the file, for writing in place. A symlink, or a regular file that can't
  /// be opened for writing, is replaced by a new file.
  static File createInPlace(const std::string& path);
  /// Creates a new file for writing, after removing an older file or symlink of that name.
  static File createNew(const std::string& path);

  File(const File&) = delete;
  File& operator=(const File&) = delete;
  File(File&& other) noexcept;
  File& operator=(File&&) = delete;
  ~File();

  bool isOpen() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }
  /// The `errno` of the last failure, 0 when there was none.
  int error() const { return error_; }
  /// Bytes in the file when it was opened.
  std::int64_t size() const { return size_; }

  /// Reads some bytes; 0 at the end of the file, and on failure with `error` set.
  std::size_t readSome(char* bytes, std::size_t count);
  /// Writes all the bytes or answers false.
  bool write(std::string_view bytes);
  /// Appends all that is left to read of `source`, by the kernel's own means where it has them. An
  /// error of `source` becomes one of this file; ESTALE if `source` has become shorter. Runs the
  /// background task.
  bool writeRestOf(File& source);
  /// Removes all that was written, and its error. If that fails, `error` says why.
  void clear();
  /// Gives this file the modification time of `source`, where its disk takes it.
  void takeTimeOf(const File& source);
  /// Answers false when the system reports, only now, that something was not written.
  bool close();

 private:
  File(int descriptor, int error, std::int64_t size = 0)
      : descriptor_(descriptor), error_(error), size_(size) {}
  static File createReplacing(const std::string& path);
  static File opened(int descriptor);
  bool failed();

  int descriptor_;
  int error_;
  std::int64_t size_;
};

/// A file that appears under its name whole or not at all: it is written to a hidden temporary file
/// in the same folder, `.NAME.orvelin`, and renamed at the end. Replaces a temporary file that an
/// interrupted run left.
class WholeFile {
 public:
  /// The name of the file whose temporary file has this name; empty for any other name.
  static std::string_view targetOf(std::string_view temporary);
  explicit WholeFile(const std::string& path);
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;
  /// Removes the temporary file unless it was put in place.
  ~WholeFile();

  File& file() { return file_; }
  /// Renames the file to its name, replacing an older one. False, with `error`, if that fails or
  /// anything did before.
  bool putInPlace();
  int error() const { return renameError_ ? renameError_ : file_.error(); }

 private:
  std::string path_;
  std::string temporary_;
  File file_;
  bool inPlace_ = false;
  int renameError_ = 0;
};

}  // namespace orvelin
