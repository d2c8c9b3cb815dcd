// JPEG streams of blocks.
#include <algorithm>
#include <cstring>

#include "core/format/jpeg_stream.h"
#include "core/samples/decoders.h"
#include "media/codecs/jpeg.h"

namespace core {
namespace {

constexpr uint32_t kMostReduce = 3;  // libjpeg scales down to an eighth

uint64_t Reduced(uint64_t side, uint32_t reduce) {
  return (side + (uint64_t{1} << reduce) - 1) >> reduce;
}

class JpegBlocks {
 public:
  JpegBlocks(const SampleSource& source, SampleTarget& target) : source_(source), target_(target) {}

  SampleFault Read() {
    std::vector<FoundJpeg> streams = FindJpegStreams(source_.survey.file, source_.part);
    if (streams.empty()) return {media::Outcome::BadData, "no stream was found"};
    if (target_.Reduce() > kMostReduce)
      return {media::Outcome::Unsupported, "JPEG has pictures of 1/2, 1/4 and 1/8"};
    uint64_t width = static_cast<uint64_t>(source_.part.Number("NCOLS")),
             height = static_cast<uint64_t>(source_.part.Number("NROWS"));
    // A downsampled image has the size of its stream.
    if (source_.part.Text("IC") == "I1") {
      width = std::min<uint64_t>(width, streams[0].stream.width);
      height = std::min<uint64_t>(height, streams[0].stream.height);
    }
    if (SampleFault fault = target_.Make(width, height, true); fault.Met()) return fault;
    // Blocks of one stream follow one another: it is decoded once for all of them.
    std::stable_sort(streams.begin(), streams.end(),
                     [](const FoundJpeg& a, const FoundJpeg& b) { return a.offset < b.offset; });
    for (const FoundJpeg& found : streams) {
      if (!target_.GoesOn(found.offset, source_.part.dataLength)) return Stopped();
      if (SampleFault fault = ReadStream(found); fault.Met()) return fault;
    }
    return {};
  }

 private:
  SampleFault ReadStream(const FoundJpeg& found) {
    const Blocks& blocks = source_.blocks;
    const auto count = static_cast<uint64_t>(blocks.Count()),
               across = static_cast<uint64_t>(blocks.across);
    const uint64_t block = found.number % count, band = blocks.sequential ? found.number / count : 0;
    if (found.number >= count * (blocks.sequential ? target_.Bands() : 1)) return {};
    const uint64_t width = Reduced(static_cast<uint64_t>(blocks.width), target_.Reduce()),
                   height = Reduced(static_cast<uint64_t>(blocks.height), target_.Reduce());
    const uint64_t left = width * (block % across), top = height * (block / across);
    const bool isWanted = target_.Wants(left, top, width, height) &&
                          (!blocks.sequential || target_.WantsBand(static_cast<uint32_t>(band)));
    if (!isWanted) return {};
    if (decodedAt_ != found.offset) {
      if (SampleFault fault = Decode(found); fault.Met()) return fault;
    }
    target_.PutStream(decoded_, static_cast<uint32_t>(left), static_cast<uint32_t>(top),
                      static_cast<uint32_t>(band));
    return {};
  }

  SampleFault Decode(const FoundJpeg& found) {
    const Blocks& blocks = source_.blocks;
    const std::string where = "stream " + std::to_string(found.number);
    const JpegStream& facts = found.stream;
    if (!facts.hasFrame || !facts.hasScan) return {media::Outcome::BadData, where + " is no JPEG stream"};
    if (facts.width > 2 * blocks.width || facts.height > 2 * blocks.height)
      return {media::Outcome::BadData, where + " has " + std::to_string(facts.width) + " x " +
                                           std::to_string(facts.height) + " pixels"};
    decoded_ = {};
    const media::Outcome outcome = DecodeBytes(found);
    if (outcome == media::Outcome::Ok) {
      decodedAt_ = found.offset;
      return {};
    }
    if (outcome == media::Outcome::Unsupported && target_.Reduce() != 0)
      return {media::Outcome::Unsupported, where + " has no smaller picture in it"};
    return FaultOf(outcome, where);
  }

  media::Outcome DecodeBytes(const FoundJpeg& found) {
    const std::string data =
        source_.survey.file.At(source_.part.dataOffset + found.offset, found.stream.size);
    const media::Bytes bytes(reinterpret_cast<const uint8_t*>(data.data()), data.size());
    media::JpegRequest request;
    request.reduce = target_.Reduce();
    // What is not red, green and blue stays as it is, whatever the stream declares.
    if (target_.Image().representation == "RGB") request.colours = media::JpegColours::RgbUnlessDeclared;
    return media::DecodeJpeg(
        bytes, request, [&](const media::RowForm& form, uint32_t y, const uint8_t* row) {
          const size_t rowBytes = size_t{form.width} * form.components * form.SampleBytes();
          if (y == 0) {
            decoded_ = {form.width, form.height, form.components, form.SampleBytes(), {}};
            decoded_.bytes.resize(rowBytes * form.height);
          }
          std::memcpy(&decoded_.bytes[rowBytes * y], row, rowBytes);
          return media::Outcome::Ok;
        });
  }

  const SampleSource& source_;
  SampleTarget& target_;
  DecodedStream decoded_;
  std::optional<uint64_t> decodedAt_;
};

}  // namespace

SampleFault ReadJpeg(const SampleSource& source, SampleTarget& target) {
  return JpegBlocks(source, target).Read();
}

}  // namespace core
