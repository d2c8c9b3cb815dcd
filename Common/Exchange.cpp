#include "Common/Exchange.h"

#include <algorithm>

namespace {

constexpr char16_t kSourceFile[] = u"ORBNTF";

}  // namespace

PublicPlace FindPlace(PublicTable table, void* record, std::string_view name) {
  auto* bytes = static_cast<uint8_t*>(record);
  for (const PublicField& field : table) {
    if (name == field.name) return {&field, bytes};
    bytes += SizeOf(field.kind);
  }
  return {nullptr, nullptr};
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

void FreeFields(PublicTable table, void* publicRecord) {
  auto* bytes = static_cast<uint8_t*>(publicRecord);
  for (const PublicField& field : table) {
    if (field.kind == PublicKind::String || field.kind == PublicKind::Pointer) FreePointer(bytes);
    bytes += SizeOf(field.kind);
  }
}

Status GetExtended(const ExtendedData& data, const PublicPlace& place) {
  constexpr auto kOverflow = static_cast<int32_t>(ExtendedData::kOverflowWidth);
  const int32_t length = DecimalOf(data.length.text);
  if (length <= kOverflow) return Status::Success;
  FreePointer(place.bytes);
  char* copy = CopyForCaller(data.Data(), static_cast<size_t>(length - kOverflow));
  if (copy == nullptr) return Status::OutOfMemory;
  StoreTo(place.bytes, copy);
  return Status::Success;
}

Status SetExtended(ExtendedData& data, const PublicPlace& place) {
  const char* bytes = LoadFrom<const char*>(place.bytes);
  return bytes != nullptr ? data.SetBytes(bytes) : Status::Success;
}
