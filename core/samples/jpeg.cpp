// JPEG streams of blocks.
#include <algorithm>
#include <optional>

#include "core/format/interruption.h"
#include "core/format/jpeg_stream.h"
#include "core/samples/decoders.h"
#include "media/codecs/jpeg.h"

namespace core {
namespace {

constexpr uint32_t kMostReduce = 3;  // libjpeg scales down to an eighth

}  // namespace

// A stream that is decoded row by row.
class JpegRun {
 public:
  JpegRun(const SampleSource& source, const FoundJpeg& found, uint32_t reduce)
      : data_(source, found.offset, found.stream.size),
        found_(found),
        all_(source.part.dataLength),
        reduce_(reduce) {}

  /// Decodes rows until those of a target are there.
  media::Outcome Read(media::JpegColours colours, SampleTarget& target) {
    if (!isStarted_) {
      if (const media::Outcome outcome = data_.Checked(rows_.Start(data_.Get(), colours, reduce_));
          outcome != media::Outcome::Ok)
        return outcome;
    }
    isStarted_ = true;
    const uint32_t end = std::min(rows_.Form().height, target.Bottom());
    while (rows_.Position() < end) {
      Interruption::Ask();
      const uint32_t y = rows_.Position();
      if (!target.GoesOn(found_.offset, found_.stream.size, all_, y, rows_.Form().height))
        return media::Outcome::Stopped;
      const uint8_t* row = nullptr;
      if (const media::Outcome outcome = data_.Checked(rows_.Next(row)); outcome != media::Outcome::Ok)
        return outcome;
      target.PutRow(rows_.Form(), row, 0, y, 0);
    }
    return media::Outcome::Ok;
  }
  bool IsAtEnd() const { return rows_.Position() >= rows_.Form().height; }
  bool CanReach(uint32_t row, uint32_t reduce) const {
    return reduce == reduce_ && (!isStarted_ || rows_.Position() <= row);
  }

 private:
  PartSource data_;
  FoundJpeg found_;
  uint64_t all_;  // bytes of the data
  uint32_t reduce_;
  media::JpegRows rows_;
  bool isStarted_ = false;
};

namespace {

class JpegBlocks {
 public:
  JpegBlocks(const SampleSource& source, SampleTarget& target) : source_(source), target_(target) {}

  SampleFault Read() {
    StreamCache own;
    StreamCache& cache = source_.cache != nullptr ? *source_.cache : own;
    if (!cache.jpeg) cache.jpeg = StreamsByOffset();
    const std::vector<FoundJpeg>& streams = *cache.jpeg;
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
    for (size_t i = 0; i < streams.size();) {
      if (!target_.GoesOn(streams[i].offset, source_.part.dataLength)) return Stopped();
      const FoundJpeg& found = streams[i];
      std::vector<Place> places;
      for (; i < streams.size() && streams[i].offset == found.offset; ++i) {
        if (const auto place = PlaceOf(streams[i])) places.push_back(*place);
      }
      if (places.empty()) continue;
      found_ += places.size();
      if (SampleFault fault = Decode(found, places); fault.Met()) return fault;
    }
    return found_ < Wanted()
               ? SampleFault{media::Outcome::ShortData, "the streams of some blocks are missing"}
               : SampleFault();
  }

 private:
  // Blocks that are wanted and stored.
  uint64_t Wanted() const {
    const auto count = static_cast<uint64_t>(source_.blocks.Count());
    const uint64_t all = count * (source_.blocks.sequential ? target_.Bands() : 1);
    uint64_t wanted = 0;
    for (uint64_t number = 0; number < all; ++number) {
      FoundJpeg block;
      block.number = number;
      if (source_.OffsetOf(number, 0) && PlaceOf(block)) ++wanted;
    }
    return wanted;
  }

  std::vector<FoundJpeg> StreamsByOffset() const {
    std::vector<FoundJpeg> streams = source_.survey.JpegStreams(source_.part);
    std::stable_sort(streams.begin(), streams.end(),
                     [](const FoundJpeg& a, const FoundJpeg& b) { return a.offset < b.offset; });
    return streams;
  }

