#pragma once

#include <cstdlib>
#include <iostream>
#include <string>

#include "../support.h"

namespace orvelin::test {

/// Ends the fuzzer with its input as a find.
inline void expect(bool holds, const char* what) {
  if (holds) return;
  std::cerr << "not so: " << what << "\n";
  std::abort();
}

/// Tries one input, in an empty folder: what each fuzzer consists of.
void attempt(const std::string& bytes, const fs::path& folder);

}  // namespace orvelin::test
