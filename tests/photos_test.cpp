#include <sys/stat.h>

#include <chrono>
#include <map>

#include "photos/scan.h"
#include "photos/unfinished.h"
#include "support.h"

namespace orvelin::test {

using namespace std::literals;
using Items = FileTest;

TEST_F(Items, ArePlacedInNumberedFolders) {
  const std::map<int, std::string> places{{0, "100k6230/001.jpg"},       {49, "100k6230/050.jpg"},
                                          {50, "102k6230/051.jpg"},      {100, "102k6230/101.jpg"},
                                          {101, "104k6230/102.jpg"},     {999, "138k6230/1000.jpg"},
                                          {22949, "1000k6230/22950.jpg"}};
  for (const auto& [index, place] : places) {
    SCOPED_TRACE(place);
    const DigiItem digiItem(item(sample(".cachée.jpg")), item(folder), index);
    EXPECT_TRUE(fs::is_directory((folder / "dcim" / place).parent_path())) << "before any copy";
    EXPECT_TRUE(digiItem.BuildData().starts_with("[Std]\r\nQTY=1\r\nFILE=/dcim/" + place + "\r\n"));
    EXPECT_EQ(read(folder / "dcim" / place), read(sample(".cachée.jpg")));
  }
  EXPECT_THROW(DigiItem(item(folder), nullptr, 0), NilObjectException);
  write(folder / "lower", "123456jfif");
  DigiItem(item(folder / "lower"), item(folder), 0).BuildData();
  EXPECT_EQ(read(folder / "dcim/100k6230/001.jpg"), "123456jfif") << "copied";
}

using Records = FileTest;

TEST_F(Records, ShiftTheYearSoSomeDatesCountADayMore) {
  using namespace std::chrono;
  write(folder / "photo", "no picture");
  const auto stampOf = [this](std::time_t modified) {
    setTime(folder / "photo", modified);
    const std::string record = DigiItem(item(folder / "photo"), item(folder), 0).BuildData();
    return record.substr(record.rfind('=') + 1);
  };
  for (int y = 1970; y < 2100; ++y)
    for (const auto day : {January / 31, February / 28, February / 29, March / 1, December / 31}) {
      const year_month_day date{year{y}, day.month(), day.day()};
      if (!date.ok()) continue;
      const bool early = day.month() <= February;
      const bool more = y % 4 == 0 ? early : y % 4 == 2 ? !early : y % 4 == 3;
      const auto count = seconds{sys_days{date}.time_since_epoch()}.count();
      // Paris is an hour ahead in winter.
      EXPECT_EQ(std::stoll(stampOf(count - 3600), nullptr, 16), count + (more ? 86400 : 0))
          << y << '-' << unsigned(day.month()) << '-' << unsigned(day.day());
    }
  // 1970 began at -3600 in Paris. Times before it have a sign.
  EXPECT_EQ(stampOf(-3600) + stampOf(-3600 - 31) + stampOf(-3600 + 15), "0x00x-1f0xf");
}

class Scan : public FileTest {
 protected:
  /// Scans the folder `photos` and returns the original names of the pictures in order.
  Tree scanned() {
    fs::create_directory(folder / "out");
    ScanState state(nullptr, item(folder / "out"));
    state.BuildTab(item(folder / "photos"));
    Tree names;
    for (const auto& digiItem : state.tabItem) {
      const std::string record = digiItem->BuildData();
      const auto end = record.find("\r\nTIMESTAMP="), begin = record.rfind('/', end) + 1;
      names.push_back(record.substr(begin, end - begin));
    }
    return names;
  }
  void photo(const std::string& name) { addPhoto(name, "vacances/plage.jpg"); }
};

TEST_F(Scan, IsDepthFirstAndFollowsSymlinksWithoutCycles) {
  std::string deep = "deep";
  for (int level = 0; level < 200; ++level) deep.insert(0, "folder/");
  photo(deep);
  photo("1/pict\xff[re] é");
  photo("1.jpg");
  write(folder / "elsewhere/other", read(sample("vacances/plage.jpg")));
  fs::create_symlink("..", folder / "photos/1/back");
  for (const char* name : {"2", "3"}) fs::create_symlink("../elsewhere", folder / "photos" / name);
  fs::create_symlink("1/pict\xff[re] é", folder / "photos/4");
  fs::create_symlink("5", folder / "photos/5");
  fs::create_symlink(folder / "photos", folder / "elsewhere/photos");
  EXPECT_EQ(scanned(),
            (Tree{"pict\xff[re] é", "1.jpg", "other", "other", "pict\xff[re] é", "deep"}));
}

TEST_F(Scan, ListsAFolderOnceAndChecksEachEntryAtItsTurn) {
  write(folder / "photos/a", "P3\n1 1\n255\n255 0 0\n");  // PPM, which libvips could read
  photo("b/inner");
  photo("c");
  int yields = 0;
  atYields([&] {
    if (yields++ > 0) return;
    fs::remove_all(folder / "photos/b");
    fs::remove(folder / "photos/c");
    for (const char* name : {"b", "c/inner", "d"}) photo(name);
  });
  EXPECT_EQ(scanned(), (Tree{"b", "inner"}));
}

TEST_F(Scan, SkipsAndDeletesOnlyTemporaryFilesOfKilledBuilds) {
  const std::string file = ".001.jpg.orvelin", numbered = "dcim/1k6230/";
  for (const std::string& name : {numbered + file, "dcim/102k6230/.1000.jpg.orvelin"s}) photo(name);
  const Tree others{".photo.orvelin",       "1k6230/" + file,
                    "dcim/k6230/" + file,   numbered + ".01.jpg.orvelin",
                    numbered + "a/" + file, numbered + ".002.jpg.orvelin/folder"};
  for (const auto& name : others) photo(name);
  const fs::path dcim = folder / "photos/dcim";
  fs::create_symlink("a/" + file, dcim / "1k6230/.003.jpg.orvelin");
  write(folder / "dcim/3k6230" / file, "");
  fs::create_symlink(folder / "dcim/3k6230", dcim / "3k6230");
  fs::create_symlink(folder / "dcim/3k6230" / file, dcim / "1k6230/alias");
  ::mkfifo((dcim / "1k6230/.004.jpg.orvelin").c_str(), 0666);
  EXPECT_EQ(scanned().size(), others.size() + 1) << "these, and the target of a symlink";
  const std::size_t before = treeOf(folder).size();
  deleteUnfinished(*item(folder / "photos"));
  EXPECT_EQ(treeOf(folder).size(), before - 2) << "all but two";
}

}  // namespace orvelin::test
