// The image data mask table.
#include "Common/BigEndian.h"
#include "Common/ImSubHdr.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImSubHdr";

Status ReadMaskRecords(TrackedArray<uint32_t>& records, FieldReader& reader, CheckedSize count) {
  if (Status s = reader.RequireField(count * 4); !Ok(s)) return s;
  const auto entries = static_cast<uint32_t>(count.Value());
  TrackedArray<uint32_t> fresh;
  if (Status s = fresh.Make(entries + 1, ORB_HERE); !Ok(s)) return s;
  if (Status s = reader.Take(fresh.data(), 4 * entries); !Ok(s)) return s;
  records.Swap(fresh);
  return Status::Success;
}

Status WriteMaskRecords(uint16_t length, const TrackedArray<uint32_t>& records, FieldWriter& writer) {
  const auto entries = static_cast<uint32_t>(records.size());
  return length == 0 || entries == 0 ? Status::Success
                                     : writer.PutBytes(records.data(), 4 * (entries - 1));
}

}  // namespace

Status MaskTable::Read(FieldReader& reader, CheckedSize records) {
  uint8_t bytes[4];
  if (Status s = reader.Take(bytes, 4); !Ok(s)) return s;
  IMDATOFF = Big32(bytes);
  for (uint16_t* length : {&BMRLNTH, &TMRLNTH}) {
    if (Status s = reader.Take(bytes, 2); !Ok(s)) return s;
    *length = Big16(bytes);
  }
  if (Status s = reader.Take(bytes, 2); !Ok(s)) return s;
  if (Status s = ReadPadCode(reader, Big16(bytes)); !Ok(s)) return s;
  if (BMRLNTH == 0) blockRecords.Reset();
  if (TMRLNTH == 0) padRecords.Reset();
  if (BMRLNTH != 0) {
    if (Status s = ReadMaskRecords(blockRecords, reader, records); !Ok(s)) return s;
  }
  return TMRLNTH != 0 ? ReadMaskRecords(padRecords, reader, records) : Status::Success;
}

// The length is stored together with its bytes.
Status MaskTable::ReadPadCode(FieldReader& reader, uint16_t bits) {
  const uint32_t count = (bits + 7u) / 8;
  TrackedArray<uint8_t> fresh;
  if (Status s = reader.RequireField(count); !Ok(s)) return s;
  if (count != 0) {
    if (Status s = fresh.Make(count, ORB_HERE); !Ok(s)) return s;
    if (Status s = reader.Take(fresh.data(), count); !Ok(s)) return s;
  }
  TPXCDLNTH = bits;
  TPXCD.Swap(fresh);
  return Status::Success;
}

Status MaskTable::Write(FieldWriter& writer) const {
  if (Status s = writer.PutBig(IMDATOFF, sizeof IMDATOFF); !Ok(s)) return s;
  for (const uint16_t length : {BMRLNTH, TMRLNTH, TPXCDLNTH}) {
    if (Status s = writer.PutBig(length, sizeof length); !Ok(s)) return s;
  }
  const std::string_view code(reinterpret_cast<const char*>(TPXCD.data()), TPXCD.size());
  if (Status s = writer.PutText(code, PadCodeBytes(), ' '); !Ok(s)) return s;
  if (Status s = WriteMaskRecords(BMRLNTH, blockRecords, writer); !Ok(s)) return s;
  return WriteMaskRecords(TMRLNTH, padRecords, writer);
}

uint32_t MaskTable::BlockRecord(uint64_t n) const {
  return n + 1 < blockRecords.size() ? Big32(&blockRecords[static_cast<size_t>(n)]) : kNoBlock;
}

uint32_t MaskTable::PadRecord(uint64_t n) const {
  return n + 1 < padRecords.size() ? Big32(&padRecords[static_cast<size_t>(n)]) : kNoBlock;
}
