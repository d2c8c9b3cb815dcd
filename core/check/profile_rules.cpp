// What a profile asks beyond the format: of JPEG 2000 images (BPJ2K01), and of a file the limits of a
// level.
#include "core/check/rule.h"
#include "core/format/levels.h"

namespace core {
namespace {

bool IsPart(const Checking& checking, const SurveyedPart& part) {
  return IsOneOf(checking.profile, "npje|epje|tpje") && checking.CodestreamOf(part).begins;
}

void AskTiles(Checking& checking, const SurveyedPart& part) {
  constexpr uint64_t kSide = 1024;
  if (!IsPart(checking, part)) return;
  const Codestream& stream = checking.CodestreamOf(part);
  const auto fits = [](uint64_t tile, uint64_t whole) {
    return tile == kSide || (whole <= kSide && tile >= whole);
  };
  if (fits(stream.tileWidth, stream.width) && fits(stream.tileHeight, stream.height)) return;
  checking.Fail(
      part, "NPPBH",
      "tiles of " + std::to_string(stream.tileWidth) + " x " + std::to_string(stream.tileHeight));
}

// Images that are smaller than a code-block at the fifth level have fewer.
void AskLevels(Checking& checking, const SurveyedPart& part) {
  constexpr uint64_t kLevels = 5;
  if (!IsPart(checking, part)) return;
  const Codestream& stream = checking.CodestreamOf(part);
  const bool isSmall = std::min(stream.width, stream.height) < uint64_t{1} << kLevels;
  if (stream.levels != kLevels && !(isSmall && stream.levels < kLevels))
    checking.FailAtByte(part, part.dataOffset, Count(stream.levels, "wavelet level"));
}

void AskProgression(Checking& checking, const SurveyedPart& part) {
  constexpr const char* kNames[] = {"LRCP", "RLCP", "RPCL", "PCRL", "CPRL"};
  if (!IsPart(checking, part) || checking.profile == "tpje") return;
  const uint32_t wanted = checking.profile == "npje" ? 0 : 1,
                 has = checking.CodestreamOf(part).progression;
  if (has != wanted)
    checking.FailAtByte(part, part.dataOffset,
                        std::string("the progression is ") +
                            (has < std::size(kNames) ? kNames[has] : "unknown") + ", not " +
                            kNames[wanted]);
}

void AskLayers(Checking& checking, const SurveyedPart& part) {
  if (!IsPart(checking, part)) return;
  const uint64_t layers = checking.CodestreamOf(part).layers;
  if (layers < 2) checking.FailAtByte(part, part.dataOffset, Count(layers, "layer"));
}

void AskRate(Checking& checking, const SurveyedPart& part) {
  if (!IsPart(checking, part)) return;
  const std::string_view rate = part.Text("COMRAT");
  if (rate.empty() || (rate[0] != 'N' && rate[0] != 'V')) checking.FailAt(part, "COMRAT");
}

void AskLevel(Checking& checking, const SurveyedPart& part) {
  if (checking.profile.rfind("level:", 0) != 0) return;
  const int64_t wanted = DigitsOf(checking.profile.substr(6));
  const ComplexityLevel* level = core::LevelOf(wanted);
  const FileNeeds needs = NeedsOf(checking.survey, checking.places);
  if (level == nullptr || Holds(*level, needs)) return;
  checking.Fail(part, "CLEVEL",
                "the file asks for level 0" + std::to_string(LowestLevel(needs)) + ", " +
                    checking.profile.substr(6) + " is wanted");
}

constexpr const char kProfiles[] = "BPJ2K01.10, NPJE, EPJE and TPJE";
constexpr Rule kRules[] = {
    {"profile.tiles", Severity::Error, On::Image, "NPPBH", kProfiles,
     "Tiles are 1024 x 1024, or one where the image is smaller.", AskTiles},
    {"profile.levels", Severity::Error, On::Image, "IC", kProfiles, "There are five wavelet levels.",
     AskLevels},
    {"profile.progression", Severity::Error, On::Image, "IC", kProfiles,
     "The progression is by layers (LRCP) in NPJE, by resolutions (RLCP) in EPJE.", AskProgression},
    {"profile.layers", Severity::Error, On::Image, "IC", kProfiles, "There are several quality layers.",
     AskLayers},
    {"profile.rate", Severity::Error, On::Image, "COMRAT", kProfiles,
     "COMRAT says numerically or visually lossless: N or V and three digits.", AskRate},
    {"profile.level", Severity::Error, On::File, "CLEVEL", "MIL-STD-2500C, table A-10",
     "The file fits the level that is wanted.", AskLevel},
};

}  // namespace

const Rules kProfileRules = kRules;

}  // namespace core
