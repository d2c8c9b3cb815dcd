// Files of every family, made at random.
#pragma once

#include <random>

#include "tests/support/builder.h"

namespace test {

/// A file, and what sets its picture apart from the one that the module draws.
struct RandomFile {
  std::string bytes, family;
  bool hasFill = false;      ///< blocks that reach beyond the image
  bool hasAbsence = false;   ///< blocks that are not stored, or pad pixels
  bool isPixelwise = false;  ///< bands of bytes that are interleaved by pixel
  bool isDeep = false;       ///< more than a byte in several bands, signed, real or complex samples
  bool isOdd = false;        ///< depths and counts of bands that the module does not take
  bool hasGraphic = false;
  bool hasDifferences = false;  ///< uncompressed YCbCr601
};
/// One to three images of one family or several, sometimes a graphic over them.
RandomFile MakeRandomFile(std::mt19937& random);

}  // namespace test
