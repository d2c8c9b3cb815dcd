// Which segments of two files stand for each other.
#pragma once

#include "core/format/survey.h"

namespace core {

/// Two segments, or one that the other file does not have.
struct SegmentPair {
  const SurveyedPart *a = nullptr, *b = nullptr;
};

/// Pairs the segments of a kind in their order, the most alike ones.
std::vector<SegmentPair> MatchSegments(const Survey& a, const Survey& b, PartKind kind);

}  // namespace core
