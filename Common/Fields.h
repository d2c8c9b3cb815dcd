// How header records hold NITF fields, and the one table per record that drives defaults, parsing,
// setting, writing and listing.
//
// A field of w bytes is held as text with a terminator, exactly as in the file; numeric fields keep the
// decoded value beside it. A record's table has one row per field, in file order:
//
//   Field<&ImageSubheader::NBANDS>("NBANDS", 1).Fill('0').Then<ReadBands, WriteBands>()
//
// ReadRows, WriteRows and ApplyDefaults run over any record's table.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "Common/Bounds.h"
#include "Common/Owning.h"
#include "Common/Status.h"

// ---------------------------------------------------------------- field types

/// Text of at most N characters.
template <uint16_t N>
struct Text {
  char text[N + 1] = {};
};
/// Decimal text of at most N characters and its value; values of signed fields are two's complement.
template <uint16_t N>
struct Number {
  char text[N + 1] = {};
  uint32_t value = 0;
  int32_t Signed() const { return static_cast<int32_t>(value); }
};
/// Text of at most N characters and the code that a table gives it.
template <uint16_t N>
struct Coded {
  char text[N + 1] = {};
  uint32_t code = 0;
};
/// Two halves of five characters: a row and a column, or a graphic's bound.
struct Location {
  char text[11] = {};
  int32_t row = 0;
  int32_t column = 0;
};

/// Any of the field types, seen without its width.
struct FieldView {
  char* text;
  uint16_t capacity;
  uint32_t* value;     ///< decoded value or code, null for plain text
  Location* location;  ///< null unless a Location
};
template <uint16_t N>
FieldView View(Text<N>& field) {
  return {field.text, N, nullptr, nullptr};
}
template <uint16_t N>
FieldView View(Number<N>& field) {
  return {field.text, N, &field.value, nullptr};
}
template <uint16_t N>
FieldView View(Coded<N>& field) {
  return {field.text, N, &field.code, nullptr};
}
inline FieldView View(Location& field) { return {field.text, 10, nullptr, &field}; }

// ---------------------------------------------------------------- field codec

/// Decimal conversion as atoi does it: leading white space, a sign, digits up to the first other
/// character. Values outside 32 bits are held at the nearest end.
int32_t DecimalOf(std::string_view text);
/// The same for lengths and counts: negative text gives 0, 4294967295 is the most.
uint32_t LengthOf(std::string_view text);
/// The same in 64 bits.
uint64_t LongLengthOf(std::string_view text);
/// Decimal number with a fraction, as atof does it for NITF texts.
double RealOf(std::string_view text);

/// Writes a value as zero-filled decimal text of exactly `width` characters and a terminator. A text
/// longer than the width is refused with -13, the destination unchanged.
Status FormatNumberField(char* destination, uint32_t width, int64_t value);
/// Writes text left-justified and padded with spaces to `width`, and a terminator; -13, the destination
/// unchanged, when either is null or the text is longer.
Status CopyTextField(char* destination, uint32_t width, const char* text);
/// Counts tagged records: a 6-character tag, a 5-digit length and that many bytes each. A last record
/// that runs past the end counts.
uint32_t CountTaggedRecords(std::string_view bytes);
/// Writes exactly `width` bytes: with pad ' ' the text comes first, otherwise the pad. Longer text is
/// cut. -5 when a write falls short.
Status WritePaddedField(int32_t file, std::string_view text, uint32_t width, char pad);

/// Stores text that a caller gives in a field of any type that keeps no code.
Status SetText(FieldView field, const char* text);
/// Stores a row and a column. With `leadingSign` a minus stands first in its half, else where the
/// decimal text has it. -13 when a half's text is longer than five characters.
Status SetLocation(Location& location, int32_t row, int32_t column, bool leadingSign);
/// Splits a location's text into its numbers.
void DecodeLocation(Location& location);
/// Writes the first two characters of each of `pieces` dates one after the other.
Status SetDate(char* field, std::span<const char* const> pieces);

// ---------------------------------------------------------------- code tables

/// One row of a code table: what the text begins with (or is), its code, what the writer writes.
struct CodeRow {
  const char* text;
  uint32_t code;
  const char* written;
};
/// A field's code table, searched from its first row.
struct CodeTable {
  std::span<const CodeRow> rows;
  bool byPrefix;

  /// The row that the text matches, or null.
  const CodeRow* Find(std::string_view text) const;
  /// What is written for a code, or `otherwise`.
  const char* WrittenFor(uint32_t code, const char* otherwise) const;
};

// ---------------------------------------------------------------- reading and writing

