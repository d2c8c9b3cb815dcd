#include "core/format/survey_fields.h"

#include <algorithm>

namespace core {
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
  if (part.Trimmed("DESID") == "XML_DATA_CONTENT" && (own == 5 || own == 283 || own == 773))
    return taker.Take(kXmlLayout.first(own == 5 ? 1 : own == 283 ? 8 : kXmlLayout.size()));
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
bool TakeMaskRecords(const FileBytes& file, uint64_t offset, uint64_t count,
                     std::vector<uint32_t>& records) {
  records.resize(count);
  if (!file.Read(offset, records.data(), count * sizeof(uint32_t))) return false;
  for (uint32_t& record : records)
    record = static_cast<uint32_t>(BigNumber({reinterpret_cast<const char*>(&record), sizeof record}));
  return true;
}

void TakeMask(const FileBytes& file, SurveyedPart& part, KeptData& left) {
  constexpr uint64_t kHead = 10, kMostRecords = 10000000;
  SurveyedMask& mask = part.mask;
  const std::string head = file.At(part.dataOffset, std::min(part.dataLength, kHead));
  if (head.size() < kHead) return;
  mask.dataOffset = static_cast<uint32_t>(BigNumber(std::string_view(head).substr(0, 4)));
  mask.blockLength = static_cast<uint32_t>(BigNumber(std::string_view(head).substr(4, 2)));
  mask.padLength = static_cast<uint32_t>(BigNumber(std::string_view(head).substr(6, 2)));
  mask.padBits = static_cast<uint32_t>(BigNumber(std::string_view(head).substr(8, 2)));
  const uint64_t all = static_cast<uint64_t>(std::max<int64_t>(0, part.Number("NBPR"))) *
                       static_cast<uint64_t>(std::max<int64_t>(0, part.Number("NBPC")));
  const uint64_t records = part.Text("IMODE") == "S" ? all * static_cast<uint64_t>(part.Bands()) : all;
  const uint64_t codeBytes = (mask.padBits + 7) / 8;
  if (records > kMostRecords) return;
  const uint64_t blocks = mask.blockLength != 0 ? records : 0, pads = mask.padLength != 0 ? records : 0;
  mask.bytes = kHead + codeBytes + 4 * (blocks + pads);
  if (mask.bytes > part.dataLength) return;
  mask.unread = mask.bytes > left.masks;
  if (mask.unread) return;
  const uint64_t at = part.dataOffset + kHead + codeBytes;
  if (at > file.Size() || file.Size() - at < 4 * (blocks + pads)) return;
  left.masks -= mask.bytes;
  mask.padCode = file.At(part.dataOffset + kHead, codeBytes);
  mask.complete = TakeMaskRecords(file, at, blocks, mask.blocks) &&
                  TakeMaskRecords(file, at + 4 * blocks, pads, mask.pads);
}

// What overflowed from another header.
void TakeOverflow(const FileBytes& file, SurveyedPart& part, KeptData& left) {
  const std::string bytes = file.At(part.dataOffset, std::min(part.dataLength, left.records));
  left.records -= bytes.size();
  part.areas.push_back({"DESDATA", part.dataOffset, bytes, part.dataLength, 0});
}

}  // namespace

void FieldTaker::Take(Layout rows, const char* prefix, const std::string& suffix) {
  for (const LayoutRow& row : rows) Take(row, prefix, suffix);
}

void FieldTaker::Take(const LayoutRow& row, const std::string& prefix, const std::string& suffix) {
  Add(prefix + row.name + suffix, row.width, row);
}

void FieldTaker::TakeWide(const LayoutRow& row, uint64_t width, const std::string& suffix) {
  Add(row.name + suffix, width, row);
}

void FieldTaker::Add(std::string name, uint64_t width, const LayoutRow& row) {
  if (ended_ || Left() < width) {
    ended_ = true;
    return;
  }
  const std::string_view text = bytes_.substr(static_cast<size_t>(at_), static_cast<size_t>(width));
  constexpr size_t kFew = 64;
  std::vector<SurveyedField>& fields = part_.fields_;
  if (fields.empty()) fields.reserve(kFew);
  fields.push_back({std::move(name), part_.offset + at_, text, row.meaning, row.form});
  for (size_t i = fields.size() <= kFew ? fields.size() : part_.index_.size(); i < fields.size(); ++i)
    part_.index_.emplace(fields[i].name, i);
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

void SurveySegment(const FileBytes& file, SurveyedPart& part, KeptData& left) {
  FieldTaker taker(file.At(part.offset, part.headerLength), part);
  TakeFields(taker, part);
  taker.Finish();
  if (part.kind == PartKind::Image && part.complete && part.IsMasked()) TakeMask(file, part, left);
  if (part.Trimmed("DESID") == "TRE_OVERFLOW") TakeOverflow(file, part, left);
}

}  // namespace core
