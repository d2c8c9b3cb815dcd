// The one table per header record that drives defaults, parsing, setting, writing and listing: a row per
// field, in file order.
//
//   Field<&ImageSubheader::NBANDS>("NBANDS").SetNumber(true).WriteWith(&FormatBandCount)
//       .Then(&ReadOrdinaryBands, &WriteOrdinaryBands)
//
// ApplyDefaults, ReadRows, WriteRows and MeasureRows run over any record's table.
#pragma once

#include <algorithm>
#include <array>
#include <type_traits>
#include <utility>

#include "Common/Bounds.h"
#include "Common/Fields.h"
#include "Common/Owning.h"

// ---------------------------------------------------------------- reading and writing

/// How a header is parsed: from its place, or from a streamed file's replacement data.
enum class ReadMode { Normal, Replacement };

/// Where a parse failed.
struct ParseFault {
  const char* prefix = "";  ///< of the mnemonic
  const char* name = "";
  int64_t offset = -1;  ///< in the file, -1 for none
};

/// Reads the fields of one header.
class FieldReader {
 public:
  /// Begins at the file's position. In replacement mode at most `limit` bytes are taken.
  FieldReader(int32_t file, ReadMode mode, uint32_t limit);

  /// Reads exactly `bytes`: 1, -7, or ReplacementEnd when they do not fit into the replacement data.
  Status Take(void* to, uint32_t bytes);
  /// Takes a field's text and its terminator, and notes a placeholder (all nines).
  Status TakeText(char* text, uint32_t width, bool hasPlaceholder = false);
  /// Before memory is taken for many fields: -7 unless as many bytes remain in the file. In replacement
  /// mode the fields are held to the limit one by one.
  Status Require(CheckedSize bytes) const;
  /// Before memory is taken for one field: -7, or ReplacementEnd when it does not fit into what is left.
  Status RequireField(CheckedSize bytes) const;
  /// Remembers the field at which the parse failed, unless one is remembered.
  void NoteFault(const ParseFault& field);
  /// Remembers the first field that a placeholder was met in.
  void Pass(const ParseFault& field);

  ReadMode Mode() const { return mode_; }
  uint32_t Taken() const { return taken_; }
  int64_t Position() const { return start_ + taken_; }
  bool SawPlaceholder() const { return sawPlaceholder_; }
  const ParseFault& Fault() const { return fault_; }
  /// The field that asks for the replacement data.
  const ParseFault& Placeholder() const { return placeholder_; }

 private:
  int32_t file_;
  ReadMode mode_;
  uint32_t limit_;
  int64_t start_;
  uint32_t taken_ = 0;
  bool sawPlaceholder_ = false;
  ParseFault fault_, placeholder_;
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
  /// The lowest bytes of a number, big-endian.
  Status PutBig(uint32_t value, uint32_t count);
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
/// How callers set a field. The minus of a signed location stands first in its half.
enum class SetAs : uint8_t { Text, Number, Date, Location, SignedLocation, Code, Bytes };

/// What is known of a field whatever its record.
struct FieldTraits {
  const char* prefix = "";
  const char* name = "";
  uint16_t width = 0;              ///< in the file
  uint16_t capacity = UINT16_MAX;  ///< most characters that setters take where the member holds more
  char fill = 0;                   ///< the writer's pad, 0 for the table's
  WriteFrom writeFrom = WriteFrom::Text;
  SetAs setAs = SetAs::Text;
  bool setsValue = false;         ///< the number setter stores the decoded value too
  bool placeholder = false;       ///< all nines mean "see the replacement data"
  bool raw = false;               ///< bytes, not text
  bool measuresOverflow = false;  ///< a length that is 0 or has room for its overflow field
  bool blank = false;             ///< starts as spaces to its capacity
  const char* mark = nullptr;     ///< the one text that a file can have
  const char* initial = "";       ///< starts as this text
  const CodeTable* codes = nullptr;
  const char* otherwise = nullptr;  ///< written for a code outside the table, null for the stored text

