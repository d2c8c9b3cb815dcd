#include "Common/SharedFields.h"

namespace {
constexpr char16_t kSourceFile[] = u"SharedFields";
}

Status ExtendedData::SetBytes(const void* from) {
  if (from == nullptr) return Status::NoData;
  if (length.Signed() < static_cast<int32_t>(kOverflowWidth)) return Status::InvalidParameter;
  const uint32_t count = length.value - kOverflowWidth;
  TrackedArray<char> fresh;
  if (Status s = fresh.Make(count + 1, ORB_HERE); !Ok(s)) return s;
  KernelCopyMemory(fresh.data(), from, count);
  bytes.Swap(fresh);
  recordCount = CountTaggedRecords(Data());
  return Status::Success;
}

Status AcceptExtendedLength(ExtendedData& data, ShortLength rule) {
  const int32_t length = data.length.Signed();
  if (length == 0 || length >= static_cast<int32_t>(ExtendedData::kOverflowWidth)) return Status::Success;
  if (rule == ShortLength::Refuse) return Status::BadStructure;
  data.length.value = 0;
  return FormatNumberField(data.length.text, 5, 0);
}

Status ReadExtendedBytes(ExtendedData& data, FieldReader& reader) {
  const uint32_t count = data.length.value - ExtendedData::kOverflowWidth;
  if (Status s = reader.RequireField(count); !Ok(s)) return s;
  TrackedArray<char> fresh;
  if (Status s = fresh.Make(count + 1, ORB_HERE); !Ok(s)) return s;
  if (Status s = reader.Take(fresh.data(), count); !Ok(s)) return s;
  data.bytes.Swap(fresh);
  data.recordCount = CountTaggedRecords(data.Data());
  return Status::Success;
}

// A length that was set without its bytes is written with blanks, so that the file keeps its layout.
Status WriteExtendedBytes(const ExtendedData& data, FieldWriter& writer) {
  if (data.length.value < ExtendedData::kOverflowWidth) return Status::Success;
  return writer.PutText(data.Data(), data.length.value - ExtendedData::kOverflowWidth, ' ');
}
