#include <sys/stat.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdlib>

#include "archive/gonfleur.h"
#include "support.h"

namespace orvelin::test {

namespace {

using namespace std::literals;

std::string text(const std::string& bytes) { return static_cast<char>(bytes.size()) + bytes; }
std::string number(std::int64_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xff);
  return bytes;
}
/// 3,000,000,000 and 2,900,000,000 seconds after the start of 1904, as entries store them.
const std::string modified = "\x41\xE6\x5A\x0B\xC0\0\0\0"s, created = "\x41\xE5\x9B\x4F\xA0\0\0\0"s;
std::string head(const std::string& name, std::int64_t count) {
  return text(name) + modified + created + number(count);
}
std::string folderEntry(const std::string& name, std::int64_t count) {
  return text("[FOLDER]") + head(name, count);
}
std::string fileEntry(const std::string& name, const std::string& data) {
  return text("[FILE]") + head(name, static_cast<std::int64_t>(data.size())) + data;
}
/// A folder CD with an empty folder X and a file a.txt.
const std::string example = folderEntry("CD", 2) + folderEntry("X", 0) + fileEntry("a.txt", "hi");

}  // namespace

class Archive : public FileTest {
 protected:
  Archive() { fs::create_directory(folder / "out"); }
  void unpack(const std::string& bytes) {
    write(folder / "archive", bytes);
    GonfleurClass().Gonfler(item(folder / "archive"), item(folder / "out"));
  }
  std::string pack(const fs::path& source) {
    GonfleurClass().Degonfler(item(source), item(folder / "packed"));
    return read(folder / "packed");
  }
};

TEST_F(Archive, UnpacksAndPacksTheExampleExactly) {
  const fs::path cd = folder / "out/CD";
  write(cd / "a.txt", "something longer");
  unpack(example + "trailing bytes");
  EXPECT_EQ(contentsOf(cd), (Contents{{"X", "a folder"}, {"a.txt", "hi"}}));
  EXPECT_NE(item(cd / "a.txt")->ModificationDate().Year(), 1999) << "the stored time";
  for (const fs::path& path : {cd / "X", cd / "a.txt", cd})
    setTime(path, 3'000'000'000 - 2'082'844'800 - 3600);  // 1904 to 1970, and Paris to UTC
  std::string packed = pack(cd);
  // A test cannot set times of creation.
  const std::string stored = packed.substr(packed.find(modified) + modified.size(), created.size());
  const auto now = std::bit_cast<std::int64_t>(item(cd)->CreationDate().TotalSeconds());
  EXPECT_EQ(stored, number(now >> 32) + number(now & 0xffffffff));
  EXPECT_GT(stored, modified) << "when it was made, not when it was modified";
  for (std::size_t at = 0; (at = packed.find(modified, at)) != std::string::npos;)
    packed.replace(at += modified.size(), created.size(), created);
  EXPECT_EQ(packed, example);
}

TEST_F(Archive, IsCompleteOrNotCreatedByTheTool) {
  const auto status = [this] {
    const std::string in = "cd '" + folder.string() + "/CD'; trap '' XFSZ; ulimit -f 300; ";
    return std::system((in + "'" ORVELIN_PACK "' . ../made").c_str()) / 256;
  };
  fs::create_directory(folder / "CD");
  EXPECT_EQ(status(), 0);
  EXPECT_TRUE(read(folder / "made").starts_with(text("[FOLDER]") + text("CD"))) << "its real name";
  for (const char* target : {"..", "nowhere"}) {
    fs::create_symlink(target, folder / "CD/odd");
    EXPECT_TRUE(status() == 1 && !fs::exists(folder / "made")) << "with a symlink to " << target;
    fs::remove(folder / "CD/odd");
  }
  // More than a buffer, and less than the limit of 300 blocks.
  write(folder / "CD" / std::string(255, 'n'), std::string(100'000, 'x') + "end");
  EXPECT_EQ(status(), 0);
  unpack(read(folder / "made"));
  EXPECT_TRUE(contentsOf(folder / "out/CD") == contentsOf(folder / "CD"));
  fs::remove(folder / "made");
  write(folder / "CD/odd", std::string(200'000, 'x'));
  EXPECT_TRUE(status() == 1 && !fs::exists(folder / "made")) << "too large";
}

TEST_F(Archive, HasTagsInAnyCaseAndCountsUnknownOnes) {
  unpack(text("[folder]") + head("CD", 5) + text("?") + text("") + text("[File]") + head("a", 1) +
         "1" + folderEntry("none", -5) + fileEntry("b", "") + fileEntry("c", "not counted"));
  EXPECT_EQ(treeOf(folder / "out"), (Tree{"CD", "CD/a", "CD/b", "CD/none"}));
}

TEST_F(Archive, IsReadAsFarAsPossibleIfTruncatedOrWrong) {
  const std::size_t names[] = {example.find("CD"), example.find('X'), example.find("a.txt")};
  for (std::size_t size = 0; size < example.size(); ++size) {
    SCOPED_TRACE("truncated to " + std::to_string(size) + " bytes");
    fs::remove_all(folder / "out");
    fs::create_directory(folder / "out");
    // Throws if there is a tag but no name.
    if (std::ranges::any_of(names, [=](auto name) { return name == size || name == size + 1; }))
      EXPECT_THROW(unpack(example.substr(0, size)), NilObjectException);
    else
      EXPECT_NO_THROW(unpack(example.substr(0, size)));
    const auto begun = std::ranges::count_if(names, [=](auto name) { return name < size; });
    ASSERT_EQ(treeOf(folder / "out").size(), begun);
  }
  EXPECT_EQ(read(folder / "out/CD/a.txt"), "h");

  unpack(text("[FILE]") + head("long", INT_MAX) + "all there is");
  unpack(text("[FILE]") + head("negative", -1) + "not read");
  EXPECT_EQ(read(folder / "out/long") + read(folder / "out/negative"), "all there is");
  EXPECT_EQ(treeOf(folder / "out"), (Tree{"CD", "CD/X", "CD/a.txt", "long", "negative"}));
}

TEST_F(Archive, IsNotMadeOrReadFromNilOrTheWrongKind) {
  write(folder / "file", example);
  const Ref<FolderItem> nil, file = item(folder / "file"), out = item(folder / "out"),
                             none = item(folder / "none");
  const GonfleurClass gonfleur;
  for (const auto& archive : {nil, out, none}) gonfleur.Gonfler(archive, out);
  for (const auto& destination : {nil, file, none}) gonfleur.Gonfler(file, destination);
  for (const auto& source : {nil, file, none}) gonfleur.Degonfler(source, none);
  for (const auto& archive : {nil, out}) gonfleur.Degonfler(out, archive);
  EXPECT_EQ(treeOf(folder), (Tree{"file", "out"}));
}

TEST_F(Archive, CountsUnreadableFilesAndStoresSymlinkTargetsAndLowBitsOfLengths) {
  fs::create_directory(folder / "CD");
  ::mkfifo((folder / "CD/fifo").c_str(), 0666);
  EXPECT_TRUE(pack(folder / "CD").ends_with(number(1))) << "counted without an entry";

  write(folder / "big", "first");
  fs::create_symlink("../big", folder / "CD/big");
  fs::resize_file(folder / "big", (std::uint64_t{1} << 32) + 5);
  EXPECT_TRUE(pack(folder / "CD").ends_with(number(5) + "first"));
}

}  // namespace orvelin::test
