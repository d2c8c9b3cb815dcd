#include "core/format/part.h"

#include <algorithm>

namespace core {

const char* NameOf(PartKind kind) {
  constexpr const char* kNames[] = {"file", "image",          "graphic",
                                    "text", "data extension", "reserved extension"};
  return kNames[static_cast<size_t>(kind)];
}

bool HoldsRecords(std::string_view name) {
  const AreaLayout* const kAreas[] = {&kFileUserArea, &kFileArea,    &kImageUserArea,
                                      &kImageArea,    &kGraphicArea, &kTextArea};
  return std::any_of(std::begin(kAreas), std::end(kAreas),
                     [&](const AreaLayout* area) { return name == area->records.name; });
}

bool HoldsBytes(std::string_view name) {
  return HoldsRecords(name) || name == "FBKGC" || name.substr(0, 4) == "LUTD" ||
         name == kExtensionFieldsLayout.name || name == kReservedFieldsLayout.name;
}

std::string_view TrimmedText(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

int64_t DigitsOf(std::string_view text) {
  if (text.empty() || text.size() > 18) return -1;
  int64_t value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return -1;
    value = value * 10 + (c - '0');
  }
  return value;
}

bool IsPlaceholder(std::string_view text) {
  return !text.empty() && text.find_first_not_of('9') == std::string_view::npos;
}

uint64_t BigNumber(std::string_view bytes) {
  uint64_t value = 0;
  for (const char byte : bytes) value = value << 8 | static_cast<uint8_t>(byte);
  return value;
}

uint64_t BigNumber(std::string_view bytes, size_t at, size_t count) {
  return at < bytes.size() ? BigNumber(bytes.substr(at, count)) : 0;
}

bool PlaceOfText(std::string_view text, int64_t& row, int64_t& column) {
  if (text.size() != 10) return false;
  int64_t* const parts[] = {&row, &column};
  for (size_t i = 0; i < 2; ++i) {
    std::string_view part = text.substr(5 * i, 5);
    const bool negative = part[0] == '-';
    if (negative || part[0] == '+') part.remove_prefix(1);
    const int64_t value = DigitsOf(part);
    if (value < 0) return false;
    *parts[i] = negative ? -value : value;
  }
  return true;
}

std::optional<SurveyedField> SurveyedPart::Find(const std::string& name) const {
  if (index_.empty()) {
    const auto field = std::find_if(fields_.begin(), fields_.end(),
                                    [&](const SurveyedField& one) { return one.name == name; });
    if (field != fields_.end()) return *field;
  } else if (const auto found = index_.find(name); found != index_.end()) {
    return fields_[found->second];
  }
  return bands_.empty() ? std::nullopt : FindOfBand(name);
}

// A mnemonic with the number of its band, of tables with their own behind a point.
std::optional<SurveyedField> SurveyedPart::FindOfBand(const std::string& name) const {
  const size_t digits = std::min(name.find_first_of("0123456789"), name.size());
  const int64_t number = DigitsOf(std::string_view(name).substr(digits, name.find('.') - digits));
  if (number < 1 || static_cast<uint64_t>(number) > bands_.size()) return std::nullopt;
  std::optional<SurveyedField> found;
  ForEachBandField(static_cast<size_t>(number - 1), [&](const SurveyedField& field) {
    if (field.name == name) found = field;
  });
  return found;
}

void SurveyedPart::ForEachBandField(size_t band,
                                    const std::function<void(const SurveyedField&)>& take) const {
  const std::string_view bytes = *bytes_;
  const std::string number = std::to_string(band + 1);
  uint64_t at = bands_[band];
  const auto next = [&](const LayoutRow& row, uint64_t width, const std::string& suffix) {
    if (width > bytes.size() - at) return false;
    const std::string_view text = bytes.substr(static_cast<size_t>(at), static_cast<size_t>(width));
    take({row.name + suffix, offset + at, text, row.meaning, row.form});
    at += width;
    return true;
  };
  for (const LayoutRow& row : kBandLayout) {
    if (!next(row, row.width, number)) return;
  }
  const int64_t tables = bytes[static_cast<size_t>(at) - 1] - '0';
  if (tables < 1 || tables > 9 || !next(kTableEntriesLayout, kTableEntriesLayout.width, number)) return;
  const int64_t entries = DigitsOf(
      bytes.substr(static_cast<size_t>(at) - kTableEntriesLayout.width, kTableEntriesLayout.width));
  for (int64_t table = 1; table <= tables && entries >= 0; ++table) {
    if (!next(kTableLayout, static_cast<uint64_t>(entries), number + "." + std::to_string(table))) return;
  }
}

size_t SurveyedPart::FieldCount() const {
  size_t count = 0;
  ForEachField([&](const SurveyedField&) { ++count; });
  return count;
}

std::string_view SurveyedPart::Text(const std::string& name) const {
  const std::optional<SurveyedField> field = Find(name);
  return field ? field->text : std::string_view();
}

std::string_view SurveyedPart::Trimmed(const std::string& name) const { return TrimmedText(Text(name)); }

int64_t SurveyedPart::Number(const std::string& name) const { return DigitsOf(Text(name)); }

std::string SurveyedPart::Title() const {
  return kind == PartKind::File ? "file header" : NameOf(kind) + (" " + std::to_string(index));
}

int64_t SurveyedPart::Bands() const {
  const int64_t bands = Number("NBANDS");
  return bands > 0 ? bands : std::max<int64_t>(0, Number("XBANDS"));
}

const char* SurveyedPart::SecurityPrefix() const {
  constexpr const char* kPrefixes[] = {"FS", "IS", "SS", "TS", "DES", "RES"};
  return kPrefixes[static_cast<size_t>(kind)];
}

bool SurveyedPart::IsMasked() const {
  const std::string_view compression = Text("IC");
  return compression == "NM" || (!compression.empty() && compression[0] == 'M');
}

}  // namespace core
