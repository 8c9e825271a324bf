#include "archive/gonfleur.h"
#include "fuzz.h"

namespace orvelin::test {

namespace {

/// A tree that the bytes stand for, until they are used up.
class Garden {
 public:
  explicit Garden(std::string_view bytes) : rest_(bytes) {}
  void grow(const fs::path& folder, int depth) {
    fs::create_directory(folder);
    for (unsigned entries = number() % 8; entries > 0 && !rest_.empty(); --entries) {
      const unsigned kind = number();
      const fs::path path = folder / name(kind % 16 ? kind % 16 : 255);
      if (fs::exists(path)) continue;
      if (kind < 80 && depth < 12)
        grow(path, depth + 1);
      else
        write(path, take(std::size_t{number()} * (kind > 250 ? 1000 : 1)));
    }
  }

 private:
  std::string take(std::size_t count) {
    std::string taken(rest_.substr(0, count));
    rest_.remove_prefix(taken.size());
    return taken;
  }
  unsigned number() { return static_cast<unsigned char>((take(1) + '\0')[0]); }
  std::string name(std::size_t length) {
    std::string name = take(length);
    for (char& byte : name)
      if (byte == '/' || byte == '\0') byte = '_';
    return name.empty() || name == "." || name == ".." ? "_" : name;
  }
  std::string_view rest_;
};

}  // namespace

/// Any tree, packed and unpacked, is the same tree.
void attempt(const std::string& bytes, const fs::path& folder) {
  Garden(bytes).grow(folder / "tree", 0);
  fs::create_directory(folder / "out");
  GonfleurClass().Degonfler(item(folder / "tree"), item(folder / "archive"));
  GonfleurClass().Gonfler(item(folder / "archive"), item(folder / "out"));
  expect(fs::is_directory(folder / "out/tree"), "it is there");
  expect(contentsOf(folder / "tree") == contentsOf(folder / "out/tree"), "it is the same");
}

}  // namespace orvelin::test
