#include "builder/driver.h"
#include "builder/orderfile.h"
#include "builder/resourcelookup.h"
#include "support.h"

namespace orvelin::test {

namespace {

const std::string header =
    "; DigiFilm.txt\r\n;\r\n[Main]\r\nDEALER\t\t= 213452\r\nENVELOPE\t= 105282\r\n\r\n"
    "SYSTEMID\t=  1067324\r\nSOFTWAREID\t= 2.8.12\r\nLANGUAGE\t= FR\r\nCD_SN\t\t=    202\r\n"
    "SOURCEMEDIA\t= SD\r\nSOURCEMEDIASIZE\t= 62\r\nSELECTIONTYPE\t= REORDER\t\t\t;Was USER\r\n"
    "\t\t    \r\n[Product]\r\n";
const std::string trailer = "\r\n;\r\n; end of digifilm.txt\r\n;\r\n\r\n\r\n";

}  // namespace

using OrderFile = FileTest;

TEST_F(OrderFile, HasTheseBytesAndNoOlderOnes) {
  EXPECT_EQ(header.size(), 236U);
  EXPECT_EQ(trailer.size(), 35U);
  const auto file = item(folder / "digifilm.txt");
  DigiItems items{makeRef<DigiItem>(item(sample("oiseau.webp")), item(folder), 0),
                  makeRef<DigiItem>(item(sample(".cachée.jpg")), item(folder), 1)};
  writeOrderFile(*file, items);
  EXPECT_EQ(read(folder / "digifilm.txt"), header + items[0]->BuildData() + "\r\n\r\n" +
                                               items[1]->BuildData() + "\r\n\r\n" + trailer);
  writeOrderFile(*file, {});
  EXPECT_EQ(read(folder / "digifilm.txt"), header + trailer);
}

TEST(Lookup, TakesTheFirstFolderThatHoldsTheSignatureAndNothingMore) {
  const fs::path base = GetFolderItem("")->Path();
  const auto found = [] {
    Ref<FolderItem> appFolder;
    const auto datafile = GetResource(appFolder, "datafile")->Path();
    EXPECT_EQ(GetResource(appFolder, "datafile")->Path(), datafile);
    return fs::relative(datafile, fs::path(GetFolderItem("")->Path())).string();
  };
  const fs::path before = fs::current_path();
  fs::current_path("/");
  write(base / "1/PkgInfo", "APPLQvzt\n");
  write(base / "2/PkgInfo", "APPLQvz");
  write(base / "3/Contents/PkgInfo", "APPLQvzt");
  EXPECT_EQ(found(), "Orvelin.app/Contents/Resources/datafile");
  EXPECT_TRUE(fs::exists(base / found()));
  write(base / "A/PkgInfo", "APPLQvzt");
  write(base / "9/PkgInfo", "applqvzt");
  EXPECT_EQ(found(), "9/Contents/Resources/datafile");
  for (const char* made : {"1", "2", "3", "9", "A"}) fs::remove_all(base / made);
  fs::current_path(before);
}

class Build : public FileTest {
 protected:
  Build() {
    fs::create_directories(folder / "photos");
    fs::create_directories(folder / "CD");
    state.inFol = item(folder / "photos");
    state.outFol = item(folder / "CD");
  }
  void photo(const std::string& name, const std::string& from) {
    write(folder / "photos" / name, read(sample(from)));
  }
  /// What a build makes, with the pictures of these names.
  static std::vector<std::string> treeWith(const std::vector<std::string>& pictures) {
    std::vector<std::string> tree{"ORVELIN", "ORVELIN/LISEZMOI.txt", "ORVELIN/orvelin.ico",
                                  "ORVELIN/photos.html", "autorun.inf"};
    if (!pictures.empty()) tree.insert(tree.end(), {"dcim", "dcim/100k6230"});
    for (const auto& name : pictures) tree.push_back("dcim/100k6230/" + name);
    tree.insert(tree.end(), {"digifilm.txt", "misc", "misc/favorite.mrk"});
    return tree;
  }
  BuildState state;
  const fs::path root = folder / "CD/DIGIFILM";
};

TEST_F(Build, WithoutPicturesMakesAllTheRest) {
  EXPECT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(treeOf(root), treeWith({}));
  EXPECT_EQ(read(root / "digifilm.txt"), header + trailer);
  EXPECT_EQ(read(root / "misc/favorite.mrk"),
            "[HDR]\r\nGEN REV = 01.00\r\nGEN CRT = \"Orvelin\"\r\n[FAVORITES]\r\n");

  // What the CD starts with, and shows, lies where the support files are unpacked.
  std::string autorun = read(root / "autorun.inf");
  EXPECT_EQ(autorun.substr(0, 11), "[autorun]\r\n");
  std::replace(autorun.begin(), autorun.end(), '\\', '/');
  for (const std::string key : {"\nicon=", "\nshellexecute="}) {
    const auto begin = autorun.find(key) + key.size();
    const std::string path = autorun.substr(begin, autorun.find('\r', begin) - begin);
    EXPECT_TRUE(fs::is_regular_file(root / path)) << path;
  }
}

TEST_F(Build, NestsWhenRepeatedAndReusesWhenTheDestinationIsChosenAnew) {
  photo("a.png", "aquarelle.png");
  ASSERT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(state.outFol->Path(), root.string());
  ASSERT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(treeOf(root / "DIGIFILM"), treeWith({"001.jpg"}));
  EXPECT_EQ(state.tabItem.size(), 1U);

  fs::remove_all(root / "DIGIFILM");
  write(root / "dcim/100k6230/077.jpg", "mine");
  write(root / "digifilm.txt", std::string(5000, 'x'));
  state.outFol = item(folder / "CD");
  ASSERT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(treeOf(root), treeWith({"001.jpg", "077.jpg"}));
  EXPECT_LT(read(root / "digifilm.txt").size(), 1000U);
}

TEST_F(Build, IsGuardedAgainstMissingFolders) {
  BuildState without;
  without.inFol = state.inFol;
  state.inFol = nullptr;
  EXPECT_FALSE(buildDigiFilm(without) || buildDigiFilm(state));
  EXPECT_TRUE(fs::is_empty(folder / "CD"));
}

TEST_F(Build, InsideThePhotoFolderTakesThePicturesOfAnEarlierOne) {
  photo("z.jpg", "vacances/plage.jpg");
  photo("zz.webp", "oiseau.webp");
  state.outFol = item(folder / "photos");
  ASSERT_TRUE(buildDigiFilm(state));
  state.outFol = item(folder / "photos");
  ASSERT_TRUE(buildDigiFilm(state));
  // 001 and 002 of the first build come first and are copied onto themselves.
  const fs::path placed = folder / "photos/DIGIFILM/dcim/100k6230";
  EXPECT_EQ(treeOf(placed), (std::vector<std::string>{"001.jpg", "002.jpg", "003.jpg", "004.jpg"}));
  EXPECT_EQ(read(placed / "001.jpg"), read(sample("vacances/plage.jpg")));
  EXPECT_EQ(read(placed / "003.jpg"), read(placed / "001.jpg"));
  EXPECT_EQ(read(placed / "004.jpg"), read(placed / "002.jpg"));
}

}  // namespace orvelin::test
