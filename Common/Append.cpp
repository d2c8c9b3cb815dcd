#include "Common/Append.h"

#include <algorithm>

#include "Common/Utility.h"

namespace {

constexpr char16_t kSourceFile[] = u"NitfFile";

// Lengths of subheaders without extended data, and of the file header's entries for one segment.
constexpr uint32_t kImageSubheaderBytes = 430, kBandBytes = 13;
constexpr uint32_t kGraphicSubheaderBytes = 258;
constexpr uint32_t kTextSubheaderBytes = 282;
constexpr uint32_t kMaxTextBytes = 99999;      // LT has five digits
constexpr uint32_t kMaxGraphicBytes = 999999;  // LS has six
constexpr int32_t kMaxCoordinate = 99999;
constexpr uint32_t kMaxBlockSide = 9998;  // NPPBH and NPPBV have four digits; all nines are a placeholder
constexpr uint64_t kMaxFileLength = 999999999999;  // FL has twelve
constexpr uint32_t kMaxHeaderLength = 999998;      // HL has six; all nines are a placeholder
constexpr uint32_t kMaxLevel = 999;                // IDLVL and SDLVL have three

/// A record at the end of a list that is taken away again unless it is kept.
template <class R>
class NewRecord {
 public:
  explicit NewRecord(SegmentList<R>& list) : list_(list) {}
  ~NewRecord() {
    if (added_) list_.RemoveLast();
  }
  NewRecord(const NewRecord&) = delete;
  NewRecord& operator=(const NewRecord&) = delete;

