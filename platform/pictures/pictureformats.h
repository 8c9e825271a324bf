#pragma once

#include <span>
#include <string_view>

#include "platform/core/picturemessages.h"
#include "platform/pictures/picturefile.h"

namespace orvelin {

/// What can be said of a file before it is decoded.
struct Assessment {
  PictureVerdict verdict = PictureVerdict::Good;
  int copies = 1;  ///< how many bytes its decoder holds at most for each byte that it gives
};

/// A row of the table of formats.
struct PictureFormat {
  /// The operation of libvips that opens a source, if one does.
  const char* loader = nullptr;
  /// How a file may begin; if there is none, libvips recognises the format.
  std::span<const std::string_view> signatures = {};
  /// Whether the file is read whole before it is opened: libvips would do so too, or the decoder
  /// aborts the process when a read fails.
  bool whole = false;
  /// Whether decoding fails as it begins or not at all: damage further on gives warnings and grey,
  /// and the scans of a JPEG that has several are all read before the first line is given.
  bool failsAtOnce = false;
  /// Whether the loader gives up after a number of warnings, unless its option `unlimited` is set.
  bool givesUp = false;
  /// Whether the loader warns of damage as it opens the file.
  bool warnsOnOpening = false;
  /// Judges a file by what its decoder would not report.
  Assessment (*assess)(PictureFile& file) = [](PictureFile&) { return Assessment{}; };
  /// If set, decodes what `loader` doesn't, all of it at once; a null image if it is for `loader`.
  vips::VImage (*decoded)(PictureFile& file) = nullptr;
  /// If set, returns what a viewer shows of a decoded picture.
  vips::VImage (*shown)(const vips::VImage& image, PictureFile& file) = nullptr;
};

/// The format of a file by its first kilobytes; nullptr if it is none of ours. libvips must have
/// been started.
const PictureFormat* formatOf(std::string_view head);

/// Opens a picture to be decoded once, from top to bottom, by one worker. `file` must have that
/// format and outlive the picture. Throws `vips::VError` if that fails.
vips::VImage load(PictureFile& file, const PictureFormat& format);

}  // namespace orvelin
