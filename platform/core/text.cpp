#include "platform/core/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace orvelin {

namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string digits(std::uint64_t number, int base) {
  char buffer[64];
  char* const end = std::to_chars(std::begin(buffer), std::end(buffer), number, base).ptr;
  return {buffer, end};
}

std::uint64_t magnitude(std::int64_t number) {
  const auto bits = static_cast<std::uint64_t>(number);
  return number < 0 ? 0 - bits : bits;
}

}  // namespace

std::string Chr(int code) { return std::string(1, static_cast<char>(code)); }

std::string Str(double number) { return Format(static_cast<std::int64_t>(number), "0"); }

std::string Format(std::int64_t number, std::string_view zeros) {
  std::string text = digits(magnitude(number), 10);
  if (text.size() < zeros.size()) text.insert(0, zeros.size() - text.size(), '0');
  return number < 0 ? "-" + text : text;
}

std::string Hex(std::int64_t number) {
  std::string text = digits(magnitude(number), 16);
  for (char& c : text)
    if (c >= 'a') c = static_cast<char>(c - 'a' + 'A');
  return number < 0 ? "-" + text : text;
}

std::string Lowercase(std::string text) {
  std::ranges::transform(text, text.begin(), lower);
  return text;
}

double Floor(double number) { return std::floor(number); }

bool equalTexts(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lower, lower);
}

}  // namespace orvelin
