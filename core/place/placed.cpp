#include "core/place/placed.h"

#include <algorithm>

#include "core/format/words.h"
#include "core/place/chip.h"
#include "core/place/grid.h"
#include "core/place/rational.h"

namespace core {
namespace {

const TaggedRecord* FirstOf(const std::vector<TaggedRecord>& records, std::string_view tag) {
  for (const TaggedRecord& record : records) {
    if (TrimmedText(record.tag) == tag && record.problem.empty()) return &record;
  }
  return nullptr;
}

// A chip of which the map is not known has no place by the model of the whole.
std::unique_ptr<PlaceModel> Rational(const std::vector<TaggedRecord>& records, std::string_view tag) {
  const TaggedRecord* record = FirstOf(records, tag);
  const auto form = record == nullptr ? std::nullopt : RationalOf(*record);
  if (!form) return nullptr;
  const TaggedRecord* chipped = FirstOf(records, "ICHIPB");
  const DecodedField* flag = chipped == nullptr ? nullptr : FindField(chipped->fields, "XFRM_FLAG");
  if (flag == nullptr || DigitsOf(flag->text) == 1) return MakeRational(*form);
  const auto chip = Chip::Of(*chipped);
  return chip ? ThroughChip(MakeRational(*form), *chip) : nullptr;
}

}  // namespace

Placed PlaceOf(const SurveyedPart& image, const RecordDefinitions& definitions) {
  Placed placed;
  const std::vector<TaggedRecord> records = RecordsOf(image, definitions);
  for (const TaggedRecord& record : records) {
    const std::string tag(TrimmedText(record.tag));
    const bool isBetter = IsOneOf(tag, "SENSRB|CSEXRA|RSMPCA|RSMGGA");
    if (isBetter && std::find(placed.unused.begin(), placed.unused.end(), tag) == placed.unused.end())
      placed.unused.push_back(tag);
  }
  for (const char* tag : {"RPC00B", "RPC00A"}) {
    if (placed.model == nullptr) placed.model = Rational(records, tag);
  }
  if (placed.model != nullptr) return placed;
  if (const TaggedRecord* grid = FirstOf(records, "GEOLOB")) placed.model = MakeGeolob(*grid);
  if (placed.model != nullptr) return placed;
  if (const TaggedRecord* block = FirstOf(records, "BLOCKA")) {
    if (const auto corners = BlockOf(image, *block)) placed.model = MakeBetweenCorners(*corners);
  }
  if (placed.model != nullptr) return placed;
  if (const auto corners = IgeoloOf(image)) placed.model = MakeBetweenCorners(*corners);
  return placed;
}

}  // namespace core
