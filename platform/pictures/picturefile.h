#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vips/vips8>

#include "platform/core/descriptor.h"

namespace orvelin {

/// An open picture file, for one thread at a time. Decoders read it as they decode, while the
/// system reads ahead. Some take a failed read for the end of the file, so check `error` after
/// decoding.
class PictureFile {
 public:
  /// Takes over a descriptor that is open for reading.
  explicit PictureFile(Descriptor file);
  PictureFile(const PictureFile&) = delete;
  PictureFile& operator=(const PictureFile&) = delete;
  ~PictureFile() = default;

  /// Size in bytes when the file was opened; if it grows, the rest is not read.
  std::uint64_t size() const { return size_; }
  /// The `errno` of the first failure, or 0; ESTALE if the file was truncated. After a failure
  /// nothing more is read: on a broken disk each attempt may take a minute.
  int error() const { return error_; }

  /// Returns some bytes from offset `at` on, at least one; none at the end of the file and on
  /// failure. Valid until the next call.
  std::string_view some(std::uint64_t at);
  /// Copies `count` bytes from offset `at` on; fewer at the end of the file and on failure. Returns
  /// the number of bytes copied.
  std::size_t read(std::uint64_t at, char* bytes, std::size_t count);
  /// The byte at that offset; 0 past the end of the file and on failure.
  int byteAt(std::uint64_t at);
  /// Reads the whole file into memory. Returns false on failure.
  bool readWhole();

  /// A source for a libvips loader. It must not outlive this object; use one at a time.
  vips::VSource source();

 private:
  void fillWindow(std::uint64_t at, std::size_t count);
  static gint64 onRead(VipsSourceCustom*, void* bytes, gint64 count, PictureFile* self);
  static gint64 onSeek(VipsSourceCustom*, gint64 offset, int whence, PictureFile* self);

  Descriptor file_;
  std::uint64_t size_ = 0;
  int error_ = 0;
  std::string window_;  // some bytes of the file, from offset windowAt_ on
  std::uint64_t windowAt_ = 0;
  bool whole_ = false;          // the window is the whole file
  std::uint64_t sourceAt_ = 0;  // the offset of source()
};

}  // namespace orvelin