/// How a header is parsed: from its place, or from a streamed file's replacement data.
enum class ReadMode { Normal, Replacement };

/// Reads the fields of one header.
class FieldReader {
 public:
  /// In replacement mode at most `limit` bytes are taken.
  FieldReader(int32_t file, ReadMode mode, uint32_t limit) : file_(file), mode_(mode), limit_(limit) {}

  /// Reads exactly `bytes`: 1, -7, or ReplacementEnd when they do not fit into the replacement data.
  Status Take(void* to, uint32_t bytes);
  /// Takes a field's text and its terminator, and notes a placeholder (all nines).
  Status TakeText(char* text, uint32_t width, bool hasPlaceholder);
  /// Before memory is taken for many fields: -7 unless as many bytes remain in the file. In replacement
  /// mode the fields are held to the limit one by one.
  Status Require(CheckedSize bytes) const;
  /// Before memory is taken for one field: -7, or ReplacementEnd when it does not fit into what is left.
  Status RequireField(CheckedSize bytes) const;

  int32_t File() const { return file_; }
  ReadMode Mode() const { return mode_; }
  uint32_t Taken() const { return taken_; }
  bool SawPlaceholder() const { return sawPlaceholder_; }

 private:
  int32_t file_;
  ReadMode mode_;
  uint32_t limit_;
  uint32_t taken_ = 0;
  bool sawPlaceholder_ = false;
};

/// Writes the fields of one header at a file's position, or only measures them.
class FieldWriter {
 public:
  /// A writer that counts the bytes of what it is given and writes nothing.
  FieldWriter() : file_(kNoFile), measures_(true) {}
  explicit FieldWriter(int32_t file) : file_(file) {}
  Status PutText(std::string_view text, uint32_t width, char pad);
  Status PutNumber(int64_t value, uint32_t width);
  Status PutBytes(const void* bytes, uint32_t count);
  uint32_t Written() const { return written_; }

 private:
  int32_t file_;
  bool measures_ = false;
  uint32_t written_ = 0;
};

// ---------------------------------------------------------------- rows

/// What the writer writes for a field.
enum class WriteFrom : uint8_t {
  Text,       ///< the stored text
  Value,      ///< the decoded value as "%d"
  TextValue,  ///< the stored text's number as "%d"
  Code,       ///< the code table's text
  Custom,     ///< FieldRow::custom formats it
};
/// How callers set a field.
enum class SetAs : uint8_t { Text, Number, Date, Location, Code, Bytes };

/// One field of a record R.
template <class R>
struct FieldRow {
  const char* prefix = "";
  const char* name = "";
  FieldView (*view)(R&) = nullptr;
  uint16_t width = 0;
  uint16_t capacity = UINT16_MAX;  ///< most characters that setters take where the member holds more
  char fill = ' ';
  WriteFrom writeFrom = WriteFrom::Text;
  SetAs setAs = SetAs::Text;
  bool setsValue = false;         ///< the number setter stores the decoded value too
  bool placeholder = false;       ///< all nines mean "see the replacement data"
  bool raw = false;               ///< bytes, not text
  bool measuresOverflow = false;  ///< a length that is 0 or has room for its overflow field
  bool blank = false;             ///< starts as spaces to its capacity
  const char* initial = "";       ///< starts as this text
  const CodeTable* codes = nullptr;
  const char* otherwise = nullptr;  ///< written for a code outside the table, null for the stored text
  bool (*present)(const R&) = nullptr;             ///< whether the file has the field
  Status (*accept)(R&) = nullptr;                  ///< judges the field after it was read
  Status (*readMore)(R&, FieldReader&) = nullptr;  ///< reads what the file has behind it
  Status (*writeMore)(const R&, FieldWriter&) = nullptr;
  void (*custom)(const R&, char (&text)[16]) = nullptr;
  // Which hooks are there, for constant expressions.
  bool hasPresent = false, hasAccept = false, hasMore = false;

