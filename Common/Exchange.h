// Exchange of header records with callers: one table per public record drives Get, Set and Free.
#pragma once

#include "Common/NitfFile.h"

/// How a field stands in a public record.
enum class PublicKind : uint8_t {
  String,    ///< pointer to terminated text
  Int,       ///< 32 bits
  Short,     ///< 16 bits
  Float,     ///< 32 bits
  Date,      ///< eight characters
  DateTime,  ///< fourteen characters
  Location,  ///< two Ints
  Pointer,   ///< memory that the record's own functions fill and store
};

/// One field of a public record; `used` tells whether Get fills it generically.
struct PublicField {
  const char* name;
  PublicKind kind;
  bool get = true;
};
using PublicTable = std::span<const PublicField>;

constexpr size_t SizeOf(PublicKind kind) {
  switch (kind) {
    case PublicKind::Short:
      return 2;
    case PublicKind::Int:
    case PublicKind::Float:
      return 4;
    case PublicKind::Date:
    case PublicKind::Location:
      return 8;
    case PublicKind::DateTime:
      return 14;
    case PublicKind::String:
    case PublicKind::Pointer:
      return sizeof(void*);
  }
  return 0;
}
constexpr size_t SizeOf(PublicTable table) {
  size_t size = 0;
  for (const PublicField& field : table) size += SizeOf(field.kind);
  return size;
}

static_assert(sizeof(void*) != 4 || (sizeof(NITFHeader) == 234 && sizeof(ImageHeader) == 276 &&
                                     sizeof(GraphicHeader) == 152 && sizeof(TextHeader) == 126));

/// A field's place in a public record.
struct PublicPlace {
  const PublicField* field;
  uint8_t* bytes;
};
/// The place of a mnemonic; the table must have it.
PublicPlace FindPlace(PublicTable table, void* record, std::string_view name);

template <class T>
T LoadFrom(const uint8_t* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}
template <class T>
void StoreTo(uint8_t* bytes, T value) {
  std::memcpy(bytes, &value, sizeof value);
}

/// A caller's copy of bytes, of at least `length` and a terminator, from the kernel allocator; null when
/// memory is out. A record's length and its bytes may differ, and callers go by the length.
char* CopyForCaller(std::string_view bytes, size_t length = 0);
/// Frees a pointer field and sets it to null.
void FreePointer(uint8_t* bytes);

/// Copies one field of a header record to its place: text, number, date or location.
Status GetField(FieldView field, const PublicPlace& place);

/// Fills every generic field of a public record from a header record.
template <class R>
Status GetFields(PublicTable table, R& record, void* publicRecord) {
  auto* bytes = static_cast<uint8_t*>(publicRecord);
  for (const PublicField& field : table) {
    if (field.get) {
      const FieldRow<R>* row = FindRow<R>(R::Table(), field.name);
      if (Status s = GetField(row->view(record), {&field, bytes}); !Ok(s)) return s;
    }
    bytes += SizeOf(field.kind);
  }
  return Status::Success;
}

/// Stores one field of a public record through its row's setter. `leadingSign` is for locations.
template <class R>
Status SetField(const FieldRow<R>& row, R& record, const PublicPlace& place) {
  const FieldView field = row.ViewOf(record);
  const uint8_t* bytes = place.bytes;
  switch (row.setAs) {
    case SetAs::Number:
      return SetNumber(row, record, LoadFrom<int32_t>(bytes));
    case SetAs::Code:
      return SetCode(row, record, LoadFrom<const char*>(bytes));
    case SetAs::Location: {
      const bool leadingSign = std::string_view(row.name).substr(1) == "LOC";
      return SetLocation(*field.location, LoadFrom<int32_t>(bytes), LoadFrom<int32_t>(bytes + 4),
                         leadingSign);
    }
    case SetAs::Date: {
      const char* pieces[7];
      const size_t count = row.width / 2;
      for (size_t i = 0; i < count; ++i) pieces[i] = reinterpret_cast<const char*>(bytes) + 2 * i;
      return SetDate(field.text, {pieces, count});
    }
    case SetAs::Text:
    case SetAs::Bytes:
      break;
  }
  return SetText(field, LoadFrom<const char*>(bytes));
}