  Status Add(NitfFile& document, SourceTag where) {
    const Status status = list_.Append(document, where);
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

// Enters a new segment's lengths into the file header; the last step of an append.
Status EnterLengths(FileHeader& header, LengthTable& table, Number<3>& count, const LengthFields& fields,
                    SegmentLengths lengths) {
  const uint32_t entryBytes = fields.subheaderWidth + fields.dataWidth;
  const uint64_t fileLength =
      LongLengthOf(header.FL.text) + lengths.subheader + lengths.data + entryBytes;
  // What does not fit is found before anything changes.
  if (fileLength > kMaxFileLength || header.currentHeaderLength > kMaxHeaderLength - entryBytes) {
    return Status::InvalidParameter;
  }
  if (Status s = table.Append(lengths); !Ok(s)) return s;
  if (Status s = header.SetFileLength(fileLength); !Ok(s)) return s;
  header.currentHeaderLength += entryBytes;
  count.value = table.Count();
  return Status::Success;
}

// A date for a new segment: the file's, with the first of `order`'s pieces that can be lowered lowered by
// one. Pieces are century, year, month, day, hour, minute, second.
Status SetSegmentDate(char* field, const FileHeader& header, std::span<const int> order) {
  constexpr char kWithoutFileDate[] = "50020530010101";
  char text[15] = {};
  const bool empty = header.FDT.text[0] == 0;
  std::memcpy(text, empty ? kWithoutFileDate : header.FDT.text, 14);
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

// The lowest display level of the images and graphics; false when there are none.
Status LowestLevel(const NitfFile& document, bool& any, uint32_t& level) {
  DisplayList list;
  if (Status s = BuildDisplayList(document, list); !Ok(s)) return s;
  any = list.Count() != 0;
  if (any) level = list.Items()[0].level;
  return Status::Success;
}

// Sets a number's text and its decoded value: the new record is placed by it at once.
template <class R>
Status SetDecoded(R& record, const char* name, uint32_t value) {
  const FieldRow<R>* row = FindRow<R>(R::Table(), name);
  if (Status s = SetNumber(*row, record, static_cast<int32_t>(std::min<uint32_t>(value, INT32_MAX)));
      !Ok(s)) {
    return s;
  }
  *row->view(record).value = value;
  return Status::Success;
}

template <class R>
Status SetCoded(R& record, const char* name, const char* text) {
  return SetCode(*FindRow<R>(R::Table(), name), record, text);
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
  (void)KernelSeek(file.Handle(), 0, kSeekStart);
  if (size < 0 || size > kMaxTextBytes) return Status::InvalidParameter;
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
  uint32_t byteCount = 0;
  constexpr int kDateOrder[] = {6, 5, 4, 3, 2, 1, 0};
  if (Status s = image.Add(document, ORB_HERE); !Ok(s)) return s;
  if (Status s = image->SetAppendedImage(*bitmap, format, bitsPerPixel, quality, byteCount); !Ok(s))
    return s;
  if (Status s = SetSegmentDate(image->IDATIM.text, header, kDateOrder); !Ok(s)) return s;
  if (Status s = DescribeImage(*image, *bitmap, level); !Ok(s)) return s;
  if (Status s = DescribeBands(*image, format, bitsPerPixel); !Ok(s)) return s;
  const SegmentLengths lengths = {kImageSubheaderBytes + kBandBytes * image->BandCount(), byteCount};
  if (Status s = EnterLengths(header, header.images, header.NUMI, kImageLengths, lengths); !Ok(s))
    return s;
  image.Keep();
  return Status::Success;
}

Status EncodeDrawing(GraphicSubheader& graphic, const VectorHandle& drawing, uint32_t& byteCount) {
  HostSaveOptions options = {};
  if (Status s = FromHost(FileFormatDefaultSaveOptions(&options, kSaveOptionsSize)); !Ok(s)) return s;
  options.flags |= kSaveToMemory;
  OwnedGlobal encoded;
  if (Status s = FromHost(
          FileFormatSaveDrawingMemory(&encoded.handle, &drawing, kFormatCgm, &byteCount, &options));
      !Ok(s)) {
    return s;
  }
  if (Status s = encoded.Lock(ORB_HERE); !Ok(s)) return s;
  if (byteCount > kMaxGraphicBytes) return Status::InvalidParameter;
  return graphic.SetGraphicData(encoded.Bytes(), byteCount);
}

Status AppendGraphic(NitfFile& document, VectorHandle* drawing, const RECT& rectangle) {
  if (document.GraphicCount() + 1 > kMaxSegments) return Status::LimitReached;
  if (drawing == nullptr) return Status::NoData;
  if (VectorIsEmpty(drawing) != 0) return Status::EmptyDrawing;
  RECT bounds;
  if (Status s = BoundsOf(*drawing, bounds); !Ok(s)) return s;
  const uint32_t level = std::min(NextDisplayLevel(document), kMaxLevel);
  bool any = false;
  uint32_t lowest = 0;
  if (Status s = LowestLevel(document, any, lowest); !Ok(s)) return s;
  FileHeader& header = document.header;
  NewRecord graphic(document.graphics);
  uint32_t byteCount = 0;
  if (Status s = graphic.Add(document, ORB_HERE); !Ok(s)) return s;
  if (Status s = PlaceDrawing(*drawing, rectangle); !Ok(s)) return s;
  if (Status s = EncodeDrawing(*graphic, *drawing, byteCount); !Ok(s)) return s;
  if (Status s = SetDecoded(*graphic, "SDLVL", level); !Ok(s)) return s;
  if (any) {
    if (Status s = SetDecoded(*graphic, "SALVL", lowest); !Ok(s)) return s;
  }
  if (Status s = SetLocation(graphic->SBND1, rectangle.left, rectangle.top, false); !Ok(s)) return s;
  if (Status s = SetLocation(graphic->SBND2, rectangle.right, rectangle.bottom, false); !Ok(s)) return s;
  const SegmentLengths lengths = {kGraphicSubheaderBytes, byteCount};
  if (Status s = EnterLengths(header, header.graphics, header.NUMS, kGraphicLengths, lengths); !Ok(s)) {
    return s;
  }
  graphic.Keep();
  return Status::Success;
}

Status AppendText(NitfFile& document, const char16_t* fileName) {
  if (document.TextCount() + 1 > kMaxSegments) return Status::LimitReached;
  bool any = false;
  uint32_t lowest = 0;
  if (Status s = LowestLevel(document, any, lowest); !Ok(s)) return s;
  FileHeader& header = document.header;
  NewRecord text(document.texts);
  KernelBuffer<char> bytes;
  uint32_t count = 0;
  constexpr int kDateOrder[] = {5, 4, 3, 2, 1, 0};
  if (Status s = text.Add(document, ORB_HERE); !Ok(s)) return s;
  if (Status s = ReadWholeFile(fileName, bytes, count); !Ok(s)) return s;
  if (Status s = text->SetTextData(bytes.data(), count); !Ok(s)) return s;
  if (Status s = SetSegmentDate(text->TXTDT.text, header, kDateOrder); !Ok(s)) return s;
  if (any) {
    if (Status s = SetDecoded(*text, "TXTALVL", lowest); !Ok(s)) return s;
  }
  const SegmentLengths lengths = {kTextSubheaderBytes, count};
  if (Status s = EnterLengths(header, header.texts, header.NUMT, kTextLengths, lengths); !Ok(s)) return s;
  text.Keep();
  return Status::Success;
}