  /// Whether this is the field of a mnemonic.
  constexpr bool Is(std::string_view mnemonic) const {
    const std::string_view front(prefix);
    return mnemonic.substr(0, front.size()) == front && mnemonic.substr(front.size()) == name;
  }
};

/// One field of a record R.
template <class R>
struct FieldRow : FieldTraits {
  FieldView (*view)(R&) = nullptr;
  bool (*present)(const R&) = nullptr;             ///< whether the file has the field
  Status (*accept)(R&) = nullptr;                  ///< judges the field after it was read
  Status (*readMore)(R&, FieldReader&) = nullptr;  ///< reads what the file has behind it
  Status (*writeMore)(const R&, FieldWriter&) = nullptr;
  void (*custom)(const R&, char (&text)[16]) = nullptr;

  constexpr FieldRow& Blank() { return With(blank, true); }
  constexpr FieldRow& Starts(const char* text) { return With(initial, text); }
  constexpr FieldRow& Fill(char pad) { return With(fill, pad); }
  constexpr FieldRow& SetNumber(bool alsoValue = false) {
    return With(setAs, SetAs::Number).With(setsValue, alsoValue);
  }
  constexpr FieldRow& Set(SetAs how) { return With(setAs, how); }
  constexpr FieldRow& Write(WriteFrom from) { return With(writeFrom, from); }
  constexpr FieldRow& WriteWith(void (*format)(const R&, char (&text)[16])) {
    return With(writeFrom, WriteFrom::Custom).With(custom, format);
  }
  constexpr FieldRow& Codes(const CodeTable* table, const char* writtenOtherwise = nullptr) {
    return With(codes, table)
        .With(otherwise, writtenOtherwise)
        .With(setAs, SetAs::Code)
        .With(writeFrom, WriteFrom::Code);
  }
  constexpr FieldRow& Placeholder() { return With(placeholder, true); }
  constexpr FieldRow& MeasuresOverflow() { return With(measuresOverflow, true); }
  constexpr FieldRow& Mark(const char* text) { return With(mark, text); }
  constexpr FieldRow& Raw() { return With(raw, true); }
  constexpr FieldRow& When(bool (*test)(const R&)) { return With(present, test); }
  constexpr FieldRow& Accept(Status (*test)(R&)) { return With(accept, test); }
  constexpr FieldRow& Then(Status (*read)(R&, FieldReader&), Status (*write)(const R&, FieldWriter&)) {
    return With(readMore, read).With(writeMore, write);
  }
  bool IsPresent(const R& record) const { return present == nullptr || present(record); }
  /// The field as setters see it.
  FieldView ViewOf(R& record) const {
    FieldView field = view(record);
    field.capacity = std::min(field.capacity, capacity);
    return field;
  }

