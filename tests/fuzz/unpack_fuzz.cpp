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
  // Deep enough for names that climb to show where they come out.
  const std::string out = "1/2/3/4/out";
  write(folder / "archive", bytes);
  fs::create_directories(folder / out);
  // A count that lies is obeyed, in up to two thousand million empty passes: no need to wait.
  yields = 0;
  installBackgroundTask([] {
    if (++yields > 2000) throw Enough();
  });
  try {
    GonfleurClass().Gonfler(item(folder / "archive"), item(folder / out));
  } catch (const NilObjectException&) {
  } catch (const Enough&) {
  }
  expect(treeOf(folder).size() == 6 + treeOf(folder / out).size(), "all is in the destination");
  std::size_t unpacked = 0;
  for (const auto& path : treeOf(folder / out)) {
    const auto status = fs::symlink_status(folder / out / path);
    expect(fs::is_regular_file(status) || fs::is_directory(status), "there is nothing else");
    if (fs::is_regular_file(status)) unpacked += fs::file_size(folder / out / path);
  }
  expect(unpacked <= bytes.size(), "no more bytes come out than went in");
}

}  // namespace orvelin::test
