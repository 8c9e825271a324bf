#include "builder/orderfile.h"
#include "fuzz.h"

namespace orvelin::test {

/// Any time and name of a picture: its record in the order file holds the name as it is.
void attempt(const std::string& bytes, const fs::path& folder) {
  if (bytes.size() < 6) return;
  std::int64_t time = 0;
  for (const char byte : bytes.substr(0, 5)) time = time << 8 | static_cast<std::uint8_t>(byte);
  fs::create_directory(folder / "photos");
  const std::string name = bytes.substr(5, 255);
  const auto picture = item(folder / "photos")->Child(name);
  if (!picture) return;
  write(picture->Path(), "123456JFIF");
  setTime(picture->Path(), time);
  writeOrderFile(*item(folder / "order"), {makeRef<DigiItem>(picture, item(folder), 0)});

  const std::string order = read(folder / "order");
  const std::string record =
      "[Std]\r\nQTY=1\r\nFILE=/dcim/100k6230/001.jpg\r\nORIGINAL=/dcim/100k6230/" + name +
      "\r\nTIMESTAMP=0x";
  expect(order.substr(236, record.size()) == record, "the record follows the header");
  const auto end = order.find_first_not_of("0123456789abcdef", 236 + record.size());
  expect(end > 236 + record.size(), "there is a time stamp");
  expect(order.size() - end == 4 + 35 && order.substr(end, 4) == "\r\n\r\n", "the trailer follows");
  expect(read(folder / "dcim/100k6230/001.jpg") == "123456JFIF", "the picture is in its place");
}

}  // namespace orvelin::test
