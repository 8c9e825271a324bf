#include "builder/orderfile.h"
#include "fuzz.h"

namespace orvelin::test {

/// Any number, time and name of a picture: its record in the order file holds them as they are.
void attempt(const std::string& bytes, const fs::path& folder) {
  if (bytes.size() < 9) return;
  std::int64_t numbers = 0;
  for (const char byte : bytes.substr(0, 8))
    numbers = numbers << 8 | static_cast<std::uint8_t>(byte);
  const auto index = static_cast<std::int32_t>(numbers & 0x3fffffff);
  const std::string name = bytes.substr(8, 255);
  const auto picture = item(folder)->Child(name);
  if (!picture) return;
  write(picture->Path(), "123456JFIF");
  setTime(picture->Path(), numbers >> 28);
  writeOrderFile(*item(folder / "order"), {makeRef<DigiItem>(picture, item(folder), index)});

  const std::string number = std::string(index < 9    ? "00"
                                         : index < 99 ? "0"
                                                      : "") +
                             std::to_string(index + 1) + ".jpg";
  const std::string place = "/dcim/" + std::to_string(100 + (index + 1) / 51 * 2) + "k6230/";
  const std::string record = "[Std]\r\nQTY=1\r\nFILE=" + place + number + "\r\nORIGINAL=" + place +
                             name + "\r\nTIMESTAMP=0x";
  const std::string order = read(folder / "order");
  expect(order.substr(236, record.size()) == record, "the record follows the header");
  const auto end = order.find_first_not_of("-0123456789abcdef", 236 + record.size());
  expect(end > 236 + record.size(), "there is a time stamp");
  expect(order.size() - end == 4 + 35 && order.substr(end, 4) == "\r\n\r\n", "the trailer follows");
  expect(read(folder.string() + place + number) == "123456JFIF", "the picture is in its place");
}

}  // namespace orvelin::test
