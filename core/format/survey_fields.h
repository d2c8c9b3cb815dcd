// Taking the fields of one header.
#pragma once

#include "core/format/bytes.h"
#include "core/format/layout.h"
#include "core/format/part.h"

namespace core {

/// Takes fields from a header's bytes one after the other, into a part.
class FieldTaker {
 public:
  FieldTaker(std::string bytes, SurveyedPart& part)
      : part_(part), held_(std::make_shared<const std::string>(std::move(bytes))), bytes_(*held_) {
    part_.bytes_ = held_;
  }

  /// Whether the bytes ended in front of a field; nothing more is taken then.
  bool Ended() const { return ended_; }
  uint64_t Left() const { return bytes_.size() - at_; }

  void Take(Layout rows, const char* prefix = "", const std::string& suffix = "");
  void Take(const LayoutRow& row, const std::string& prefix = "", const std::string& suffix = "");
  /// A field of a width that the file tells.
  void TakeWide(const LayoutRow& row, uint64_t width, const std::string& suffix = "");
  void TakeArea(const AreaLayout& area);
  /// The fields of so many bands.
  void TakeBands(int64_t count);
  /// Notes how far the fields came.
  void Finish();

 private:
  void Add(std::string name, uint64_t width, const LayoutRow& row);
  // A number of the bytes in front of the next field; -1 for none.
  int64_t NumberBehind(uint64_t width) const;

  SurveyedPart& part_;
  std::shared_ptr<const std::string> held_;
  std::string_view bytes_;
  uint64_t at_ = 0;
  bool ended_ = false;
};

/// What a survey still keeps of data, in bytes: records that overflowed, and mask tables. Far above what
/// files have.
struct KeptData {
  uint64_t records = 32 << 20, masks = 64 << 20;
};

/// Takes the fields of a segment whose place and lengths are known, and what stands in front of its data
/// as far as it is kept.
void SurveySegment(const FileBytes& file, SurveyedPart& part, KeptData& left);

}  // namespace core
