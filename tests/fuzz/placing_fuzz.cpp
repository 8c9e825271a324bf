#include "fuzz.h"
#include "photos/digiitem.h"
#include "platform/core/text.h"

namespace orvelin::test {

/// Any bytes before the JPEG check: copied unchanged if four of them say JFIF, otherwise converted
/// or left out, in which case an older picture stays.
void attempt(const std::string& bytes, const fs::path& folder) {
  const fs::path placed = folder / "dcim/100k6230/001.jpg";
  write(placed, "older");
  write(folder / "file", bytes);
  DigiItem(item(folder / "file"), item(folder), 0).BuildData();
  const std::string result = read(placed);
  if (bytes.size() >= 10 && equalTexts(bytes.substr(6, 4), "JFIF"))
    expect(result == bytes, "what says JFIF is copied");
  else
    expect(result == "older" || result.substr(6, 4) == "JFIF", "all else is converted");
}

}  // namespace orvelin::test
