#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const orvelin::test::Scratch scratch;
  orvelin::test::attempt({reinterpret_cast<const char*>(data), size}, scratch.folder);
  return 0;
}
