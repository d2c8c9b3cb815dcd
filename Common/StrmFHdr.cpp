#include "Common/StrmFHdr.h"

namespace {

constexpr char16_t kSourceFile[] = u"StrmFHdr";

Status ReadLength(int32_t file, uint32_t& length) {
  char text[kStreamingLengthWidth];
  if (Status s = ReadExactly(file, text, sizeof text); !Ok(s)) return s;
  length = LengthOf({text, sizeof text});
  return Status::Success;
}

Status ReadDelimiter(int32_t file, Text<4>& field, std::string_view wanted) {
  if (Status s = ReadExactly(file, field.text, 4); !Ok(s)) return s;
  return std::string_view(field.text, 4) == wanted ? Status::Success : Status::BadStructure;
}

}  // namespace

Status StreamingFileHeader::Read(int32_t file) {
  const int64_t start = KernelSeek(file, 0, kSeekCurrent);
  if (Status s = ReadLength(file, SFH_L1); !Ok(s)) return s;
  if (Status s = ReadDelimiter(file, SFH_DELIM1, kStreamingDelimiter1); !Ok(s)) return s;
  if (Status s = RequireRemaining(file, SFH_L1); !Ok(s)) return s;
  if (Status s = SFH_DR.Make(SFH_L1 + 1, ORB_HERE); !Ok(s)) return s;
  if (Status s = ReadExactly(file, SFH_DR.data(), SFH_L1); !Ok(s)) return s;
  if (Status s = ReadDelimiter(file, SFH_DELIM2, kStreamingDelimiter2); !Ok(s)) return s;
  if (Status s = ReadLength(file, SFH_L2); !Ok(s)) return s;
  if (SFH_L1 != SFH_L2) return Status::BadStructure;
  (void)KernelSeek(file, start, kSeekStart);
  return Status::Success;
}
