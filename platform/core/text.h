#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvelin {

/// The one-character text of a code from 0 to 255, as one byte.
std::string Chr(int code);
/// A whole-valued number in plain decimal digits.
std::string Str(double number);
/// `number` in decimal, zero-padded to at least as many digits as `zeros` has; never cut.
std::string Format(std::int64_t number, std::string_view zeros);
/// Upper-case hexadecimal without leading zeros, a minus sign before a negative value.
std::string Hex(std::int64_t number);
/// ASCII letters in lower case; all other bytes as they are.
std::string Lowercase(std::string text);
/// The greatest whole number not above `number`.
double Floor(double number);
/// The program's one equality of texts: byte by byte, ASCII letter case aside.
bool equalTexts(std::string_view a, std::string_view b);

}  // namespace orvelin
