#include "Common/FieldRows.h"

FieldReader::FieldReader(int32_t file, ReadMode mode, uint32_t limit)
    : file_(file), mode_(mode), limit_(limit), start_(KernelSeek(file, 0, kSeekCurrent)) {}

Status FieldReader::Take(void* to, uint32_t bytes) {
  if (mode_ == ReadMode::Replacement && (bytes > limit_ || taken_ > limit_ - bytes)) {
    return Status::ReplacementEnd;
  }
  if (Status s = ReadExactly(file_, to, bytes); !Ok(s)) return s;
  taken_ += bytes;
  return Status::Success;
}

Status FieldReader::TakeText(char* text, uint32_t width, bool hasPlaceholder) {
  if (Status s = Take(text, width); !Ok(s)) return s;
  text[width] = 0;
  if (hasPlaceholder && std::string_view(text, width).find_first_not_of('9') == std::string_view::npos) {
    sawPlaceholder_ = true;
  }
  return Status::Success;
}

Status FieldReader::Require(CheckedSize bytes) const {
  if (!bytes.Within(INT32_MAX)) return Status::ShortRead;
  return mode_ == ReadMode::Replacement ? Status::Success : RequireRemaining(file_, bytes.Value());
}

Status FieldReader::RequireField(CheckedSize bytes) const {
  if (mode_ == ReadMode::Normal) return Require(bytes);
  return bytes.Within(limit_ - taken_) ? Status::Success : Status::ReplacementEnd;
}

Status FieldWriter::PutText(std::string_view text, uint32_t width, char pad) {
  if (!measures_) {
    if (Status s = WritePaddedField(file_, text, width, pad); !Ok(s)) return s;
  }
  written_ += width;
  return Status::Success;
}

Status FieldWriter::PutNumber(int64_t value, uint32_t width) {
  if (!measures_) {
    if (Status s = WriteNumberField(file_, value, width); !Ok(s)) return s;
  }
  written_ += width;
  return Status::Success;
}

Status FieldWriter::PutBytes(const void* bytes, uint32_t count) {
  if (!measures_) {
    if (Status s = WriteExactly(file_, bytes, count); !Ok(s)) return s;
  }
  written_ += count;
  return Status::Success;
}

Status FieldWriter::PutBig(uint32_t value, uint32_t count) {
  for (uint32_t left = count; left > 0; --left) {
    const auto byte = static_cast<uint8_t>(value >> 8 * (left - 1));
    if (Status s = PutBytes(&byte, 1); !Ok(s)) return s;
  }
  return Status::Success;
}

void FieldReader::NoteFault(const ParseFault& field) {
  if (fault_.offset < 0) fault_ = field;
}

void FieldReader::Pass(const ParseFault& field) {
  if (sawPlaceholder_ && placeholder_.offset < 0) placeholder_ = field;
}

void ApplyDefault(const FieldTraits& traits, FieldView field) {
  std::memset(field.text, traits.blank ? ' ' : 0, field.capacity);
  field.text[field.capacity] = 0;
  if (!traits.blank) std::strncpy(field.text, traits.initial, field.capacity);
}

Status ReadField(const FieldTraits& traits, FieldView field, FieldReader& reader) {
  if (Status s = reader.TakeText(field.text, traits.width, traits.placeholder); !Ok(s)) return s;
  if (traits.mark != nullptr && traits.mark != std::string_view(field.text)) return Status::BadStructure;
  if (traits.raw) return Status::Success;
  if (field.location != nullptr) {
    DecodeLocation(*field.location);
  } else if (traits.codes != nullptr) {
    if (const CodeRow* row = traits.codes->Find(field.text)) *field.value = row->code;
  } else if (field.value != nullptr) {
    *field.value = static_cast<uint32_t>(DecimalOf(field.text));
  }
  return Status::Success;
}

Status WriteField(const FieldTraits& traits, FieldView field, const char* custom, FieldWriter& writer) {
  switch (traits.writeFrom) {
    case WriteFrom::Value:
      return writer.PutNumber(static_cast<int32_t>(*field.value), traits.width);
    case WriteFrom::TextValue:
      return writer.PutNumber(DecimalOf(field.text), traits.width);
    case WriteFrom::Code: {
      const char* otherwise = traits.otherwise != nullptr ? traits.otherwise : field.text;
      return writer.PutText(traits.codes->WrittenFor(*field.value, otherwise), traits.width, traits.fill);
    }
    case WriteFrom::Custom:
      return writer.PutText(custom, traits.width, traits.fill);
    case WriteFrom::Text:
      break;
  }
  return traits.raw ? writer.PutBytes(field.text, traits.width)
                    : writer.PutText(field.text, traits.width, traits.fill);
}

Status SetNumber(const FieldTraits& traits, FieldView field, int32_t value) {
  constexpr int32_t kOverflowWidth = 3;
  if (traits.measuresOverflow && value != 0 && value < kOverflowWidth) return Status::InvalidParameter;
  if (Status s = FormatNumberField(field.text, traits.width, value); !Ok(s)) return s;
  if (traits.setsValue) *field.value = static_cast<uint32_t>(value);
  return Status::Success;
}

Status SetCode(const FieldTraits& traits, FieldView field, const char* text) {
  const CodeRow* code = text != nullptr ? traits.codes->Find(text) : nullptr;
  if (code == nullptr) return Status::InvalidParameter;
  if (Status s = CopyTextField(field.text, field.capacity, text); !Ok(s)) return s;
  *field.value = code->code;
  return Status::Success;
}
