// Facsimile data (ITU-T T.4), decoded by itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

struct FacsimileForm {
  uint32_t width, height;
  bool twoDimensional;
};
/// The rows that decode, 8 pixels a byte from the highest bit on, 1 for white.
std::vector<std::string> DecodeFacsimile(const std::string& data, const FacsimileForm& form);
/// How many there are.
uint32_t CountFacsimileRows(const std::string& data, const FacsimileForm& form);

}  // namespace tool
