// Exchange of header records with callers: one table per public record drives Get, Set and Free.
#pragma once

#include "Common/FieldRows.h"
#include "orbntf/orbntf.h"

struct FileHeader;
struct GraphicSubheader;
struct ImageSubheader;
struct TextSubheader;

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

/// One field of a public record.
struct PublicField {
  const char* name;
  PublicKind kind;
  bool get;  ///< whether Get fills it from its row
  uint8_t* (*place)(void* record);
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

template <class T>
constexpr PublicKind KindOf() {
  if constexpr (std::is_same_v<T, char*>) return PublicKind::String;
  if constexpr (std::is_same_v<T, int32_t> || std::is_same_v<T, uint32_t>) return PublicKind::Int;
  if constexpr (std::is_same_v<T, uint16_t>) return PublicKind::Short;
  if constexpr (std::is_same_v<T, float>) return PublicKind::Float;
  if constexpr (std::is_same_v<T, char[8]>) return PublicKind::Date;
  return std::is_same_v<T, char[14]> ? PublicKind::DateTime : PublicKind::Pointer;
}

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

template <auto Member>
struct PublicMember;
template <class P, class T, T P::*Member>
struct PublicMember<Member> {
  static constexpr PublicKind kKind = KindOf<T>();
  static uint8_t* PlaceIn(void* record) {
    return reinterpret_cast<uint8_t*>(&(static_cast<P*>(record)->*Member));
  }
  /// The member's value; the records are packed.
  static auto Of(const P& record) { return LoadFrom<T>(PlaceIn(const_cast<P*>(&record))); }
};

/// A member that Get fills, unless it is a pointer to other things than text.
template <auto Member>
constexpr PublicField Public(const char* name) {
  using M = PublicMember<Member>;
  return {name, M::kKind, M::kKind != PublicKind::Pointer, &M::PlaceIn};
}
/// A member that Get leaves to the record's own functions or to the caller.
template <auto Member>
constexpr PublicField ToSet(const char* name) {
  return {name, PublicMember<Member>::kKind, false, &PublicMember<Member>::PlaceIn};
}
/// A pointer that the record's own functions fill.
template <auto Member>
constexpr PublicField Own(const char* name) {
  return {name, PublicKind::Pointer, false, &PublicMember<Member>::PlaceIn};
}
/// The first of two members that are a place or a bound.
template <auto Member>
constexpr PublicField Place(const char* name) {
  return {name, PublicKind::Location, true, &PublicMember<Member>::PlaceIn};
}

/// The field of a mnemonic, or null.
constexpr const PublicField* FindField(PublicTable table, std::string_view name) {
  for (const PublicField& field : table) {
    if (name == field.name) return &field;
  }
  return nullptr;
}
/// Whether a table has every name of a set order.
constexpr bool HasAll(PublicTable table, std::span<const char* const> names) {
  return std::all_of(names.begin(), names.end(),
                     [&](const char* name) { return FindField(table, name) != nullptr; });
}

/// A field's place in a public record.
struct PublicPlace {
  const PublicField* field;
  uint8_t* bytes;
};
/// The place of a mnemonic; null when the table has none.
PublicPlace FindPlace(PublicTable table, void* record, std::string_view name);

/// A caller's copy of bytes, of at least `length` and a terminator, from the kernel allocator; null when
/// memory is out. A record's length and its bytes may differ, and callers go by the length.
char* CopyForCaller(std::string_view bytes, size_t length = 0);
/// Frees a pointer field and sets it to null.
void FreePointer(uint8_t* bytes);

/// Copies one field of a header record to its place: text, number, date or location.
Status GetField(FieldView field, const PublicPlace& place);
/// Stores one field of a public record as its row says.
Status SetField(const FieldTraits& traits, FieldView field, const uint8_t* bytes);

/// Fills every field of a public record that comes from its row.
template <class R>
Status GetFields(PublicTable table, R& record, void* publicRecord) {
  for (const PublicField& field : table) {
    if (!field.get) continue;
    const FieldRow<R>* row = FindRow<R>(R::Table(), field.name);
    if (Status s = GetField(row->view(record), {&field, field.place(publicRecord)}); !Ok(s)) return s;
  }
  return Status::Success;
}

/// A field whose setter goes beyond its row.
template <class R, class P>
struct SpecialSetter {
  const char* name;
  Status (*set)(R& record, const P& given);
};

/// A numeric field as it was.
class KeptNumber {
 public:
  KeptNumber() = default;
  explicit KeptNumber(FieldView field);
  void PutBack() const;

 private:
  FieldView field_ = {};
  char text_[16] = {};
  uint32_t value_ = 0;
};

/// Stores one named field, through its special setter when it has one; a name without either is no field
/// of the header.
template <class R, class P>
Status SetNamed(const PublicField& name, std::span<const SpecialSetter<R, P>> specials, R& record,
                const P& given) {
  for (const SpecialSetter<R, P>& special : specials) {
    if (std::string_view(name.name) == special.name) return special.set(record, given);
  }
  const FieldRow<R>* row = FindRow<R>(R::Table(), name.name);
  if (row == nullptr) return Status::Success;
  return SetField(*row, row->ViewOf(record), name.place(const_cast<P*>(&given)));
}

/// What a refused field means for the ones behind it.
enum class OnRefusal { Stop, GoOn };

/// Stores the named fields in their order; a length of extended data stands in front of its overflow
/// field and its bytes. Where the first refusal ends it, a length whose overflow field or bytes were
/// refused is put back, so that it still measures what is there. Where it goes on, the bytes behind a
/// refused length are refused too: nothing says how many the caller has.
template <class R, class P>
Status SetFields(std::span<const char* const> order, PublicTable table,
                 std::type_identity_t<std::span<const SpecialSetter<R, P>>> specials, R& record,
                 const P& given, OnRefusal refusal) {
  constexpr size_t kBytes = 2;  // fields from a length to the bytes that it measures
  KeptNumber length;
  bool lengthRefused = false;
  size_t behind = kBytes + 1;  // fields since the length
  for (const char* name : order) {
    const FieldRow<R>* row = FindRow<R>(R::Table(), name);
    const bool isLength = row != nullptr && row->measuresOverflow;
    if (isLength) {
      length = KeptNumber(row->view(record));
      behind = 0;
    }
    const bool unmeasured = lengthRefused && behind == kBytes;
    const Status status = unmeasured ? Status::InvalidParameter
                                     : SetNamed<R, P>(*FindField(table, name), specials, record, given);
    if (isLength) lengthRefused = !Ok(status);
    if (!Ok(status) && refusal == OnRefusal::Stop) {
      if (behind <= kBytes) length.PutBack();
      return status;
    }
    ++behind;
  }
  return Status::Success;
}

/// Frees every string and pointer of a public record.
void FreeFields(PublicTable table, void* publicRecord);

// The public records' tables, in field order.

PublicTable PublicFileFields();
PublicTable PublicImageFields();
PublicTable PublicGraphicFields();
PublicTable PublicTextFields();

// The exchange of each record.

Status GetFileHeader(FileHeader& header, NITFHeader& record);
void SetFileHeader(FileHeader& header, const NITFHeader& record);
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
