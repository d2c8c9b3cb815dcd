// JPEG 2000 codestreams.
#include "media/codecs/jpeg2000.h"

#include <algorithm>
#include <cstring>

#include "core/format/interruption.h"
#include "core/samples/decoders.h"

namespace core {
namespace {

// Puts a line of as many samples as pixels to bytes or words. False where it does not go there as it is.
bool PutLine(const media::Plane& plane, const int32_t* line, SampleTarget& target, uint32_t x, uint32_t y,
             uint32_t band, uint32_t count) {
  const uint32_t bytes = target.Image().sampleBytes;
  const bool lies = x >= target.Left() && uint64_t{x} + count <= target.Right() && target.WantsRow(y);
  uint8_t* to =
      lies && bytes <= 2 && plane.stepX == 1 && count <= plane.width ? target.Run(x, y, band) : nullptr;
  if (to == nullptr) return false;
  const size_t step = target.Image().PixelBytes();
  for (uint32_t i = 0; bytes == 1 && i < count; ++i) to[i * step] = static_cast<uint8_t>(line[i]);
  for (uint32_t i = 0; bytes == 2 && i < count; ++i) {
    const auto word = static_cast<uint16_t>(line[i]);
    std::memcpy(to + i * step, &word, sizeof word);
  }
  return true;
}

// Puts a decoded part of the window to its place. A component of fewer samples than the image has each of
// them for several pixels.
void PutPart(const media::CodestreamPart& part, SampleTarget& target) {
  const media::Window& place = part.place;
  for (uint32_t band = 0; band < target.Bands(); ++band) {
    if (!target.WantsBand(band)) continue;
    const media::Plane& plane = part.planes[band];
    for (uint32_t y = 0; y < place.height; ++y) {
      const int32_t* line = plane.Line(y);
      if (PutLine(plane, line, target, target.Left() + place.left, target.Top() + place.top + y, band,
                  place.width))
        continue;
      for (uint32_t x = 0; x < place.width; ++x)
        target.Put(target.Left() + place.left + x, target.Top() + place.top + y, band,
                   static_cast<uint64_t>(int64_t{plane.At(line, x)}));
    }
  }
}

}  // namespace

SampleFault ReadJpeg2000(const SampleSource& source, SampleTarget& target) {
  const PartSource data(source, source.part.IsMasked() ? source.part.mask.dataOffset : 0, UINT64_MAX);
  media::CodestreamSize size;
  if (!media::FindCodestreamSize(data.Get(), size) &&
      data.Checked(media::Outcome::Ok) == media::Outcome::Ok)
    return {media::Outcome::BadData, "no codestream was found"};
  if (size.width > 2 * static_cast<uint64_t>(source.part.Number("NCOLS")) ||
      size.height > 2 * static_cast<uint64_t>(source.part.Number("NROWS")))
    return {media::Outcome::BadData, "the codestream has " + std::to_string(size.width) + " x " +
                                         std::to_string(size.height) + " pixels"};
  if (size.components < target.Bands())
    return {media::Outcome::BadData,
            "the codestream has " + std::to_string(size.components) + " components"};
  if (SampleFault fault = target.Make(size.width, size.height, true); fault.Met()) return fault;
  media::Jpeg2000Request request;
  const uint32_t reduce = target.Reduce();
  request.reduce = reduce;
  request.window = {target.Left() << reduce, target.Top() << reduce,
                    (target.Right() - target.Left()) << reduce,
                    (target.Bottom() - target.Top()) << reduce};
  request.asStored = true;
  const media::Outcome outcome =
      data.Checked(media::DecodeJpeg2000(data.Get(), request, [&](const media::CodestreamPart& part) {
        Interruption::Ask();
        if (!target.GoesOn(part.place.top, target.Bottom() - target.Top()))
          return media::Outcome::Stopped;
        PutPart(part, target);
        return media::Outcome::Ok;
      }));
  if (outcome == media::Outcome::BadData && reduce != 0)
    return {media::Outcome::BadData,
            "the codestream does not decode, or has no picture as small as that"};
  return FaultOf(outcome, "the codestream");
}

}  // namespace core
