#pragma once

#include <string>

namespace orvelin {

/// `str` written `nbr` times in a row; empty for an `nbr` of 0 or less.
std::string GenerateString(const std::string& str, int nbr);

}  // namespace orvelin