  // Where a block that is wanted has its first sample.
  struct Place {
    uint32_t left, top, band;
  };
  std::optional<Place> PlaceOf(const FoundJpeg& found) const {
    const Blocks& blocks = source_.blocks;
    const auto count = static_cast<uint64_t>(blocks.Count()),
               across = static_cast<uint64_t>(blocks.across);
    const uint64_t block = found.number % count, band = blocks.sequential ? found.number / count : 0;
    if (found.number >= count * (blocks.sequential ? target_.Bands() : 1)) return std::nullopt;
    const uint64_t width = media::Reduced(static_cast<uint32_t>(blocks.width), target_.Reduce()),
                   height = media::Reduced(static_cast<uint32_t>(blocks.height), target_.Reduce());
    const Place place = {static_cast<uint32_t>(width * (block % across)),
                         static_cast<uint32_t>(height * (block / across)), static_cast<uint32_t>(band)};
    const bool isWanted = target_.Wants(place.left, place.top, width, height) &&
                          (!blocks.sequential || target_.WantsBand(place.band));
    return isWanted ? std::optional(place) : std::nullopt;
  }

  SampleFault Decode(const FoundJpeg& found, const std::vector<Place>& places) {
    const Blocks& blocks = source_.blocks;
    const std::string where = "stream " + std::to_string(found.number);
    const JpegStream& facts = found.stream;
    if (!facts.hasFrame || !facts.hasScan) return {media::Outcome::BadData, where + " is no JPEG stream"};
    if (facts.width > 2 * blocks.width || facts.height > 2 * blocks.height)
      return {media::Outcome::BadData, where + " has " + std::to_string(facts.width) + " x " +
                                           std::to_string(facts.height) + " pixels"};
    const media::Outcome outcome = DecodeRows(found, places);
    if (outcome == media::Outcome::Unsupported && !media::HasWideJpeg())
      return {outcome,
              where + " does not decode: it takes the plugin wide-jpeg.so, which cannot be opened"};
    if (outcome == media::Outcome::Unsupported && target_.Reduce() != 0)
      return {media::Outcome::Unsupported, where + " has no smaller picture in it"};
    return FaultOf(outcome, where);
  }

  media::Outcome DecodeRows(const FoundJpeg& found, const std::vector<Place>& places) {
    const bool isRgb = target_.Image().representation == "RGB";
    // What is not red, green and blue stays as it is, whatever the stream declares.
    const auto colours = isRgb ? media::JpegColours::RgbUnlessDeclared : media::JpegColours::AsStored;
    if (source_.cache != nullptr && source_.blocks.Count() == 1 && !source_.blocks.sequential) {
      std::shared_ptr<JpegRun>& run = source_.cache->run;
      if (run == nullptr || !run->CanReach(target_.Top(), target_.Reduce()))
        run = std::make_shared<JpegRun>(source_, found, target_.Reduce());
      const media::Outcome outcome = run->Read(colours, target_);
      if (outcome != media::Outcome::Ok || run->IsAtEnd()) run = nullptr;
      if (outcome == media::Outcome::Ok) return outcome;
      if (outcome != media::Outcome::Unsupported) return outcome;
    }
    const PartSource data(source_, found.offset, found.stream.size);
    media::JpegRequest request;
    request.reduce = target_.Reduce();
    request.colours = colours;
    // Nothing below what is wanted is decoded.
    for (const Place& place : places)
      request.height = std::max(request.height, target_.Bottom() - std::min(target_.Bottom(), place.top));
    return data.Checked(media::DecodeJpeg(
        data.Get(), request, [&](const media::RowForm& form, uint32_t y, const uint8_t* row) {
          if (!target_.GoesOn(found.offset, found.stream.size, source_.part.dataLength, y, form.height))
            return media::Outcome::Stopped;
          for (const Place& place : places)
            target_.PutRow(form, row, place.left, place.top + y, place.band);
          return media::Outcome::Ok;
        }));
  }

  const SampleSource& source_;
  SampleTarget& target_;
  uint64_t found_ = 0;  // blocks that were decoded
};

}  // namespace

SampleFault ReadJpeg(const SampleSource& source, SampleTarget& target) {
  return JpegBlocks(source, target).Read();
}

}  // namespace core
