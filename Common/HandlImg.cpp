#include "Common/HandlImg.h"

#include <algorithm>

#include "Common/ImCodes.h"
#include "Common/ImSubHdr.h"
#include "Common/ImgBitmap.h"
#include "Common/ImgCodec.h"
#include "Common/ImgModes.h"
#include "Common/ImgVq.h"
#include "host/display.h"

namespace {

constexpr char16_t kSourceFile[] = u"HandlImg";

using Reader = Status (*)(KernelBitmap& segment, const ImageSource& source);

// The reader of each family; none for what cannot be read.
constexpr Reader kReaders[] = {
    nullptr,                   // None
    ReadUncompressedImage,     // Uncompressed
    ReadFacsimileImage,        // Facsimile
    ReadJpegImage,             // Jpeg
    ReadVectorQuantisedImage,  // VectorQuantised
};

Status CreateSegmentBitmap(OwnedBitmap& bitmap, const ImageSubheader& header) {
  const CheckedSize width = header.FullWidth(), height = header.FullHeight();
  if (!width.Within(kMaxSide) || !height.Within(kMaxSide)) return Status::OutOfMemory;
  return CreateSegmentBitmap(bitmap, header, static_cast<uint32_t>(width.Value()),
                             static_cast<uint32_t>(height.Value()));
}

Status PutOneColour(KernelBitmap& bitmap, uint32_t entry, KernelColour colour) {
  KernelColour both[2] = {};
  if (Status s = FromHost(KernelGetColours(&bitmap, 0, 2, both)); !Ok(s)) return s;
  both[entry] = {colour.blue, colour.green, colour.red, 0};
  return FromHost(KernelPutColours(&bitmap, 0, 2, both));
}

// Facsimile bitmaps show a lookup table's two colours the other way round.
Status AdjustBiLevel(KernelBitmap& bitmap, const ImageSubheader& header) {
  if (header.palette.size() < 2) return Status::Success;
  if (Status s = PutOneColour(bitmap, 1, header.palette[0]); !Ok(s)) return s;
  return PutOneColour(bitmap, 0, header.palette[1]);
}

Status FillSegmentBitmap(const ImageSource& source, OwnedBitmap& bitmap) {
  const ImageSubheader& header = source.header;
  const Reader reader = kReaders[static_cast<size_t>(header.Family())];
  if (Status s = CreateSegmentBitmap(bitmap, header); !Ok(s)) return s;
  if (reader == nullptr) return Status::Unsupported;
  if (Status s = source.Require(0, LeastDataBytes(header)); !Ok(s)) return s;
  if (Status s = reader(bitmap.record, source); !Ok(s)) return s;
  return header.Family() == ReaderFamily::Facsimile ? AdjustBiLevel(bitmap.record, header)
                                                    : Status::Success;
}

int32_t Clamp(int64_t coordinate) {
  return static_cast<int32_t>(std::clamp<int64_t>(coordinate, INT32_MIN, INT32_MAX));
}

RECT PlaceOf(const ImageSubheader& header, const KernelBitmap& bitmap, int32_t rowOffset,
             int32_t columnOffset) {
  const bool ownSize = header.Family() == ReaderFamily::VectorQuantised;
  const auto width = static_cast<int64_t>(ownSize ? bitmap.width : header.FullWidth().Value());
  const auto height = static_cast<int64_t>(ownSize ? bitmap.height : header.FullHeight().Value());
  const int64_t left = int64_t{header.ILOC.Column()} + columnOffset;
  const int64_t top = int64_t{header.ILOC.Row()} + rowOffset;
  RECT place;
  (void)SetRect(&place, Clamp(left), Clamp(top), Clamp(left + width), Clamp(top + height));
  return place;
}

// The colour of the palette entry that the pad pixel code names; black without a palette.
Status PadColour(const KernelBitmap& bitmap, uint8_t code, COLORREF& colour) {
  colour = 0;
  const uint32_t count = bitmap.colourCount;
  if (count == 0) return Status::Success;
  KernelBuffer<KernelColour> colours;
  if (Status s = colours.Allocate(count, ORB_HERE); !Ok(s)) return s;
  if (Status s = FromHost(KernelGetColours(&bitmap, 0, count, colours.data())); !Ok(s)) return s;
  if (code < count) {
    const KernelColour entry = colours[code];
    colour = static_cast<COLORREF>(entry.red | entry.green << 8) | static_cast<COLORREF>(entry.blue)
                                                                       << 16;
  }
  return Status::Success;
}

// The palette index that a segment bitmap has for the pad pixel code; facsimile bitmaps have it inverted.
uint8_t PadIndex(const ImageSubheader& header) {
  const uint8_t code = header.mask.TPXCD[0];
  return header.Family() == ReaderFamily::Facsimile ? code == 0 : code;
}

Status PaintPixels(HDC dc, KernelBitmap& bitmap, const ImageSubheader& header, const RECT& place) {
  if (header.mask.TPXCD.size() == 0) {
    return FromHost(DisplayPaintBitmap(dc, &bitmap, nullptr, nullptr, &place, nullptr, SRCCOPY));
  }
  COLORREF pad = 0;
  if (Status s = PadColour(bitmap, PadIndex(header), pad); !Ok(s)) return s;
  return FromHost(EffectsPaintTransparent(dc, &bitmap, nullptr, nullptr, &place, nullptr, 1000, 1, 1, 1,
                                          1, 1, 1, 1, pad, 0, 0, SRCCOPY));
}

Status PaintSegment(HDC dc, KernelBitmap& bitmap, const ImageSubheader& header, const RECT& place) {
  const OwnedPalette palette(DisplayCreatePalette(dc, &bitmap), ORB_HERE);
  HPALETTE previous = nullptr;
  if (palette.get() != nullptr) {
    previous = SelectPalette(dc, palette.get(), 0);
    (void)RealizePalette(dc);
  }
  const Status status = PaintPixels(dc, bitmap, header, place);
  if (palette.get() != nullptr) (void)SelectPalette(dc, previous, 0);
  return status;
}

// The part of its place that an image's bitmap fills.
RECT FilledPart(const RECT& place, const KernelBitmap& bitmap) {
  RECT filled = place;
  filled.right = Clamp(std::min<int64_t>(place.right, int64_t{place.left} + bitmap.width));
  filled.bottom = Clamp(std::min<int64_t>(place.bottom, int64_t{place.top} + bitmap.height));
  return filled;
}

bool Covers(const RECT& upper, const RECT& lower) {
  return upper.left <= lower.left && upper.top <= lower.top && upper.right >= lower.right &&
         upper.bottom >= lower.bottom;
}

// Whether nothing of an image that is blank is to be seen: its one colour is the one left out.
bool IsInvisible(const ImageSubheader& header, const KernelBitmap& bitmap) {
  return header.mask.TPXCD.size() != 0 && (bitmap.colourCount == 0 || PadIndex(header) == 0);
}

// Brightens a bitmap whose luminances all lie below 20 of 255.
Status LiftDarkImage(KernelBitmap& bitmap) {
  constexpr uint32_t kLevels = 256, kDarkLevels = 20;
  constexpr int32_t kLift = 350;
  uint32_t counters[kLevels] = {};
  const Status status = FromHost(ColourHistogram(&bitmap, counters, kLevels, 0));
  const auto used = [](uint32_t count) { return count != 0; };
  const bool dark = std::any_of(counters, counters + kDarkLevels, used);
  const bool bright = std::any_of(counters + kDarkLevels, counters + kLevels, used);
  return dark && !bright ? FromHost(ColourAdjust(&bitmap, kLift)) : status;
}

}  // namespace

