#pragma once

#include <span>
#include <string_view>

#include "platform/core/picturemessages.h"
#include "platform/pictures/picturefile.h"

namespace orvelin {

/// What is known about a file before it is decoded.
struct Assessment {
  PictureVerdict verdict = PictureVerdict::Good;
  int copies = 1;  ///< maximum memory that the decoder needs, as a multiple of the decoded size
};

/// One row of the table of formats.
struct PictureFormat {
  /// The libvips operation that loads the format from a source; null if `decoded` decodes all
  /// files.
  const char* loader = nullptr;
  /// The possible first bytes of a file. Empty to let libvips recognise the format.
  std::span<const std::string_view> signatures = {};
  /// Whether to read the whole file first: the loader would do so too, or would abort the process
  /// if a read fails.
  bool whole = false;
  /// Whether a picture decodes if its first line does: damage after it only causes a warning.
  bool failsAtOnce = false;
  /// Whether the loader fails after many warnings, unless its option `unlimited` is set.
  bool givesUp = false;
  /// Whether the loader warns of damage when it opens the file.
  bool warnsOnOpening = false;
  /// Checks a file for problems that the loader would not report. Returns the memory needed too.
  Assessment (*assess)(PictureFile& file) = [](PictureFile&) { return Assessment{}; };
  /// If set, decodes files that `loader` can't; returns a null image for the others.
  vips::VImage (*decoded)(PictureFile& file) = nullptr;
  /// If set, returns a loaded picture as a viewer shows it: on its canvas, or without extra bands.
  vips::VImage (*shown)(const vips::VImage& image, PictureFile& file) = nullptr;
};

/// The format of a file, by its first kilobytes; null if unknown. startVips() must have been
/// called.
const PictureFormat* formatOf(std::string_view head);

/// Opens a picture to be decoded once, from top to bottom, by one worker; `decoded` decodes at
/// once. `file` must outlive the picture. Throws vips::VError on failure.
vips::VImage load(PictureFile& file, const PictureFormat& format);

}  // namespace orvelin
