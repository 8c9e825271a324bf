#include <vips/vips8>

#include "fuzz.h"
#include "photos/scan.h"
#include "platform/core/text.h"

namespace orvelin::test {

/// Any bytes as a photograph: what the scan takes can be saved, and nothing else can. In its place
/// it is copied unchanged if four of its bytes say JFIF, otherwise converted or, when nothing can
/// be saved, left out, so that an older picture stays.
void attempt(const std::string& bytes, const fs::path& folder) {
  const fs::path placed = folder / "dcim/100k6230/001.jpg", saved = folder / "saved";
  write(placed, "older");
  write(folder / "file", bytes);
  const auto file = item(folder / "file");
  vips_concurrency_set(1);  // several workers can let a failure pass
  const bool taken = isOpenablePicture(file);
  const auto picture = file->OpenAsPicture();
  if (picture) item(saved)->SaveAsJPEG(picture);
  const auto fits = [&] {
    const auto image = vips::VImage::new_from_file(file->Path().c_str());
    return image.width() <= 65500 && image.height() <= 65500;  // what a JPEG can be
  };
  expect(taken == fs::exists(saved) || (taken && !fits()), "what is taken can be saved");
  expect(!fs::exists(saved) || read(saved).substr(6, 4) == "JFIF", "what is saved is JFIF");

  DigiItem(file, item(folder), 0).BuildData();
  const std::string result = read(placed);
  if (bytes.size() >= 10 && equalTexts(bytes.substr(6, 4), "JFIF"))
    expect(result == bytes, "what says JFIF is copied");
  else if (fs::exists(saved))  // a damaged HEIC does not give the same pixels twice
    expect(result.substr(6, 4) == "JFIF", "all else is converted");
  else
    expect(result == "older", "an older picture stays");
}

}  // namespace orvelin::test