/// A field whose setter goes beyond its row.
template <class R>
struct SpecialSetter {
  const char* name;
  Status (*set)(R& record, PublicTable table, void* publicRecord);
};

/// Stores one named field, through its special setter when it has one.
template <class R>
Status SetNamed(std::string_view name, PublicTable table, std::span<const SpecialSetter<R>> specials,
                R& record, void* source) {
  for (const SpecialSetter<R>& special : specials) {
    if (name == special.name) return special.set(record, table, source);
  }
  return SetField(*FindRow<R>(R::Table(), name), record, FindPlace(table, source, name));
}

/// A numeric field as it was.
class KeptNumber {
 public:
  KeptNumber() = default;
  explicit KeptNumber(FieldView field) : field_(field), value_(*field.value) {
    std::memcpy(text_, field.text, field.capacity + 1u);
  }
  void PutBack() const {
    if (field_.text == nullptr) return;
    std::memcpy(field_.text, text_, field_.capacity + 1u);
    *field_.value = value_;
  }

 private:
  FieldView field_ = {};
  char text_[16] = {};
  uint32_t value_ = 0;
};

/// Stores the named fields in their order; the first refusal ends it. Then a length of extended data
/// whose overflow field or bytes were refused is put back, so that it still measures what is there.
template <class R>
Status SetFields(std::span<const char* const> order, PublicTable table,
                 std::type_identity_t<std::span<const SpecialSetter<R>>> specials, R& record,
                 const void* publicRecord) {
  void* source = const_cast<void*>(publicRecord);
  KeptNumber length;
  size_t behind = 0;  // fields since the length
  for (const char* name : order) {
    const FieldRow<R>* row = FindRow<R>(R::Table(), name);
    if (row != nullptr && row->measuresOverflow) {
      length = KeptNumber(row->view(record));
      behind = 0;
    }
    if (Status s = SetNamed<R>(name, table, specials, record, source); !Ok(s)) {
      constexpr size_t kMeasured = 2;  // the overflow field and the bytes
      if (behind <= kMeasured) length.PutBack();
      return s;
    }
    ++behind;
  }
  return Status::Success;
}

/// Frees every string and pointer of a public record.
void FreeFields(PublicTable table, void* publicRecord);

/// Copies extended data to a caller when its length is above the overflow field's, freeing what the
/// pointer held.
Status GetExtended(const ExtendedData& data, const PublicPlace& place);
/// Stores a caller's extended data unless its pointer is null.
Status SetExtended(ExtendedData& data, const PublicPlace& place);

// The public records' tables, in field order.

PublicTable PublicFileFields();
PublicTable PublicImageFields();
PublicTable PublicGraphicFields();
PublicTable PublicTextFields();

// The exchange of each record.

Status GetFileHeader(NitfFile& document, NITFHeader& record);
void SetFileHeader(NitfFile& document, const NITFHeader& record);
void FreeFileHeader(NITFHeader& record);
Status GetImageHeader(ImageSubheader& header, ImageHeader& record);
Status SetImageHeader(ImageSubheader& header, const ImageHeader& record);
void FreeImageHeader(ImageHeader& record);
Status GetGraphicHeader(GraphicSubheader& header, GraphicHeader& record);
Status SetGraphicHeader(GraphicSubheader& header, const GraphicHeader& record);
void FreeGraphicHeader(GraphicHeader& record);
Status GetTextHeader(TextSubheader& header, TextHeader& record);
Status SetTextHeader(TextSubheader& header, const TextHeader& record);
void FreeTextHeader(TextHeader& record);
