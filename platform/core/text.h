#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvelin {

/// The byte with that code, 0 to 255.
std::string Chr(int code);
/// `number` in decimal, without its fraction.
std::string Str(double number);
/// `number` in decimal, zero-padded to at least the length of `zeros`; never cut.
std::string Format(std::int64_t number, std::string_view zeros);
/// `number` in upper-case hexadecimal, without leading zeros, with a minus sign if negative.
std::string Hex(std::int64_t number);
/// Converts ASCII letters to lower case; keeps all other bytes.
std::string Lowercase(std::string text);
/// The largest integer not greater than `number`.
double Floor(double number);
/// Whether the texts are equal, ignoring ASCII case. For tags, signatures and marks in files.
bool equalTexts(std::string_view a, std::string_view b);

}  // namespace orvelin
