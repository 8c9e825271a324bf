#include "builder/driver.h"
#include "builder/resourcelookup.h"
#include "support.h"

namespace orvelin::test {

TEST(Lookup, TakesTheFirstFolderThatHoldsTheSignatureAndNothingMore) {
  const fs::path base = GetFolderItem("")->Path();
  const auto found = [] {
    Ref<FolderItem> appFolder;
    const auto datafile = GetResource(appFolder, "datafile")->Path();
    EXPECT_EQ(GetResource(appFolder, "datafile")->Path(), datafile);
    return fs::relative(datafile, fs::path(GetFolderItem("")->Path())).string();
  };
  write(base / "1/PkgInfo", "APPLQvzt\n");
  write(base / "2/PkgInfo", "APPLQvz");
  write(base / "3/Contents/PkgInfo", "APPLQvzt");
  EXPECT_EQ(found(), "Orvelin.app/Contents/Resources/datafile");
  EXPECT_TRUE(fs::exists(base / found()));
  write(base / "A/PkgInfo", "APPLQvzt");
  write(base / "9/PkgInfo", "applqvzt");
  EXPECT_EQ(found(), "9/Contents/Resources/datafile");
  for (const char* made : {"1", "2", "3", "9", "A"}) fs::remove_all(base / made);
}

class Build : public FileTest {
 protected:
  Build() {
    fs::create_directory(photos);
    fs::create_directory(folder / "CD");
  }
  void photo(const std::string& name, const std::string& from) {
    write(photos / name, read(sample(from)));
  }
  const fs::path photos = folder / "photos";
  BuildState state{{}, item(photos), item(folder / "CD"), nullptr};
  const fs::path root = folder / "CD/DIGIFILM";
};

TEST_F(Build, MakesNothingWithoutFoldersAndAllTheRestWithoutPictures) {
  BuildState noPhotos = state, noDestination = state;
  noPhotos.inFol = noDestination.outFol = nullptr;
  EXPECT_FALSE(buildDigiFilm(noPhotos) || buildDigiFilm(noDestination));
  EXPECT_TRUE(fs::is_empty(folder / "CD"));
  EXPECT_TRUE(buildDigiFilm(state));
  EXPECT_FALSE(fs::exists(root / "dcim"));
  EXPECT_EQ(read(root / "digifilm.txt").size(), 236U + 35U) << "header and trailer";
}

TEST_F(Build, NestsWhenRepeatedAndReusesWhenTheDestinationIsChosenAnew) {
  photo("a.png", "aquarelle.png");
  for (int i = 0; i < 2; ++i) ASSERT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(state.outFol->Path(), (root / "DIGIFILM").string());
  EXPECT_EQ(treeOf(root / "DIGIFILM/dcim"), (Tree{"100k6230", "100k6230/001.jpg"}));
  EXPECT_EQ(state.tabItem.size(), 1U);

  fs::remove_all(root / "DIGIFILM");
  write(root / "dcim/100k6230/077.jpg", "mine");
  write(root / "digifilm.txt", std::string(5000, 'x'));
  state.outFol = item(folder / "CD");
  ASSERT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(treeOf(root / "dcim/100k6230"), (Tree{"001.jpg", "077.jpg"}));
  EXPECT_FALSE(fs::exists(root / "DIGIFILM"));
  EXPECT_LT(read(root / "digifilm.txt").size(), 1000U);
}

TEST_F(Build, InsideThePhotoFolderTakesThePicturesOfAnEarlierOne) {
  photo("z.jpg", "vacances/plage.jpg");
  photo("zz.webp", "oiseau.webp");
  photo("DIGIFILM/dcim/100k6230/.009.jpg.orvelin", "IMG_0001.JPG");  // left by a killed one
  for (int i = 0; i < 2; ++i) {
    state.outFol = item(photos);
    ASSERT_TRUE(buildDigiFilm(state));
  }
  // 001 and 002 of the first build come first and are copied onto themselves.
  const fs::path placed = photos / "DIGIFILM/dcim/100k6230";
  EXPECT_EQ(treeOf(placed), (Tree{".009.jpg.orvelin", "001.jpg", "002.jpg", "003.jpg", "004.jpg"}));
  EXPECT_EQ(read(placed / "001.jpg"), read(sample("vacances/plage.jpg")));
  EXPECT_EQ(read(placed / "003.jpg"), read(placed / "001.jpg"));
  EXPECT_EQ(read(placed / "004.jpg"), read(placed / "002.jpg"));
}

}  // namespace orvelin::test
