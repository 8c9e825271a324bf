#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>
#include <vips/vips8>

#include "platform/core/standardstreams.h"
#include "platform/pictures/jpegmarkers.h"

// Creates the input files of the benchmark. The same call always creates the same files.

namespace fs = std::filesystem;
using vips::VImage;

namespace {

/// Noise of one grain size, with `amplitude` as its standard deviation.
VImage noise(int width, int height, int grain, double amplitude, int seed) {
  auto* const options = VImage::option()->set("mean", 0.0)->set("sigma", amplitude);
  const VImage fine =
      VImage::gaussnoise(width / grain + 2, height / grain + 2, options->set("seed", seed));
  return grain == 1 ? fine.crop(0, 0, width, height) : fine.resize(grain).crop(0, 0, width, height);
}

/// A picture that encodes like a photograph: shapes of all sizes, smaller ones with less contrast,
/// hard edges, and sensor noise.
VImage photograph(int width, int height, int seed) {
  VImage light = VImage::black(width, height) + 118;
  for (int grain = 512, octave = 0; grain >= 2; grain /= 2, ++octave)
    light = light + noise(width, height, grain, 30 * std::pow(0.78, octave), seed + octave);
  const VImage edges = (noise(width, height, 128, 20, seed + 20) > 0).ifthenelse(22, -22);
  const VImage bands[] = {noise(width, height, 256, 22, seed + 30),
                          noise(width, height, 64, 6, seed + 31),
                          noise(width, height, 256, 22, seed + 32)};
  std::vector<VImage> colours;
  colours.reserve(3);
  for (int band = 0; band < 3; ++band)
    colours.push_back(light + edges + bands[band] + noise(width, height, 1, 2.5, seed + 40 + band));
  return VImage::bandjoin(colours)
      .cast(VIPS_FORMAT_UCHAR)
      .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
      .copy_memory();
}

/// Takes different photographs of one size: three scenes, shifted and mirrored.
class Camera {
 public:
  Camera(int width, int height) {
    for (int seed = 1; seed <= 3; ++seed) scenes_.push_back(photograph(width, height, seed * 100));
  }
  VImage take(int number) const {
    const VImage& scene = scenes_[static_cast<std::size_t>(number) % scenes_.size()];
    const VImage moved = scene.wrap(VImage::option()
                                        ->set("x", number * 977 % scene.width())
                                        ->set("y", number * 613 % scene.height()));
    return number % 2 ? moved.fliphor() : moved;
  }

 private:
  std::vector<VImage> scenes_;
};

void write(const fs::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

void saveJPEG(const VImage& image, const fs::path& path, bool jfif) {
  VipsBlob* const blob =
      image.jpegsave_buffer(VImage::option()
                                ->set("Q", 95)
                                ->set("subsample_mode", VIPS_FOREIGN_SUBSAMPLE_ON)
                                ->set("strip", jfif));
  std::size_t size = 0;
  const auto* data = static_cast<const char*>(vips_blob_get(blob, &size));
  std::string bytes(data, size);
  vips_area_unref(VIPS_AREA(blob));
  if (jfif) bytes.insert(2, orvelin::jfifSegment);
  write(path, bytes);
}

void saveExif(VImage image, const fs::path& path, int orientation) {
  image = image.copy();
  image.set("exif-ifd0-Make", "Orvelin (Orvelin, ASCII, 8 components, 8 bytes)");
  image.set(VIPS_META_ORIENTATION, orientation);
  saveJPEG(image, path, false);
}

void makePictures(const std::string& kind, const fs::path& folder, int count) {
  const bool small = kind == "small", large = kind == "large";
  const Camera camera = small                              ? Camera(400, 300)
                        : large                            ? Camera(11600, 8700)
                        : kind == "jfif" || kind == "exif" ? Camera(4000, 3000)
                                                           : Camera(3264, 2448);
  for (int i = 0; i < count; ++i) {
    const fs::path place = folder / ("dossier " + std::to_string(1000 + i / 100));
    fs::create_directories(place);
    const fs::path path = place / ("IMG_" + std::to_string(10000 + i));
    const auto named = [&](const std::string& rest) { return path.string() + rest; };
    const VImage image = camera.take(i);
    if (kind == "jfif")
      saveJPEG(image, named(".jpg"), true);
    else if (kind == "exif" || small)
      saveExif(image, named(".jpg"), i % 3 ? 1 : i % 2 ? 6 : 8);
    else if (large)
      saveExif(image, named(".jpg"), 6);
    else if (kind == "tiff")
      image.write_to_file(named(".tif").c_str());
    else if (kind == "lzw")
      image.write_to_file(named(".tif[compression=lzw,predictor=horizontal]").c_str());
    else if (kind == "png")
      image.write_to_file(named(".png").c_str());
    else if (i < 6)  // encoding one takes ten seconds; the others are copies
      image.heifsave(named(".heic").c_str(), VImage::option()->set("Q", 52)->set("effort", 0));
    else
      fs::copy_file(place / ("IMG_" + std::to_string(10000 + i % 6) + ".heic"), named(".heic"));
  }
}

/// Creates files of 20,000 bytes on average, in three levels of folders.
void makeTree(const fs::path& folder, int count) {
  std::mt19937 random(1);
  for (int i = 0; i < count; ++i) {
    const fs::path place = folder / std::to_string(i / 1000) / std::to_string(i / 100 % 10) /
                           std::to_string(i / 20 % 5);
    fs::create_directories(place);
    std::string bytes(1000 + random() % 38'000, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    write(place / ("file " + std::to_string(i)), bytes);
  }
}

}  // namespace

int main(int argc, char** argv) try {
  orvelin::secureStandardStreams();
  if (argc != 4) {
    std::cerr
        << "usage: orvelin-inputs jfif|exif|tiff|lzw|png|heic|small|large|tree COUNT FOLDER\n";
    return 2;
  }
  if (VIPS_INIT(argv[0]) != 0) return 1;
  const std::string kind = argv[1];
  const int count = std::stoi(argv[2]);
  // Rename it at the end, so that a folder with the final name is complete.
  const fs::path folder = argv[3], unfinished = folder.string() + ".unfinished";
  fs::remove_all(unfinished);
  fs::create_directories(unfinished);
  if (kind == "tree")
    makeTree(unfinished, count);
  else
    makePictures(kind, unfinished, count);
  fs::rename(unfinished, folder);
  return 0;
} catch (const std::exception& error) {
  std::cerr << "orvelin-inputs: " << error.what() << "\n";
  return 1;
}
