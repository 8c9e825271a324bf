#include "platform/pictures/colours.h"

#include <memory>
#include <utility>
#include <vector>
#include <vips/vips8>

namespace orvelin {

using vips::VImage;

namespace {

bool isCMYK(const VImage& image) { return image.interpretation() == VIPS_INTERPRETATION_CMYK; }

bool isGrey(const VImage& image) {
  return image.interpretation() == VIPS_INTERPRETATION_B_W ||
         image.interpretation() == VIPS_INTERPRETATION_GREY16;
}

VImage onWhite(const VImage& image) {
  if (!image.has_alpha()) return image;
  const double max = image.format() == VIPS_FORMAT_FLOAT    ? 1
                     : image.format() == VIPS_FORMAT_USHORT ? 65535
                                                            : 255;
  const double white = isCMYK(image) ? 0 : max;  // no ink
  return image.flatten(VImage::option()->set("background", white)->set("max_alpha", max));
}

/// Whether the colour space is independent of devices, so that no profile applies.
bool isAbsolute(const VImage& image) {
  switch (image.interpretation()) {
    case VIPS_INTERPRETATION_LAB:
    case VIPS_INTERPRETATION_LABQ:
    case VIPS_INTERPRETATION_LABS:
    case VIPS_INTERPRETATION_XYZ:
      return true;
    default:
      return false;
  }
}

VImage withoutProfile(const VImage& image) {
  VImage bare = image.copy();
  bare.remove(VIPS_META_ICC_NAME);
  return bare;
}

/// Converts formats that occur only in TIFF to 8-bit or 16-bit integers. Floating point is linear
/// from 0 to 1 with sRGB primaries, even if there is a profile.
VImage toIntegers(const VImage& image) {
  if (isAbsolute(image)) {
    // Direct conversion from 8-bit Lab causes banding.
    const VImage lab = image.colourspace(VIPS_INTERPRETATION_LAB);
    return withoutProfile(lab.colourspace(VIPS_INTERPRETATION_sRGB));
  }
  if (image.format() == VIPS_FORMAT_UINT) {
    const auto kind = isGrey(image)   ? VIPS_INTERPRETATION_GREY16
                      : isCMYK(image) ? VIPS_INTERPRETATION_CMYK
                                      : VIPS_INTERPRETATION_RGB16;
    return image.cast(VIPS_FORMAT_USHORT, VImage::option()->set("shift", true))
        .copy(VImage::option()->set("interpretation", kind));
  }
  if (image.format() == VIPS_FORMAT_FLOAT) {
    const VImage opaque = onWhite(image);
    const VImage colours = isGrey(opaque) ? VImage::bandjoin(std::vector(3, opaque)) : opaque;
    return withoutProfile(
        colours.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_scRGB))
            .colourspace(VIPS_INTERPRETATION_sRGB));
  }
  return image;
}

}  // namespace

VImage fromRGBA(std::vector<std::uint32_t> pixels, int width, int height) {
  auto kept = std::make_unique<std::vector<std::uint32_t>>(std::move(pixels));
  const VImage image = VImage::new_from_memory(kept->data(), kept->size() * sizeof(kept->front()),
                                               width, height, 4, VIPS_FORMAT_UCHAR);
  const auto release = [](gpointer data) {
    std::unique_ptr<std::vector<std::uint32_t>>(static_cast<std::vector<std::uint32_t>*>(data));
  };
  g_object_set_data_full(G_OBJECT(image.get_image()), "pixels", kept.release(), release);
  return image.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

bool hasKnownColours(const VImage& image) {
  if (image.interpretation() == VIPS_INTERPRETATION_MULTIBAND) return false;
  if (image.coding() == VIPS_CODING_LABQ) return true;
  // libvips misreads the transparency of some Lab files.
  if (isAbsolute(image) && image.bands() > 3) return false;
  switch (image.format()) {
    case VIPS_FORMAT_UCHAR:
    case VIPS_FORMAT_USHORT:
      return true;
    case VIPS_FORMAT_UINT:
      return !isAbsolute(image);
    case VIPS_FORMAT_SHORT:
      return image.interpretation() == VIPS_INTERPRETATION_LABS;
    case VIPS_FORMAT_FLOAT:
      return !isCMYK(image);
    default:
      return false;
  }
}

VImage toScreen(const VImage& image) {
  const VImage opaque = onWhite(toIntegers(image));
  if (opaque.get_typeof(VIPS_META_ICC_NAME) != 0) try {
      const VImage shared = opaque.copy();
      shared.remove(VIPS_META_CONCURRENCY);  // convert colours with all workers
      return shared.icc_transform(
          "srgb", VImage::option()->set("embedded", true)->set("intent", VIPS_INTENT_PERCEPTUAL));
    } catch (const vips::VError&) {
      vips_error_clear();  // ignore a profile that doesn't fit the picture
    }
  return opaque.colourspace(isGrey(opaque) ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB);
}

}  // namespace orvelin
