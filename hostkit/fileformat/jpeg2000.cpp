// JPEG 2000 images as the host's bitmaps.
#include <algorithm>

#include "hostkit/fileformat/codec.h"
#include "media/codecs/jpeg2000.h"

namespace hostkit {
namespace {

using media::CodestreamPart;
using media::CodestreamSize;
using media::Outcome;
using media::Plane;

// The stream itself: masked NITF data has its mask table in front, whose first word tells where the
// codestream begins.
Bytes SkipMaskTable(Bytes bytes) {
  if (media::IsCodestream(bytes) || media::IsJp2(bytes) || bytes.size() < 14) return bytes;
  const uint32_t offset = media::Big32(bytes.data());
  if (offset >= bytes.size()) return {};
  return bytes.subspan(offset);
}

bool Describe(Bytes bytes, HostFileInfo& info) {
  const Bytes stream = SkipMaskTable(bytes);
  CodestreamSize size;
  if (!media::IsCodestream(stream) && !media::IsJp2(stream)) return false;
  if (!media::FindCodestreamSize(stream, size)) return false;
  info.format = 0;
  info.width = size.width;
  info.height = size.height;
  info.bitsPerPixel = size.components >= 3 ? 24 : size.precision <= 8 ? 8 : 16;
  info.pageNumber = info.pageCount = 1;
  return true;
}

// Reads one component in 8 or 16 bits, as unsigned numbers.
class Component {
 public:
  Component(const Plane& plane, uint32_t bits)
      : plane_(plane),
        offset_(plane.isSigned ? 1 << (plane.precision - 1) : 0),
        from_((int64_t{1} << plane.precision) - 1),
        to_((int64_t{1} << bits) - 1) {}

  const int32_t* Line(uint32_t y) const { return plane_.Line(y); }
  uint32_t At(const int32_t* line, uint32_t x) const {
    const int64_t value = std::clamp<int64_t>(int64_t{plane_.At(line, x)} + offset_, 0, from_);
    return static_cast<uint32_t>(from_ == to_ ? value : value * to_ / from_);
  }

 private:
  const Plane& plane_;
  int32_t offset_;
  int64_t from_, to_;
};

// Put a decoded part into the bitmap.
void PutGrey(const CodestreamPart& part, KernelBitmap& bitmap) {
  const uint32_t depth = bitmap.bitsPerPixel;
  const Component grey(part.planes[0], depth);
  for (uint32_t y = 0; y < part.place.height; ++y) {
    const int32_t* line = grey.Line(y);
    uint8_t* row = Row(bitmap, part.place.top + y) + size_t{part.place.left} * (depth / 8);
    for (uint32_t x = 0; x < part.place.width; ++x) {
      const auto value = static_cast<uint16_t>(grey.At(line, x));
      if (depth == 8) {
        row[x] = static_cast<uint8_t>(value);
      } else {
        std::memcpy(row + 2 * size_t{x}, &value, 2);
      }
    }
  }
}

// Three components that nothing declares are taken as luminance and chrominance, as for JPEG.
bool IsYcc(const CodestreamPart& part, const HostLoadOptions& options) {
  if ((options.flags & kLoadSelectedBands) != 0) return false;
  if (part.colour == media::DeclaredColour::Ycc) return true;
  return part.planes.size() == 3 && part.colour == media::DeclaredColour::None &&
         (options.flags & kLoadComponentsAreRgb) == 0;
}

void PutColour(const CodestreamPart& part, const HostLoadOptions& options, KernelBitmap& bitmap) {
  const bool isYcc = IsYcc(part, options);
  const auto shown = [&](uint32_t colour) {
    return Component(
        part.planes[ShownComponent(options, colour, static_cast<uint32_t>(part.planes.size()))], 8);
  };
  const Component colours[3] = {shown(0), shown(1), shown(2)};
  for (uint32_t y = 0; y < part.place.height; ++y) {
    uint8_t* row = Row(bitmap, part.place.top + y) + 3 * size_t{part.place.left};
    for (uint32_t c = 0; c < 3; ++c) {
      const int32_t* line = colours[c].Line(y);
      for (uint32_t x = 0; x < part.place.width; ++x)
        row[3 * size_t{x} + c] = static_cast<uint8_t>(colours[c].At(line, x));
    }
    for (uint32_t x = 0; isYcc && x < part.place.width; ++x) YccToBgr(row + 3 * size_t{x});
  }
}

int32_t AllocateFor(const CodestreamPart& part, uint32_t width, uint32_t height, KernelBitmap& bitmap) {
  const bool grey = part.planes.size() < 3;
  const uint32_t depth = !grey ? 24 : part.planes[0].precision <= 8 ? 8 : 16;
  const KernelColourOrder order = !grey ? kOrderBgr : depth == 8 ? kOrderRgb : kOrderGrey;
  return KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, width, height, depth, order, nullptr,
                              kViewTopLeft, nullptr, 0);
}

int32_t Load(Bytes bytes, const HostLoadOptions& options, KernelBitmap& bitmap) {
  const Bytes stream = SkipMaskTable(bytes);
  CodestreamSize size;
  if (!media::FindCodestreamSize(stream, size)) return kHostNotRecognised;
  if (uint64_t{size.width} * size.height > media::kMostSamplesAtOnce / size.components)
    return kHostNoMemory;
  media::Jpeg2000Request request;
  request.window.width = bitmap.width;
  request.window.height = bitmap.height;
  const uint32_t width = Wanted(size.width, bitmap.width), height = Wanted(size.height, bitmap.height);
  const Outcome outcome = media::DecodeJpeg2000(stream, request, [&](const CodestreamPart& part) {
    // Also where a file is decoded a second time.
    if (part.place.left == 0 && part.place.top == 0) {
      if (IsAllocated(&bitmap)) KernelFreeBitmap(&bitmap);
      if (const int32_t status = AllocateFor(part, width, height, bitmap); status != kHostOk)
        return static_cast<Outcome>(status);
    }
    part.planes.size() < 3 ? PutGrey(part, bitmap) : PutColour(part, options, bitmap);
    return Outcome::Ok;
  });
  return StatusOf(outcome);
}

}  // namespace

const Codec kJpeg2000Codec = {&Describe, &Load};

}  // namespace hostkit
