#include "platform/core/picture.h"

#include <malloc.h>

#include <atomic>
#include <cstdint>
#include <utility>
#include <vips/vips8>

#include "platform/core/jpegmarkers.h"

namespace orvelin {

using vips::VImage;
using vips::VOption;
using namespace std::string_view_literals;

struct Picture::Format {
  const char* loader;
  std::string_view magic;  // how the content begins; libvips is asked where this is empty
  // Whether decoding fails as it begins or not at all: damage further on gives warnings and grey,
  // and the scans of a JPEG that has several are all read before the first line is given.
  bool failsAtOnce = false;
};

namespace {

// Room for a hundred megapixels of 16-bit colour with transparency; what claims more is refused.
constexpr std::int64_t mostBytes = std::int64_t{1} << 30;
constexpr int mostScans = 100;
constexpr std::size_t signatureSize = 4096;

// The only loaders that are ever called: libvips knows many more, which take drawings, documents
// and tables of numbers for pictures. ImageMagick's is asked for one format alone.
constexpr Picture::Format formats[] = {
    {"jpegload_buffer", "", true},  {"pngload_buffer", "", true},   {"heifload_buffer", ""},
    {"webpload_buffer", ""},        {"gifload_buffer", ""},         {"magickload_buffer", "BM"sv},
    {"tiffload_buffer", "II*\0"sv}, {"tiffload_buffer", "MM\0*"sv}, {"tiffload_buffer", "II+\0"sv},
    {"tiffload_buffer", "MM\0+"sv},
};

bool isJPEG(const Picture::Format& format) { return &format == &formats[0]; }

std::atomic<bool> damageSeen;

void noteDamage(const gchar*, GLogLevelFlags, const gchar* warning, gpointer) {
  // A profile or a remark that libvips says it is ignoring has cost no pixel.
  if (std::string_view(warning).find("ignoring") == std::string_view::npos) damageSeen = true;
}

/// libvips, started when it is first needed and stopped at the end of the program.
class Vips {
 public:
  static bool started() {
    static const Vips vips;
    return vips.started_;
  }

 private:
  Vips() : started_(VIPS_INIT("orvelin") == 0) {
    // Cached operations would give the old picture of a file that has changed.
    vips_cache_set_max(0);
    // A turned picture needs all its pixels in memory. Memory that went back to the system after
    // each picture would cost a tenth of the time of converting them all.
    ::mallopt(M_MMAP_THRESHOLD, 1 << 30);
    ::mallopt(M_TRIM_THRESHOLD, 128 << 20);
    g_log_set_handler("VIPS", G_LOG_LEVEL_WARNING, noteDamage, nullptr);
  }
  ~Vips() { vips_shutdown(); }
  bool started_;
};

const Picture::Format* formatOf(std::string_view head) {
  for (const auto& format : formats)
    if (format.magic.empty()
            ? vips_foreign_is_a_buffer(format.loader, head.data(), head.size()) != 0
            : head.starts_with(format.magic))
      return &format;
  return nullptr;
}

/// Opens a picture to be decoded once, from top to bottom.
VImage load(const std::string& bytes, const Picture::Format& format) {
  VImage image;
  VipsBlob* const blob = vips_blob_new(nullptr, bytes.data(), bytes.size());
  VOption* const options = VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL);
  // Otherwise a hundred warnings, which one damaged photograph can give, end a JPEG.
  if (isJPEG(format)) options->set("unlimited", true);
  options->set("buffer", blob)->set("out", &image);
  vips_area_unref(VIPS_AREA(blob));
  VImage::call(format.loader, options);
  // A decoder goes from line to line: a second worker only waits for the first, and libvips can
  // take the work for done, and well done, while the last of several is about to fail.
  image.set(VIPS_META_CONCURRENCY, 1);
  return image;
}

VImage onWhite(const VImage& image) {
  if (!image.has_alpha()) return image;
  const double most = image.format() == VIPS_FORMAT_USHORT ? 65535 : 255;
  const double white = image.interpretation() == VIPS_INTERPRETATION_CMYK ? 0 : most;  // no ink
  return image.flatten(VImage::option()->set("background", white)->set("max_alpha", most));
}

/// 8-bit sRGB, or grey where the picture is grey and has no profile.
VImage inScreenColours(const VImage& image) {
  if (image.get_typeof(VIPS_META_ICC_NAME) != 0) try {
      VImage shared = image.copy();
      shared.remove(VIPS_META_CONCURRENCY);  // colours are work for several
      return shared.icc_transform(
          "srgb", VImage::option()->set("embedded", true)->set("intent", VIPS_INTENT_PERCEPTUAL));
    } catch (const vips::VError&) {
      vips_error_clear();  // a profile that does not fit its picture is no profile
    }
  return image.colourspace(image.bands() < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB);
}

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
  if (!Vips::started()) return noPicture;
  const Format* format = formatOf(stream.Peek(signatureSize));
  if (!format) return noPicture;
  if (stream.Length() <= mostBytes) {
    auto picture = makeRef<Picture>(stream.Read(stream.Length()), *format, path);
    if (!stream.failed() && picture->reasonable()) return picture;
  }
  const Failure refused{"Image ignorée", path, "illisible ou trop grande"};
  report(refused);
  return refused;
}

Picture::Picture(std::string bytes, const Format& format, std::string path)
    : bytes_(std::move(bytes)), format_(format), path_(std::move(path)) {}

bool Picture::reasonable() const try {
  if (isJPEG(format_) && countScans(bytes_) > mostScans) return false;
  const VImage header = load(bytes_, format_);
  return VIPS_IMAGE_SIZEOF_IMAGE(header.get_image()) <= static_cast<guint64>(mostBytes);
} catch (const vips::VError&) {
  vips_error_clear();
  return false;
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
  damageSeen = false;
  const VImage image = upright(inScreenColours(onWhite(load(bytes_, format_))));
  const JpegTarget target(write);
  image.jpegsave_target(target.target(), VImage::option()
                                             ->set("Q", 90)
                                             ->set("subsample_mode", VIPS_FOREIGN_SUBSAMPLE_ON)
                                             ->set("strip", true));
  if (damageSeen) report({"Image à vérifier", path_, "sa lecture a donné des avertissements"});
  return true;
} catch (const vips::VError&) {
  vips_error_clear();
  return false;
}

}  // namespace orvelin
