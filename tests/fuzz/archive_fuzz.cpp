#include "archive/gonfleur.h"
#include "fuzz.h"

namespace orvelin::test {

/// Any bytes as an archive: the unpacking ends, nothing appears outside the destination, nothing
/// comes out that did not go in. The tree that comes out is the same when it is packed and unpacked
/// once more.
void attempt(const std::string& bytes, const fs::path& folder) {
  // Deep enough for names that climb to show where they come out.
  const fs::path archive = folder / "archive", tree = folder / "1/2/3/4/out";
  const GonfleurClass gonfleur;
  write(archive, bytes);
  fs::create_directories(tree);
  // A count that lies is obeyed, in up to two thousand million empty passes: no need to wait.
  int yields = 0;
  atYields([&] {
    if (++yields > 2000) throw NilObjectException({});
  });
  try {
    gonfleur.Gonfler(item(archive), item(tree));
  } catch (const NilObjectException&) {
  }
  atYields({});
  expect(treeOf(folder).size() == 6 + treeOf(tree).size(), "all is in the destination");
  std::size_t unpacked = 0;
  for (const auto& entry : fs::recursive_directory_iterator(tree)) {
    const auto status = entry.symlink_status();
    expect(fs::is_regular_file(status) || fs::is_directory(status), "there is nothing else");
    if (fs::is_regular_file(status)) unpacked += entry.file_size();
  }
  expect(unpacked <= bytes.size(), "no more bytes come out than went in");

  gonfleur.Degonfler(item(tree), item(archive));
  gonfleur.Gonfler(item(archive), item(folder));
  expect(contentsOf(tree) == contentsOf(folder / "out"), "the tree is the same");
}

}  // namespace orvelin::test
