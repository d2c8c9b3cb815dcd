#include "core/format/band_words.h"

#include <algorithm>

namespace core {
namespace {

// A text that a turn of a group has; empty where it says nothing.
std::string TextIn(const std::vector<DecodedField>& fields, const char* name) {
  const DecodedField* field = FindField(fields, name);
  return field == nullptr || IsAbsent(*field) ? "" : std::string(TrimmedText(ShownText(*field)));
}

// The turns of the bands of a record; none where there is no such record for as many bands.
const std::vector<std::vector<DecodedField>>* BandsOf(const std::vector<TaggedRecord>& records,
                                                      std::string_view tag, const char* group,
                                                      size_t bands, const TaggedRecord*& found) {
  for (const TaggedRecord& record : records) {
    if (TrimmedText(record.tag) != tag || !record.problem.empty()) continue;
    const DecodedField* turns = FindField(record.fields, group);
    found = &record;
    return turns != nullptr && turns->turns.size() == bands ? &turns->turns : nullptr;
  }
  return nullptr;
}

void Add(std::string& words, const std::string& more) {
  if (!more.empty()) words += (words.empty() ? "" : ", ") + more;
}

std::string UnitOf(const TaggedRecord& record) {
  const std::string code = TextIn(record.fields, "WAVE_LENGTH_UNIT");
  return code == "W" ? " per cm" : " um";
}

}  // namespace

std::vector<std::string> WordsOfBands(const SurveyedPart& image, const RecordDefinitions& definitions) {
  const auto bands = static_cast<size_t>(std::clamp<int64_t>(image.Bands(), 0, 99999));
  std::vector<std::string> all(bands);
  const std::vector<TaggedRecord> records = RecordsOf(image, definitions);
  const TaggedRecord *general = nullptr, *airborne = nullptr;
  const auto* byBandsb = BandsOf(records, "BANDSB", "GROUP_BANDID", bands, general);
  const auto* byBandsa = BandsOf(records, "BANDSA", "GROUP_BANDS", bands, airborne);
  for (size_t i = 0; i < bands; ++i) {
    const std::string number = std::to_string(i + 1);
    const std::string category(image.Trimmed("ISUBCAT" + number));
    Add(all[i], std::string(image.Trimmed("IREPBAND" + number)));
    const bool isWavelength = image.Trimmed("IREP") == "MULTI" && DigitsOf(category) >= 100;
    std::string wavelength = isWavelength ? category + " nm" : "";
    if (!isWavelength) Add(all[i], category);
    if (byBandsa != nullptr) {
      const std::string peak = TextIn((*byBandsa)[i], "BANDPEAK");
      if (!peak.empty()) wavelength = peak + " um";
    }
    if (byBandsb != nullptr) {
      Add(all[i], TextIn((*byBandsb)[i], "BANDID"));
      for (const char* name : {"CWAVE", "NOM_WAVE"}) {
        const std::string length = TextIn((*byBandsb)[i], name);
        if (!length.empty()) wavelength = length + UnitOf(*general);
      }
    }
    Add(all[i], wavelength);
  }
  return all;
}

}  // namespace core
