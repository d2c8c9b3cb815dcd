#include "Common/NitfFile.h"

#include "host/fileformat.h"

namespace {

constexpr char16_t kSourceFile[] = u"NitfFile";

template <class R>
Status AllocateRecords(NitfFile& document, SegmentList<R>& list, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) {
    if (Status s = list.Append(document.header, ORB_HERE); !Ok(s)) return s;
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
  if (fileName == nullptr) return Status::ShortRead;
  file.OpenForReading(fileName);
  hasSource = file.IsOpen() && WideIdentify(fileName, &source);
  HeaderParser parser(FileHandle(), replacement);
  const Status status = ParseDocument(parser);
  fault = parser.Fault();
  return status;
}

Status NitfFile::ParseDocument(HeaderParser& parser) {
  if (Status s = header.ReadHeader(parser); !Ok(s)) return s;
  headerPresent = header.loaded;
  background = header.background;
  if (Status s = AllocateObjects(); !Ok(s)) return s;
  if (Status s = ReadSubheaders(SegmentKind::Image, images, parser); !Ok(s)) return s;
  if (Status s = ReadSubheaders(SegmentKind::Graphic, graphics, parser); !Ok(s)) return s;
  if (Status s = ReadSubheaders(SegmentKind::Text, texts, parser); !Ok(s)) return s;
  return ReadSubheaders(SegmentKind::DataExtension, dataExtensions, parser);
}

template <class R>
Status NitfFile::ReadSubheaders(SegmentKind kind, SegmentList<R>& list, HeaderParser& parser) {
  uint32_t index = 0;
  for (R& record : list) {
    if (SeekToSubheader(kind, index++) < 0) return Status::ShortRead;
    if (Status s = record.ReadSubheader(parser); !Ok(s)) return s;
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

int64_t NitfFile::StartOf(SegmentKind kind, uint32_t index) const {
  int64_t start = header.headerLength;
  for (const SegmentLengthFields& fields : kSegmentLengths) {
    const LengthTable& table = header.*fields.table;
    if (fields.kind == kind) {
      start += SpanOf(table, index);
      break;
    }
    start += SpanOf(table, table.Count());
  }
  return start;
}

int64_t NitfFile::SeekToSubheader(SegmentKind kind, uint32_t index) {
  return KernelSeek(FileHandle(), StartOf(kind, index), kSeekStart);
}

int64_t NitfFile::SeekToData(SegmentKind kind, uint32_t index) {
  const int64_t start = StartOf(kind, index) + header.Lengths(kind).InFile(index).subheader;
  return KernelSeek(FileHandle(), start, kSeekStart);
}

uint32_t NitfFile::DataLength(SegmentKind kind, uint32_t index) const {
  const LengthTable& table = header.Lengths(kind);
  return index < table.inFile.size() ? table.InFile(index).data : table.Current(index).data;
}
