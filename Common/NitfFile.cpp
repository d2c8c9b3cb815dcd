#include "Common/NitfFile.h"

#include <algorithm>

#include "host/fileformat.h"

namespace {

constexpr char16_t kSourceFile[] = u"NitfFile";

template <class R>
Status AllocateRecords(NitfFile& document, SegmentList<R>& list, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) {
    if (Status s = list.Append(document, ORB_HERE); !Ok(s)) return s;
  }
  return Status::Success;
}

// Bytes that the first `count` segments of a kind take in the file; appended ones take none.
int64_t SpanOf(const LengthTable& table, uint32_t count) {
  int64_t bytes = 0;
  for (uint32_t i = 0; i < count; ++i) {
    const SegmentLengths lengths = table.InFile(i);
    bytes += int64_t{lengths.subheader} + lengths.data;
  }
  return bytes;
}

}  // namespace

void NitfFile::TakeOptions(uint32_t loadFlags) {
  fixedCanvas = (loadFlags & kLoadFixedCanvas) != 0;
  liftDarkImages = (loadFlags & kLoadLiftDarkImages) != 0;
  graphicOption = (loadFlags & kLoadGraphicOption) != 0;
}

Status NitfFile::ReadDocument(const char16_t* fileName) {
  StreamingFileHeader streaming;
  if (fileName == nullptr) return Status::ShortRead;
  file.OpenForReading(fileName);
  hasSource = file.IsOpen() && WideIdentify(fileName, &source);
  if (Status s = header.ReadHeader(*this, streaming, ReadMode::Normal); !Ok(s)) return s;
  headerPresent = header.loaded;
  background = header.background;
  if (Status s = AllocateObjects(); !Ok(s)) return s;
  if (Status s = ReadSubheaders(SegmentKind::Image, images, streaming); !Ok(s)) return s;
  if (Status s = ReadSubheaders(SegmentKind::Graphic, graphics, streaming); !Ok(s)) return s;
  if (Status s = ReadSubheaders(SegmentKind::Text, texts, streaming); !Ok(s)) return s;
  return ReadSubheaders(SegmentKind::DataExtension, dataExtensions, streaming);
}

template <class R>
Status NitfFile::ReadSubheaders(SegmentKind kind, SegmentList<R>& list, StreamingFileHeader& streaming) {
  uint32_t index = 0;
  for (R& record : list) {
    (void)SeekToSubheader(kind, index++);
    if (Status s = record.ReadSubheader(*this, streaming, ReadMode::Normal); !Ok(s)) return s;
  }
  return Status::Success;
}

Status NitfFile::AllocateObjects() {
  OutputDebugStringA("\nAllocateObjects\n");
  if (Status s = AllocateRecords(*this, images, header.images.Count()); !Ok(s)) return s;
  if (Status s = AllocateRecords(*this, graphics, header.graphics.Count()); !Ok(s)) return s;
  if (Status s = AllocateRecords(*this, texts, header.texts.Count()); !Ok(s)) return s;
  return AllocateRecords(*this, dataExtensions, header.dataExtensions.Count());
}

void NitfFile::FreeObjects() {
  OutputDebugStringA("\nFreeObjects\n");
  (void)file.Close();
  images.Clear();
  graphics.Clear();
  texts.Clear();
  dataExtensions.Clear();
  header.FreeTables();
}

void NitfFile::SeekPastHeader() { (void)KernelSeek(FileHandle(), header.headerLength, kSeekStart); }

int64_t NitfFile::SeekToSubheader(SegmentKind kind, uint32_t index) {
  constexpr SegmentKind kFileOrder[] = {SegmentKind::Image, SegmentKind::Graphic, SegmentKind::Text,
                                        SegmentKind::DataExtension};
  SeekPastHeader();
  int64_t skip = 0;
  for (SegmentKind passed : kFileOrder) {
    const LengthTable& table = header.Lengths(passed);
    if (passed == kind) {
      skip += SpanOf(table, index);
      break;
    }
    skip += SpanOf(table, table.Count());
  }
  return KernelSeek(FileHandle(), skip, kSeekCurrent);
}

int64_t NitfFile::SeekToData(SegmentKind kind, uint32_t index) {
  (void)SeekToSubheader(kind, index);
  return KernelSeek(FileHandle(), header.Lengths(kind).InFile(index).subheader, kSeekCurrent);
}

uint32_t NitfFile::DataLength(SegmentKind kind, uint32_t index) const {
  const LengthTable& table = header.Lengths(kind);
  return index < table.inFile.size() ? table.InFile(index).data : table.Current(index).data;
}

Status NitfFile::SeekToReplacement(StreamingFileHeader& streaming) {
  if (!streamingLocated) {
    if (Status s = FindStreamingHeader(FileHandle(), streaming, replacementDistance); !Ok(s)) return s;
    streamingLocated = true;
  }
  (void)KernelSeek(FileHandle(), -int64_t{replacementDistance}, kSeekEnd);
  return Status::Success;
}

Status FindStreamingHeader(int32_t file, StreamingFileHeader& streaming, uint32_t& distance) {
  constexpr int64_t kChunk = 255;
  constexpr int64_t kDelimiterWidth = 4;
  const int64_t size = KernelSeek(file, 0, kSeekEnd);
  char chunk[kChunk];
  for (int64_t scanned = 0; scanned < size; scanned -= kDelimiterWidth - 1) {
    const int64_t count = std::min(kChunk, size - scanned);
    if (count < kDelimiterWidth) break;
    (void)KernelSeek(file, -(count + scanned), kSeekEnd);
    if (Status s = ReadExactly(file, chunk, static_cast<uint32_t>(count)); !Ok(s)) return s;
    scanned += count;
    const std::string_view bytes(chunk, static_cast<size_t>(count));
    const size_t found = bytes.find(kStreamingDelimiter1);
    if (found == std::string_view::npos) continue;
    const int64_t fromEnd = scanned - static_cast<int64_t>(found);
    const int64_t lengthField = size - fromEnd - kStreamingLengthWidth;
    if (lengthField < 0 || fromEnd > UINT32_MAX) return Status::BadStructure;
    (void)KernelSeek(file, lengthField, kSeekStart);
    distance = static_cast<uint32_t>(fromEnd - kDelimiterWidth);
    return streaming.Read(file);
  }
  return Status::InvalidParameter;
}
