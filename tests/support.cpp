#include "support.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <system_error>
#include <vips/vips8>

namespace orvelin::test {

void setTime(const fs::path& path, std::int64_t seconds) {
  const timespec times[] = {{seconds, 0}, {seconds, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

Contents contentsOf(const fs::path& folder) {
  Contents contents;
  std::error_code none;
  for (const auto& entry : fs::recursive_directory_iterator(folder, none))
    contents[fs::relative(entry.path(), folder)] =
        entry.is_regular_file() ? read(entry.path()) : "a folder";
  return contents;
}

Tree treeOf(const fs::path& folder) {
  Tree tree;
  for (const auto& [path, bytes] : contentsOf(folder)) tree.push_back(path);
  return tree;
}

std::vector<Colour> quarters(const fs::path& path) {
  const std::string bytes = read(path);
  const auto image = vips::VImage::new_from_buffer(bytes.data(), bytes.size(), "")
                         .colourspace(VIPS_INTERPRETATION_sRGB);
  std::vector<Colour> colours;
  for (const int y : {1, 3})
    for (const int x : {1, 3}) {
      const auto pixel = image.getpoint(image.width() * x / 4, image.height() * y / 4);
      colours.push_back({int(pixel[0]), int(pixel[1]), int(pixel[2])});
    }
  return colours;
}

void expectScene(const fs::path& path, Colour bottomRight, int tolerance) {
  const std::vector<Colour> wanted{{224, 0, 0}, {0, 192, 0}, {0, 0, 224}, bottomRight};
  const auto found = quarters(path);
  for (std::size_t quarter = 0; quarter < 4; ++quarter)
    for (std::size_t band = 0; band < 3; ++band)
      EXPECT_NEAR(found[quarter][band], wanted[quarter][band], tolerance)
          << path << ", quarter " << quarter << ", band " << band;
}

Scratch::Scratch() {
  VIPS_INIT("orvelin tests");
  std::string pattern = (fs::temp_directory_path() / "orvelin-XXXXXX").string();
  folder = ::mkdtemp(pattern.data());
}

Scratch::~Scratch() { fs::remove_all(folder); }

}  // namespace orvelin::test
