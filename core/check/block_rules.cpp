// How blocks make an image, and what uncompressed ones take.
#include <algorithm>

#include "core/check/rule.h"
#include "core/format/blocks.h"

namespace core {
namespace {

void AskMode(Checking& checking, const SurveyedPart& part) { checking.FailUnlessAllowed(part, "IMODE"); }

void AskSequential(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  if (part.Text("IMODE") != "S" || !blocks.Known() || (part.Bands() > 1 && blocks.Count() > 1)) return;
  checking.Fail(part, "IMODE",
                "IMODE is S with " + Count(static_cast<uint64_t>(part.Bands()), "band") + " and " +
                    Count(static_cast<uint64_t>(blocks.Count()), "block"));
}

void AskColourMode(Checking& checking, const SurveyedPart& part) {
  const bool isColour = part.Bands() == 3 && IsOneOf(part.Trimmed("IREP"), "RGB|YCbCr601");
  if (isColour && IsOneOf(part.Text("IC"), "C3|M3") && part.Text("IMODE") != "P")
    checking.FailAt(part, "IMODE");
}

// One side of the image against its blocks.
void AskSide(Checking& checking, const SurveyedPart& part, const char* whole, const char* count,
             const char* size) {
  const int64_t pixels = part.Number(whole), blocks = part.Number(count);
  const int64_t side = part.Number(size) != 0 ? part.Number(size) : pixels;
  if (pixels < 1 || blocks < 0 || side < 0) return;
  if (blocks >= 1 && blocks * side >= pixels && (blocks - 1) * side < pixels) return;
  checking.Fail(part, count,
                Count(static_cast<uint64_t>(blocks), "block") + " of " + std::to_string(side) + " for " +
                    std::to_string(pixels) + " of " + whole);
}

void AskCover(Checking& checking, const SurveyedPart& part) {
  if (!part.Has("NPPBV") || (checking.CodestreamOf(part).beginsElsewhere)) return;
  AskSide(checking, part, "NCOLS", "NBPR", "NPPBH");
  AskSide(checking, part, "NROWS", "NBPC", "NPPBV");
}

void AskBlockSide(Checking& checking, const SurveyedPart& part) {
  constexpr int64_t kLongest = 8192;
  for (const auto& [side, count] : {std::pair{"NPPBH", "NBPR"}, {"NPPBV", "NBPC"}}) {
    const int64_t pixels = part.Number(side);
    if (!part.Has(side)) continue;
    if (pixels < 0 || pixels > kLongest || (pixels == 0 && part.Number(count) != 1))
      checking.FailAt(part, side);
  }
}

void AskZeroSide(Checking& checking, const SurveyedPart& part) {
  constexpr int64_t kLongest = 8192;
  for (const auto& [side, count, whole] :
       {std::tuple{"NPPBH", "NBPR", "NCOLS"}, std::tuple{"NPPBV", "NBPC", "NROWS"}}) {
    if (part.Number(side) == 0 && part.Number(count) == 1 && part.Number(whole) <= kLongest)
      checking.Fail(part, side,
                    std::string(side) + " is 0 for a block of " + std::to_string(part.Number(whole)));
  }
}

// A compression that takes one block, not larger than a limit.
void AskOneBlock(Checking& checking, const SurveyedPart& part, std::string_view compression,
                 int64_t columns, int64_t rows) {
  const Blocks blocks(part);
  if (part.Text("IC") != compression || !blocks.Known()) return;
  if (blocks.Count() == 1 && blocks.width <= columns && blocks.height <= rows) return;
  checking.Fail(part, "NBPR",
                std::string(compression) + " with " +
                    Count(static_cast<uint64_t>(blocks.Count()), "block") + " of " +
                    std::to_string(blocks.width) + " x " + std::to_string(blocks.height));
}

void AskDownsampled(Checking& checking, const SurveyedPart& part) {
  AskOneBlock(checking, part, "I1", 2048, 2048);
}
void AskFacsimile(Checking& checking, const SurveyedPart& part) {
  AskOneBlock(checking, part, "C1", 2560, 8192);
}

void AskLength(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  if (part.Text("IC") != "NC" || !blocks.Known()) return;
  const uint64_t wanted = blocks.Bytes();
  if (wanted == part.dataLength) return;
  checking.FailAtLength(
      part, true,
      "the pixels take " + Count(wanted, "byte") + ", the data has " + std::to_string(part.dataLength));
}

constexpr const char kTableA3[] = "MIL-STD-2500C, table A-3";
constexpr Rule kRules[] = {
    {"block.mode", Severity::Error, On::Image, "IMODE", kTableA3, "The mode is B, P, R or S.", AskMode},
    {"block.sequential", Severity::Error, On::Image, "IMODE", kTableA3,
     "IMODE S is for several bands in several blocks.", AskSequential},
    {"block.colour", Severity::Error, On::Image, "IMODE", "MIL-STD-188-198A; MIL-STD-2500C, table A-3",
     "JPEG of three colours interleaves them by pixel: IMODE P.", AskColourMode},
    {"block.cover", Severity::Error, On::Image, "NBPR", kTableA3,
     "The blocks cover the image, and none lies outside it.", AskCover},
    {"block.side", Severity::Error, On::Image, "NPPBH", kTableA3,
     "A block's side is 1 to 8192, or 0 where one block is longer than that.", AskBlockSide},
    {"block.zero", Severity::Note, On::Image, "NPPBH", kTableA3,
     "A side of 0 stands for one block that is longer than 8192.", AskZeroSide},
    {"block.downsampled", Severity::Error, On::Image, "NBPR", "NGA.STND.0012, downsampled JPEG",
     "A downsampled JPEG image is one block of at most 2048 x 2048.", AskDownsampled},
    {"block.facsimile", Severity::Error, On::Image, "NBPR", "MIL-STD-188-196",
     "A facsimile is one block of at most 2560 x 8192.", AskFacsimile},
    {"block.length", Severity::Error, On::Image, "LI", "MIL-STD-2500C, 5.4.3",
     "Uncompressed data has the bytes of its pixels, those that fill up blocks included.", AskLength},
};

}  // namespace

const Rules kBlockRules = kRules;

}  // namespace core
