#pragma once

#include <optional>

#include "platform/pictures/picturefile.h"

namespace orvelin {

/// The first frame of a GIF file and its place on the canvas, in pixels. It needn't cover the
/// canvas.
struct GifFrame {
  int left, top, width, height;
  int canvasWidth, canvasHeight;  ///< as the file says; a frame may go beyond
};

/// Parses a GIF file up to its first frame; nothing if there is none or it has no pixel.
std::optional<GifFrame> firstFrameOf(PictureFile& gif);

}  // namespace orvelin
