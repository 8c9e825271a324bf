#include "platform/pictures/decoder.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <utility>
#include <vips/vips8>

#include "platform/pictures/colours.h"
#include "platform/pictures/jpegmarkers.h"

namespace orvelin {

using vips::VImage;

namespace {

constexpr int maxJpegSide = 65500;  // in libjpeg

bool isRotated(const VImage& image) { return vips_image_get_orientation(image.get_image()) > 1; }

VImage upright(const VImage& image) {
  return isRotated(image) ? image.copy_memory().autorot() : image;
}

/// The maximum memory in bytes that decoding needs: the size of the file, the decoder's copies of
/// the picture, and the 8-bit pixels if it must be rotated.
std::uint64_t memoryFor(const VImage& image, std::uint64_t fileSize, int copies) {
  const auto product = [](auto... sizes) { return (static_cast<std::uint64_t>(sizes) * ...); };
  const std::uint64_t pixels = product(image.width(), image.height());
  const std::uint64_t held = product(pixels, image.bands(), vips_format_sizeof(image.format()));
  return fileSize + product(held, copies) + (isRotated(image) ? 3 * pixels : 0);
}

/// Passes encoded bytes to `write` and inserts the JFIF segment if libvips omits it.
class JpegTarget {
 public:
  explicit JpegTarget(const WriteJpeg& write)
      : write_(write), custom_(vips_target_custom_new()), target_(VIPS_TARGET(custom_)) {
    g_signal_connect(custom_, "write", G_CALLBACK(&JpegTarget::onWrite), this);
  }
  const vips::VTarget& target() const { return target_; }

 private:
  static gint64 onWrite(VipsTargetCustom*, const void* data, gint64 size, JpegTarget* self) {
    return self->passOn({static_cast<const char*>(data), static_cast<std::size_t>(size)}) ? size
                                                                                          : -1;
  }
  bool passOn(std::string_view bytes) {
    if (std::exchange(begun_, true) || bytes.substr(0, 10).ends_with("JFIF")) return write_(bytes);
    const std::string_view start = bytes.substr(0, 2);
    return write_(start) && write_(jfifSegment) && write_(bytes.substr(start.size()));
  }

  const WriteJpeg& write_;
  VipsTargetCustom* custom_;
  vips::VTarget target_;
  bool begun_ = false;
};

/// Returns the result of `step`; `Unreadable` if it throws.
template <class Step>
PictureVerdict verdictOf(Step step) try {
  return step();
} catch (const std::exception&) {
  vips_error_clear();
  return PictureVerdict::Unreadable;
}

}  // namespace

Decoder::Decoder(Descriptor file)
    : file_(std::move(file)), verdict_(verdictOf([this] { return inspect(); })) {}

PictureAnswer Decoder::perform(PictureOperation operation, const WriteJpeg& write) {
  const PictureVerdict verdict = verdictOf([&] { return verdictAfter(operation, write); });
  // Ignore the verdict after a failed read: some decoders take the failure for the end of the file.
  if (file_.error() != 0) return {PictureVerdict::NotRead, file_.error()};
  return {verdict};
}

PictureVerdict Decoder::verdictAfter(PictureOperation operation, const WriteJpeg& write) {
  if (verdict_ != PictureVerdict::Good || operation == PictureOperation::Inspect) return verdict_;
  if (operation == PictureOperation::Decode) {
    decode();
    return PictureVerdict::Good;
  }
  if (std::max(image_.width(), image_.height()) > maxJpegSide) return PictureVerdict::TooLarge;
  encode(write);
  return warnings_.any() ? PictureVerdict::Suspect : PictureVerdict::Good;
}

PictureVerdict Decoder::inspect() {
  format_ = formatOf(file_.some(0));
  if (!format_) return PictureVerdict::NoPicture;
  if (file_.size() > maxPictureBytes) return PictureVerdict::TooLarge;
  if (format_->whole && !file_.readWhole()) return PictureVerdict::Unreadable;
  const Assessment assessment = format_->assess(file_);
  if (assessment.verdict != PictureVerdict::Good) return assessment.verdict;
  image_ = load(file_, *format_);
  if (memoryFor(image_, file_.size(), assessment.copies) > maxPictureBytes)
    return PictureVerdict::TooLarge;
  return hasKnownColours(image_) ? PictureVerdict::Good : PictureVerdict::UnknownColours;
}

void Decoder::decode() {
  if (format_->failsAtOnce) image_ = image_.crop(0, 0, 1, 1);
  const auto discard = [](VipsRegion*, VipsRect*, void*) { return 0; };
  if (vips_sink_disc(image_.get_image(), discard, nullptr) != 0) throw vips::VError();
}

void Decoder::encode(const WriteJpeg& write) {
  const VImage image = toScreen(std::exchange(image_, VImage()));
  if (!format_->warnsOnOpening) warnings_.ignorePast();
  const JpegTarget target(write);
  upright(image).jpegsave_target(target.target(),
                                 VImage::option()
                                     ->set("Q", 90)
                                     ->set("subsample_mode", VIPS_FOREIGN_SUBSAMPLE_ON)
                                     ->set("strip", true));
}

}  // namespace orvelin
