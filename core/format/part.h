// The file header or a segment, field by field.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/format/layout.h"

namespace core {

enum class PartKind { File, Image, Graphic, Text, DataExtension, Reserved };
/// "file", "image", "graphic", "text", "data extension", "reserved extension".
const char* NameOf(PartKind kind);

struct SurveyedField {
  std::string name;  ///< the mnemonic, of repeated fields with a number from 1
  uint64_t offset;
  std::string_view text;  ///< within its part's bytes
  const char* meaning;
  FieldForm form;
};

/// The tagged records of a header.
struct RecordArea {
  std::string name;  ///< UDHD, XHD, UDID, IXSHD, SXSHD, TXSHD, or DESDATA for what overflowed
  uint64_t offset;   ///< of the first record
  std::string bytes;
  uint64_t length;       ///< as declared
  int64_t overflow = 0;  ///< number of the data extension that goes on, 0 for none
};

/// The table in front of masked image data.
struct SurveyedMask {
  bool complete = false;
  bool unread = false;  ///< it is larger than what is kept of all tables
  uint64_t bytes = 0;   ///< of the table
  uint32_t dataOffset = 0, blockLength = 0, padLength = 0, padBits = 0;
  std::string padCode;
  std::vector<uint32_t> blocks, pads;  ///< 0xFFFFFFFF for none
};
inline constexpr uint32_t kNoRecord = 0xFFFFFFFF;

/// The file header or a segment.
struct SurveyedPart {
  PartKind kind = PartKind::File;
  uint32_t index = 0;  ///< within its kind
  uint64_t offset = 0, headerLength = 0;
  uint64_t dataOffset = 0, dataLength = 0;  ///< of a segment, as declared
  bool complete = false;                    ///< every field was there
  uint64_t fieldsEnd = 0;                   ///< behind the last field
  std::vector<RecordArea> areas;
  SurveyedMask mask;  ///< of a masked image

  /// Every field in file order. Those of bands are a table: there may be a hundred thousand bands.
  template <class Take>
  void ForEachField(Take take) const {
    for (size_t i = 0; i < bandsBehind_; ++i) take(fields_[i]);
    for (size_t band = 0; band < bands_.size(); ++band) ForEachBandField(band, take);
    for (size_t i = bandsBehind_; i < fields_.size(); ++i) take(fields_[i]);
  }
  size_t FieldCount() const;
  bool Has(const std::string& name) const { return Find(name).has_value(); }
  std::optional<SurveyedField> Find(const std::string& name) const;
  /// A field's text; empty where it is not there.
  std::string_view Text(const std::string& name) const;
  /// The same without the spaces behind it.
  std::string_view Trimmed(const std::string& name) const;
  /// Its number, -1 where it is none.
  int64_t Number(const std::string& name) const;
  /// "image 0", "file header".
  std::string Title() const;
  /// Bands of an image; 0 where they are not known.
  int64_t Bands() const;
  /// The mnemonic prefix of the fields of classification.
  const char* SecurityPrefix() const;
  /// Whether an image's data begins with a mask table.
  bool IsMasked() const;

 private:
  friend class FieldTaker;

  // The fields of band `band`, from 0, as far as the bytes go.
  void ForEachBandField(size_t band, const std::function<void(const SurveyedField&)>& take) const;
  std::optional<SurveyedField> FindOfBand(const std::string& name) const;

  std::shared_ptr<const std::string> bytes_;       // of the header
  std::vector<SurveyedField> fields_;              // but those of bands
  std::unordered_map<std::string, size_t> index_;  // of many fields; few are looked through
  std::vector<uint32_t> bands_;                    // where each begins in the bytes
  size_t bandsBehind_ = 0;                         // the fields in front of them
};

/// Whether a field holds tagged records, which have a table of their own.
bool HoldsRecords(std::string_view name);
/// Whether it holds bytes and no text.
bool HoldsBytes(std::string_view name);

/// Spaces behind a text cut off.
std::string_view TrimmedText(std::string_view text);
/// Digits as a number; -1 for another text.
int64_t DigitsOf(std::string_view text);
/// Whether a length is all nines: one that was not known when the header was written.
bool IsPlaceholder(std::string_view text);
/// Big-endian bytes, of which the last eight count.
uint64_t BigNumber(std::string_view bytes);
/// So many of them from a place on; those that are not there are left out.
uint64_t BigNumber(std::string_view bytes, size_t at, size_t count);
/// A row and a column of five characters each; false for another text.
bool PlaceOfText(std::string_view text, int64_t& row, int64_t& column);

}  // namespace core
