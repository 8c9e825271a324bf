#include <fcntl.h>

#include "fuzz.h"
#include "platform/pictures/decoder.h"

namespace orvelin::test {

namespace {

Descriptor openFile(const fs::path& path) { return Descriptor(::open(path.c_str(), O_RDONLY)); }

bool decodesCompletely(const fs::path& path) try {
  PictureFile file(openFile(path));
  load(file, *formatOf(file.some(0))).copy_memory();
  return true;
} catch (const vips::VError&) {
  return false;
}

}  // namespace

/// Reads any bytes as a photograph. A picture is accepted if and only if it decodes completely; an
/// accepted one is encoded as a JFIF file, unless it is too large for JPEG.
void attempt(const std::string& bytes, const fs::path& folder) {
  startVips();
  write(folder / "file", bytes);
  std::string jpeg;
  const auto verdict = [&](PictureOperation operation) {
    const auto append = [&](std::string_view part) {
      jpeg += part;
      return true;
    };
    return Decoder(openFile(folder / "file")).perform(operation, append).verdict;
  };
  const bool opened = verdict(PictureOperation::Inspect) == PictureVerdict::Good;
  const bool taken = verdict(PictureOperation::Decode) == PictureVerdict::Good;
  expect(taken == (opened && decodesCompletely(folder / "file")),
         "taken if and only if it decodes");
  if (!taken || verdict(PictureOperation::Encode) == PictureVerdict::TooLarge) return;
  expect(jpeg.substr(6, 4) == "JFIF", "encoded as JFIF");
}

}  // namespace orvelin::test
