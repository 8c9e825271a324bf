#pragma once

#include <optional>

#include "platform/pictures/picturefile.h"

namespace orvelin {

/// The first frame of a GIF file and its position on the canvas, in pixels. It may be smaller than
/// the canvas.
struct GifFrame {
  int left, top, width, height;
  int canvasWidth, canvasHeight;  ///< from the header; the frame may exceed it
};

/// Parses a GIF file up to its first frame. Empty if there is none or it has no pixels.
std::optional<GifFrame> firstFrameOf(PictureFile& gif);

}  // namespace orvelin
