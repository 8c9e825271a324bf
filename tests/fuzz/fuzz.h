#pragma once

#include <stdexcept>
#include <string>

#include "../support.h"

namespace orvelin::test {

/// Throws if the condition is false, which fails the fuzzer.
inline void expect(bool holds, const char* what) {
  if (!holds) throw std::logic_error(what);
}

/// Tries one input with files in `folder`. Each fuzzer defines it.
void attempt(const std::string& bytes, const fs::path& folder);

}  // namespace orvelin::test
