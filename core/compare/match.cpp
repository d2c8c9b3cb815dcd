#include "core/compare/match.h"

#include <algorithm>
#include <functional>

namespace core {
namespace {

// What is looked at of a segment to tell how alike it is to another one.
struct Likeness {
  const SurveyedPart* part;
  std::vector<std::pair<size_t, size_t>> fields;  // hashes of name and text, sorted
  size_t ends;                                    // of the first and last bytes of its data
};

Likeness LikenessOf(const Survey& survey, const SurveyedPart& part) {
  constexpr uint64_t kLooked = 4096;
  constexpr size_t kMostFields = 256;
  const std::hash<std::string_view> hash;
  Likeness likeness{&part, {}, 0};
  part.ForEachField([&](const SurveyedField& field) {
    if (likeness.fields.size() < kMostFields)
      likeness.fields.emplace_back(hash(field.name), hash(field.text));
  });
  std::sort(likeness.fields.begin(), likeness.fields.end());
  const uint64_t size = survey.file.Size(), begin = std::min(part.dataOffset, size),
                 end = begin + std::min(part.dataLength, size - begin);
  const uint64_t looked = std::min(kLooked, end - begin);
  likeness.ends = hash(survey.file.At(begin, looked) + survey.file.At(end - looked, looked));
  return likeness;
}

// From 0 for segments that look the same to 1 for those that have nothing in common.
double Unlikeness(const Likeness& a, const Likeness& b) {
  size_t common = 0;
  auto one = a.fields.begin();
  auto two = b.fields.begin();
  while (one != a.fields.end() && two != b.fields.end()) {
    if (*one == *two) ++common;
    const bool isFirst = *one < *two, isSecond = *two < *one;
    if (!isSecond) ++one;
    if (!isFirst) ++two;
  }
  const size_t most = std::max({a.fields.size(), b.fields.size(), size_t{1}});
  const double fields = static_cast<double>(common) / static_cast<double>(most);
  const double data = a.part->dataLength != b.part->dataLength ? 0 : a.ends == b.ends ? 1 : 0.5;
  return 1 - (fields + data) / 2;
}

std::vector<Likeness> SegmentsOf(const Survey& survey, PartKind kind) {
  std::vector<Likeness> segments;
  for (const SurveyedPart& part : survey.parts) {
    if (part.kind == kind) segments.push_back(LikenessOf(survey, part));
  }
  return segments;
}

// What is least to be paid for making the first segments of one file those of the other one.
class Costs {
 public:
  Costs(const std::vector<Likeness>& a, const std::vector<Likeness>& b)
      : columns_(b.size() + 1), costs_((a.size() + 1) * columns_), ways_(costs_.size(), Way::Pair) {
    for (size_t i = 0; i <= a.size(); ++i) {
      for (size_t j = 0; j <= b.size(); ++j) {
        if (i + j != 0) Take(i, j, i == 0 || j == 0 ? 2 : Unlikeness(a[i - 1], b[j - 1]));
      }
    }
  }

  std::vector<SegmentPair> Pairs(const std::vector<Likeness>& a, const std::vector<Likeness>& b) const {
    std::vector<SegmentPair> pairs;
    for (size_t i = a.size(), j = b.size(); i + j != 0;) {
      const Way way = ways_[i * columns_ + j];
      SegmentPair pair;
      if (way != Way::Add) pair.a = a[--i].part;
      if (way != Way::Remove) pair.b = b[--j].part;
      pairs.push_back(pair);
    }
    std::reverse(pairs.begin(), pairs.end());
    return pairs;
  }

 private:
  enum class Way : uint8_t { Pair, Remove, Add };

  void Take(size_t i, size_t j, double unlikeness) {
    // Two segments that have nothing in common are rather a changed one than a removed and an added one.
    constexpr double kAlone = 0.6;
    double best = 1e9;
    const auto offer = [&](double cost, Way way) {
      if (cost >= best) return;
      best = cost;
      ways_[i * columns_ + j] = way;
    };
    if (i > 0 && j > 0) offer(costs_[(i - 1) * columns_ + j - 1] + unlikeness, Way::Pair);
    if (i > 0) offer(costs_[(i - 1) * columns_ + j] + kAlone, Way::Remove);
    if (j > 0) offer(costs_[i * columns_ + j - 1] + kAlone, Way::Add);
    costs_[i * columns_ + j] = best;
  }

  size_t columns_;
  std::vector<double> costs_;
  std::vector<Way> ways_;
};

}  // namespace

std::vector<SegmentPair> MatchSegments(const Survey& a, const Survey& b, PartKind kind) {
  const std::vector<Likeness> first = SegmentsOf(a, kind), second = SegmentsOf(b, kind);
  return Costs(first, second).Pairs(first, second);
}

}  // namespace core
