// Facsimile streams of bi-level blocks.
#include <algorithm>
#include <iterator>

#include "core/format/interruption.h"
#include "core/samples/decoders.h"
#include "media/codecs/facsimile.h"

namespace core {

// A single stream that is decoded row by row.
struct FacsimileRun {
  FacsimileRun(const SampleSource& source, uint64_t from, uint64_t end)
      : begin(from), data(source, from, end - from) {}

  uint64_t begin;
  PartSource data;
  std::unique_ptr<media::FacsimileRows> rows;
};

namespace {

// Puts a row of a decoded block to its place.
void PutRow(std::span<const uint8_t> row, const media::FacsimileForm& form, uint64_t block, uint32_t y,
            int64_t across, SampleTarget& target) {
  const auto inRow = static_cast<uint64_t>(across);
  const auto left = static_cast<uint32_t>(block % inRow * form.width),
             top = static_cast<uint32_t>(block / inRow * form.height);
  uint8_t* to =
      target.WantsRow(top + y) && left == target.Left() ? target.Run(left, top + y, 0) : nullptr;
  uint32_t x = 0;
  const uint32_t end = std::min(form.width, target.Right() - std::min(target.Right(), left));
  for (; to != nullptr && x + 8 <= end; x += 8, to += 8) SpreadBits(row[x / 8], to);
  for (; x < end; ++x) target.Put(left + x, top + y, 0, row[x / 8] >> (7 - x % 8) & 1u);
}

// Whether any of the blocks that a place has the data of is wanted.
bool IsWanted(const std::vector<uint64_t>& numbers, const media::FacsimileForm& form, int64_t across,
              const SampleTarget& target) {
  const auto inRow = static_cast<uint64_t>(across);
  return std::any_of(numbers.begin(), numbers.end(), [&](uint64_t block) {
    return target.Wants(block % inRow * form.width, block / inRow * form.height, form.width, form.height);
  });
}

// Decodes the stream of one or several equal blocks, as far as rows are wanted: all of it with the
// image's last row.
SampleFault ReadFacsimileBlocks(const SampleSource& source, const FacsimileRun& run,
                                const media::FacsimileForm& form, const std::vector<uint64_t>& blocks,
                                SampleTarget& target) {
  const bool isAlone = source.blocks.Count() == 1;
  const bool isWhole = !isAlone || target.Bottom() >= static_cast<uint64_t>(source.part.Number("NROWS"));
  const uint32_t end = isWhole ? form.height : std::min(form.height, target.Bottom());
  media::FacsimileRows& rows = *run.rows;
  std::span<const uint8_t> row;
  while (rows.Position() < end && rows.Next(row)) {
    Interruption::Ask();
    if (!target.GoesOn(run.begin, run.data.Get().Size(), source.part.dataLength, rows.Position(),
                       form.height))
      return Stopped();
    for (const uint64_t block : blocks)
      PutRow(row, form, block, rows.Position() - 1, source.blocks.across, target);
  }
  run.data.Check();
  if (rows.Position() == 0) return {media::Outcome::BadData, "no row decodes"};
  if (rows.Position() < end)
    return {media::Outcome::BadData,
            "of " + std::to_string(form.height) + " rows " + std::to_string(rows.Position()) + " decode"};
  return {};
}

// Opens the stream of blocks, or goes on with it where it was left above what is wanted.
SampleFault OpenFacsimile(const SampleSource& source, const media::FacsimileForm& form, uint64_t begin,
                          uint64_t end, const SampleTarget& target, std::shared_ptr<FacsimileRun>& run) {
  const bool isKept = source.cache != nullptr && source.blocks.Count() == 1;
  if (isKept && source.cache->facsimile != nullptr &&
      source.cache->facsimile->rows->Position() <= target.Top()) {
    run = source.cache->facsimile;
    return {};
  }
  run = std::make_shared<FacsimileRun>(source, begin, end);
  const media::Outcome outcome =
      run->data.Checked(media::FacsimileRows::Open(run->data.Get(), form, run->rows));
  if (outcome == media::Outcome::BadData) return {outcome, "no row decodes"};
  if (outcome != media::Outcome::Ok) return FaultOf(outcome, "the facsimile");
  if (isKept) source.cache->facsimile = run;
  return {};
}

}  // namespace

SampleFault ReadFacsimile(const SampleSource& source, SampleTarget& target) {
  constexpr int64_t kMostSide = 1 << 20;
  const Blocks& blocks = source.blocks;
  if (target.Image().bits != 1 || target.Bands() != 1 || blocks.width > kMostSide ||
      blocks.height > kMostSide)
    return {media::Outcome::Unsupported, "a facsimile of " + std::to_string(blocks.width) + " x " +
                                             std::to_string(blocks.height) + " samples"};
  if (SampleFault fault = target.Make(static_cast<uint64_t>(source.part.Number("NCOLS")),
                                      static_cast<uint64_t>(source.part.Number("NROWS")), false);
      fault.Met())
    return fault;
  const media::FacsimileForm form = {static_cast<uint32_t>(blocks.width),
                                     static_cast<uint32_t>(blocks.height),
                                     source.part.Trimmed("COMRAT") != "1D"};
  const auto count = static_cast<uint64_t>(blocks.Count());
  if (count > 1 && source.part.mask.blocks.empty())
    return {media::Outcome::Unsupported, "a facsimile of several blocks without their records"};
  const SharedBlocks places = source.BlocksByOffset();
  for (auto place = places.begin(); place != places.end(); ++place) {
    const auto next = std::next(place);
    if (!target.GoesOn(place->first, source.part.dataLength)) return Stopped();
    if (!IsWanted(place->second, form, blocks.across, target)) continue;
    const uint64_t end = next != places.end() ? next->first : source.part.dataLength;
    std::shared_ptr<FacsimileRun> run;
    if (SampleFault fault = OpenFacsimile(source, form, place->first, end, target, run); fault.Met())
      return fault;
    if (SampleFault fault = ReadFacsimileBlocks(source, *run, form, place->second, target); fault.Met())
      return fault;
    if (source.cache != nullptr && run->rows->Position() == form.height)
      source.cache->facsimile = nullptr;
  }
  return {};
}

}  // namespace core
