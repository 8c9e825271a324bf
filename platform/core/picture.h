#pragma once

#include <cstdint>
#include <filesystem>
#include <utility>

#include "platform/core/file.h"
#include "platform/core/ref.h"

namespace orvelin {

/// An open picture file. Each method asks the picture process, which reads and decodes the file.
class Picture {
 public:
  /// Asks the picture process to inspect the header of an open file. If the file can't be accepted,
  /// returns nil with the reason, and logs it unless the format is unknown. `path` is used for log
  /// messages only.
  static Ref<Picture> read(File file, const std::filesystem::path& path);

  /// For makeRef; call `read` instead.
  Picture(File file, std::filesystem::path path, std::uint32_t number)
      : file_(std::move(file)), path_(std::move(path)), number_(number) {}

  /// Whether the picture decodes; logs why not. Decodes no more than is needed to know.
  bool decodes() const;

  /// Writes the picture as a JFIF file to `jpeg`, an empty file: as a viewer shows it, the first
  /// frame upright in 8-bit sRGB or grey, transparent parts on white. Returns false, and logs why,
  /// if the picture can't be decoded or encoded. If writing fails, returns true and sets
  /// `jpeg.error()`.
  bool encodeAsJPEG(File& jpeg) const;

 private:
  File file_;
  std::filesystem::path path_;
  std::uint32_t number_;  // identifies the picture in requests
};

}  // namespace orvelin
