#pragma once

#include <functional>
#include <set>
#include <string>

#include "builder/driver.h"
#include "support.h"

namespace orvelin::test {

/// Which of the calls to a function of the system fail, as when a disk is full or pulled out.
struct CallFaults {
  int left = -1;                    // how many calls succeed first; all if it is negative
  int times = 1 << 30;              // how many fail then
  bool half = false;                // the first write to fail has written half of its bytes
  std::function<void()> instead{};  // called in place of a failure
  int failures = 0;

  /// Counts a call; false if it fails.
  bool succeeds() {
    if (left != 0) {
      if (left > 0) --left;
      return true;
    }
    ++failures;
    if (--times == 0) left = -1;
    if (instead) instead();
    return instead != nullptr;
  }
};

/// Builds that are disturbed, compared with one that is not.
class Faults : public FileTest {
 protected:
  Faults() {
    restore();
    EXPECT_TRUE(build(folder / "calm"));
    calm = contentsOf(folder / "calm");
    for (const auto& [path, bytes] : calm) pictures.insert(bytes);
  }

  /// Puts the photographs in place as they are at first.
  void restore() {
    fs::remove_all(photos);
    for (const char* name :
         {"IMG_0001.JPG", "IMG_0002.JPG", "vacances/plage.jpg", "aquarelle.png"}) {
      write(photos / name, read(sample(name)));
      setTime(photos / name, 1'000'000'000);
    }
    before = contentsOf(photos);
  }

  /// Whether a build runs to its end.
  bool build(const fs::path& destination) try {
    fs::create_directories(destination);
    BuildState state{{{}, item(photos), item(destination)}, nullptr};
    return buildDigiFilm(state);
  } catch (const NilObjectException&) {
    return false;
  }

  /// Each picture is whole or absent, if under another's number where photographs have vanished,
  /// and the order file goes as far as it got: a kill costs at most the last picture's record.
  /// Another build then leaves what any other does.
  void expectNothingHalf(bool renumbered, bool killed) {
    for (const char* place : {"CD", "unplugged"})
      for (const auto& [path, bytes] : contentsOf(folder / place)) {
        EXPECT_TRUE(pictures.contains(bytes) || !path.ends_with(".jpg")) << path;
        const bool known =
            killed || place == std::string("unplugged");  // that a picture is unfinished
        EXPECT_TRUE(known || !path.ends_with(".orvelin")) << path;
        const std::string sure = renumbered ? bytes.substr(0, 236) : bytes;  // the header, at least
        EXPECT_TRUE(!path.ends_with("txt") || calm.at(path).starts_with(sure)) << path;
      }
    const std::string order = read(cd / "DIGIFILM/digifilm.txt"), place = "dcim/100k6230/00";
    for (char number = '1'; killed && number < '4'; ++number)
      EXPECT_TRUE(order.find(place + number) != std::string::npos ||
                  !fs::exists(cd / "DIGIFILM" / (place + char(number + 1) + ".jpg")));
    EXPECT_TRUE(build(cd));
    EXPECT_TRUE(contentsOf(cd) == calm);
    fs::remove_all(cd);
    EXPECT_TRUE(contentsOf(photos) == before);
  }

  const fs::path photos = folder / "photos", cd = folder / "CD";
  Contents before, calm;
  std::set<std::string> pictures;
};

}  // namespace orvelin::test
