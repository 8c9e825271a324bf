#pragma once

#include <functional>
#include <set>
#include <string>

#include "builder/driver.h"
#include "support.h"

namespace orvelin::test {

/// Makes some of the calls to a function fail, as when a disk is full or removed.
struct CallFaults {
  int left = -1;                    // calls before the first failure; negative for no failure
  int times = 1 << 30;              // number of failures
  bool half = false;                // the first failing write writes half of its bytes
  std::function<void()> instead{};  // if set, called instead of failing
  int failures = 0;

  /// Counts a call. Returns false if it must fail.
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

/// Calls `step` with a fault at the first call, then at the second one, and so on, until it returns
/// 0 failures. Skips calls if `stride` is more than 1.
template <class Step>
void sweep(CallFaults way, const Step& step, int stride = 1) {
  for (way.left = 0; step(way) > 0; way.left += stride)
    if (testing::Test::HasFailure()) FAIL() << "with a fault at call " << way.left;
  EXPECT_GT(way.left, 3) << "too few calls";
}

/// Compares builds with faults to one without.
class Faults : public FileTest {
 protected:
  Faults() {
    restore();
    EXPECT_TRUE(build(folder / "calm"));
    calm = contentsOf(folder / "calm");
    for (const auto& [path, bytes] : calm) pictures.insert(bytes);
  }

  /// Restores the photographs.
  void restore() {
    fs::remove_all(photos);
    for (const char* name :
         {"IMG_0001.JPG", "IMG_0002.JPG", "vacances/plage.jpg", "aquarelle.png"}) {
      write(photos / name, read(sample(name)));
      setTime(photos / name, 1'000'000'000);
    }
    before = contentsOf(photos);
  }

  /// Runs a build. Returns whether it ran to its end.
  bool build(const fs::path& destination) try {
    fs::create_directories(destination);
    BuildState state(item(photos), item(destination));
    return buildDigiFilm(state);
  } catch (const NilObjectException&) {
    return false;
  }

  /// Expects each picture to be complete or missing, and the order file to be complete as far as it
  /// goes: a killed build lacks at most its last record. If photographs have vanished, pictures may
  /// be `renumbered`. Then expects another build to give the same tree as one without faults.
  void expectNothingPartial(bool renumbered, bool killed) {
    for (const auto& [path, bytes] : contentsOf(cd)) {
      EXPECT_TRUE(pictures.contains(bytes) || !path.ends_with(".jpg")) << path;
      EXPECT_TRUE(killed || !path.ends_with(".orvelin")) << path;
      const std::string sure = renumbered ? bytes.substr(0, 236) : bytes;  // the header
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
