// Whether what tells an image's place tells the same one.
#pragma once

#include <vector>

#include "core/format/records.h"

namespace core {

/// A record that puts a corner of an image elsewhere than IGEOLO does.
struct Apart {
  std::string source;  ///< its tag
  double metres;       ///< of the corner that is furthest off
  double allowed;      ///< what both errors and a pixel come to
};

/// Those of RPC00B and of BLOCKA of the whole image whose corners are further from IGEOLO's than their
/// errors, the width of IGEOLO's last digit and a pixel allow. Polynomials are asked at all heights that
/// they are made for, since IGEOLO does not tell the one that it is about.
std::vector<Apart> ApartFromCorners(const SurveyedPart& image, const std::vector<TaggedRecord>& records);

}  // namespace core
