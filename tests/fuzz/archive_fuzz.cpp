#include "archive/gonfleur.h"
#include "fuzz.h"

namespace orvelin::test {

/// Unpacks any bytes as an archive: nothing is created outside the destination, and no more bytes
/// come out than went in. The tree is the same after packing and unpacking it again.
void attempt(const std::string& bytes, const fs::path& folder) {
  // Deep enough that names with ".." would stay in the scratch folder, where the test sees them.
  const fs::path archive = folder / "archive", tree = folder / "1/2/3/4/out";
  const GonfleurClass gonfleur;
  write(archive, bytes);
  fs::create_directories(tree);
  // A wrong count causes up to two billion empty passes. Don't wait for them.
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
