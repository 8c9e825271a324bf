#include "platform/core/pictureformats.h"

#include <algorithm>
#include <vips/vips8>

#include "platform/core/gifframe.h"
#include "platform/core/jpegmarkers.h"
#include "platform/core/tifftags.h"

namespace orvelin {

using vips::VImage;
using vips::VOption;
using namespace std::string_view_literals;

namespace {

std::string whyTooLong(std::string_view jpeg) {
  constexpr int mostScans = 100;
  return countScans(jpeg) > mostScans ? "trop longue à décoder" : "";
}

/// The whole canvas, white where the first frame doesn't cover it. libvips ignores the size of the
/// canvas if it finds it suspicious, and leaves the rest black if the GIF has no transparent
/// colour.
VImage onCanvas(const VImage& image, std::string_view gif) {
  const auto frame = firstFrameOf(gif);
  if (!frame) return image;
  const int width = std::max(frame->canvasWidth, frame->left + frame->width);
  const int height = std::max(frame->canvasHeight, frame->top + frame->height);
  return image.crop(frame->left, frame->top, frame->width, frame->height)
      .embed(frame->left, frame->top, width, height,
             VImage::option()->set("extend", VIPS_EXTEND_WHITE));
}

VImage withoutSpareBands(const VImage& image, std::string_view tiff) {
  const int spare = countSpareSamples(tiff);
  if (spare <= 0 || spare >= image.bands()) return image;
  return image.extract_band(0, VImage::option()->set("n", image.bands() - spare));
}

constexpr std::string_view signaturesOfBMP[] = {"BM"sv};
constexpr std::string_view signaturesOfTIFF[] = {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv};

// The only loaders that are ever called: libvips knows many more, which take drawings, documents
// and tables of numbers for pictures. ImageMagick's is asked for one format alone.
constexpr PictureFormat formats[] = {
    {.loader = "jpegload_buffer", .failsAtOnce = true, .givesUp = true, .whyRefused = whyTooLong},
    {.loader = "pngload_buffer", .failsAtOnce = true},
    {.loader = "heifload_buffer"},
    {.loader = "webpload_buffer"},
    {.loader = "gifload_buffer", .warnsOnOpening = true, .shown = onCanvas},
    {.loader = "magickload_buffer", .signatures = signaturesOfBMP},
    {.loader = "tiffload_buffer",
     .signatures = signaturesOfTIFF,
     .whyRefused = whyNoPhotograph,
     .shown = withoutSpareBands},
};

bool isIn(const PictureFormat& format, std::string_view head) {
  if (format.signatures.empty())
    return vips_foreign_is_a_buffer(format.loader, head.data(), head.size()) != 0;
  return std::ranges::any_of(
      format.signatures, [&](std::string_view signature) { return head.starts_with(signature); });
}

}  // namespace

const PictureFormat* formatOf(std::string_view head) {
  const auto* format =
      std::ranges::find_if(formats, [&](const auto& row) { return isIn(row, head); });
  return format == std::end(formats) ? nullptr : format;
}

VImage load(const std::string& bytes, const PictureFormat& format) {
  VImage image;
  VipsBlob* const blob = vips_blob_new(nullptr, bytes.data(), bytes.size());
  VOption* const options = VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL);
  if (format.givesUp) options->set("unlimited", true);
  options->set("buffer", blob)->set("out", &image);
  vips_area_unref(VIPS_AREA(blob));
  VImage::call(format.loader, options);
  // A decoder goes from line to line: a second worker only waits for the first, and libvips may
  // report success before the last of several fails.
  image.set(VIPS_META_CONCURRENCY, 1);
  return format.shown ? format.shown(image, bytes) : image;
}

}  // namespace orvelin
