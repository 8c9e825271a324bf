#include <algorithm>
#include <utility>

#include "builder/driver.h"
#include "platform/core/resourcefork.h"
#include "support.h"

namespace orvelin::test {

TEST(Lookup, TakesTheFirstFolderWithTheExactSignature) {
  const fs::path base = GetFolderItem("")->Path();
  BuildState first, later;
  const auto found = [&](BuildState& state) {
    return fs::relative(state.GetResource("datafile")->Path(), base).string();
  };
  write(base / "1/PkgInfo", "APPLQvzt\n");
  write(base / "3/Contents/PkgInfo", "APPLQvzt");
  EXPECT_EQ(found(first), "Orvelin.app/Contents/Resources/datafile");
  write(base / "A/PkgInfo", "APPLQvzt");
  write(base / "9/PkgInfo", "applqvzt");
  EXPECT_EQ(found(later), "9/Contents/Resources/datafile");
  EXPECT_EQ(found(first), "Orvelin.app/Contents/Resources/datafile") << "found by the first search";
  for (const char* made : {"1", "3", "9", "A"}) fs::remove_all(base / made);
}

class Build : public FileTest {
 protected:
  Build() {
    fs::create_directory(photos);
    fs::create_directory(folder / "CD");
  }
  const fs::path photos = folder / "photos";
  BuildState state{item(photos), item(folder / "CD")};
  const fs::path root = folder / "CD/DIGIFILM";
};

TEST_F(Build, CreatesNothingWithoutFoldersAndTheRestWithoutPicturesOrDatafile) {
  for (auto* missing : {&state.inFol, &state.outFol}) {
    const auto chosen = std::exchange(*missing, nullptr);
    EXPECT_FALSE(buildDigiFilm(state));
    *missing = chosen;
  }
  EXPECT_TRUE(fs::is_empty(folder / "CD"));
  state.appFolder = item(folder);
  EXPECT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(treeOf(root), (Tree{"autorun.inf", "digifilm.txt", "misc", "misc/favorite.mrk"}));
  EXPECT_EQ(applicationResourceFork()->GetResource("PCFI", 130), "");
  EXPECT_EQ(fs::file_size(root / "digifilm.txt"), 236U + 35U) << "header and trailer";
  EXPECT_TRUE(read(root / "digifilm.txt").ends_with("\n; end of digifilm.txt\r\n;\r\n\r\n\r\n"));
}

TEST_F(Build, LogsAReadOnlyFolderOnce) {
  for (const char* name : {"a", "b"}) addPhoto(name, "oiseau.webp");
  becomeOrdinaryUser();
  // The first folder comes twice, because each build logs it.
  for (const fs::path& readOnly : {folder / "CD", folder / "CD", root / "dcim/100k6230", photos}) {
    SCOPED_TRACE(readOnly);
    fs::create_directories(readOnly);
    fs::permissions(readOnly, readOnly == photos ? fs::perms{0444} : fs::perms{0555});
    state.outFol = item(folder / "CD");
    testing::internal::CaptureStderr();
    try {
      buildDigiFilm(state);
    } catch (const NilObjectException& failure) {
      report(failure.what());  // as the program does
    }
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
    fs::permissions(readOnly, fs::perms::all);
  }
}

TEST_F(Build, NestsIfRepeatedAndReplacesAReadOnlyTree) {
  addPhoto("a.png", "aquarelle.png");
  for (int i = 0; i < 2; ++i) ASSERT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(state.outFol->Path().native(), root / "DIGIFILM");

  fs::rename(root / "DIGIFILM", folder / "first");
  write(root / "dcim/100k6230/077.jpg", "mine");
  write(root / "dcim/102k6230/.057.jpg.orvelin", "left by a killed build of more pictures");
  write(root / "digifilm.txt", std::string(5000, 'x'));
  for (const auto& entry : fs::recursive_directory_iterator(root))
    if (entry.is_regular_file()) fs::permissions(entry.path(), fs::perms{0444});
  state.outFol = item(folder / "CD");
  becomeOrdinaryUser();
  ASSERT_TRUE(buildDigiFilm(state));
  Contents wanted = contentsOf(folder / "first");
  wanted.insert({{"dcim/100k6230/077.jpg", "mine"}, {"dcim/102k6230", "a folder"}});
  EXPECT_TRUE(contentsOf(root) == wanted);
}

}  // namespace orvelin::test
