#include "Common/Exchange.h"

#include <algorithm>

namespace {

constexpr char16_t kSourceFile[] = u"ORBNTF";

}  // namespace

PublicPlace FindPlace(PublicTable table, void* record, std::string_view name) {
  const PublicField* field = FindField(table, name);
  return {field, field != nullptr ? field->place(record) : nullptr};
}

char* CopyForCaller(std::string_view bytes, size_t length) {
  const size_t size = std::max(bytes.size(), length) + 1;
  auto* copy = static_cast<char*>(KernelAllocate(size, 1, __LINE__, kSourceFile));
  if (copy != nullptr) KernelCopyMemory(copy, bytes.data(), bytes.size());
  return copy;
}

void FreePointer(uint8_t* bytes) {
  KernelFree(LoadFrom<void*>(bytes), __LINE__, kSourceFile);
  StoreTo<void*>(bytes, nullptr);
}

Status GetField(FieldView field, const PublicPlace& place) {
  switch (place.field->kind) {
    case PublicKind::String: {
      char* copy = CopyForCaller(field.text);
      if (copy == nullptr) return Status::OutOfMemory;
      StoreTo(place.bytes, copy);
      break;
    }
    case PublicKind::Int:
      StoreTo(place.bytes, DecimalOf(field.text));
      break;
    case PublicKind::Float:
      StoreTo(place.bytes, static_cast<float>(RealOf(field.text)));
      break;
    case PublicKind::Date:
    case PublicKind::DateTime:
      KernelCopyMemory(place.bytes, field.text, SizeOf(place.field->kind));
      break;
    case PublicKind::Location: {
      const std::string_view text(field.text);
      StoreTo(place.bytes, DecimalOf(text.substr(0, 5)));
      StoreTo(place.bytes + 4, DecimalOf(text.size() > 5 ? text.substr(5) : ""));
      break;
    }
    case PublicKind::Short:
    case PublicKind::Pointer:
      break;
  }
  return Status::Success;
}

Status SetField(const FieldTraits& traits, FieldView field, const uint8_t* bytes) {
  switch (traits.setAs) {
    case SetAs::Number:
      return SetNumber(traits, field, LoadFrom<int32_t>(bytes));
    case SetAs::Code:
      return SetCode(traits, field, LoadFrom<const char*>(bytes));
    case SetAs::Location:
    case SetAs::SignedLocation:
      return SetLocation(*field.location, LoadFrom<int32_t>(bytes), LoadFrom<int32_t>(bytes + 4),
                         traits.setAs == SetAs::SignedLocation);
    case SetAs::Date: {
      const char* pieces[7];
      const size_t count = traits.width / 2;
      for (size_t i = 0; i < count; ++i) pieces[i] = reinterpret_cast<const char*>(bytes) + 2 * i;
      return SetDate(field.text, {pieces, count});
    }
    case SetAs::Text:
    case SetAs::Bytes:
      break;
  }
  return SetText(field, LoadFrom<const char*>(bytes));
}

KeptNumber::KeptNumber(FieldView field) : field_(field), value_(*field.value) {
  std::memcpy(text_, field.text, field.capacity + 1u);
}

void KeptNumber::PutBack() const {
  if (field_.text == nullptr) return;
  std::memcpy(field_.text, text_, field_.capacity + 1u);
  *field_.value = value_;
}

void FreeFields(PublicTable table, void* publicRecord) {
  for (const PublicField& field : table) {
    if (field.kind == PublicKind::String || field.kind == PublicKind::Pointer)
      FreePointer(field.place(publicRecord));
  }
}
