#include "core/place/placed.h"

#include <algorithm>

#include "core/format/words.h"
#include "core/place/chip.h"
#include "core/place/grid.h"
#include "core/place/projected.h"
#include "core/place/rational.h"

namespace core {
const TaggedRecord* FirstOf(const std::vector<TaggedRecord>& records, std::string_view tag) {
  for (const TaggedRecord& record : records) {
    if (TrimmedText(record.tag) == tag && record.problem.empty()) return &record;
  }
  return nullptr;
}

namespace {

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

// A grid of degrees or of a projection. Datum and projection may be those of all of the file.
std::unique_ptr<PlaceModel> Grid(const std::vector<TaggedRecord>& records, const SurveyedPart& header,
                                 const RecordDefinitions& definitions, std::vector<std::string>& unused) {
  const TaggedRecord *degrees = FirstOf(records, "GEOLOB"), *map = FirstOf(records, "MAPLOB");
  if (degrees == nullptr && map == nullptr) return nullptr;
  const std::vector<TaggedRecord> all = RecordsOf(header, definitions);
  const auto find = [&](std::string_view tag) {
    const TaggedRecord* own = FirstOf(records, tag);
    return own != nullptr ? own : FirstOf(all, tag);
  };
  const TaggedRecord *datum = find("GEOPSB"), *projection = find("PRJPSB");
  std::unique_ptr<PlaceModel> model = degrees == nullptr ? nullptr : MakeGeolob(*degrees, datum);
  if (degrees != nullptr && model == nullptr) unused.emplace_back("GEOLOB");
  if (model != nullptr || map == nullptr) return model;
  if (datum != nullptr && projection != nullptr) model = MakeMaplob(*map, *projection, *datum);
  if (model == nullptr) unused.emplace_back("MAPLOB");
  return model;
}

}  // namespace

std::unique_ptr<PlaceModel> ModelOfRecord(const SurveyedPart& image,
                                          const std::vector<TaggedRecord>& records,
                                          std::string_view tag) {
  if (tag != "BLOCKA") return Rational(records, tag);
  const TaggedRecord* block = FirstOf(records, tag);
  const auto corners = block == nullptr ? std::nullopt : BlockOf(image, *block);
  return corners ? MakeBetweenCorners(*corners) : nullptr;
}

Placed PlaceOf(const SurveyedPart& image, const SurveyedPart& header,
               const RecordDefinitions& definitions) {
  Placed placed;
  const std::vector<TaggedRecord> records = RecordsOf(image, definitions);
  for (const TaggedRecord& record : records) {
    const std::string tag(TrimmedText(record.tag));
    const bool isBetter = IsOneOf(tag, "SENSRB|CSEXRA|RSMPCA|RSMPIA|RSMGGA|RSMGIA");
    if (isBetter && std::find(placed.unused.begin(), placed.unused.end(), tag) == placed.unused.end())
      placed.unused.push_back(tag);
  }
  for (const char* tag : {"RPC00B", "RPC00A"}) {
    if (placed.model == nullptr) placed.model = ModelOfRecord(image, records, tag);
  }
  if (placed.model != nullptr) return placed;
  placed.model = Grid(records, header, definitions, placed.unused);
  if (placed.model != nullptr) return placed;
  placed.model = ModelOfRecord(image, records, "BLOCKA");
  if (placed.model != nullptr) return placed;
  if (const auto corners = IgeoloOf(image)) placed.model = MakeBetweenCorners(*corners);
  return placed;
}

}  // namespace core
