#pragma once

#include <string>

namespace orvelin {

/// `str` repeated `nbr` times; empty if `nbr` is 0 or negative.
std::string GenerateString(const std::string& str, int nbr);

}  // namespace orvelin
