#include <fcntl.h>
#include <unistd.h>

#include "platform/core/standardstreams.h"
#include "platform/core/volumes.h"
#include "support.h"

namespace orvelin::test {

using namespace std::literals;

using Names = FileTest;

TEST_F(Names, ThatAreInvalidGiveNil) {
  const auto base = item(folder.string() + "/");
  for (const std::string& name : {""s, "."s, ".."s, "a/b"s, "/"s, "a\0b"s, std::string(256, 'a')})
    EXPECT_FALSE(base->Child(name)) << name;
  EXPECT_EQ(base->Child("..a")->Path().native(), folder / "..a");
  EXPECT_EQ(base->Name(), folder.filename());
}

using Files = FileTest;

TEST_F(Files, AreCopiedWithTheirTimeAndReplaceSymlinks) {
  write(folder / "source", std::string(300'000, 'x') + "end");
  setTime(folder / "source", 1'000'000'000);
  fs::create_symlink("source", folder / "copied");
  for (const char* target : {"source", "copied"})  // also onto itself
    item(folder / "source")->CopyFileTo(item(folder / target));
  EXPECT_EQ(read(folder / "copied"), std::string(300'000, 'x') + "end");
  EXPECT_EQ(fs::last_write_time(folder / "copied"), fs::last_write_time(folder / "source"));
  EXPECT_FALSE(fs::is_symlink(folder / "copied"));
  fs::create_symlink("source", folder / "kept");
  fs::create_directory(folder / ".kept.orvelin");  // prevents the temporary file
  EXPECT_FALSE(item(folder / "kept")->CreateBinaryFile("text"));
  EXPECT_TRUE(fs::is_symlink(folder / "kept")) << "removed before the new file exists";

  atYields([&] { fs::resize_file(folder / "source", 280'000); });
  testing::internal::CaptureStderr();
  item(folder / "source")->CopyFileTo(item(folder / "cut"));
  EXPECT_NE(
      testing::internal::GetCapturedStderr().find("lire «\u00A0" + folder.string() + "/source"),
      std::string::npos);
  EXPECT_FALSE(fs::exists(folder / "cut"));
}

TEST_F(Files, AreOnVolumesMountedByDesktops) {
  write(folder / "mounts",
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
  EXPECT_GE(::fcntl(STDIN_FILENO, F_GETFD), 0);
  ::close(ends[1]);
}

TEST_F(Files, ThatAreDevicesAreNotOpenedAndMissingOnesHaveADefaultDate) {
  EXPECT_FALSE(item("/dev/zero")->OpenAsBinaryFile() || item("/dev/zero")->CreateBinaryFile(""));
  testing::internal::CaptureStderr();
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(item("/no\nwhere")->ModificationDate().TotalSeconds(), 2'082'844'800.0);
    EXPECT_EQ(item("/no\nwhere")->CreationDate().Year(), 1970);
  }
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      "Orvelin\u00A0: Impossible de lire «\u00A0/no?where\u00A0»\u00A0: cet emplacement n’existe "
      "pas, ou plus.\n");
}

}  // namespace orvelin::test
