#include "Common/StrmFHdr.h"

namespace {

constexpr char16_t kSourceFile[] = u"StrmFHdr";

constexpr std::string_view kDelimiter1 = "\x0A\x6E\x1D\x97";
constexpr std::string_view kDelimiter2 = "\x0E\xCA\x14\xBF";
constexpr uint32_t kLengthWidth = 7;  // of SFH_L1 and SFH_L2

Status ReadLength(int32_t file, uint32_t& length) {
  char text[kLengthWidth];
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
  if (Status s = ReadDelimiter(file, SFH_DELIM1, kDelimiter1); !Ok(s)) return s;
  if (Status s = RequireRemaining(file, SFH_L1); !Ok(s)) return s;
  if (Status s = SFH_DR.Make(SFH_L1 + 1, ORB_HERE); !Ok(s)) return s;
  if (Status s = ReadExactly(file, SFH_DR.data(), SFH_L1); !Ok(s)) return s;
  if (Status s = ReadDelimiter(file, SFH_DELIM2, kDelimiter2); !Ok(s)) return s;
  if (Status s = ReadLength(file, SFH_L2); !Ok(s)) return s;
  if (SFH_L1 != SFH_L2) return Status::BadStructure;
  return SeekTo(file, start);
}

Status FindStreamingHeader(int32_t file, StreamingFileHeader& streaming, uint32_t& distance) {
  constexpr int64_t kChunk = 255;
  constexpr int64_t kDelimiterWidth = 4;
  const int64_t size = KernelSeek(file, 0, kSeekEnd);
  if (size < 0) return Status::ShortRead;
  char chunk[kChunk];
  for (int64_t scanned = 0; scanned < size; scanned -= kDelimiterWidth - 1) {
    const int64_t count = std::min(kChunk, size - scanned);
    if (count < kDelimiterWidth) break;
    if (Status s = SeekTo(file, -(count + scanned), kSeekEnd); !Ok(s)) return s;
    if (Status s = ReadExactly(file, chunk, static_cast<uint32_t>(count)); !Ok(s)) return s;
    scanned += count;
    const std::string_view bytes(chunk, static_cast<size_t>(count));
    const size_t found = bytes.find(kDelimiter1);
    if (found == std::string_view::npos) continue;
    const int64_t fromEnd = scanned - static_cast<int64_t>(found);
    const int64_t lengthField = size - fromEnd - kLengthWidth;
    if (lengthField < 0 || fromEnd > UINT32_MAX) return Status::BadStructure;
    if (Status s = SeekTo(file, lengthField); !Ok(s)) return s;
    distance = static_cast<uint32_t>(fromEnd - kDelimiterWidth);
    return streaming.Read(file);
  }
  return Status::InvalidParameter;
}

Status HeaderParser::SeekToReplacement() {
  if (!progress_.located) {
    if (Status s = FindStreamingHeader(file_, streaming_, progress_.distance); !Ok(s)) return s;
    progress_.located = true;
  }
  return SeekTo(file_, -int64_t{progress_.distance}, kSeekEnd);
}
