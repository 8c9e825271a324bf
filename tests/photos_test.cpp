#include <sys/stat.h>

#include <chrono>
#include <sstream>

#include "photos/scan.h"
#include "platform/core/background.h"
#include "support.h"

namespace orvelin::test {

using Items = FileTest;

TEST_F(Items, AreFoldedIntoFiftyAndThenFiftyOnes) {
  for (const auto& [index, place] : {std::pair{0, "100k6230/001.jpg"},
                                     {49, "100k6230/050.jpg"},
                                     {50, "102k6230/051.jpg"},
                                     {100, "102k6230/101.jpg"},
                                     {101, "104k6230/102.jpg"},
                                     {999, "138k6230/1000.jpg"},
                                     {22949, "1000k6230/22950.jpg"}}) {
    const DigiItem digiItem(item(sample(".cachée.jpg")), item(folder), index);
    EXPECT_TRUE(fs::is_directory((folder / "dcim" / place).parent_path())) << "before any copy";
    EXPECT_EQ(digiItem.BuildData().find("FILE=/dcim/" + std::string(place) + "\r\n"), 14U);
    EXPECT_EQ(read(folder / "dcim" / place), read(sample(".cachée.jpg")));
  }
  EXPECT_THROW(DigiItem(item(folder), nullptr, 0), NilObjectException);
}

using Records = FileTest;

TEST_F(Records, ShiftTheYearSoThatSomeClassesOfYearsCountADayMore) {
  using namespace std::chrono;
  write(folder / "photo", "no picture");
  // The stamp of a file last modified when the local clock read so many seconds since 1970.
  const auto stampAt = [this](std::time_t reading) {
    std::tm fields{};
    ::gmtime_r(&reading, &fields);
    fields.tm_isdst = -1;
    setTime(folder / "photo", ::mktime(&fields));
    const std::string record = DigiItem(item(folder / "photo"), item(folder), 0).BuildData();
    return record.substr(record.find("TIMESTAMP=") + 10);
  };
  for (int y = 1970; y < 2100; ++y)
    for (const auto day : {January / 31, February / 28, February / 29, March / 1, December / 31}) {
      const year_month_day date{year{y}, day.month(), day.day()};
      if (!date.ok()) continue;
      const bool early = day.month() <= February;
      const bool more = y % 4 == 0 ? early : y % 4 == 2 ? !early : y % 4 == 3;
      const seconds count = sys_days{date}.time_since_epoch() + 43'215s;
      std::ostringstream expected;
      expected << "0x" << std::hex << count.count() + (more ? 86400 : 0);
      EXPECT_EQ(stampAt(count.count()), expected.str()) << y;
    }
  EXPECT_EQ(stampAt(0), "0x0");
  EXPECT_EQ(stampAt(-31), "0x-1f");
}

class Scan : public FileTest {
 protected:
  /// The original names in the order of the scan of `folder`/photos.
  Tree scanned() {
    fs::create_directory(folder / "out");
    DigiItems found;
    BuildTab(item(folder / "photos"), item(folder / "out"), found);
    Tree names;
    for (const auto& digiItem : found) {
      const std::string record = digiItem->BuildData();
      const auto begin = record.find("ORIGINAL=/dcim/100k6230/") + 24;
      names.push_back(record.substr(begin, record.find("\r\n", begin) - begin));
    }
    return names;
  }
  void photo(const std::string& name) {
    write(folder / "photos" / name, read(sample("vacances/plage.jpg")));
  }
};

TEST_F(Scan, GoesDownAsFarAsFoldersDoAndFollowsAliasesButNotBackIntoAFolderItIsIn) {
  std::string deep = "deep";
  for (int level = 0; level < 200; ++level) deep.insert(0, "folder/");
  photo(deep);
  photo("1/pict\xff[re] é");
  photo("1.jpg");
  ::mkfifo((folder / "photos/1.fifo").c_str(), 0666);
  write(folder / "elsewhere/other", read(sample("vacances/plage.jpg")));
  fs::create_symlink("..", folder / "photos/1/back");
  fs::create_symlink("../1", folder / "photos/1/self");
  fs::create_symlink(folder / "elsewhere", folder / "photos/2");
  fs::create_symlink(folder / "elsewhere", folder / "photos/3");
  fs::create_symlink("1/pict\xff[re] é", folder / "photos/4");
  fs::create_symlink("5", folder / "photos/5");
  fs::create_symlink(folder / "photos", folder / "elsewhere/photos");
  EXPECT_EQ(scanned(),
            (Tree{"pict\xff[re] é", "1.jpg", "other", "other", "pict\xff[re] é", "deep"}));
}

TEST_F(Scan, ContinuesAListYieldsOnceAnEntryAndMakesNothingWithoutPictures) {
  static int yields;
  yields = 0;
  write(folder / "photos/a/text", "text");
  installBackgroundTask([] { ++yields; });
  EXPECT_TRUE(scanned().empty());
  EXPECT_TRUE(fs::is_empty(folder / "out"));
  EXPECT_EQ(yields, 2);
  installBackgroundTask(nullptr);

  photo("b");
  DigiItems found{nullptr};
  BuildTab(item(folder / "photos"), item(folder / "out"), found);
  EXPECT_NE(found.at(1)->BuildData().find("/002.jpg"), std::string::npos);
  EXPECT_THROW(BuildTab(nullptr, item(folder), found), NilObjectException);
  EXPECT_FALSE(isOpenablePicture(nullptr));
}

}  // namespace orvelin::test