  constexpr FieldRow Blank() const {
    FieldRow row = *this;
    row.blank = true;
    return row;
  }
  constexpr FieldRow Starts(const char* text) const {
    FieldRow row = *this;
    row.initial = text;
    return row;
  }
  constexpr FieldRow Fill(char pad) const {
    FieldRow row = *this;
    row.fill = pad;
    return row;
  }
  constexpr FieldRow SetNumber(bool alsoValue = false) const {
    FieldRow row = *this;
    row.setAs = SetAs::Number;
    row.setsValue = alsoValue;
    return row;
  }
  constexpr FieldRow Set(SetAs how) const {
    FieldRow row = *this;
    row.setAs = how;
    return row;
  }
  constexpr FieldRow Write(WriteFrom from) const {
    FieldRow row = *this;
    row.writeFrom = from;
    return row;
  }
  constexpr FieldRow WriteWith(void (*format)(const R&, char (&text)[16])) const {
    FieldRow row = *this;
    row.writeFrom = WriteFrom::Custom;
    row.custom = format;
    return row;
  }
  constexpr FieldRow Codes(const CodeTable* table, const char* writtenOtherwise = nullptr) const {
    FieldRow row = *this;
    row.codes = table;
    row.otherwise = writtenOtherwise;
    row.setAs = SetAs::Code;
    row.writeFrom = WriteFrom::Code;
    return row;
  }
  constexpr FieldRow Placeholder() const {
    FieldRow row = *this;
    row.placeholder = true;
    return row;
  }
  constexpr FieldRow MeasuresOverflow() const {
    FieldRow row = *this;
    row.measuresOverflow = true;
    return row;
  }
  constexpr FieldRow Raw() const {
    FieldRow row = *this;
    row.raw = true;
    return row;
  }
  constexpr FieldRow When(bool (*test)(const R&)) const {
    FieldRow row = *this;
    row.present = test;
    row.hasPresent = true;
    return row;
  }
  constexpr FieldRow Accept(Status (*test)(R&)) const {
    FieldRow row = *this;
    row.accept = test;
    row.hasAccept = true;
    return row;
  }
  constexpr FieldRow Then(Status (*read)(R&, FieldReader&),
                          Status (*write)(const R&, FieldWriter&)) const {
    FieldRow row = *this;
    row.readMore = read;
    row.writeMore = write;
    row.hasMore = true;
    return row;
  }

  /// Whether this is the field of a mnemonic.
  constexpr bool Is(std::string_view mnemonic) const {
    const std::string_view front(prefix);
    return mnemonic.substr(0, front.size()) == front && mnemonic.substr(front.size()) == name;
  }
  bool IsPresent(const R& record) const { return present == nullptr || present(record); }
  /// The field as setters see it.
  FieldView ViewOf(R& record) const {
    FieldView field = view(record);
    field.capacity = std::min(field.capacity, capacity);
    return field;
  }
};

template <auto Member>
struct MemberTraits;
template <class R, class F, F R::*Member>
struct MemberTraits<Member> {
  using Record = R;
  static FieldView ViewOf(R& record) { return View(record.*Member); }
};

/// A row for a member of a record.
template <auto Member>
constexpr auto Field(const char* name, uint16_t width) {
  FieldRow<typename MemberTraits<Member>::Record> row;
  row.name = name;
  row.view = &MemberTraits<Member>::ViewOf;
  row.width = width;
  return row;
}

/// Rows of a part of R that several records share, seen as rows of R. `kRows` is the part's table.
template <class R, auto Part, const auto& kRows, size_t I>
constexpr FieldRow<R> LiftRow() {
  constexpr const auto& row = kRows[I];
  FieldRow<R> lifted;
  lifted.prefix = row.prefix;
  lifted.name = row.name;
  lifted.view = [](R& record) { return kRows[I].view(record.*Part); };
  lifted.width = row.width;
  lifted.fill = row.fill;
  lifted.writeFrom = row.writeFrom;
  lifted.setAs = row.setAs;
  lifted.setsValue = row.setsValue;
  lifted.measuresOverflow = row.measuresOverflow;
  lifted.blank = row.blank;
  lifted.initial = row.initial;
  if constexpr (row.hasPresent) {
    lifted.present = [](const R& record) { return kRows[I].present(record.*Part); };
  }
  if constexpr (row.hasAccept) {
    lifted.accept = [](R& record) { return kRows[I].accept(record.*Part); };
  }
  if constexpr (row.hasMore) {
    lifted.readMore = [](R& record, FieldReader& reader) {
      return kRows[I].readMore(record.*Part, reader);
    };
    lifted.writeMore = [](const R& record, FieldWriter& writer) {
      return kRows[I].writeMore(record.*Part, writer);
    };
  }
  return lifted;
}
template <class R, auto Part, const auto& kRows, size_t... I>
constexpr std::array<FieldRow<R>, sizeof...(I)> LiftRows(std::index_sequence<I...>) {
  return {LiftRow<R, Part, kRows, I>()...};
}

/// Joins runs of rows into a record's table.
template <class R, size_t... N>
constexpr auto JoinRows(const std::array<FieldRow<R>, N>&... runs) {
  std::array<FieldRow<R>, (N + ...)> table{};
  size_t next = 0;
  const auto append = [&](const auto& run) {
    for (const auto& row : run) table[next++] = row;
  };
  (append(runs), ...);
  return table;
}

