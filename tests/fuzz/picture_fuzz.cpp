#include <algorithm>
#include <vips/vips8>

#include "fuzz.h"
#include "photos/scan.h"
#include "platform/core/gifframe.h"

namespace orvelin::test {

using vips::VImage;

namespace {

bool decodesCompletely(const std::string& bytes) try {
  const char* options = bytes.starts_with("\xff\xd8") ? "[unlimited]" : "";
  // Otherwise several workers decode, which may hide a failure.
  auto image = VImage::new_from_buffer(bytes.data(), bytes.size(), options,
                                       VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
  image.set(VIPS_META_CONCURRENCY, 1);
  image.copy_memory();
  return true;
} catch (const vips::VError&) {
  return false;
}

}  // namespace

/// Any bytes as a photograph: if they open as a picture, they are taken exactly if a complete
/// decode succeeds, and what is taken is saved as a JFIF file, unless it is larger than a JPEG can
/// be.
void attempt(const std::string& bytes, const fs::path& folder) {
  const fs::path saved = folder / "saved";
  fs::remove(saved);
  write(folder / "file", bytes);
  const auto file = item(folder / "file");
  const auto picture = file->OpenAsPicture();
  const bool taken = isOpenablePicture(file);
  expect(taken == (picture && decodesCompletely(bytes)), "taken if and only if it decodes");
  if (!taken) return;
  item(saved)->SaveAsJPEG(picture);
  if (fs::exists(saved)) return expect(read(saved).substr(6, 4) == "JFIF", "saved as JFIF");
  const auto image = VImage::new_from_file(file->Path().c_str());
  const auto frame = bytes.starts_with("GIF") ? firstFrameOf(bytes) : std::nullopt;
  const int canvas = frame ? std::max(frame->canvasWidth, frame->canvasHeight) : 0;
  expect(std::max({canvas, image.width(), image.height()}) > 65500, "too large for a JPEG");
}

}  // namespace orvelin::test
