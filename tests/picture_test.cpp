#include <algorithm>
#include <sstream>
#include <vips/vips8>

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
  /// Why the picture with these bytes is refused; empty if it is accepted.
  std::string whyRefused(const std::string& bytes) const {
    const auto picture = fileOf(bytes)->OpenAsPicture();
    return picture ? "" : picture.why().reason;
  }
  /// Saves the picture with these bytes as JPEG. If it is refused, there is no such file.
  fs::path saved(const std::string& bytes) const {
    fs::remove(folder / "saved");
    if (const auto picture = fileOf(bytes)->OpenAsPicture())
      item(folder / "saved")->SaveAsJPEG(picture);
    return folder / "saved";
  }
  /// Encodes a picture with libvips, which takes the suffix and options in `format`.
  std::string encoded(const VImage& image, const std::string& format) const {
    const std::string path = folder / "encoded";
    image.write_to_file((path + format).c_str());
    return read(path + format.substr(0, format.find('[')));
  }
  using Colours = std::vector<double>;
  /// Encodes a picture in each of `formats`, which are separated by spaces, and calls the next
  /// function. `name` says in failures what the picture is.
  void expectColours(const std::string& name, const VImage& image, const std::string& formats,
                     const Colours& wanted, double tolerance = 5) const {
    SCOPED_TRACE(name);
    std::istringstream each(formats);
    for (std::string format; each >> format;)
      expectColours(format, encoded(image, format), wanted, tolerance);
  }
  /// Converts a picture to JPEG, and compares the mean colours of its quarters, line by line. The
  /// tolerance is for what lossy formats and conversions of colours lose.
  void expectColours(const std::string& name, const std::string& bytes, const Colours& wanted,
                     double tolerance = 5) const {
    SCOPED_TRACE(name);
    ASSERT_TRUE(fs::exists(saved(bytes)));
    const auto jpeg = VImage::new_from_file((folder / "saved").c_str());
    EXPECT_STREQ(jpeg.get_string("jpeg-chroma-subsample"), jpeg.bands() == 3 ? "4:2:0" : "4:4:4");
    EXPECT_EQ(jpeg.get_typeof(VIPS_META_EXIF_NAME) + jpeg.get_typeof(VIPS_META_ICC_NAME), 0U);
    EXPECT_GT(jpeg.width(), jpeg.height());
    const VImage four =
        jpeg.colourspace(VIPS_INTERPRETATION_sRGB).shrink(jpeg.width() / 2.0, jpeg.height() / 2.0);
    for (std::size_t i = 0; i < 12; ++i)
      EXPECT_NEAR(four.getpoint(i / 3 % 2, i > 5).at(i % 3), wanted.at(i), tolerance)
          << "RGB"[i % 3] << " of quarter " << i / 3 + 1;
  }
  const VImage deep = VImage::new_from_file(sample("vacances/montagne.png").c_str());
  const VImage scene = deep.colourspace(VIPS_INTERPRETATION_sRGB);
  const Colours colours{224, 0, 0, 0, 192, 0, 0, 0, 224, 224, 224, 0};
};

TEST_F(Pictures, KeepTheirColoursInEachFormat) {
  testing::internal::CaptureStderr();
  expectColours("8-bit", scene,
                ".jpg[Q=95] .png .png[interlace] .webp[Q=95] .heic[Q=90] .avif[Q=90] .gif .bmp "
                ".tif .tif[tile,compression=deflate] .tif[compression=jpeg] .tif[bigtiff]",
                colours);
  expectColours("deep", deep, ".png .tif .heic[bitdepth=10,Q=90] .avif[bitdepth=12,Q=90]", colours);
  const VImage wide = scene.icc_transform("p3", VImage::option()->set("input_profile", "srgb"));
  expectColours("P3", wide, ".jpg[Q=95] .png .tif .webp[lossless]", colours);
  expectColours("P3", wide, ".heic[Q=98] .avif[Q=98]", colours, 12);

  const Colours topLeft{224, 0, 0, 255, 255, 255, 255, 255, 255, 255, 255, 255};
  const VImage mask = (VImage::black(80, 60) + 255).embed(0, 0, 160, 120).cast(VIPS_FORMAT_UCHAR);
  expectColours("masked", scene.bandjoin(mask), ".png .tif .webp .gif .heic .avif .bmp", topLeft);
  expectColours("masked, deep", deep.bandjoin((mask * 257).cast(VIPS_FORMAT_USHORT)), ".png .tif",
                topLeft);

  for (const char* name : {"bmp-without-opacity", "bmp-all-transparent", "bmp-wrong-offset",
                           "old-jpeg-tiff", "tiff-selection"})
    expectColours(name, seed(name), colours, 10);

  const Colours paler{176, 120, 120, 120, 168, 120, 120, 120, 176, 176, 176, 120};
  const VImage pale = (scene * .25 + 120).cast(VIPS_FORMAT_UCHAR);
  const VImage inks = pale.colourspace(VIPS_INTERPRETATION_CMYK);
  expectColours("CMYK", inks, ".jpg[Q=95] .tif", paler, 7);
  expectColours("CMYK, transparent", inks.bandjoin(0), ".tif", Colours(12, 255));
  expectColours("Lab", pale.colourspace(VIPS_INTERPRETATION_LABS), ".tif", paler);
  expectColours("LabQ", pale.colourspace(VIPS_INTERPRETATION_LABQ), ".tif .tif[profile=p3]", paler);
  const VImage grey = (VImage::black(160, 120) + 100).cast(VIPS_FORMAT_UCHAR);
  expectColours("grey", grey, ".jpg .png .tif[miniswhite] .tif[profile=p3]", Colours(12, 100));

  const auto as32Bits = [](const VImage& image) {
    return (image * 0x1010101).cast(VIPS_FORMAT_UINT);
  };
  expectColours("32 bits", as32Bits(scene), ".tif .tif[profile=srgb]", colours);
  expectColours("32 bits, masked", as32Bits(scene.bandjoin(mask).bandjoin(0)), ".tif", topLeft);
  expectColours("32 bits, CMYK", as32Bits(inks), ".tif", paler, 7);
  expectColours("32 bits, grey", as32Bits(grey), ".tif", Colours(12, 100));
  const VImage linear = scene.colourspace(VIPS_INTERPRETATION_scRGB);
  expectColours("linear", linear, ".tif .tif[profile=p3]", colours);
  expectColours("linear, masked", linear.bandjoin(mask / 255.0), ".tif[profile=p3]", topLeft);
  const VImage half = (VImage::black(160, 120) + .5).cast(VIPS_FORMAT_FLOAT);
  // In sRGB a linear .5 is 188. A half of that on white is a linear .75, and 225.
  expectColours("linear, grey", half, ".tif .tif[profile=p3]", Colours(12, 188));
  expectColours("linear, grey, masked", half.bandjoin(half), ".tif", Colours(12, 225));
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
    const std::string name = "orientation " + std::to_string(orientation);
    expectColours(name, tagged, ".jpg[Q=95] .tif .png .webp", colours);
  }
  // HEIF files are rotated by the property irot; their Exif orientation, here 3, is ignored.
  for (const char* name : {"heic-turned", "avif-turned"}) expectColours(name, seed(name), colours);
}

