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

Assessment assessJPEG(PictureFile& jpeg) {
  constexpr int maxScans = 100;
  const int scans = countBufferedScans(jpeg);
  if (scans > maxScans) return {PictureVerdict::TooManyScans};
  return {.copies = scans > 0 ? 3 : 1};  // pixels and two-byte coefficients
}

/// For loaders that keep `count` copies of the whole picture in memory.
template <int count>
Assessment copies(PictureFile&) {
  return {.copies = count};
}

template <PictureVerdict (*verdictOn)(PictureFile&)>
Assessment assessBy(PictureFile& file) {
  return {verdictOn(file)};
}

/// The first frame on a white canvas. libvips ignores some canvas sizes, and makes the canvas black
/// if the GIF has no transparent colour.
VImage onCanvas(const VImage& image, PictureFile& gif) {
  const auto frame = firstFrameOf(gif);
  if (!frame) return image;
  const int width = std::max(frame->canvasWidth, frame->left + frame->width);
  const int height = std::max(frame->canvasHeight, frame->top + frame->height);
  return image.crop(frame->left, frame->top, frame->width, frame->height)
      .embed(frame->left, frame->top, width, height,
             VImage::option()->set("extend", VIPS_EXTEND_WHITE));
}

VImage withoutSpareBands(const VImage& image, PictureFile& tiff) {
  const int spare = countSpareSamples(tiff);
  if (spare <= 0 || spare >= image.bands()) return image;
  return image.extract_band(0, VImage::option()->set("n", image.bands() - spare));
}

constexpr std::string_view signaturesOfBMP[] = {"BM"sv};
constexpr std::string_view signaturesOfTIFF[] = {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv};

// Only these loaders are called. libvips has others, which also load drawings, documents and tables
// of numbers.
constexpr PictureFormat formats[] = {
    {.loader = "jpegload_source", .failsAtOnce = true, .givesUp = true, .assess = assessJPEG},
    {.loader = "pngload_source", .failsAtOnce = true},
    {.loader = "heifload_source", .whole = true, .assess = copies<3>},
    {.loader = "webpload_source", .whole = true, .assess = copies<4>},
    {.loader = "gifload_source",
     .whole = true,
     .warnsOnOpening = true,
     .assess = copies<3>,
     .shown = onCanvas},
    {.signatures = signaturesOfBMP,
     .warnsOnOpening = true,
     .assess = assessBy<verdictOnBMP>,
     .decoded = decodeBMP},
    {.loader = "tiffload_source",
     .signatures = signaturesOfTIFF,
     .assess = assessBy<verdictOnTIFF>,
     .decoded = decodeOldJpegOf,
     .shown = withoutSpareBands},
};

bool matches(const PictureFormat& format, std::string_view head) {
  if (format.signatures.empty()) {
    const auto source = vips::VSource::new_from_memory(head.data(), head.size());
    return vips_foreign_is_a_source(format.loader, source.get_source()) != 0;
  }
  return std::ranges::any_of(
      format.signatures, [&](std::string_view signature) { return head.starts_with(signature); });
}

}  // namespace

const PictureFormat* formatOf(std::string_view head) {
  if (head.empty()) return nullptr;  // libvips can't make an empty source
  const auto* format =
      std::ranges::find_if(formats, [&](const auto& row) { return matches(row, head); });
  return format == std::end(formats) ? nullptr : format;
}

VImage load(PictureFile& file, const PictureFormat& format) {
  VImage image = format.decoded ? format.decoded(file) : VImage();
  if (!image.is_null()) return image;
  VOption* const options = VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL);
  if (format.givesUp) options->set("unlimited", true);
  VImage::call(format.loader, options->set("source", file.source())->set("out", &image));
  // Loaders decode line by line, so several workers are no faster than one. With several, libvips
  // may report success before the last one fails.
  image.set(VIPS_META_CONCURRENCY, 1);
  return format.shown ? format.shown(image, file) : image;
}

}  // namespace orvelin
