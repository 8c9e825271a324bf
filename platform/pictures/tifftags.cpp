#include "platform/pictures/tifftags.h"

#include <tiffio.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>
#include <vips/vips8>

#include "platform/pictures/colours.h"

namespace orvelin {

using vips::VImage;

namespace {

struct TiffStream {
  PictureFile& file;
  std::uint64_t at = 0;
};

tmsize_t readFrom(thandle_t handle, void* buffer, tmsize_t count) {
  auto& [file, at] = *static_cast<TiffStream*>(handle);
  const std::size_t got =
      file.read(at, static_cast<char*>(buffer), static_cast<std::size_t>(count));
  at += got;
  return static_cast<tmsize_t>(got);
}

toff_t seekIn(thandle_t handle, toff_t offset, int whence) {
  auto& [file, at] = *static_cast<TiffStream*>(handle);
  if (whence == SEEK_CUR) offset += at;
  if (whence == SEEK_END) offset += file.size();
  return at = offset;
}

toff_t sizeOf(thandle_t handle) { return static_cast<TiffStream*>(handle)->file.size(); }

std::unique_ptr<TIFF, decltype(&TIFFClose)> open(TiffStream& stream) {
  const auto ignoreWrite = [](thandle_t, void*, tmsize_t) -> tmsize_t { return -1; };
  const auto ignoreClose = [](thandle_t) { return 0; };
  return {TIFFClientOpen("", "r", &stream, readFrom, ignoreWrite, seekIn, ignoreClose, sizeOf,
                         nullptr, nullptr),
          TIFFClose};
}

/// The value of a tag that has one number; 0 if it is missing.
template <class Number>
Number numberOf(TIFF* tiff, std::uint32_t tag) {
  Number number = 0;
  TIFFGetField(tiff, tag, &number);
  return number;
}

bool isCameraRaw(TIFF* tiff) {
  std::uint16_t count = 0;
  const void* values = nullptr;
  const bool reduced =
      (numberOf<std::uint32_t>(tiff, TIFFTAG_SUBFILETYPE) & FILETYPE_REDUCEDIMAGE) != 0;
  return (reduced && TIFFGetField(tiff, TIFFTAG_SUBIFD, &count, &values) != 0) ||
         TIFFGetField(tiff, TIFFTAG_DNGVERSION, &values) != 0 ||
         numberOf<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_CFA;
}

/// The kinds of the samples after the colours.
std::span<const std::uint16_t> extraSamplesOf(TIFF* tiff) {
  std::uint16_t count = 0;
  const std::uint16_t* kinds = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) == 0) return {};
  return {kinds, count};
}

/// Whether colours are premultiplied by transparency, in numbers for which libvips doesn't undo
/// that correctly.
bool isPremultiplied(TIFF* tiff) {
  const bool inks = numberOf<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_SEPARATED;
  const auto extra = extraSamplesOf(tiff);
  return !extra.empty() && extra[0] == EXTRASAMPLE_ASSOCALPHA &&
         numberOf<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE) > (inks ? 8 : 16);
}

bool isOldJpeg(TIFF* tiff) {
  return numberOf<std::uint16_t>(tiff, TIFFTAG_COMPRESSION) == COMPRESSION_OJPEG;
}

std::uint64_t pixelsOf(TIFF* tiff) {
  return std::uint64_t{numberOf<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH)} *
         numberOf<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH);
}

/// Whether libvips would misread the colours: YCbCr as RGB, or white as black.
bool isMisread(TIFF* tiff) {
  switch (numberOf<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC)) {
    case PHOTOMETRIC_YCBCR:
      return !isOldJpeg(tiff) &&
             numberOf<std::uint16_t>(tiff, TIFFTAG_COMPRESSION) != COMPRESSION_JPEG;
    case PHOTOMETRIC_MINISWHITE:
      return numberOf<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_IEEEFP;
    default:
      return false;
  }
}

}  // namespace

PictureVerdict verdictOnTIFF(PictureFile& tiff) {
  constexpr std::uint64_t rawMarkAt = 8;
  if (tiff.some(rawMarkAt).starts_with("CR\2")) return PictureVerdict::CameraRaw;
  TiffStream stream{tiff};
  const auto opened = open(stream);
  if (!opened) return PictureVerdict::Good;
  if (isCameraRaw(opened.get())) return PictureVerdict::CameraRaw;
  if (isMisread(opened.get()) || isPremultiplied(opened.get()))
    return PictureVerdict::UnknownColours;
  constexpr std::uint64_t maxPixels = maxPictureBytes / 8;  // libtiff's copy, and ours
  const bool fits = !isOldJpeg(opened.get()) || pixelsOf(opened.get()) <= maxPixels;
  return fits ? PictureVerdict::Good : PictureVerdict::TooLarge;
}

int countSpareSamples(PictureFile& tiff) {
  TiffStream stream{tiff};
  const auto opened = open(stream);
  if (!opened) return 0;
  const auto extra = extraSamplesOf(opened.get());
  const bool transparency =
      !extra.empty() && (extra[0] == EXTRASAMPLE_ASSOCALPHA || extra[0] == EXTRASAMPLE_UNASSALPHA);
  return static_cast<int>(extra.size()) - (transparency ? 1 : 0);
}

VImage decodeOldJpegOf(PictureFile& tiff) {
  TiffStream stream{tiff};
  const auto opened = open(stream);
  if (!opened || !isOldJpeg(opened.get())) return {};
  const auto width = numberOf<std::uint32_t>(opened.get(), TIFFTAG_IMAGEWIDTH);
  const auto height = numberOf<std::uint32_t>(opened.get(), TIFFTAG_IMAGELENGTH);
  const int orientation = std::max<int>(numberOf<std::uint16_t>(opened.get(), TIFFTAG_ORIENTATION),
                                        ORIENTATION_TOPLEFT);
  std::vector<std::uint32_t> pixels(pixelsOf(opened.get()));
  // In the orientation of the file, because libtiff can't rotate by 90 degrees.
  if (TIFFReadRGBAImageOriented(opened.get(), width, height, pixels.data(), orientation, 1) == 0)
    throw vips::VError();
  VImage image = fromRGBA(std::move(pixels), static_cast<int>(width), static_cast<int>(height));
  image.set(VIPS_META_ORIENTATION, orientation);
  return image;
}

}  // namespace orvelin
