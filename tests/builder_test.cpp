#include <unistd.h>

#include "builder/driver.h"
#include "builder/filetypes.h"
#include "builder/generatestring.h"
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

const std::vector<std::string> support{"ORVELIN", "ORVELIN/LISEZMOI.txt", "ORVELIN/orvelin.ico",
                                       "autorun.inf"};

}  // namespace

TEST(GenerateString, RepeatsItsText) {
  EXPECT_EQ(GenerateString("\t", 3), "\t\t\t");
  EXPECT_EQ(GenerateString("ab", 2), "abab");
  EXPECT_EQ(GenerateString("", 5) + GenerateString("a", 0) + GenerateString("a", -1), "");
}

TEST(FileTypes, AreThereFromInstallationToRelease) {
  FileTypes::install();
  EXPECT_EQ(FileTypes::pText->MacType + FileTypes::pText->MacCreator, "TEXTtext");
  EXPECT_EQ(FileTypes::pNile->Name + FileTypes::pNile->MacType, "nile");
  FileTypes::release();
  EXPECT_FALSE(FileTypes::pText || FileTypes::pNile);
}

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

class Lookup : public FileTest {
 protected:
  ~Lookup() override {
    for (const auto& path : made) fs::remove_all(path);
  }
  /// A folder beside the application's bundle with that in its PkgInfo.
  fs::path beside(const std::string& name, const std::string& signature) {
    fs::path path = fs::path(GetFolderItem("")->Path()) / name;
    made.push_back(path);
    write(path / "PkgInfo", signature);
    return path;
  }
  std::string found() {
    Ref<FolderItem> appFolder;
    return GetResource(appFolder, "datafile")->Path();
  }
  const std::string own = GetFolderItem("Orvelin.app/Contents/Resources/datafile")->Path();

 private:
  std::vector<fs::path> made;
};

TEST_F(Lookup, FindsTheApplicationWhateverTheCurrentFolder) {
  const fs::path before = fs::current_path();
  fs::current_path(folder);
  EXPECT_EQ(found(), own);
  fs::current_path(before);
  EXPECT_TRUE(fs::exists(own));
}

TEST_F(Lookup, TakesTheFirstFolderThatHoldsTheSignatureAndNothingMore) {
  beside("1", "APPLQvzt\n");
  beside("2", "APPLQvz");
  write(beside("3", "") / "Contents/PkgInfo", "APPLQvzt");
  fs::create_directories(beside("4", "") / "PkgInfo2");
  EXPECT_EQ(found(), own);
  const fs::path lower = beside("5", "applqvzt");
  EXPECT_EQ(found(), lower / "Contents/Resources/datafile");
  beside("A", "APPLQvzt");
  EXPECT_EQ(found(), lower / "Contents/Resources/datafile");
}

TEST_F(Lookup, RemembersWhatItFoundAndLooksNoFurther) {
  Ref<FolderItem> appFolder = item(folder / "remembered");
  EXPECT_EQ(GetResource(appFolder, "x")->Path(), folder / "remembered/x");
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
  std::vector<std::string> expected(std::vector<std::string> own) {
    own.insert(own.end(), support.begin(), support.end());
    own.insert(own.end(), {"digifilm.txt", "misc", "misc/favorite.mrk"});
    std::sort(own.begin(), own.end());
    return own;
  }
  BuildState state;
  const fs::path root = folder / "CD/DIGIFILM";
};

TEST_F(Build, WithoutPicturesMakesAllTheRest) {
  EXPECT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(treeOf(root), expected({}));
  EXPECT_EQ(read(root / "digifilm.txt"), header + trailer);
  EXPECT_EQ(read(root / "misc/favorite.mrk"),
            "[HDR]\r\nGEN REV = 01.00\r\nGEN CRT = \"Orvelin\"\r\n[FAVORITES]\r\n");
  EXPECT_EQ(read(root / "autorun.inf").substr(0, 11), "[autorun]\r\n");
  const std::string icon = read(root / "autorun.inf");
  std::string named = icon.substr(icon.find("icon=") + 5);
  named = named.substr(0, named.find('\r'));
  std::replace(named.begin(), named.end(), '\\', '/');
  EXPECT_TRUE(fs::exists(root / named)) << named;
}

TEST_F(Build, NestsWhenRepeatedAndReusesWhenTheDestinationIsChosenAnew) {
  photo("a.png", "aquarelle.png");
  ASSERT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(state.outFol->Path(), root.string());
  ASSERT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(treeOf(root / "DIGIFILM"),
            expected({"dcim", "dcim/100k6230", "dcim/100k6230/001.jpg"}));
  EXPECT_EQ(state.tabItem.size(), 1U);

  fs::remove_all(root / "DIGIFILM");
  write(root / "dcim/100k6230/077.jpg", "mine");
  write(root / "digifilm.txt", std::string(5000, 'x'));
  state.outFol = item(folder / "CD");
  ASSERT_TRUE(buildDigiFilm(state));
  EXPECT_EQ(treeOf(root),
            expected({"dcim", "dcim/100k6230", "dcim/100k6230/001.jpg", "dcim/100k6230/077.jpg"}));
  EXPECT_LT(read(root / "digifilm.txt").size(), 1000U);
}

TEST_F(Build, IsGuardedAgainstMissingFolders) {
  state.inFol = nullptr;
  EXPECT_FALSE(buildDigiFilm(state));
  state.inFol = item(folder);
  state.outFol = nullptr;
  EXPECT_FALSE(buildDigiFilm(state));
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

TEST_F(Build, ThatCannotWriteEndsInAFailureThatNamesTheFile) {
  write(root / "digifilm.txt/in the way", "");
  try {
    buildDigiFilm(state);
    FAIL() << "no failure";
  } catch (const NilObjectException& failure) {
    EXPECT_EQ(failure.what(), "Impossible de créer le fichier « " +
                                  (root / "digifilm.txt").string() +
                                  " » : un dossier porte ce nom.");
  }
}

TEST_F(Build, OnAFullDiskLeavesNoPicturePartlyWritten) {
  photo("a.jpg", "IMG_0001.JPG");
  photo("b.jpg", "vacances/plage.jpg");
  photo("c.bmp", "plan [2005].bmp");
  {
    const FullDisk disk(700);
    EXPECT_TRUE(buildDigiFilm(state));
  }
  EXPECT_EQ(treeOf(root / "dcim"), std::vector<std::string>{"100k6230"});
  EXPECT_EQ(read(root / "digifilm.txt").substr(0, 236), header);
}

}  // namespace orvelin::test