TEST_F(Pictures, InGifFilesHaveTheWholeCanvas) {
  // The frame, 64 x 32, is at 16, 16.
  for (const auto& [name, width, height] : {std::tuple{"gif-larger-canvas", 100, 60},
                                            {"gif-smaller-canvas", 16 + 64, 16 + 32},
                                            {"gif-screen", 640, 480},
                                            {"gif-wide", 2100, 200}}) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(fs::exists(saved(seed(name))));
    const VImage image = VImage::new_from_file((folder / "saved").c_str());
    EXPECT_EQ(image.width(), width);
    EXPECT_EQ(image.height(), height);
    EXPECT_NEAR(image.getpoint(16 + 8, 16 + 8).at(0), 224, 10) << "red";
    EXPECT_NEAR(image.getpoint(8, 8).at(1), 255, 10) << "white";
  }
}

TEST_F(Pictures, InCameraRawOrUnknownColoursAreRefused) {
  for (const char* name : {"raw-tiff", "tiff-dng", "tiff-cfa", "cr2"})
    EXPECT_EQ(whyRefused(seed(name)), "c’est le fichier brut d’un appareil photo") << name;
  for (const char* name : {"tiff-ycbcr", "tiff-one-ink", "tiff-float-inks", "tiff-float-inverted",
                           "tiff-float-premultiplied", "tiff-lab-opacity", "tiff-signed"})
    EXPECT_EQ(whyRefused(seed(name)), "ses couleurs sont d’un type inconnu") << name;
  for (const char* name : {"tiff-reduced", "tiff-divided", "tiff-premultiplied", "arithmetic"})
    EXPECT_EQ(whyRefused(seed(name)), "") << name;
}

TEST_F(Pictures, ThatNeedTooMuchMemoryAreRefused) {
  // Large pictures, for which libraries would use temporary files or threads, are accepted.
  for (const char* format : {".png", ".webp[lossless,effort=0]", ".bmp"})
    EXPECT_TRUE(fs::exists(saved(encoded(VImage::black(6000, 6000), format)))) << format;
  for (const char* name : {"png-65535", "bmp-16000"})
    EXPECT_EQ(whyRefused(seed(name)), "trop grande") << name;

  const std::string scanMarker = "\xff\xda";
  for (const char* name : {"interlaced", "separate-scans"}) {
    SCOPED_TRACE(name);
    const std::string bytes = seed(name);
    EXPECT_TRUE(ScanState::isOpenablePicture(fileOf(bytes)));
    std::string oneScan = bytes.substr(0, bytes.find(scanMarker, bytes.find(scanMarker) + 2));
    EXPECT_EQ(whyRefused(oneScan), "");
    const auto frame = std::min(oneScan.find("\xff\xc2"), oneScan.find("\xff\xc0"));
    // Of 26,000 x 26,000 pixels, one copy is within the limit, three are not.
    oneScan.replace(frame + 5, 4, "\x65\x90\x65\x90");  // after marker, length and precision
    EXPECT_EQ(whyRefused(oneScan), "trop grande");
    const auto lastScan = bytes.rfind(scanMarker), end = bytes.size() - 2;
    // With these there are more scans than the limit of 100.
    std::string endless = bytes.substr(0, end);
    for (int scans = 0; scans < 100; ++scans) endless += bytes.substr(lastScan, end - lastScan);
    EXPECT_EQ(whyRefused(endless + "\xff\xd9"), "trop longue à décoder");
  }
}

}  // namespace orvelin::test
