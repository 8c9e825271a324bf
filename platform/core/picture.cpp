#include "platform/core/picture.h"

#include <cstdint>
#include <utility>
#include <vips/vips8>

#include "platform/core/colours.h"
#include "platform/core/jpegmarkers.h"
#include "platform/core/pictureformats.h"
#include "platform/core/vipsprocess.h"

namespace orvelin {

using vips::VImage;

namespace {

// Room for a hundred megapixels of 16-bit colour with transparency; larger pictures are refused.
constexpr std::int64_t mostBytes = std::int64_t{1} << 30;

VImage upright(const VImage& image) {
  if (vips_image_get_orientation(image.get_image()) <= 1) return image;
  return image.copy_memory().autorot();
}

/// Hands encoded bytes on to `write`, with the JFIF segment that libvips leaves out.
class JpegTarget {
 public:
  explicit JpegTarget(const Picture::Write& write)
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
    if (std::exchange(begun_, true) || bytes.substr(6, 4) == "JFIF") return write_(bytes);
    const std::string_view start = bytes.substr(0, 2);
    return write_(start) && write_(jfifSegment) && write_(bytes.substr(start.size()));
  }

  const Picture::Write& write_;
  VipsTargetCustom* custom_;
  vips::VTarget target_;
  bool begun_ = false;
};

}  // namespace

Ref<Picture> Picture::read(BinaryStream& stream, const std::string& path) {
  const Failure noPicture{"Impossible d'ouvrir l'image", path, "ce n'est pas une image connue"};
  if (!startVips()) return noPicture;
  const PictureFormat* format = formatOf(stream.Peek(signatureSize));
  if (!format) return noPicture;
  Failure refused{"Image ignorée", path, "trop grande"};
  if (stream.Length() <= mostBytes) {
    auto picture = makeRef<Picture>(stream.Read(stream.Length()), *format, path);
    refused.reason = stream.failed() ? "illisible" : picture->whyRefused();
    if (refused.reason.empty()) return picture;
  }
  report(refused);
  return refused;
}

Picture::Picture(std::string bytes, const PictureFormat& format, std::string path)
    : bytes_(std::move(bytes)), format_(format), path_(std::move(path)) {}

std::string Picture::whyRefused() const try {
  std::string why = format_.whyRefused ? format_.whyRefused(bytes_) : "";
  if (!why.empty()) return why;
  const VImage header = load(bytes_, format_);
  if (VIPS_IMAGE_SIZEOF_IMAGE(header.get_image()) > static_cast<guint64>(mostBytes))
    return "trop grande";
  return hasKnownTones(header) ? "" : "ses couleurs sont d'un type inconnu";
} catch (const vips::VError&) {
  vips_error_clear();
  return "illisible";
}

bool Picture::decodes() const try {
  VImage image = load(bytes_, format_);
  if (format_.failsAtOnce) image = image.crop(0, 0, 1, 1);
  const auto discard = [](VipsRegion*, VipsRect*, void*) { return 0; };
  if (vips_sink_disc(image.get_image(), discard, nullptr) != 0) throw vips::VError();
  return true;
} catch (const vips::VError&) {
  vips_error_clear();
  report({"Image ignorée", path_, "illisible"});
  return false;
}

bool Picture::encodeAsJPEG(const Write& write) const try {
  const DecoderWarnings warnings;
  std::size_t harmless = 0;
  {  // the image is freed before the warnings are counted
    const VImage image = forScreen(load(bytes_, format_));
    if (!format_.warnsOnOpening) harmless = warnings.count();
    const JpegTarget target(write);
    upright(image).jpegsave_target(target.target(),
                                   VImage::option()
                                       ->set("Q", 90)
                                       ->set("subsample_mode", VIPS_FOREIGN_SUBSAMPLE_ON)
                                       ->set("strip", true));
  }
  if (warnings.count() > harmless)
    report({"Image à vérifier", path_, "sa lecture a donné des avertissements"});
  return true;
} catch (const vips::VError&) {
  vips_error_clear();
  return false;
}

}  // namespace orvelin
