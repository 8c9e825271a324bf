#include <vips/vips8>

#include "fuzz.h"
#include "photos/scan.h"

namespace orvelin::test {

/// Any bytes as a picture: what the scan takes can be saved, and nothing else can.
void attempt(const std::string& bytes, const fs::path& folder) {
  const fs::path file = folder / "file", saved = folder / "saved";
  write(file, bytes);
  vips_concurrency_set(1);  // several workers can let a failure pass, as Picture knows
  const bool taken = isOpenablePicture(item(file));
  const auto picture = item(file)->OpenAsPicture();
  expect(!taken || picture, "what is taken opens");
  if (!picture) return;
  item(saved)->SaveAsJPEG(picture);
  const auto fits = [&] {
    const auto image = vips::VImage::new_from_file(file.c_str());
    return image.width() <= 65500 && image.height() <= 65500;  // what a JPEG can be
  };
  expect(taken == fs::exists(saved) || (taken && !fits()), "what is taken can be saved");
  expect(!fs::exists(saved) || read(saved).substr(6, 4) == "JFIF", "what is saved is JFIF");
}

}  // namespace orvelin::test
