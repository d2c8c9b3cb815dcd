#include "Common/Append.h"

#include <algorithm>

#include "Common/DisplayList.h"
#include "Common/Encode.h"

namespace {

constexpr char16_t kSourceFile[] = u"NitfFile";

using H = ImageSubheader;

// What the fields of a new segment and of the file header can hold; all nines are a placeholder where
// they ask for replacement data.
constexpr uint64_t kMaxTextBytes = LargestOf(LengthFieldsOf(SegmentKind::Text).dataWidth);
constexpr uint64_t kMaxBlockSide = LargestOf(sizeof H::NPPBH.text - 1) - 1;
constexpr uint64_t kMaxFileLength = LargestOf(sizeof FileHeader::FL.text - 1) - 1;
constexpr uint64_t kMaxHeaderLength = LargestOf(sizeof FileHeader::HL.text - 1) - 1;
constexpr auto kMaxLevel = static_cast<uint32_t>(LargestOf(sizeof H::IDLVL.text - 1));
constexpr int32_t kMaxCoordinate = 99999;  // of a drawing's extent

/// A record at the end of a list that is taken away again unless it is kept.
template <class R>
class NewRecord : NonCopyable {
 public:
  explicit NewRecord(SegmentList<R>& list) : list_(list) {}
  ~NewRecord() {
    if (added_) list_.RemoveLast();
  }

  Status Add(FileHeader& header, SourceTag where) {
    const Status status = list_.Append(header, where);
    added_ = Ok(status);
    return status;
  }
  void Keep() { added_ = false; }
  R& operator*() const { return *list_.Last(); }
  R* operator->() const { return list_.Last(); }

