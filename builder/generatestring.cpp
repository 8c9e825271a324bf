#include "builder/generatestring.h"

namespace orvelin {

std::string GenerateString(const std::string& str, int nbr) {
  std::string text;
  for (int i = 0; i < nbr; ++i) text += str;
  return text;
}

}  // namespace orvelin
