#include <random>
#include <vips/vips8>

#include "platform/core/jpegmarkers.h"
#include "support.h"

namespace orvelin::test {

class Pictures : public FileTest {
 protected:
  /// A file of these bytes, under a name that tells nothing of its format.
  Ref<FolderItem> fileOf(const std::string& bytes) const {
    write(folder / "file", bytes);
    return item(folder / "file");
  }
  static bool opens(const Ref<FolderItem>& file) {
    const auto picture = file->OpenAsPicture();
    return picture && picture->decodes();
  }
  static bool decodesCompletely(const std::string& bytes) try {
    const char* options = bytes.starts_with("\xff\xd8") ? "[unlimited]" : "";
    auto image = vips::VImage::new_from_buffer(bytes.data(), bytes.size(), options);
    image.set(VIPS_META_CONCURRENCY, 1);  // several workers can let a failure pass
    image.copy_memory();
    return true;
  } catch (const vips::VError&) {
    return false;
  }
  /// The picture of these bytes as saved anew.
  fs::path saved(const std::string& bytes) const {
    fs::remove(folder / "saved");
    item(folder / "saved")->SaveAsJPEG(fileOf(bytes)->OpenAsPicture());
    return folder / "saved";
  }
  /// A picture in another format, as libvips writes it.
  std::string encoded(const vips::VImage& image, const std::string& format) const {
    const std::string path = folder / "encoded";
    image.write_to_file((path + format).c_str());
    return read(path + format.substr(0, format.find('[')));
  }
  static vips::VImage scene() {
    return vips::VImage::new_from_file(sample("vacances/montagne.png").c_str());
  }
};

TEST_F(Pictures, AreTurnedByEachOfTheEightOrientations) {
  // What a camera held so writes: the scene turned the other way.
  const vips::VImage v = scene();
  const vips::VImage turned[] = {
      v,          v.fliphor(),          v.rot180(), v.flipver(), v.rot90().fliphor(),
      v.rot270(), v.rot270().fliphor(), v.rot90()};
  for (int orientation = 1; orientation <= 8; ++orientation) {
    vips::VImage tagged = turned[orientation - 1].copy();
    tagged.set(VIPS_META_ORIENTATION, orientation);
    for (const char* format : {".jpg[Q=95]", ".tif"}) {
      SCOPED_TRACE(std::to_string(orientation) + format);
      const fs::path result = saved(encoded(tagged, format));
      expectScene(result);
      EXPECT_EQ(vips::VImage::new_from_file(result.c_str()).width(), 160);
    }
  }
}

TEST_F(Pictures, OfDeepColourGreyAndTransparencyKeepTheirTones) {
  const vips::VImage deep = scene().colourspace(VIPS_INTERPRETATION_RGB16);
  const vips::VImage clear = deep.bandjoin(vips::VImage::black(160, 120) + 0);
  expectScene(saved(encoded(deep, ".png")));
  for (const Colour& colour : quarters(saved(encoded(clear.cast(VIPS_FORMAT_USHORT), ".png"))))
    EXPECT_EQ(colour, (Colour{255, 255, 255}));

  const vips::VImage grey = (vips::VImage::black(40, 30) + 100).cast(VIPS_FORMAT_UCHAR);
  EXPECT_NEAR(quarters(saved(encoded(grey, ".png")))[0][0], 100, 2);
}

TEST_F(Pictures, AreSavedAsJfifWithNothingBesideThePixels) {
  const auto image = vips::VImage::new_from_file(saved(read(sample("IMG_0005.JPG"))).c_str());
  EXPECT_EQ(image.get_typeof(VIPS_META_EXIF_NAME) + image.get_typeof(VIPS_META_ICC_NAME), 0U);
  EXPECT_STREQ(image.get_string("jpeg-chroma-subsample"), "4:2:0");
}

TEST_F(Pictures, AreToldFromOtherFilesAsACompleteDecodeTellsThem) {
  std::vector<std::string> files;
  for (const auto& set : {fs::path(ORVELIN_SAMPLES), fs::path(ORVELIN_SEEDS) / "picture"})
    for (const auto& [name, bytes] : contentsOf(set)) files.push_back(bytes);
  constexpr std::size_t headers = 900;
  std::mt19937 random(1);
  int pictures = 0, others = 0;
  for (const auto& whole : files)
    for (std::size_t damage = 0; damage < 40; ++damage) {
      std::string bytes = whole.substr(0, damage % 5 ? whole.size() : random() % whole.size());
      const std::size_t reach = damage % 2 ? bytes.size() : std::min(bytes.size(), headers);
      for (std::size_t flips = damage % 8; flips > 0 && reach > 0; --flips)
        bytes[random() % reach] = static_cast<char>(random());
      const bool decodes = decodesCompletely(bytes);
      EXPECT_EQ(opens(fileOf(bytes)), decodes);
      EXPECT_TRUE(!decodes || fs::exists(saved(bytes))) << "what is taken can be saved";
      ++(decodes ? pictures : others);
    }
  EXPECT_GT(pictures, 200);
  EXPECT_GT(others, 200);
}

TEST_F(Pictures, AreNotTextsDrawingsTablesOrOtherFiles) {
  for (const char* text :
       {"", "x", "BM", "BMW, la voiture de mon oncle", "1 2\n3 4\n", "1,2\n3,4\n",
        "P3\n1 1\n255\n255 0 0\n", "%PDF-1.4\n", "%!PS-Adobe-3.0\n", "GIF89a",
        "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>",
        "push graphic-context\nviewbox 0 0 9 9\n", "\xff\xd8\xff\xe0"})
    EXPECT_FALSE(opens(fileOf(text))) << text;
  EXPECT_FALSE(opens(fileOf(read(sample("IMG_0001.JPG")).substr(0, 300))));
}

TEST_F(Pictures, ThatWouldTakeMoreThanARealOneAreRefused) {
  EXPECT_TRUE(fs::exists(saved(encoded(vips::VImage::black(65500, 8), ".png"))));
  const std::string ffffPixelsASide("\x00\x00\xff\xff\x00\x00\xff\xff\x00\x00", 10);
  EXPECT_FALSE(opens(fileOf(read(sample("aquarelle.png")).replace(16, 8, ffffPixelsASide, 0, 8))));
  EXPECT_FALSE(
      opens(fileOf(read(sample("plan [2005].bmp")).replace(18, 8, ffffPixelsASide, 2, 8))));

  const std::string bytes = read(fs::path(ORVELIN_SEEDS) / "picture/interlaced");
  EXPECT_EQ(countScans(bytes), 10);
  EXPECT_TRUE(opens(fileOf(bytes)));
  const auto scan = bytes.rfind("\xff\xda");
  std::string endless = bytes.substr(0, bytes.size() - 2);
  for (int i = 0; i < 3000; ++i) endless += bytes.substr(scan, bytes.size() - 2 - scan);
  EXPECT_FALSE(opens(fileOf(endless + "\xff\xd9")));
}

}  // namespace orvelin::test
