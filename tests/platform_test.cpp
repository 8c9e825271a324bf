#include <unistd.h>

#include <climits>
#include <thread>

#include "platform/core/standardstreams.h"
#include "platform/core/volumes.h"
#include "support.h"

namespace orvelin::test {

using namespace std::literals;

TEST(Nil, ThrowsItsReason) try {
  Ref<FolderItem>(Failure{"Impossible de créer", "/a\nb", "raison"})->Name();
  FAIL() << "no exception";
} catch (const NilObjectException& failure) {
  EXPECT_STREQ(failure.what(), "Impossible de créer «\u00A0/a?b\u00A0»\u00A0: raison.");
  EXPECT_THROW(Ref<FolderItem>()->Name(), NilObjectException);
}

using Names = FileTest;

TEST_F(Names, ThatAreInvalidGiveNil) {
  const auto base = item(folder.string() + "/");
  for (const std::string& name : {""s, "."s, ".."s, "a/b"s, "/"s, "a\0b"s, std::string(256, 'a')})
    EXPECT_FALSE(base->Child(name)) << name;
  EXPECT_FALSE(item(folder / std::string(PATH_MAX - 20, 'a'))->Child(std::string(200, 'a')));
  EXPECT_EQ(base->Child(std::string(255, 'a'))->Name().size(), 255U);
  EXPECT_EQ(base->Child("..a")->Path().native(), folder / "..a");
  EXPECT_EQ(item("/")->Name(), "/");
  EXPECT_EQ(base->Name(), folder.filename());
}

TEST_F(Names, AreListedInByteOrder) {
  const auto names = {".c", "B", "[a] *?", "a b", "b", "é", "\xff\xfe"};
  for (const char* name : names) write(folder / name, "");
  const auto base = item(folder);
  ASSERT_EQ(base->Count(), 7);
  int index = 0;
  for (const char* name : names) EXPECT_EQ(base->Item(++index)->Name(), name);
  EXPECT_FALSE(base->Item(0) || base->Item(8)) << "out of range";
  fs::remove(folder / "é");
  EXPECT_FALSE(base->Item(6)->Exists()) << "items come from the last listing";
}

TEST_F(Names, AreListedAgainIfTheFolderMayHaveChanged) {
  setTime(folder, 4'000'000'000);
  EXPECT_FALSE(Listing(folder).isCurrent()) << "another change may have the same time";
  std::this_thread::sleep_for(3100ms);
  const Listing listing(folder);
  EXPECT_TRUE(listing.isCurrent());
  EXPECT_FALSE(Listing(sample("IMG_0001.JPG")).isCurrent()) << "not a folder";

  write(folder / "new", "");
  setTime(folder, 4'000'000'000);
  std::this_thread::sleep_for(3100ms);
  EXPECT_FALSE(listing.isCurrent());
}

using Files = FileTest;

TEST_F(Files, AreCopiedWithTheirTimeAndReplaceSymlinks) {
  write(folder / "source", std::string(300'000, 'x') + "end");
  setTime(folder / "source", 1'000'000'000);
  for (const char* name : {"copied", "created"}) fs::create_symlink("source", folder / name);
  item(folder / "source")->CopyFileTo(item(folder / "copied"));
  item(folder / "created")->CreateBinaryFile("text")->Write("new");
  EXPECT_EQ(read(folder / "copied"), read(folder / "source"));
  EXPECT_EQ(read(folder / "created"), "new");
  EXPECT_EQ(fs::last_write_time(folder / "copied"), fs::last_write_time(folder / "source"));
  EXPECT_FALSE(fs::is_symlink(folder / "copied") || fs::is_symlink(folder / "created"));

  atYields([&] { fs::resize_file(folder / "source", 280'000); });
  testing::internal::CaptureStderr();
  item(folder / "source")->CopyFileTo(item(folder / "cut"));
  EXPECT_NE(
      testing::internal::GetCapturedStderr().find("lire «\u00A0" + folder.string() + "/source"),
      std::string::npos);
  EXPECT_FALSE(fs::exists(folder / "cut"));
}

TEST_F(Files, ThatAreReadOnlyAreReplaced) {
  write(folder / "inner/file", "long old content");
  fs::permissions(folder / "inner/file", fs::perms::owner_read);
  const auto file = item(folder / "inner/file");
  fs::create_directory(folder / "inner/.file.orvelin");  // prevents the temporary file
  becomeOrdinaryUser();
  EXPECT_FALSE(file->CreateBinaryFile("text"));
  EXPECT_EQ(read(folder / "inner/file"), "long old content");
  fs::remove(folder / "inner/.file.orvelin");
  file->CreateBinaryFile("text")->Write("new");
  EXPECT_EQ(contentsOf(folder / "inner"), (Contents{{"file", "new"}}));
}

TEST_F(Files, AreOnVolumesMountedByDesktops) {
  write(folder / "mounts",
        "/dev/sda1 / ext4 rw 0 0\n"
        "server:/run/media /mnt/media nfs rw 0 0\n"
        "/dev/sdb1 /run/media/anne/EOS_DIGITAL vfat rw 0 0\n"
        "/dev/sdc1 /media/anne/Photos\\040de\\040Noël ext4 rw 0 0\n");
  EXPECT_EQ(removableVolumes(folder / "mounts"),
            (std::vector<fs::path>{"/media/anne/Photos de Noël", "/run/media/anne/EOS_DIGITAL"}));
  EXPECT_TRUE(removableVolumes("nowhere").empty());
}

TEST(StandardStreams, AreOpenAndIgnoreSigpipe) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  for (const int closed : {ends[0], STDIN_FILENO}) ::close(closed);
  secureStandardStreams();
  EXPECT_EQ(::write(ends[1], "x", 1), -1);
  for (const int open : {ends[1], STDIN_FILENO}) EXPECT_EQ(::close(open), 0);
}

TEST_F(Files, ThatAreDevicesAreNotOpenedAndMissingOnesHaveADefaultDate) {
  EXPECT_EQ(Date::ofInstant(INT64_MAX).Year(), 1970);
  EXPECT_FALSE(item("/dev/zero")->OpenAsBinaryFile() || item("/dev/zero")->CreateBinaryFile(""));
  testing::internal::CaptureStderr();
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(item("/nowhere")->ModificationDate().TotalSeconds(), 2'082'844'800.0);
    EXPECT_EQ(item("/nowhere")->CreationDate().Year(), 1970);
  }
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      "Orvelin\u00A0: Impossible de lire «\u00A0/nowhere\u00A0»\u00A0: cet emplacement n’existe "
      "pas, ou plus.\n");
}

}  // namespace orvelin::test
