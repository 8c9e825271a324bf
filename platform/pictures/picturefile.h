#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vips/vips8>

#include "platform/core/descriptor.h"

namespace orvelin {

/// The file of a picture, for one thread at a time. Decoders read it as they decode, so the system
/// reads ahead at the same time. Some take a failed read for the end of the file: check `error`
/// after each use.
class PictureFile {
 public:
  /// Takes over a file that is open for reading.
  explicit PictureFile(Descriptor file);
  PictureFile(const PictureFile&) = delete;
  PictureFile& operator=(const PictureFile&) = delete;
  ~PictureFile() = default;

  /// Bytes in the file when it was opened; no more are read if it grows.
  std::uint64_t size() const { return size_; }
  /// The `errno` of the first failure, 0 if there was none; ESTALE if the file has become shorter.
  /// After a failure nothing more is read: on a broken disk each attempt may take a minute.
  int error() const { return error_; }

  /// Some of the bytes from `at` on, valid until the next call; empty at the end of the file or on
  /// failure.
  std::string_view some(std::uint64_t at);
  /// Copies `count` bytes from `at` on; fewer only at the end of the file or on failure. Returns
  /// how many.
  std::size_t read(std::uint64_t at, char* bytes, std::size_t count);
  /// The byte at `at`; 0 at the end of the file or on failure.
  int byteAt(std::uint64_t at);
  /// Reads the whole file into memory, and returns all its bytes from then on. False on failure.
  bool readWhole();

  /// The file for a loader of libvips, which it must outlive. One at a time.
  vips::VSource source();

 private:
  void fillWindow(std::uint64_t at, std::size_t count);
  static gint64 onRead(VipsSourceCustom*, void* bytes, gint64 count, PictureFile* self);
  static gint64 onSeek(VipsSourceCustom*, gint64 offset, int whence, PictureFile* self);

  Descriptor file_;
  std::uint64_t size_ = 0;
  int error_ = 0;
  std::string window_;  // the bytes of the file from windowAt_ on
  std::uint64_t windowAt_ = 0;
  bool whole_ = false;          // the window is the file
  std::uint64_t sourceAt_ = 0;  // the position of source()
};

}  // namespace orvelin
