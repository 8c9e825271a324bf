#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <sstream>
#include <vips/vips8>

#include "fuzz/fuzz.h"
#include "photos/scan.h"
#include "support.h"

namespace orvelin::test {

using vips::VImage;

class Pictures : public FileTest {
 protected:
  /// A file with these bytes; its name has no suffix.
  Ref<FolderItem> fileOf(const std::string& bytes) const {
    write(folder / "file", bytes);
    return item(folder / "file");
  }
  static std::string seed(const std::string& name) {
    return read(fs::path(ORVELIN_SEEDS) / "picture" / name);
  }
  /// Saves the picture with these bytes as JPEG.
  fs::path saved(const std::string& bytes) const {
    fs::remove(folder / "saved");
    item(folder / "saved")->SaveAsJPEG(fileOf(bytes)->OpenAsPicture());
    return folder / "saved";
  }
  /// Encodes a picture with libvips, which takes the suffix and options in `format`.
  std::string encoded(const VImage& image, const std::string& format) const {
    const std::string path = folder / "encoded";
    image.write_to_file((path + format).c_str());
    return read(path + format.substr(0, format.find('[')));
  }
  using Colours = std::vector<double>;
  /// Encodes a picture in each of `formats`, which are separated by spaces, converts it to JPEG,
  /// and compares the mean colours of its quarters, line by line.
  void expectColours(const VImage& image, const std::string& formats, const Colours& wanted,
                     double tolerance = 5) const {
    std::istringstream each(formats);
    for (std::string format; each >> format;) {
      SCOPED_TRACE(format);
      expectColours(encoded(image, format), wanted, tolerance);
    }
  }
  void expectColours(const std::string& bytes, const Colours& wanted, double tolerance = 5) const {
    const auto jpeg = VImage::new_from_file(saved(bytes).c_str());
    EXPECT_STREQ(jpeg.get_string("jpeg-chroma-subsample"), jpeg.bands() == 3 ? "4:2:0" : "4:4:4");
    EXPECT_EQ(jpeg.get_typeof(VIPS_META_EXIF_NAME) + jpeg.get_typeof(VIPS_META_ICC_NAME), 0U);
    EXPECT_GT(jpeg.width(), jpeg.height());
    const VImage four =
        jpeg.colourspace(VIPS_INTERPRETATION_sRGB).shrink(jpeg.width() / 2.0, jpeg.height() / 2.0);
    for (std::size_t i = 0; i < 12; ++i)
      EXPECT_NEAR(four.getpoint(i / 3 % 2, i > 5).at(i % 3), wanted.at(i), tolerance) << i;
  }
  const VImage deep = VImage::new_from_file(sample("vacances/montagne.png").c_str());
  const VImage scene = deep.colourspace(VIPS_INTERPRETATION_sRGB);
  const Colours colours{224, 0, 0, 0, 192, 0, 0, 0, 224, 224, 224, 0};
};

TEST_F(Pictures, KeepTheirColoursInEachFormat) {
  testing::internal::CaptureStderr();
  expectColours(scene, ".jpg[Q=95] .png .png[interlace] .webp[Q=95] .heic[Q=90] .avif[Q=90]",
                colours);
  expectColours(
      scene, ".gif .bmp .tif .tif[tile,compression=deflate] .tif[compression=jpeg] .tif[bigtiff]",
      colours);
  expectColours(deep, ".png .tif .heic[bitdepth=10,Q=90] .avif[bitdepth=12,Q=90]", colours);
  const VImage wide = scene.icc_transform("p3", VImage::option()->set("input_profile", "srgb"));
  expectColours(wide, ".jpg[Q=95] .png .tif .webp[lossless]", colours);
  expectColours(wide, ".heic[Q=98] .avif[Q=98]", colours, 12);

  const Colours topLeft{224, 0, 0, 255, 255, 255, 255, 255, 255, 255, 255, 255};
  const VImage mask = (VImage::black(80, 60) + 255).embed(0, 0, 160, 120).cast(VIPS_FORMAT_UCHAR);
  expectColours(scene.bandjoin(mask), ".png .tif .webp .gif .heic .avif .bmp", topLeft);
  expectColours(deep.bandjoin((mask * 257).cast(VIPS_FORMAT_USHORT)), ".png .tif", topLeft);

  for (const char* name : {"bmp-without-opacity", "bmp-all-transparent", "bmp-wrong-offset"})
    expectColours(seed(name), colours, 10);

  const Colours paler{176, 120, 120, 120, 168, 120, 120, 120, 176, 176, 176, 120};
  const VImage pale = (scene * .25 + 120).cast(VIPS_FORMAT_UCHAR);
  const VImage inks = pale.colourspace(VIPS_INTERPRETATION_CMYK);
  expectColours(inks, ".jpg[Q=95] .tif", paler, 7);
  expectColours(inks.bandjoin(0), ".tif", Colours(12, 255));
  expectColours(pale.colourspace(VIPS_INTERPRETATION_LABS), ".tif", paler);
  expectColours(pale.colourspace(VIPS_INTERPRETATION_LABQ), ".tif .tif[profile=p3]", paler);
  const VImage grey = (VImage::black(160, 120) + 100).cast(VIPS_FORMAT_UCHAR);
  expectColours(grey, ".jpg .png .tif[miniswhite] .tif[profile=p3]", Colours(12, 100));

  const auto as32Bits = [](const VImage& image) {
    return (image * 0x1010101).cast(VIPS_FORMAT_UINT);
  };
  expectColours(as32Bits(scene), ".tif .tif[profile=srgb]", colours);
  expectColours(as32Bits(scene.bandjoin(mask).bandjoin(0)), ".tif", topLeft);
  expectColours(as32Bits(inks), ".tif", paler, 7);
  expectColours(as32Bits(grey), ".tif", Colours(12, 100));
  const VImage linear = scene.colourspace(VIPS_INTERPRETATION_scRGB);
  expectColours(linear, ".tif .tif[profile=p3]", colours);
  expectColours(linear.bandjoin(mask / 255.0), ".tif[profile=p3]", topLeft);
  const VImage half = (VImage::black(160, 120) + .5).cast(VIPS_FORMAT_FLOAT);
  expectColours(half, ".tif .tif[profile=p3]", Colours(12, 188));
  expectColours(half.bandjoin(half), ".tif", Colours(12, 225));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Pictures, AreRotatedByTheirOrientation) {
  // For each orientation, the scene as a camera in that position sees it.
  const VImage& v = scene;
  const VImage rotated[] = {
      v,          v.fliphor(),          v.rot180(), v.flipver(), v.rot90().fliphor(),
      v.rot270(), v.rot270().fliphor(), v.rot90()};
  for (int orientation = 1; orientation <= 8; ++orientation) {
    VImage tagged = rotated[orientation - 1].copy();
    tagged.set(VIPS_META_ORIENTATION, orientation);
    encoded(tagged, ".jpg[Q=98]");  // adds an Exif block
    tagged = VImage::new_from_file((folder / "encoded.jpg").c_str()).copy_memory();
    expectColours(tagged, ".jpg[Q=95] .tif .png .webp", colours);
  }
  // HEIF files are rotated by the property irot; their Exif orientation, here 3, is ignored.
  for (const char* name : {"heic-turned", "avif-turned"}) expectColours(seed(name), colours, 10);
}

TEST_F(Pictures, InGifFilesHaveTheWholeCanvas) {
  constexpr std::uint16_t left = 20, top = 10;
  const std::array<std::uint16_t, 2> canvases[] = {{300, 200}, {640, 480}, {2100, 200}, {60, 40}};
  for (const auto& canvas : canvases) {
    std::string gif = encoded(scene, ".gif");
    std::memcpy(&gif[6], canvas.data(), 4);
    gif[gif.find("!\xf9") + 3] = 0;  // no colour is transparent
    gif.replace(gif.find({',', 0, 0, 0, 0}), 5, {',', left, 0, top, 0});
    const VImage image = VImage::new_from_file(saved(gif).c_str());
    EXPECT_EQ(image.width(), std::max<int>(canvas[0], left + 160));
    EXPECT_EQ(image.height(), std::max<int>(canvas[1], top + 120));
    EXPECT_NEAR(image.getpoint(left + 4, top + 4).at(0), 224, 10) << "red";
    EXPECT_NEAR(image.getpoint(left - 5, top - 5).at(1), 255, 10) << "white";
  }
}

TEST_F(Pictures, InCameraRawOrUnknownColoursAreRefused) {
  struct Entry {
    std::uint16_t tag, type;
    std::uint32_t count, value;
  };
  const auto tiffWith = [this](const VImage& image, const std::vector<Entry>& entries) {
    std::string tiff = encoded(image, ".tif");
    std::uint32_t directory = 0;
    std::memcpy(&directory, &tiff[4], 4);
    std::string changed = tiff.substr(directory);
    changed[0] = static_cast<char>(changed[0] + static_cast<int>(entries.size()));
    // The first entry of a tag takes precedence.
    changed.insert(2, reinterpret_cast<const char*>(entries.data()), 12 * entries.size());
    directory = static_cast<std::uint32_t>(tiff.size());
    std::memcpy(&tiff[4], &directory, 4);
    return tiff + changed;
  };
  const auto whyRefused = [&](const VImage& image, const std::vector<Entry>& entries) {
    const auto picture = fileOf(tiffWith(image, entries))->OpenAsPicture();
    return picture ? "" : picture.why().reason;
  };
  const Entry reduced{TIFFTAG_SUBFILETYPE, TIFF_LONG, 1, 1},
      divided{TIFFTAG_SUBIFD, TIFF_LONG, 1, 8};
  for (const auto& entry : {reduced, divided}) EXPECT_EQ(whyRefused(scene, {entry}), "");
  const std::string raw = "c’est le fichier brut d’un appareil photo";
  EXPECT_EQ(whyRefused(scene, {reduced, divided}), raw);
  EXPECT_EQ(whyRefused(scene, {{TIFFTAG_DNGVERSION, TIFF_BYTE, 4, 0x401}}), raw);
  const auto photometric = [](std::uint32_t value) {
    return Entry{TIFFTAG_PHOTOMETRIC, TIFF_SHORT, 1, value};
  };
  EXPECT_EQ(whyRefused(scene, {photometric(PHOTOMETRIC_CFA)}), raw);
  const std::string unknown = "ses couleurs sont d’un type inconnu";
  EXPECT_EQ(whyRefused(scene, {photometric(PHOTOMETRIC_YCBCR)}), unknown);
  EXPECT_EQ(whyRefused(scene.extract_band(0), {photometric(PHOTOMETRIC_SEPARATED)}), unknown);
  EXPECT_EQ(whyRefused(scene.colourspace(VIPS_INTERPRETATION_LABS).bandjoin(9), {}), unknown);
  EXPECT_EQ(whyRefused(scene.cast(VIPS_FORMAT_SHORT), {}), unknown);
  const VImage linear = scene.extract_band(0).cast(VIPS_FORMAT_FLOAT);
  EXPECT_EQ(whyRefused(linear, {photometric(PHOTOMETRIC_MINISWHITE)}), unknown);
  const Entry premultiplied{TIFFTAG_EXTRASAMPLES, TIFF_SHORT, 1, EXTRASAMPLE_ASSOCALPHA};
  EXPECT_EQ(whyRefused(linear.bandjoin(1), {premultiplied}), unknown);
  EXPECT_EQ(whyRefused(scene.bandjoin(255), {premultiplied}), "");
  const Entry selection{TIFFTAG_EXTRASAMPLES, TIFF_SHORT, 1, 0};
  expectColours(tiffWith(scene.bandjoin(0), {selection}), colours);
  const VImage inks = scene.colourspace(VIPS_INTERPRETATION_CMYK);
  EXPECT_EQ(whyRefused(inks.cast(VIPS_FORMAT_FLOAT), {}), unknown);

  std::string old = seed("old-jpeg-tiff");  // as scanners wrote it: the only strip is a JPEG file
  expectColours(old, colours, 10);
  old.replace(8, 3, "CR\2");
  EXPECT_EQ(fileOf(old)->OpenAsPicture().why().reason, raw);
}

TEST_F(Pictures, ThatAreDamagedAreAcceptedIfTheyDecode) {
  std::mt19937 random(1);
  int taken = 0;
  for (const auto& set : {fs::path(ORVELIN_SAMPLES), fs::path(ORVELIN_SEEDS) / "picture"})
    for (const auto& [name, whole] : contentsOf(set))
      for (std::size_t damage = 0; damage < 40; ++damage) {
        std::string bytes = whole.substr(0, damage % 5 ? whole.size() : random() % whole.size());
        const std::size_t reach =
            damage % 2 ? bytes.size() : std::min(bytes.size(), std::size_t{900});
        for (std::size_t flips = damage % 8; flips > 0 && reach > 0; --flips)
          bytes[random() % reach] = static_cast<char>(random());
        attempt(bytes, folder);
        if (fs::exists(folder / "saved")) ++taken;
      }
  EXPECT_GT(taken, 200);
}

TEST_F(Pictures, ThatNeedTooMuchMemoryAreRefused) {
  // Large pictures, for which libraries would use temporary files or threads, are accepted.
  for (const char* format : {".png", ".webp[lossless,effort=0]", ".bmp"})
    EXPECT_TRUE(fs::exists(saved(encoded(VImage::black(6000, 6000), format)))) << format;
  for (const char* name : {"png-65535", "bmp-16000"})
    EXPECT_EQ(fileOf(seed(name))->OpenAsPicture().why().reason, "trop grande") << name;

  const VImage noise = (scene + VImage::gaussnoise(160, 120)).cast(VIPS_FORMAT_UCHAR);
  for (const auto& bytes : {encoded(noise, ".jpg[interlace,Q=95]"), seed("separate-scans")}) {
    EXPECT_TRUE(ScanState::isOpenablePicture(fileOf(bytes)));
    std::string buffered = bytes.substr(0, bytes.find("\xff\xda", bytes.find("\xff\xda") + 2));
    EXPECT_TRUE(fileOf(buffered)->OpenAsPicture());
    const auto size = std::min(buffered.find("\xff\xc2"), buffered.find("\xff\xc0")) + 5;
    buffered.replace(size, 4, "\x65\x90\x65\x90");  // 26,000 x 26,000 pixels
    EXPECT_FALSE(fileOf(buffered)->OpenAsPicture());
    const auto scan = bytes.rfind("\xff\xda");
    std::string endless = bytes.substr(0, bytes.size() - 2);
    for (int i = 0; i < 3000; ++i) endless += bytes.substr(scan, bytes.size() - 2 - scan);
    EXPECT_FALSE(ScanState::isOpenablePicture(fileOf(endless + "\xff\xd9")));
  }
}

}  // namespace orvelin::test