 private:
  SegmentList<R>& list_;
  bool added_ = false;
};

// Enters a new segment's lengths into the file header: the last step of an append.
template <class R>
Status EnterLengths(FileHeader& header, const R& record, SegmentKind kind) {
  const SegmentLengthFields& fields = LengthFieldsOf(kind);
  SegmentLengths lengths = {0, static_cast<uint32_t>(record.appended.bytes.size())};
  if (Status s = MeasureRows<R>(R::Table(), record, lengths.subheader); !Ok(s)) return s;
  const uint64_t fileLength =
      LongLengthOf(header.FL.text) + lengths.subheader + lengths.data + fields.EntryBytes();
  // What does not fit is found before anything changes.
  if (fileLength > kMaxFileLength ||
      uint64_t{header.currentHeaderLength} + fields.EntryBytes() > kMaxHeaderLength) {
    return Status::InvalidParameter;
  }
  LengthTable& table = header.*fields.table;
  if (Status s = table.Append(lengths); !Ok(s)) return s;
  if (Status s = header.SetFileLength(fileLength); !Ok(s)) return s;
  header.currentHeaderLength += fields.EntryBytes();
  (header.*fields.count).value = table.Count();
  return Status::Success;
}

// A date for a new segment: the file's, with the first of `order`'s pieces that can be lowered lowered by
// one. Pieces are century, year, month, day, hour, minute, second.
Status SetSegmentDate(char* field, const FileHeader& header, std::span<const int> order) {
  constexpr char kWithoutFileDate[] = "50020530010101";
  char text[sizeof kWithoutFileDate];
  const bool empty = header.FDT.text[0] == 0;
  std::memcpy(text, empty ? kWithoutFileDate : header.FDT.text, sizeof text);
  for (size_t i = 0; !empty && i < order.size(); ++i) {
    char* piece = text + 2 * order[i];
    const int32_t value = DecimalOf({piece, 2});
    if (value < 2) continue;
    char lowered[3];
    (void)FormatNumberField(lowered, 2, value - 1);
    std::memcpy(piece, lowered, 2);
    break;
  }
  const char* pieces[7];
  for (size_t i = 0; i < 7; ++i) pieces[i] = text + 2 * i;
  return SetDate(field, pieces);
}

// Sets a number's text and its decoded value: the new record is placed by it at once.
template <class R>
Status SetDecoded(R& record, const char* name, uint32_t value) {
  const FieldRow<R>* row = FindRow<R>(R::Table(), name);
  const FieldView field = row->view(record);
  if (Status s = SetNumber(*row, field, static_cast<int32_t>(value)); !Ok(s)) return s;
  *field.value = value;
  return Status::Success;
}

template <class R>
Status SetCoded(R& record, const char* name, const char* text) {
  const FieldRow<R>* row = FindRow<R>(R::Table(), name);
  return SetCode(*row, row->view(record), text);
}

Status DescribeBands(ImageSubheader& image, uint32_t format, uint32_t bitsPerPixel) {
  const bool grey = bitsPerPixel == 8, rgb = format == kFormatJpegRgb;
  constexpr const char* kGrey[] = {"M"};
  constexpr const char* kRgb[] = {"R", "G", "B"};
  constexpr const char* kYcc[] = {"Y", "Cb", "Cr"};
  const std::span<const char* const> codes = grey  ? std::span<const char* const>(kGrey)
                                             : rgb ? std::span<const char* const>(kRgb)
                                                   : std::span<const char* const>(kYcc);
  if (Status s = image.SetBandCount(static_cast<int32_t>(codes.size())); !Ok(s)) return s;
  for (uint32_t band = 0; band < codes.size(); ++band) {
    if (Status s = image.SetBandCode(band, codes[band]); !Ok(s)) return s;
  }
  if (grey) {
    if (Status s = SetCoded(image, "IMODE", "B"); !Ok(s)) return s;
  }
  return SetCoded(image, "IREP", grey ? "MONO" : rgb ? "RGB" : "YCbCr601");
}

Status DescribeImage(ImageSubheader& image, const KernelBitmap& bitmap, uint32_t level) {
  const struct {
    const char* name;
    uint32_t value;
  } numbers[] = {{"ABPP", 8},
                 {"NBPP", 8},
                 {"NBPR", 1},
                 {"NBPC", 1},
                 {"NROWS", bitmap.height},
                 {"NCOLS", bitmap.width},
                 {"NPPBH", bitmap.width},
                 {"NPPBV", bitmap.height},
                 {"IDLVL", level}};
  for (const auto& number : numbers) {
    if (Status s = SetDecoded(image, number.name, number.value); !Ok(s)) return s;
  }
  if (Status s = SetCoded(image, "PJUST", "R"); !Ok(s)) return s;
  if (Status s = SetCoded(image, "IC", "C3"); !Ok(s)) return s;
  return SetCoded(image, "PVTYPE", "INT");
}

int32_t Truncate(double value) {
  return static_cast<int32_t>(std::clamp(value, -2147483647.0, 2147483647.0));
}

// Whole-number bounds of a drawing, y downwards.
Status BoundsOf(const VectorHandle& drawing, RECT& bounds) {
  VectorPoint least, greatest;
  if (Status s = FromHost(VectorGetExtent(&drawing, &least, &greatest)); !Ok(s)) return s;
  (void)SetRect(&bounds, Truncate(least.x), Truncate(-greatest.y), Truncate(greatest.x),
                Truncate(-least.y));
  const bool fits =
      bounds.top <= kMaxCoordinate && bounds.right <= kMaxCoordinate && bounds.bottom <= kMaxCoordinate;
  return fits ? Status::Success : Status::InvalidParameter;
}

// Moves the caller's drawing below the zero line and gives it the rectangle as its view.
Status PlaceDrawing(VectorHandle& drawing, const RECT& rectangle) {
  VectorPoint least, greatest;
  if (Status s = FromHost(VectorGetExtent(&drawing, &least, &greatest)); !Ok(s)) return s;
  if (greatest.y > 0) {
    VectorTranslation translation = {};
    translation.y = -greatest.y - 1;
    if (Status s = FromHost(VectorSetTranslation(&drawing, &translation, nullptr, 0)); !Ok(s)) return s;
    if (Status s = FromHost(VectorApplyTranslation(&drawing)); !Ok(s)) return s;
    if (Status s = FromHost(VectorResetTranslation(&drawing, nullptr, 0)); !Ok(s)) return s;
  }
  if (Status s = FromHost(VectorSetViewRectangle(&drawing, &rectangle)); !Ok(s)) return s;
  (void)VectorResetOrigin(&drawing, nullptr, 0);
  (void)VectorResetRotation(&drawing, 0);
  (void)VectorResetScale(&drawing, 0);
  return Status::Success;
}

Status ReadWholeFile(const char16_t* fileName, KernelBuffer<char>& bytes, uint32_t& count) {
  OwnedFile file;
  file.OpenForReading(fileName);
  if (!file.IsOpen()) return Status::TextNotOpened;
  const int64_t size = KernelSeek(file.Handle(), 0, kSeekEnd);
  if (Status s = SeekTo(file.Handle(), 0); !Ok(s)) return s;
  if (size < 0 || static_cast<uint64_t>(size) > kMaxTextBytes) return Status::InvalidParameter;
  count = static_cast<uint32_t>(size);
  if (Status s = bytes.Allocate(uint64_t{count} + 1, ORB_HERE); !Ok(s)) return s;
  return ReadExactly(file.Handle(), bytes.data(), count);
}

}  // namespace

