#include "archive/gonfleur.h"
#include "fuzz.h"
#include "platform/core/background.h"

namespace orvelin::test {

namespace {

struct Enough {};
int yields;

}  // namespace

/// Any bytes as an archive: nothing appears outside the destination, nothing comes out that did
/// not go in, and the unpacking ends.
void attempt(const std::string& bytes, const fs::path& folder) {
  write(folder / "archive", bytes);
  fs::create_directory(folder / "out");
  // A count that lies is obeyed, in up to two thousand million empty passes: no need to wait.
  yields = 0;
  installBackgroundTask([] {
    if (++yields > 2000) throw Enough();
  });
  try {
    GonfleurClass().Gonfler(item(folder / "archive"), item(folder / "out"));
  } catch (const NilObjectException&) {
  } catch (const Enough&) {
  }
  std::size_t unpacked = 0;
  for (const auto& path : treeOf(folder)) {
    expect(path == "archive" || path.starts_with("out"), "all is inside the destination");
    expect(!fs::is_symlink(folder / path), "there are files and folders alone");
    if (path.starts_with("out/") && fs::is_regular_file(folder / path))
      unpacked += fs::file_size(folder / path);
  }
  expect(unpacked <= bytes.size(), "no more bytes come out than went in");
}

}  // namespace orvelin::test