 private:
  template <class T>
  constexpr FieldRow& With(T& member, std::type_identity_t<T> value) {
    member = value;
    return *this;
  }
};

template <auto Member>
struct MemberTraits;
template <class R, class F, F R::*Member>
struct MemberTraits<Member> {
  using Record = R;
  static constexpr uint16_t kCapacity = sizeof(F::text) - 1;
  static FieldView ViewOf(R& record) { return View(record.*Member); }
};

/// A row for a member of a record, as wide in the file as the member is unless a width is given.
template <auto Member, uint16_t kWidth = MemberTraits<Member>::kCapacity>
constexpr auto Field(const char* name) {
  static_assert(kWidth <= MemberTraits<Member>::kCapacity, "the member holds all of the field");
  FieldRow<typename MemberTraits<Member>::Record> row;
  row.name = name;
  row.view = &MemberTraits<Member>::ViewOf;
  row.width = kWidth;
  return row;
}

/// A row of a part of R that several records share, seen as a row of R. `kRows` is the part's table.
template <class R, auto Part, const auto& kRows, size_t I>
constexpr FieldRow<R> LiftRow() {
  FieldRow<R> lifted;
  static_cast<FieldTraits&>(lifted) = kRows[I];
  lifted.view = [](R& record) { return kRows[I].view(record.*Part); };
  lifted.present = [](const R& record) { return kRows[I].IsPresent(record.*Part); };
  lifted.accept = [](R& record) {
    return kRows[I].accept != nullptr ? kRows[I].accept(record.*Part) : Status::Success;
  };
  lifted.readMore = [](R& record, FieldReader& reader) {
    return kRows[I].readMore != nullptr ? kRows[I].readMore(record.*Part, reader) : Status::Success;
  };
  lifted.writeMore = [](const R& record, FieldWriter& writer) {
    return kRows[I].writeMore != nullptr ? kRows[I].writeMore(record.*Part, writer) : Status::Success;
  };
  lifted.custom = [](const R& record, char(&text)[16]) { kRows[I].custom(record.*Part, text); };
  return lifted;
}
template <class R, auto Part, const auto& kRows, size_t... I>
constexpr std::array<FieldRow<R>, sizeof...(I)> LiftRows(std::index_sequence<I...>) {
  return {LiftRow<R, Part, kRows, I>()...};
}

/// Joins runs of rows into a record's table, whose fields are padded with `fill` unless they say
/// otherwise.
template <class R, size_t... N>
constexpr auto MakeTable(char fill, const std::array<FieldRow<R>, N>&... runs) {
  std::array<FieldRow<R>, (N + ...)> table{};
  size_t next = 0;
  const auto append = [&](const auto& run) {
    for (const auto& row : run) {
      table[next] = row;
      if (row.fill == 0) table[next].fill = fill;
      ++next;
    }
  };
  (append(runs), ...);
  return table;
}

template <class R>
using FieldTable = std::span<const FieldRow<R>>;

/// The row of a mnemonic, or null.
template <class R>
constexpr const FieldRow<R>* FindRow(std::type_identity_t<FieldTable<R>> table,
                                     std::string_view mnemonic) {
  for (const auto& row : table) {
    if (row.Is(mnemonic)) return &row;
  }
  return nullptr;
}

// ---------------------------------------------------------------- runs over a table

void ApplyDefault(const FieldTraits& traits, FieldView field);
/// Reads a field and decodes it beside its text.
Status ReadField(const FieldTraits& traits, FieldView field, FieldReader& reader);
/// Writes a field; `custom` is the text of one that is formatted by its record.
Status WriteField(const FieldTraits& traits, FieldView field, const char* custom, FieldWriter& writer);
/// Stores a number in a numeric field: its text, and the value where the row says so. -13 when it does
/// not fit.
Status SetNumber(const FieldTraits& traits, FieldView field, int32_t value);
/// Stores text in a coded field together with its code; -13 when the table has no row for it.
Status SetCode(const FieldTraits& traits, FieldView field, const char* text);

/// Gives every field its text of a fresh record.
template <class R>
void ApplyDefaults(std::type_identity_t<FieldTable<R>> table, R& record) {
  for (const auto& row : table) ApplyDefault(row, row.view(record));
}

template <class R>
Status ReadRow(const FieldRow<R>& row, R& record, FieldReader& reader) {
  if (Status s = ReadField(row, row.view(record), reader); !Ok(s)) return s;
  if (row.accept != nullptr) {
    if (Status s = row.accept(record); !Ok(s)) return s;
  }
  return row.readMore != nullptr ? row.readMore(record, reader) : Status::Success;
}

/// Reads a run of fields in file order; the first failure ends it.
template <class R>
Status ReadRows(std::type_identity_t<FieldTable<R>> table, R& record, FieldReader& reader) {
  for (const auto& row : table) {
    if (!row.IsPresent(record)) continue;
    const ParseFault field = {row.prefix, row.name, reader.Position()};
    if (Status s = ReadRow(row, record, reader); !Ok(s)) {
      reader.NoteFault(field);
      return s;
    }
    reader.Pass(field);
  }
  return Status::Success;
}

/// Writes a run of fields in file order; the first failure ends it.
template <class R>
Status WriteRows(std::type_identity_t<FieldTable<R>> table, const R& record, FieldWriter& writer) {
  for (const auto& row : table) {
    if (!row.IsPresent(record)) continue;
    char custom[16] = {};
    if (row.writeFrom == WriteFrom::Custom) row.custom(record, custom);
    if (Status s = WriteField(row, row.view(const_cast<R&>(record)), custom, writer); !Ok(s)) return s;
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
