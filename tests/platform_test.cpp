#include <sys/stat.h>
#include <unistd.h>

#include <climits>

#include "platform/core/text.h"
#include "support.h"

namespace orvelin::test {

TEST(Nil, ThrowsItsReasonWhereItIsUsed) {
  const Ref<FolderItem> nil = Failure{"Impossible de créer le fichier", "/a\nb", "raison"};
  EXPECT_FALSE(nil);
  try {
    nil->Name();
    FAIL() << "nil was used";
  } catch (const NilObjectException& failure) {
    EXPECT_STREQ(failure.what(), "Impossible de créer le fichier « /a?b » : raison.");
  }
  EXPECT_THROW(Ref<FolderItem>()->Name(), NilObjectException);
}

TEST(Text, FunctionsWriteWhatTheFrameworksDo) {
  EXPECT_EQ(Chr(13) + Chr(9), "\r\t");
  EXPECT_EQ(Str(1000.0), "1000");
  EXPECT_EQ(Format(7, "000"), "007");
  EXPECT_EQ(Format(1000, "000"), "1000");
  EXPECT_EQ(Hex(0), "0");
  EXPECT_EQ(Hex(0x42b03b68), "42B03B68");
  EXPECT_EQ(Hex(-31), "-1F");
  EXPECT_EQ(Lowercase("0xAB É"), "0xab É");
  EXPECT_TRUE(equalTexts("jFiF", "JFIF"));
  EXPECT_FALSE(equalTexts("JFIF", "JFI"));
  EXPECT_FALSE(equalTexts("é", "É"));
}

using Names = FileTest;

TEST_F(Names, ThatDesignateNoChildGiveNil) {
  const auto base = item(folder);
  for (const std::string name : {"", ".", "..", "a/b", "/", "../x"})
    EXPECT_FALSE(base->Child(name));
  EXPECT_FALSE(base->Child(std::string("a\0b", 3)));
  EXPECT_FALSE(base->Child(std::string(256, 'a')));
  EXPECT_FALSE(item(folder / std::string(PATH_MAX - 20, 'a'))->Child(std::string(200, 'a')));
  EXPECT_EQ(base->Child(std::string(255, 'a'))->Name().size(), 255U);
  EXPECT_EQ(base->Child("..a")->Name(), "..a");
}

TEST_F(Names, AreListedHiddenOnesTooInTheOrderOfTheirBytes) {
  for (const char* name : {"b", "B", "\xff\xfe", ".c", "[a] *?", "é", "a b"})
    write(folder / name, "");
  const auto base = item(folder);
  ASSERT_EQ(base->Count(), 7);
  int index = 0;
  for (const char* name : {".c", "B", "[a] *?", "a b", "b", "é", "\xff\xfe"})
    EXPECT_EQ(base->Item(++index)->Name(), name);
  EXPECT_FALSE(base->Item(0));
  EXPECT_FALSE(base->Item(8));
}

TEST_F(Names, StayAsListedUntilTheNextCount) {
  write(folder / "a", "");
  const auto base = item(folder);
  base->Count();
  fs::rename(folder / "a", folder / "b");
  EXPECT_FALSE(base->Item(1)->Exists());
  base->Count();
  EXPECT_EQ(base->Item(1)->Name(), "b");
  EXPECT_EQ(item(folder / "none")->Count(), 0);
}

TEST_F(Names, OfAliasesAreTheirTargets) {
  write(folder / "there/target", "x");
  fs::create_directory(folder / "here");
  fs::create_symlink("../there", folder / "here/1");
  fs::create_symlink("../there/target", folder / "here/2");
  fs::create_symlink("nowhere", folder / "here/3");
  const auto base = item(folder / "here");
  EXPECT_EQ(base->Count(), 3);
  EXPECT_TRUE(base->Item(1)->Directory());
  EXPECT_EQ(base->Item(1)->Name(), "there");
  EXPECT_EQ(base->Item(2)->Name(), "target");
  EXPECT_FALSE(base->Item(3)->Exists());
  EXPECT_FALSE(base->Item(3)->Directory());
  EXPECT_FALSE(base->Item(3)->OpenAsBinaryFile());
}

using Files = FileTest;

TEST_F(Files, ThatAreNotRegularAreNeverOpened) {
  ::mkfifo((folder / "fifo").c_str(), 0666);
  for (const fs::path& path : {folder / "fifo", folder, fs::path("/dev/zero")}) {
    EXPECT_FALSE(item(path)->OpenAsBinaryFile()) << path;
    EXPECT_FALSE(item(path)->OpenAsPicture()) << path;
    EXPECT_FALSE(item(path)->CreateBinaryFile("text")) << path;
  }
}

TEST_F(Files, AreCreatedEmptyAndNeverThroughALink) {
  write(folder / "old", "long old content");
  item(folder / "old")->CreateBinaryFile("text")->Write("new");
  EXPECT_EQ(read(folder / "old"), "new");

  fs::create_symlink("old", folder / "link");
  item(folder / "link")->CreateBinaryFile("text")->Write("other");
  EXPECT_FALSE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(read(folder / "old"), "new");
}

TEST_F(Files, AreCopiedWithTheirTimeAndOrdinaryPermissions) {
  write(folder / "source", std::string(300'000, 'x') + "end");
  setTime(folder / "source", 1'000'000'000);
  fs::permissions(folder / "source", fs::perms::owner_read);
  write(folder / "precious", "precious");
  fs::create_symlink("precious", folder / "target");

  item(folder / "source")->CopyFileTo(item(folder / "target"));
  EXPECT_EQ(read(folder / "target"), read(folder / "source"));
  EXPECT_EQ(read(folder / "precious"), "precious");
  struct stat status {};
  ::stat((folder / "target").c_str(), &status);
  EXPECT_EQ(status.st_mtime, 1'000'000'000);
  EXPECT_TRUE(status.st_mode & S_IWUSR);

  item(folder / "target")->CopyFileTo(item(folder / "target"));
  EXPECT_EQ(read(folder / "target"), read(folder / "source"));
  EXPECT_EQ(treeOf(folder), (std::vector<std::string>{"precious", "source", "target"}));
}

TEST_F(Files, ThatADiskHasNoRoomForLeaveNothingUnderTheirName) {
  write(folder / "source", std::string(300'000, 'x'));
  write(folder / "older", "older");
  const auto picture = item(sample("IMG_0001.JPG"))->OpenAsPicture();
  const auto stream = item(folder / "stream")->CreateBinaryFile("text");
  {
    const FullDisk disk(1000);
    item(folder / "source")->CopyFileTo(item(folder / "copy"));
    item(folder / "source")->CopyFileTo(item(folder / "older"));
    item(folder / "picture")->SaveAsJPEG(picture);
    for (int i = 0; i < 50'000; ++i) stream->Write("abc");
    stream->Close();
  }
  EXPECT_EQ(treeOf(folder), (std::vector<std::string>{"older", "source", "stream"}));
  EXPECT_EQ(read(folder / "older"), "older");
  EXPECT_EQ(read(folder / "stream").size(), 1000U);
}

TEST_F(Files, ThatAnInterruptedCopyLeftBesideAreConsumedByTheNext) {
  write(folder / "source", "new");
  write(folder / ".001.jpg.orvelin", "half of an old pict");
  item(folder / "source")->CopyFileTo(item(folder / "001.jpg"));
  EXPECT_EQ(treeOf(folder), (std::vector<std::string>{"001.jpg", "source"}));
  EXPECT_EQ(read(folder / "001.jpg"), "new");
}

using Streams = FileTest;

TEST_F(Streams, ReadBackWhatTheyWroteInBothByteOrders) {
  for (const bool littleEndian : {false, true}) {
    const auto out = item(folder / "file")->CreateBinaryFile("text");
    out->LittleEndian(littleEndian);
    out->WriteLong(-2);
    out->WriteDouble(3.0e9);
    out->WritePString(std::string(300, 'n'));
    out->Write(std::string(200'000, 'd'));
    out->WriteLong(0x01020304);
    out->Close();
    EXPECT_EQ(read(folder / "file").substr(0, 4),
              littleEndian ? "\xfe\xff\xff\xff" : "\xff\xff\xff\xfe");

    const auto in = item(folder / "file")->OpenAsBinaryFile();
    in->LittleEndian(littleEndian);
    EXPECT_EQ(in->ReadLong(), -2);
    EXPECT_EQ(in->ReadDouble(), 3.0e9);
    EXPECT_EQ(in->ReadPString(), std::string(255, 'n'));
    EXPECT_EQ(in->Read(200'000), std::string(200'000, 'd'));
    EXPECT_EQ(in->ReadLong(), 0x01020304);
  }
}

TEST_F(Streams, YieldWhatIsLeftAndThenNothing) {
  write(folder / "file",
        "\x05"
        "abc");
  const auto stream = item(folder / "file")->OpenAsBinaryFile();
  EXPECT_EQ(stream->Read(-1), "");
  EXPECT_EQ(stream->ReadPString(), "abc");
  EXPECT_EQ(stream->ReadPString(), "");
  EXPECT_EQ(stream->ReadLong(), 0);
  EXPECT_EQ(stream->ReadDouble(), 0.0);
  EXPECT_LT(item(folder / "file")->OpenAsBinaryFile()->Read(INT_MAX).capacity(), 100U);
}

TEST(Dates, BeyondTheCalendarReadTheFirstOf1970) {
  EXPECT_EQ(Date::ofInstant(std::int64_t{1} << 40).Year(), 1970);
  EXPECT_EQ(Date::ofInstant(INT64_MAX).Year(), 1970);
}

TEST(Dates, OfAnItemThatDoesNotExistReadTheFirstOf1970) {
  const auto nowhere = item("/nowhere/at/all");
  EXPECT_EQ(nowhere->ModificationDate().TotalSeconds(), 2'082'844'800.0);
  EXPECT_EQ(nowhere->CreationDate().Year(), 1970);
}

}  // namespace orvelin::test
