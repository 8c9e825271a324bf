#pragma once

#include <stdexcept>
#include <string>

#include "../support.h"

namespace orvelin::test {

/// Makes the input a find of the fuzzer, or fails the test.
inline void expect(bool holds, const char* what) {
  if (!holds) throw std::logic_error(what);
}

/// Tries one input in a scratch folder: what each fuzzer consists of.
void attempt(const std::string& bytes, const fs::path& folder);

}  // namespace orvelin::test
