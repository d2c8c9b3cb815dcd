#include "tools/orbntf/inspect/survey_fields.h"

#include <algorithm>

namespace tool {
namespace {

void TakeBands(FieldTaker& taker, const SurveyedPart& part) {
  taker.Take(kBandCountLayout);
  if (part.Text("NBANDS") == "0") taker.Take(kManyBandsLayout);
  taker.TakeBands(part.Bands());
}

void TakeImage(FieldTaker& taker, const SurveyedPart& part) {
  taker.Take(kImageFrontLayout);
  taker.Take(kSecurityLayout, "IS");
  taker.Take(kImageSizeLayout);
  if (part.Text("ICORDS") != " ") taker.Take(kImageCornersLayout);
  taker.Take(kCommentCountLayout);
  for (int64_t comment = 1; comment <= part.Number("NICOM"); ++comment)
    taker.Take(kCommentLayout, "", std::to_string(comment));
  taker.Take(kCompressionLayout);
  const std::string_view compression = part.Text("IC");
  if (compression != "NC" && compression != "NM") taker.Take(kRateLayout);
  TakeBands(taker, part);
  taker.Take(kImageBlocksLayout);
  taker.TakeArea(kImageUserArea);
  taker.TakeArea(kImageArea);
}

void TakeExtension(FieldTaker& taker, const SurveyedPart& part) {
  const bool reserved = part.kind == PartKind::Reserved;
  taker.Take(reserved ? kReservedFrontLayout : kExtensionFrontLayout);
  taker.Take(kSecurityLayout[0], reserved ? "RE" : "DE");
  taker.Take(kSecurityLayout.subspan(1), part.SecurityPrefix());
  if (part.Trimmed("DESID") == "TRE_OVERFLOW") taker.Take(kOverflowLayout);
  const LayoutRow& length = reserved ? kReservedLengthLayout : kExtensionLengthLayout;
  taker.Take(length);
  const int64_t own = part.Number(length.name);
  if (own > 0)
    taker.TakeWide(reserved ? kReservedFieldsLayout : kExtensionFieldsLayout, static_cast<uint64_t>(own));
}

void TakeFields(FieldTaker& taker, const SurveyedPart& part) {
  switch (part.kind) {
    case PartKind::Image:
      return TakeImage(taker, part);
    case PartKind::Graphic:
      taker.Take(kGraphicFrontLayout);
      taker.Take(kSecurityLayout, "SS");
      taker.Take(kGraphicBodyLayout);
      return taker.TakeArea(kGraphicArea);
    case PartKind::Text:
      taker.Take(kTextFrontLayout);
      taker.Take(kSecurityLayout, "TS");
      taker.Take(kTextBodyLayout);
      return taker.TakeArea(kTextArea);
    default:
      return TakeExtension(taker, part);
  }
}

// Records of an offset for every block, and of band-sequential images for every block of every band.
std::vector<uint32_t> MaskRecords(std::string_view bytes) {
  std::vector<uint32_t> records;
  for (; bytes.size() >= 4; bytes.remove_prefix(4))
    records.push_back(static_cast<uint32_t>(BigNumber(bytes.substr(0, 4))));
  return records;
}

void TakeMask(const FileBytes& file, SurveyedPart& part) {
  constexpr uint64_t kHead = 10, kMostRecords = 10000000;
  SurveyedMask& mask = part.mask;
  const std::string head = file.At(part.dataOffset, std::min(part.dataLength, kHead));
  if (head.size() < kHead) return;
  mask.dataOffset = static_cast<uint32_t>(BigNumber(std::string_view(head).substr(0, 4)));
  mask.blockLength = static_cast<uint32_t>(BigNumber(std::string_view(head).substr(4, 2)));
  mask.padLength = static_cast<uint32_t>(BigNumber(std::string_view(head).substr(6, 2)));
  mask.padBits = static_cast<uint32_t>(BigNumber(std::string_view(head).substr(8, 2)));
  const uint64_t blocks = static_cast<uint64_t>(std::max<int64_t>(0, part.Number("NBPR"))) *
                          static_cast<uint64_t>(std::max<int64_t>(0, part.Number("NBPC")));
  const uint64_t records =
      part.Text("IMODE") == "S" ? blocks * static_cast<uint64_t>(part.Bands()) : blocks;
  const uint64_t codeBytes = (mask.padBits + 7) / 8;
  if (records > kMostRecords) return;
  const uint64_t blockBytes = mask.blockLength != 0 ? 4 * records : 0;
  const uint64_t padBytes = mask.padLength != 0 ? 4 * records : 0;
  mask.bytes = kHead + codeBytes + blockBytes + padBytes;
  if (mask.bytes > part.dataLength) return;
  const std::string all = file.At(part.dataOffset + kHead, mask.bytes - kHead);
  if (all.size() != mask.bytes - kHead) return;
  mask.padCode = all.substr(0, codeBytes);
  mask.blocks = MaskRecords(std::string_view(all).substr(codeBytes, blockBytes));
  mask.pads = MaskRecords(std::string_view(all).substr(codeBytes + blockBytes, padBytes));
  mask.complete = true;
}

// What overflowed from another header.
void TakeOverflow(const FileBytes& file, SurveyedPart& part) {
  part.areas.push_back(
      {"DESDATA", part.dataOffset, file.At(part.dataOffset, part.dataLength), part.dataLength, 0});
}

}  // namespace

std::optional<SurveyedField> SurveyedPart::Find(const std::string& name) const {
  const auto found = index_.find(name);
  if (found != index_.end()) return fields_[found->second];
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
    take({row.name + suffix, offset + at, text, row.meaning});
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

void FieldTaker::Take(Layout rows, const char* prefix, const std::string& suffix) {
  for (const LayoutRow& row : rows) Take(row, prefix, suffix);
}

void FieldTaker::Take(const LayoutRow& row, const std::string& prefix, const std::string& suffix) {
  Add(prefix + row.name + suffix, row.width, row.meaning);
}

void FieldTaker::TakeWide(const LayoutRow& row, uint64_t width, const std::string& suffix) {
  Add(row.name + suffix, width, row.meaning);
}

void FieldTaker::Add(std::string name, uint64_t width, const char* meaning) {
  if (ended_ || Left() < width) {
    ended_ = true;
    return;
  }
  const std::string_view text = bytes_.substr(static_cast<size_t>(at_), static_cast<size_t>(width));
  part_.index_.emplace(name, part_.fields_.size());
  part_.fields_.push_back({std::move(name), part_.offset + at_, text, meaning});
  at_ += width;
}

int64_t FieldTaker::NumberBehind(uint64_t width) const {
  return DigitsOf(bytes_.substr(static_cast<size_t>(at_ - width), static_cast<size_t>(width)));
}

void FieldTaker::TakeBands(int64_t count) {
  uint64_t bandBytes = 0;
  for (const LayoutRow& row : kBandLayout) bandBytes += row.width;
  part_.bandsBehind_ = part_.fields_.size();
  const auto skip = [this](uint64_t bytes) {
    ended_ = ended_ || Left() < bytes;
    if (!ended_) at_ += bytes;
    return !ended_;
  };
  for (int64_t band = 0; band < count && !ended_; ++band) {
    if (Left() == 0) ended_ = true;
    if (!ended_) part_.bands_.push_back(static_cast<uint32_t>(at_));
    if (!skip(bandBytes)) return;
    const int64_t tables = NumberBehind(1);
    if (tables <= 0) continue;
    if (!skip(kTableEntriesLayout.width)) return;
    const int64_t entries = NumberBehind(kTableEntriesLayout.width);
    if (entries > 0 && !skip(static_cast<uint64_t>(tables * entries))) return;
  }
}

void FieldTaker::TakeArea(const AreaLayout& area) {
  Take(area.length);
  const int64_t length = part_.Number(area.length.name);
  if (ended_ || length < area.overflow.width) return;
  Take(area.overflow);
  const auto wanted = static_cast<uint64_t>(length - area.overflow.width);
  const uint64_t there = std::min(wanted, Left());
  part_.areas.push_back({area.records.name, part_.offset + at_,
                         std::string(bytes_.substr(static_cast<size_t>(at_), static_cast<size_t>(there))),
                         wanted, std::max<int64_t>(0, part_.Number(area.overflow.name))});
  if (wanted != 0) TakeWide(area.records, wanted);
}

void FieldTaker::Finish() {
  part_.complete = !ended_;
  part_.fieldsEnd = part_.offset + at_;
}

void SurveySegment(const FileBytes& file, SurveyedPart& part) {
  FieldTaker taker(file.At(part.offset, part.headerLength), part);
  TakeFields(taker, part);
  taker.Finish();
  if (part.kind == PartKind::Image && part.complete && part.IsMasked()) TakeMask(file, part);
  if (part.Trimmed("DESID") == "TRE_OVERFLOW") TakeOverflow(file, part);
}

}  // namespace tool
