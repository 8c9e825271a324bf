#include <sys/stat.h>
#include <unistd.h>

#include <climits>

#include "support.h"

namespace orvelin::test {

using namespace std::string_literals;

TEST(Nil, ThrowsItsReasonWhereItIsUsed) {
  EXPECT_THROW(Ref<FolderItem>()->Name(), NilObjectException);
  try {
    Ref<FolderItem>(Failure{"Impossible de créer le fichier", "/a\nb", "raison"})->Name();
    FAIL() << "nil was used";
  } catch (const NilObjectException& failure) {
    EXPECT_STREQ(failure.what(),
                 "Impossible de créer le fichier «\u00A0/a?b\u00A0»\u00A0: raison.");
  }
}

using Names = FileTest;

TEST_F(Names, ThatDesignateNoChildGiveNil) {
  const auto base = item(folder);
  for (const std::string& name : {""s, "."s, ".."s, "a/b"s, "/"s, "a\0b"s, std::string(256, 'a')})
    EXPECT_FALSE(base->Child(name)) << name;
  EXPECT_FALSE(item(folder / std::string(PATH_MAX - 20, 'a'))->Child(std::string(200, 'a')));
  EXPECT_EQ(base->Child(std::string(255, 'a'))->Name().size(), 255U);
  EXPECT_EQ(base->Child("..a")->Name(), "..a");
}

TEST_F(Names, AreListedHiddenOnesTooInTheOrderOfTheirBytes) {
  const auto names = {".c", "B", "[a] *?", "a b", "b", "é", "\xff\xfe"};
  for (const char* name : names) write(folder / name, "");
  const auto base = item(folder);
  ASSERT_EQ(base->Count(), 7);
  int index = 0;
  for (const char* name : names) EXPECT_EQ(base->Item(++index)->Name(), name);
  EXPECT_FALSE(base->Item(0) || base->Item(8)) << "there are seven";
  setTime(folder, 1'000'000'000);
  EXPECT_EQ(base->Count(), 7);
  write(folder / "~", "");
  EXPECT_EQ(base->Count(), 8) << "a change is seen";
  fs::remove(folder / "é");
  EXPECT_FALSE(base->Item(7)->Exists()) << "items come from the last listing";
  EXPECT_EQ(item(folder / "none")->Count(), 0);
}

using Files = FileTest;

TEST_F(Files, ThatAreNotRegularAreNeverOpened) {
  ::mkfifo((folder / "fifo").c_str(), 0666);
  for (const auto& file : {item(folder / "fifo"), item(folder), item("/dev/zero")})
    EXPECT_FALSE(file->OpenAsBinaryFile() || file->OpenAsPicture() || file->CreateBinaryFile(""))
        << file->Path();
}

TEST_F(Files, AreCreatedEmptyAndNeverThroughALink) {
  write(folder / "old", "long old content");
  fs::create_symlink("old", folder / "link");
  for (const char* name : {"old", "link"})
    item(folder / name)->CreateBinaryFile("text")->Write(name);
  EXPECT_FALSE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(read(folder / "old"), "old");
}

TEST_F(Files, AreCopiedWithTheirTimeAndOrdinaryPermissions) {
  write(folder / "source", std::string(300'000, 'x') + "end");
  setTime(folder / "source", 1'000'000'000);
  fs::permissions(folder / "source", fs::perms::owner_read);
  fs::create_symlink("source", folder / "target");
  item(folder / "source")->CopyFileTo(item(folder / "target"));
  EXPECT_EQ(read(folder / "target"), read(folder / "source"));
  EXPECT_EQ(fs::last_write_time(folder / "target"), fs::last_write_time(folder / "source"));
  EXPECT_NE(fs::status(folder / "target").permissions() & fs::perms::owner_write, fs::perms::none);
}

TEST(Dates, ThatAreNotKnownReadTheFirstOf1970) {
  EXPECT_EQ(Date::ofInstant(std::int64_t{1} << 40).Year(), 1970);
  EXPECT_EQ(Date::ofInstant(INT64_MAX).Year(), 1970);
  EXPECT_EQ(item("/nowhere")->ModificationDate().TotalSeconds(), 2'082'844'800.0);
  EXPECT_EQ(item("/nowhere")->CreationDate().Year(), 1970);
}

}  // namespace orvelin::test