Status LoadImageSegment(HostLoadRecord* record, NitfFile& document, uint32_t index, OwnedBitmap& bitmap,
                        bool* blank) {
  const ImageSource source = ImageSource::Of(document, index, record);
  const Status status = FillSegmentBitmap(source, bitmap);
  if (!Ok(status)) bitmap.Free();
  // What a vector-quantised image fills follows from its blocks.
  if (blank != nullptr) *blank = source.blank && source.header.Family() != ReaderFamily::VectorQuantised;
  return status;
}

Status ImagePainter::Draw(uint32_t index, int32_t rowOffset, int32_t columnOffset) {
  OwnedBitmap bitmap;
  bool blank = false;
  const ImageSubheader& header = *document_.images.At(index);
  if (Status s = LoadImageSegment(record_, document_, index, bitmap, &blank); !Ok(s)) {
    const Status before = Finish();
    return Ok(before) ? s : before;
  }
  if (document_.liftDarkImages) {
    (void)LiftDarkImage(bitmap.record);
    blank = false;
  }
  if (blank && IsInvisible(header, bitmap.record)) return Status::Success;
  const RECT place = PlaceOf(header, bitmap.record, rowOffset, columnOffset);
  const RECT filled = FilledPart(place, bitmap.record);
  const bool opaque = header.mask.TPXCD.size() == 0;
  Blank covered;
  if (opaque && Covers(filled, waiting_.filled)) std::swap(covered, waiting_);
  if (Status s = Finish(); !Ok(s)) return s;
  if (blank && opaque) {
    waiting_ = {&header, filled};
    return Status::Success;
  }
  const Status painted = PaintSegment(dc_, bitmap.record, header, place);
  if (!Ok(painted)) {
    waiting_ = covered;  // nothing covers it now
    (void)Finish();
  }
  return painted;
}

// One colour is painted strip by strip.
Status ImagePainter::Finish() {
  constexpr LONG kStripRows = 64;
  if (waiting_.header == nullptr) return Status::Success;
  const ImageSubheader& header = *waiting_.header;
  RECT strip = waiting_.filled;
  const LONG bottom = strip.bottom;
  waiting_ = {};
  OwnedBitmap bitmap;
  if (Status s = CreateSegmentBitmap(bitmap, header, static_cast<uint32_t>(strip.right - strip.left),
                                     static_cast<uint32_t>(kStripRows));
      !Ok(s)) {
    return s;
  }
  for (; strip.top < bottom; strip.top = strip.bottom) {
    strip.bottom = strip.top + std::min(kStripRows, bottom - strip.top);
    if (Status s = PaintSegment(dc_, bitmap.record, header, strip); !Ok(s)) return s;
  }
  return Status::Success;
}

Status RequireImageData(NitfFile& document, uint32_t index, bool& known) {
  const ImageSubheader& header = *document.images.At(index);
  known = header.CompressionCode() == Compression::NC && header.Pixel() != PixelType::BiLevel;
  if (!known) return Status::Success;
  OwnedBitmap bitmap;
  if (Status s = CreateSegmentBitmap(bitmap, header); !Ok(s)) return s;
  return ImageSource::Of(document, index, nullptr).Require(0, LeastDataBytes(header));
}