template <class R>
using FieldTable = std::span<const FieldRow<R>>;

/// The row of a mnemonic, or null.
template <class R>
const FieldRow<R>* FindRow(std::type_identity_t<FieldTable<R>> table, std::string_view mnemonic) {
  for (const auto& row : table) {
    if (row.Is(mnemonic)) return &row;
  }
  return nullptr;
}

// ---------------------------------------------------------------- runs over a table

/// Gives every field its text of a fresh record.
template <class R>
void ApplyDefaults(std::type_identity_t<FieldTable<R>> table, R& record) {
  for (const auto& row : table) {
    const FieldView field = row.view(record);
    std::memset(field.text, row.blank ? ' ' : 0, field.capacity);
    field.text[field.capacity] = 0;
    if (!row.blank) std::strncpy(field.text, row.initial, field.capacity);
  }
}

/// Decodes what was read into a field beside its text.
void DecodeField(FieldView field, const CodeTable* codes);

/// Reads a run of fields in file order; the first failure ends it.
template <class R>
Status ReadRows(std::type_identity_t<FieldTable<R>> table, R& record, FieldReader& reader) {
  for (const auto& row : table) {
    if (!row.IsPresent(record)) continue;
    const FieldView field = row.view(record);
    if (Status s = reader.TakeText(field.text, row.width, row.placeholder); !Ok(s)) return s;
    if (!row.raw) DecodeField(field, row.codes);
    if (row.accept != nullptr) {
      if (Status s = row.accept(record); !Ok(s)) return s;
    }
    if (row.readMore != nullptr) {
      if (Status s = row.readMore(record, reader); !Ok(s)) return s;
    }
  }
  return Status::Success;
}

template <class R>
Status WriteRow(const FieldRow<R>& row, const R& record, FieldWriter& writer) {
  const FieldView field = row.view(const_cast<R&>(record));
  switch (row.writeFrom) {
    case WriteFrom::Value:
      return writer.PutNumber(static_cast<int32_t>(*field.value), row.width);
    case WriteFrom::TextValue:
      return writer.PutNumber(DecimalOf(field.text), row.width);
    case WriteFrom::Code: {
      const char* otherwise = row.otherwise != nullptr ? row.otherwise : field.text;
      return writer.PutText(row.codes->WrittenFor(*field.value, otherwise), row.width, row.fill);
    }
    case WriteFrom::Custom: {
      char text[16] = {};
      row.custom(record, text);
      return writer.PutText(text, row.width, row.fill);
    }
    case WriteFrom::Text:
      break;
  }
  return row.raw ? writer.PutBytes(field.text, row.width)
                 : writer.PutText(field.text, row.width, row.fill);
}

/// Writes a run of fields in file order; the first failure ends it.
template <class R>
Status WriteRows(std::type_identity_t<FieldTable<R>> table, const R& record, FieldWriter& writer) {
  for (const auto& row : table) {
    if (!row.IsPresent(record)) continue;
    if (Status s = WriteRow(row, record, writer); !Ok(s)) return s;
    if (row.writeMore != nullptr) {
      if (Status s = row.writeMore(record, writer); !Ok(s)) return s;
    }
  }
  return Status::Success;
}

/// How many bytes a header takes as it would be written now. -1.
template <class R>
Status MeasureRows(std::type_identity_t<FieldTable<R>> table, const R& record, uint32_t& bytes) {
  FieldWriter writer;
  const Status status = WriteRows<R>(table, record, writer);
  bytes = writer.Written();
  return status;
}

/// Stores a number in a numeric field: its text, and the value where the row says so. -13 when it does
/// not fit.
template <class R>
Status SetNumber(const FieldRow<R>& row, R& record, int32_t value) {
  const FieldView field = row.view(record);
  constexpr int32_t kOverflowWidth = 3;
  if (row.measuresOverflow && value != 0 && value < kOverflowWidth) return Status::InvalidParameter;
  if (Status s = FormatNumberField(field.text, row.width, value); !Ok(s)) return s;
  if (row.setsValue) *field.value = static_cast<uint32_t>(value);
  return Status::Success;
}

/// Stores text in a coded field together with its code; -13 when the table has no row for it.
template <class R>
Status SetCode(const FieldRow<R>& row, R& record, const char* text) {
  const FieldView field = row.ViewOf(record);
  const CodeRow* code = text != nullptr ? row.codes->Find(text) : nullptr;
  if (code == nullptr) return Status::InvalidParameter;
  if (Status s = CopyTextField(field.text, field.capacity, text); !Ok(s)) return s;
  *field.value = code->code;
  return Status::Success;
}
