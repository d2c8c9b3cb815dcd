// Rational polynomials of the third degree (STDI-0002, RPC00A and RPC00B).
#pragma once

#include <array>

#include "core/format/records.h"
#include "core/place/model.h"

namespace core {

using Coefficients = std::array<double, 20>;

/// What an RPC record holds, the terms in the order of RPC00B.
struct RationalForm {
  std::string tag;
  double errorBias, errorRandom;
  GroundPoint offset, scale;
  ImagePoint imageOffset, imageScale;
  Coefficients rowNumerator, rowDenominator, columnNumerator, columnDenominator;
};
/// Takes a record of either tag; none where it is not whole, says that it is not valid, or has no scale.
std::optional<RationalForm> RationalOf(const TaggedRecord& record);

/// Places by the polynomials. Points further from the model's middle than twice its scales are refused.
std::unique_ptr<PlaceModel> MakeRational(const RationalForm& form);

}  // namespace core