Status AppendImage(NitfFile& document, const KernelBitmap* bitmap, uint32_t format, uint32_t bitsPerPixel,
                   int32_t quality) {
  if (bitmap == nullptr || (bitmap->flags & kBitmapAllocated) == 0) return Status::NoBitmap;
  if (document.ImageCount() + 1 > kMaxSegments) return Status::LimitReached;
  if (bitsPerPixel != 24 && bitsPerPixel != 8) return Status::BadBitmapDepth;
  if (quality < 2 || quality > 255) return Status::BadQuality;
  if (format != kFormatJpegYcc && format != kFormatJpegRgb) return Status::BadStructure;
  if (bitmap->width > kMaxBlockSide || bitmap->height > kMaxBlockSide) return Status::InvalidParameter;
  const uint32_t level = std::min(NextDisplayLevel(document), kMaxLevel);
  FileHeader& header = document.header;
  NewRecord image(document.images);
  constexpr int kDateOrder[] = {6, 5, 4, 3, 2, 1, 0};
  if (Status s = image.Add(header, ORB_HERE); !Ok(s)) return s;
  if (Status s = EncodePicture(*bitmap, format, bitsPerPixel, quality, image->appended); !Ok(s)) return s;
  if (Status s = SetSegmentDate(image->IDATIM.text, header, kDateOrder); !Ok(s)) return s;
  if (Status s = DescribeImage(*image, *bitmap, level); !Ok(s)) return s;
  if (Status s = DescribeBands(*image, format, bitsPerPixel); !Ok(s)) return s;
  if (Status s = EnterLengths(header, *image, SegmentKind::Image); !Ok(s)) return s;
  image.Keep();
  return Status::Success;
}

Status AppendGraphic(NitfFile& document, VectorHandle* drawing, const RECT& rectangle) {
  if (document.GraphicCount() + 1 > kMaxSegments) return Status::LimitReached;
  if (drawing == nullptr) return Status::NoData;
  if (VectorIsEmpty(drawing) != 0) return Status::EmptyDrawing;
  RECT bounds;
  if (Status s = BoundsOf(*drawing, bounds); !Ok(s)) return s;
  const uint32_t level = std::min(NextDisplayLevel(document), kMaxLevel);
  uint32_t lowest = 0;
  const bool any = LowestDisplayLevel(document, lowest);  // without the new segment
  FileHeader& header = document.header;
  NewRecord graphic(document.graphics);
  if (Status s = graphic.Add(header, ORB_HERE); !Ok(s)) return s;
  if (Status s = PlaceDrawing(*drawing, rectangle); !Ok(s)) return s;
  if (Status s = EncodeDrawing(*drawing, graphic->appended); !Ok(s)) return s;
  if (Status s = SetDecoded(*graphic, "SDLVL", level); !Ok(s)) return s;
  if (any) {
    if (Status s = SetDecoded(*graphic, "SALVL", lowest); !Ok(s)) return s;
  }
  if (Status s = SetLocation(graphic->SBND1, rectangle.left, rectangle.top, false); !Ok(s)) return s;
  if (Status s = SetLocation(graphic->SBND2, rectangle.right, rectangle.bottom, false); !Ok(s)) return s;
  if (Status s = EnterLengths(header, *graphic, SegmentKind::Graphic); !Ok(s)) return s;
  graphic.Keep();
  return Status::Success;
}

Status AppendText(NitfFile& document, const char16_t* fileName) {
  if (document.TextCount() + 1 > kMaxSegments) return Status::LimitReached;
  uint32_t lowest = 0;
  const bool any = LowestDisplayLevel(document, lowest);  // without the new segment
  FileHeader& header = document.header;
  NewRecord text(document.texts);
  KernelBuffer<char> bytes;
  uint32_t count = 0;
  constexpr int kDateOrder[] = {5, 4, 3, 2, 1, 0};
  if (Status s = text.Add(header, ORB_HERE); !Ok(s)) return s;
  if (Status s = ReadWholeFile(fileName, bytes, count); !Ok(s)) return s;
  if (Status s = text->SetTextData(bytes.data(), count); !Ok(s)) return s;
  if (Status s = SetSegmentDate(text->TXTDT.text, header, kDateOrder); !Ok(s)) return s;
  if (any) {
    if (Status s = SetDecoded(*text, "TXTALVL", lowest); !Ok(s)) return s;
  }
  if (Status s = EnterLengths(header, *text, SegmentKind::Text); !Ok(s)) return s;
  text.Keep();
  return Status::Success;
}
