#pragma once

#include <cstdint>
#include <filesystem>
#include <utility>

#include "platform/core/file.h"
#include "platform/core/ref.h"

namespace orvelin {

/// An open picture file. Only the picture process reads and decodes it: each method sends a request
/// to it.
class Picture {
 public:
  /// Inspects the header of an open file. Nil if the format is unknown; also nil, and logged, if
  /// the header can't be read, or if the picture is a camera raw, has unknown colours, or needs
  /// more memory than a real photograph. `path` is used for log messages only.
  static Ref<Picture> read(File file, const std::filesystem::path& path);

  /// Use `read`.
  Picture(File file, std::filesystem::path path, std::uint32_t number)
      : file_(std::move(file)), path_(std::move(path)), number_(number) {}

  /// Whether the picture decodes; logs why not. Decodes no more than is needed to know.
  bool decodes() const;

  /// Appends the picture as a JFIF file to `jpeg`, an empty file: as a viewer shows it, the first
  /// frame upright in 8-bit sRGB, transparent parts on white. Returns false, and logs why, if the
  /// picture can't be decoded or encoded. If writing fails, returns true with `jpeg.error()` set.
  bool encodeAsJPEG(File& jpeg) const;

 private:
  File file_;
  std::filesystem::path path_;
  std::uint32_t number_;  // identifies the picture in requests
};

}  // namespace orvelin
