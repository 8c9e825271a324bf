#include "platform/pictures/pictureformats.h"

#include <algorithm>
#include <vips/vips8>

#include "platform/pictures/bmp.h"
#include "platform/pictures/gifframe.h"
#include "platform/pictures/jpegmarkers.h"
#include "platform/pictures/tifftags.h"

namespace orvelin {

using vips::VImage;
using vips::VOption;
using namespace std::string_view_literals;

namespace {

Assessment assessJPEG(std::string_view jpeg) {
  constexpr int maxScans = 100;
  const JpegScans scans = scansOf(jpeg);
  if (scans.count > maxScans) return {PictureVerdict::TooManyScans};
  return {.copies = scans.buffered ? 3 : 1};  // coefficients have two bytes
}

/// For decoders that hold `count` copies of the whole picture, to convert it.
template <int count>
Assessment copies(std::string_view) {
  return {.copies = count};
}

template <PictureVerdict (*verdictOn)(std::string_view)>
Assessment assessBy(std::string_view bytes) {
  return {verdictOn(bytes)};
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

// The only decoders that are ever called: libvips knows many more, which take drawings, documents
// and tables of numbers for pictures.
constexpr PictureFormat formats[] = {
    {.loader = "jpegload_buffer", .failsAtOnce = true, .givesUp = true, .assess = assessJPEG},
    {.loader = "pngload_buffer", .failsAtOnce = true},
    {.loader = "heifload_buffer", .assess = copies<3>},
    {.loader = "webpload_buffer", .assess = copies<4>},
    {.loader = "gifload_buffer", .warnsOnOpening = true, .assess = copies<3>, .shown = onCanvas},
    {.signatures = signaturesOfBMP,
     .warnsOnOpening = true,
     .assess = assessBy<verdictOnBMP>,
     .decoded = decodeBMP},
    {.loader = "tiffload_buffer",
     .signatures = signaturesOfTIFF,
     .assess = assessBy<verdictOnTIFF>,
     .decoded = decodeOldJpegOf,
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
  VImage image = format.decoded ? format.decoded(bytes) : VImage();
  if (!image.is_null()) return image;
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
