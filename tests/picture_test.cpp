#include <random>
#include <vips/vips8>

#include "photos/scan.h"
#include "platform/core/jpegmarkers.h"
#include "support.h"

namespace orvelin::test {

using vips::VImage;

class Pictures : public FileTest {
 protected:
  /// A file of these bytes, under a name without a format.
  Ref<FolderItem> fileOf(const std::string& bytes) const {
    write(folder / "file", bytes);
    return item(folder / "file");
  }
  static bool decodesCompletely(const std::string& bytes) try {
    const char* options = bytes.starts_with("\xff\xd8") ? "[unlimited]" : "";
    auto image = VImage::new_from_buffer(bytes.data(), bytes.size(), options);
    image.set(VIPS_META_CONCURRENCY, 1);  // several workers can let a failure pass
    image.copy_memory();
    return true;
  } catch (const vips::VError&) {
    return false;
  }
  /// The picture of these bytes, saved as JPEG.
  fs::path saved(const std::string& bytes) const {
    fs::remove(folder / "saved");
    item(folder / "saved")->SaveAsJPEG(fileOf(bytes)->OpenAsPicture());
    return folder / "saved";
  }
  /// A picture in another format, as libvips writes it.
  std::string encoded(const VImage& image, const std::string& format) const {
    const std::string path = folder / "encoded";
    image.write_to_file((path + format).c_str());
    return read(path + format.substr(0, format.find('[')));
  }
  /// Expects these mean colours in the quarters of a saved picture, from the top left on.
  static void expectColours(const fs::path& path, const std::vector<double>& wanted) {
    const auto image = VImage::new_from_file(path.c_str()).colourspace(VIPS_INTERPRETATION_sRGB);
    const VImage four = image.shrink(image.width() / 2.0, image.height() / 2.0);
    for (std::size_t i = 0; i < 12; ++i)
      EXPECT_NEAR(four.getpoint(i / 3 % 2, i > 5).at(i % 3), wanted.at(i), 5) << i;
  }
  const VImage scene = VImage::new_from_file(sample("vacances/montagne.png").c_str());
  const std::vector<double> colours{224, 0, 0, 0, 192, 0, 0, 0, 224, 224, 224, 0};
};

TEST_F(Pictures, AreTurnedByEachOfTheEightOrientations) {
  // What a camera held so writes: the scene turned the other way.
  const VImage& v = scene;
  const VImage turned[] = {
      v,          v.fliphor(),          v.rot180(), v.flipver(), v.rot90().fliphor(),
      v.rot270(), v.rot270().fliphor(), v.rot90()};
  for (int orientation = 1; orientation <= 8; ++orientation) {
    VImage tagged = turned[orientation - 1].copy();
    tagged.set(VIPS_META_ORIENTATION, orientation);
    for (const char* format : {".jpg[Q=95,profile=srgb]", ".tif"}) {
      SCOPED_TRACE(std::to_string(orientation) + format);
      const fs::path result = saved(encoded(tagged, format));
      expectColours(result, colours);
      const auto image = VImage::new_from_file(result.c_str());
      EXPECT_EQ(image.width(), 160);
      EXPECT_EQ(image.get_typeof(VIPS_META_EXIF_NAME) + image.get_typeof(VIPS_META_ICC_NAME), 0U);
      EXPECT_STREQ(image.get_string("jpeg-chroma-subsample"), "4:2:0");
    }
  }
}

TEST_F(Pictures, OfDeepColourGreyAndTransparencyKeepTheirTones) {
  expectColours(saved(encoded(scene, ".png")), colours);
  const VImage grey = (VImage::black(40, 30) + 100).cast(VIPS_FORMAT_UCHAR);
  expectColours(saved(encoded(grey, ".png")), std::vector<double>(12, 100));
  const VImage inks = scene.colourspace(VIPS_INTERPRETATION_CMYK);
  for (const VImage& opaque : {scene, inks})
    expectColours(saved(encoded(opaque.bandjoin(0), ".tif")), std::vector<double>(12, 255));
}

TEST_F(Pictures, AreWhatACompleteDecodeDecodes) {
  std::vector<std::string> files;
  for (const auto& set : {fs::path(ORVELIN_SAMPLES), fs::path(ORVELIN_SEEDS) / "picture"})
    for (const auto& [name, bytes] : contentsOf(set)) files.push_back(bytes);
  std::mt19937 random(1);
  int pictures = 0, others = 0;
  for (const auto& whole : files)
    for (std::size_t damage = 0; damage < 40; ++damage) {
      std::string bytes = whole.substr(0, damage % 5 ? whole.size() : random() % whole.size());
      const std::size_t reach = damage % 2 ? bytes.size() : std::min(bytes.size(), 900UL);
      for (std::size_t flips = damage % 8; flips > 0 && reach > 0; --flips)
        bytes[random() % reach] = static_cast<char>(random());
      const bool decodes = decodesCompletely(bytes);
      EXPECT_EQ(isOpenablePicture(fileOf(bytes)), decodes);
      EXPECT_TRUE(!decodes || fs::exists(saved(bytes))) << "what is taken can be saved";
      ++(decodes ? pictures : others);
    }
  EXPECT_GT(std::min(pictures, others), 200);
}

TEST_F(Pictures, AreNotTextsDrawingsTablesOrOtherFiles) {
  for (const char* text : {"", "BM", "BMW, la voiture de mon oncle", "1,2\n3,4\n", "GIF89a",
                           "P3\n1 1\n255\n255 0 0\n", "%PDF-1.4\n", "\xff\xd8\xff\xe0",
                           "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>",
                           "push graphic-context\nviewbox 0 0 9 9\n"})
    EXPECT_FALSE(isOpenablePicture(fileOf(text))) << text;
}

TEST_F(Pictures, ThatWouldTakeMoreThanARealOneAreRefused) {
  EXPECT_TRUE(fs::exists(saved(encoded(VImage::black(65500, 8), ".png"))));
  std::string png = read(sample("aquarelle.png")), bmp = read(sample("plan [2005].bmp"));
  const std::string ffffPixelsASide("\x00\x00\xff\xff\x00\x00\xff\xff\x00\x00", 10);
  png.replace(16, 8, ffffPixelsASide, 0, 8).replace(29, 4, "\x44\x2b\xc4\x63");  // and its checksum
  bmp.replace(18, 8, ffffPixelsASide, 2, 8);
  for (const auto& large : {png, bmp}) EXPECT_FALSE(fileOf(large)->OpenAsPicture());

  const std::string bytes = read(fs::path(ORVELIN_SEEDS) / "picture/interlaced");
  EXPECT_EQ(countScans(bytes), 10);
  EXPECT_TRUE(isOpenablePicture(fileOf(bytes)));
  const auto scan = bytes.rfind("\xff\xda");
  std::string endless = bytes.substr(0, bytes.size() - 2);
  for (int i = 0; i < 3000; ++i) endless += bytes.substr(scan, bytes.size() - 2 - scan);
  EXPECT_FALSE(isOpenablePicture(fileOf(endless + "\xff\xd9")));
}

}  // namespace orvelin::test
