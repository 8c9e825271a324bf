#pragma once

#include <dlfcn.h>

#include <ctime>
#include <functional>
#include <set>
#include <string>

#include "builder/driver.h"
#include "support.h"

namespace orvelin::test {

/// Calls the C function `function`, called `name`, which this program replaces. This is the C
/// library's, or the sanitizer's, which checks buffers.
template <auto* function, class... Args>
auto callReplaced(const char* name, Args... args) {
  static const auto replaced = reinterpret_cast<decltype(function)>(::dlsym(RTLD_NEXT, name));
  return replaced(args...);
}

/// Seconds that the monotonic clock is ahead.
extern std::time_t monotonicSkew;

/// Makes some of the calls to a function fail, as when a disk is full or removed.
struct CallFaults {
  int left = -1;                    // calls before the first failure; negative for no failure
  int times = 1 << 30;              // number of failures
  bool half = false;                // the first failing write writes half of its bytes
  std::function<void()> instead{};  // if set, called instead of failing
  int stride = 1;                   // sweep() tries every stride-th call
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

/// Calls `step` with a fault at the first call, then at each later one (at every stride-th one),
/// until it returns 0 failures or the test fails. Returns the number of calls, rounded up to a
/// multiple of the stride.
template <class Step>
int sweep(const std::string& name, CallFaults fault, const Step& step) {
  for (fault.left = 0; !testing::Test::HasFailure(); fault.left += fault.stride) {
    SCOPED_TRACE(name + " at call " + std::to_string(fault.left));
    if (step(fault) > 0) continue;
    // Every step makes more than three calls. If fewer are counted, some bypass the replacement.
    EXPECT_GT(fault.left, 3) << "too few calls";
    break;
  }
  return fault.left;
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

  void TearDown() override { monotonicSkew = 0; }

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
    int placed = 0;
    for (const auto& [path, bytes] : contentsOf(cd)) {
      SCOPED_TRACE(path);
      if (path.ends_with(".jpg")) ++placed;
      EXPECT_TRUE(pictures.contains(bytes) || !path.ends_with(".jpg")) << "is partial";
      EXPECT_TRUE(killed || !path.ends_with(".orvelin")) << "is left";
      const auto size = renumbered ? calm.at("DIGIFILM/digifilm.txt").find("[Std]") : bytes.size();
      EXPECT_TRUE(!path.ends_with(".txt") || calm.at(path).starts_with(bytes.substr(0, size)));
    }
    const std::string order = read(cd / "DIGIFILM/digifilm.txt"),
                      lastButOne = "00" + std::to_string(placed - 1) + ".jpg";
    EXPECT_TRUE(!killed || placed < 2 || order.find(lastButOne) != std::string::npos)
        << "there is no record of " << lastButOne;
    EXPECT_TRUE(build(cd));
    EXPECT_TRUE(contentsOf(cd) == calm) << "another build gives another tree";
    fs::remove_all(cd);
    EXPECT_TRUE(contentsOf(photos) == before) << "photographs were changed";
  }

  const fs::path photos = folder / "photos", cd = folder / "CD";
  Contents before, calm;
  std::set<std::string> pictures;
};

}  // namespace orvelin::test
