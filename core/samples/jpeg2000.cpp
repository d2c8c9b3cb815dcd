// JPEG 2000 codestreams.
#include "media/codecs/jpeg2000.h"

#include <algorithm>

#include "core/samples/decoders.h"

namespace core {
namespace {

// Puts a decoded part to its place. A component of fewer samples than the image has each of them for
// several pixels.
void PutPart(const media::CodestreamPart& part, SampleImage& image) {
  const media::Window& place = part.place;
  for (uint32_t band = 0; band < image.bands; ++band) {
    const media::Plane& plane = part.planes[band];
    for (uint32_t y = 0; y < place.height; ++y) {
      const int32_t* line = plane.Line(y);
      for (uint32_t x = 0; x < place.width; ++x)
        PutSample(image, place.left + x, place.top + y, band,
                  static_cast<uint64_t>(int64_t{plane.At(line, x)}));
    }
  }
}

}  // namespace

SampleFault ReadJpeg2000(const SampleSource& source, SampleImage& image) {
  const std::string data = source.survey.Data(source.part);
  const size_t start =
      std::min<size_t>(source.part.IsMasked() ? source.part.mask.dataOffset : 0, data.size());
  const media::Bytes bytes(reinterpret_cast<const uint8_t*>(data.data()) + start, data.size() - start);
  media::CodestreamSize size;
  if (!media::FindCodestreamSize(bytes, size))
    return {media::Outcome::BadData, "no codestream was found"};
  if (size.width > 2 * static_cast<uint64_t>(source.part.Number("NCOLS")) ||
      size.height > 2 * static_cast<uint64_t>(source.part.Number("NROWS")))
    return {media::Outcome::BadData, "the codestream has " + std::to_string(size.width) + " x " +
                                         std::to_string(size.height) + " pixels"};
  if (size.components < image.bands)
    return {media::Outcome::BadData,
            "the codestream has " + std::to_string(size.components) + " components"};
  if (SampleFault fault = MakeSamples(image, media::Reduced(size.width, source.reduce),
                                      media::Reduced(size.height, source.reduce));
      fault.Met())
    return fault;
  media::Jpeg2000Request request;
  request.reduce = source.reduce;
  request.asStored = true;
  const media::Outcome outcome =
      media::DecodeJpeg2000(bytes, request, [&](const media::CodestreamPart& part) {
        PutPart(part, image);
        return media::Outcome::Ok;
      });
  if (outcome == media::Outcome::BadData && source.reduce != 0)
    return {media::Outcome::BadData,
            "the codestream does not decode, or has no picture as small as that"};
  return FaultOf(outcome, "the codestream");
}

}  // namespace core
