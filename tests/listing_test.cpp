#include "platform/core/listing.h"

#include <chrono>
#include <ctime>
#include <thread>

#include "faults.h"

static std::time_t skew = 0;  // of the clock, in seconds

// Replaces the C library's function. NOLINTNEXTLINE(*-inconsistent-declaration-*)
extern "C" std::time_t time(std::time_t* result) noexcept {
  return orvelin::test::callReplaced<::time>("time", result) + skew;
}

namespace orvelin::test {

using Listings = FileTest;

TEST_F(Listings, AreMadeAgainIfTheFolderMayHaveChanged) {
  const auto base = item(folder);
  for (const char* name : {"a", "b"}) write(folder / name, "");
  EXPECT_TRUE(base->Count() == 2 && !base->Item(0) && !base->Item(3));
  fs::remove(folder / "b");
  EXPECT_FALSE(base->Item(2)->Exists()) << "items come from the last listing";
  EXPECT_EQ(base->Count(), 1);

  setTime(folder, 4'000'000'000);
  EXPECT_FALSE(Listing(folder).isCurrent()) << "another change may have the same time";
  skew = 3;  // one second more than the largest step of a file system's clock
  const Listing listing(folder);
  EXPECT_TRUE(listing.isCurrent());
  EXPECT_FALSE(Listing(sample("IMG_0001.JPG")).isCurrent()) << "not a folder";
  // More than a step of the kernel's clock: the time of change must differ.
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  write(folder / "new", "");
  setTime(folder, 4'000'000'000);
  EXPECT_FALSE(listing.isCurrent());
  skew = 0;
}

}  // namespace orvelin::test
