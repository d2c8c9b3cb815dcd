// JPEG streams against the subheader: one for every block that is stored, of IMODE S for each of its
// bands.
#include "core/check/rule.h"
#include "core/format/blocks.h"
#include "media/codecs/jpeg.h"
#include "media/work.h"

namespace core {
namespace {

bool IsJpeg(const SurveyedPart& part) {
  return part.complete && IsOneOf(part.Text("IC"), "C3|M3|C5|M5|I1");
}

const std::vector<FoundJpeg>& StreamsOf(const Checking& checking, const SurveyedPart& part) {
  static const std::vector<FoundJpeg> kNone;
  return IsJpeg(part) ? checking.JpegStreams(part) : kNone;
}

// The first stream that a test does not hold for is told; `words` says what is wrong with one.
template <class Words>
void AskStreams(Checking& checking, const SurveyedPart& part, Words words, const char* field = nullptr) {
  const std::vector<FoundJpeg>& streams = StreamsOf(checking, part);
  for (size_t n = 0; n < streams.size(); ++n) {
    const std::string problem = words(streams[n].stream);
    if (problem.empty()) continue;
    if (field != nullptr)
      return checking.Fail(part, field, "stream " + std::to_string(n) + ": " + problem);
    return checking.FailAtByte(part, part.dataOffset + streams[n].offset,
                               "stream " + std::to_string(n) + ": " + problem);
  }
}

void AskBegin(Checking& checking, const SurveyedPart& part) {
  if (IsJpeg(part) && part.mask.blocks.empty() && StreamsOf(checking, part).empty())
    checking.FailAtByte(part, part.dataOffset, "there is no stream");
  AskStreams(checking, part, [](const JpegStream& stream) -> std::string {
    if (!stream.begins) return "it does not begin with FF D8";
    return stream.hasFrame && stream.hasScan ? "" : "it has no frame or no scan";
  });
}

void AskEnd(Checking& checking, const SurveyedPart& part) {
  AskStreams(checking, part, [](const JpegStream& stream) -> std::string {
    return stream.begins && !stream.ends ? "it has no end marker" : "";
  });
}

void AskCount(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  if (!IsJpeg(part) || !part.mask.blocks.empty() || !blocks.Known()) return;
  const std::vector<FoundJpeg>& streams = StreamsOf(checking, part);
  const int64_t wanted = blocks.Count() * (blocks.sequential ? blocks.bands : 1);
  // One that does not begin or end is told by that.
  if (streams.empty() || !streams.back().stream.begins || !streams.back().stream.ends) return;
  if (static_cast<int64_t>(streams.size()) != wanted)
    checking.FailAtByte(part, part.dataOffset,
                        (static_cast<int64_t>(streams.size()) > wanted ? std::string("more")
                                                                       : std::to_string(streams.size())) +
                            " streams for " + std::to_string(wanted) + " blocks");
}

// A downsampled image has fewer pixels than its block.
void AskSize(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  if (part.Text("IC") == "I1" || !blocks.Known()) return;
  const auto words = [&](const JpegStream& stream) -> std::string {
    if (!stream.hasFrame || (stream.width == blocks.width && stream.height == blocks.height)) return "";
    return std::to_string(stream.width) + " x " + std::to_string(stream.height) +
           " pixels, the block has " + std::to_string(blocks.width) + " x " +
           std::to_string(blocks.height);
  };
  const std::vector<FoundJpeg>& streams = StreamsOf(checking, part);
  const bool isHigh = !streams.empty() && streams[0].stream.width == blocks.width;
  AskStreams(checking, part, words, isHigh ? "NPPBV" : "NPPBH");
}

void AskComponents(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  const int64_t wanted = blocks.sequential ? 1 : blocks.bands;
  const auto words = [&](const JpegStream& stream) -> std::string {
    if (!stream.hasFrame || stream.components == wanted) return "";
    return Count(stream.components, "component") + " for " + Count(static_cast<uint64_t>(wanted), "band");
  };
  AskStreams(checking, part, words, part.Has("XBANDS") ? "XBANDS" : "NBANDS");
}

void AskPrecision(Checking& checking, const SurveyedPart& part) {
  const int64_t significant = part.Number("ABPP"), stored = part.Number("NBPP");
  const auto words = [&](const JpegStream& stream) -> std::string {
    if (!stream.hasFrame || stream.precision == stored || stream.precision == significant) return "";
    return std::to_string(stream.precision) + " bits where NBPP is " + std::to_string(stored) +
           " and ABPP " + std::to_string(significant);
  };
  AskStreams(checking, part, words, "ABPP");
}

void AskProcess(Checking& checking, const SurveyedPart& part) {
  const bool lossless = IsOneOf(part.Text("IC"), "C5|M5");
  AskStreams(checking, part, [&](const JpegStream& stream) -> std::string {
    if (!stream.hasFrame || stream.IsLossless() == lossless) return "";
    return lossless ? "it is not lossless" : "it is lossless, which is IC C5";
  });
}

void AskTables(Checking& checking, const SurveyedPart& part) {
  AskStreams(checking, part, [](const JpegStream& stream) -> std::string {
    return stream.missing == nullptr ? "" : std::string("a ") + stream.missing + " table is not there";
  });
}

// Of one scan, restarts stand between intervals; several scans have theirs each.
std::string RestartProblem(const JpegStream& stream) {
  if (!stream.ends || stream.scans != 1 || stream.Units() == 0) return "";
  if (stream.interval == 0) return stream.restarts == 0 ? "" : "restarts without an interval";
  const uint64_t wanted = (stream.Units() + stream.interval - 1) / stream.interval - 1;
  if (stream.restarts == wanted) return "";
  return Count(stream.restarts, "restart") + " where its interval of " + std::to_string(stream.interval) +
         " makes " + std::to_string(wanted);
}

void AskRestarts(Checking& checking, const SurveyedPart& part) {
  AskStreams(checking, part, RestartProblem);
}

void AskRestartOrder(Checking& checking, const SurveyedPart& part) {
  AskStreams(checking, part, [](const JpegStream& stream) -> std::string {
    return stream.restartsInOrder ? "" : "its restart markers do not count from RST0 to RST7 and again";
  });
}

constexpr uint64_t kMostDecoded = 8 << 20;  // bytes of an image's data

// Streams that are whole by their markers are decoded: their codes may still be wrong.
void AskCodes(Checking& checking, const SurveyedPart& part) {
  if (part.dataLength > kMostDecoded) return;
  const std::vector<FoundJpeg>& streams = StreamsOf(checking, part);
  for (size_t n = 0; n < streams.size(); ++n) {
    const JpegStream& stream = streams[n].stream;
    const bool isTold =
        stream.missing != nullptr || !stream.restartsInOrder || !RestartProblem(stream).empty();
    if (!stream.ends || !stream.hasScan || isTold) continue;
    const std::string bytes = checking.survey.file.At(part.dataOffset + streams[n].offset, stream.size);
    media::JpegRequest request;
    request.readsEnd = true;
    request.isStrict = true;
    media::AllowPixels(uint64_t{stream.width} * stream.height);
    const media::Outcome outcome = media::DecodeJpeg(
        media::Bytes(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()), request,
        [](const media::RowForm&, uint32_t, const uint8_t*) { return media::Outcome::Ok; });
    if (outcome == media::Outcome::BadData || outcome == media::Outcome::ShortData)
      return checking.FailAtByte(part, part.dataOffset + streams[n].offset,
                                 "stream " + std::to_string(n) + ": its codes do not decode");
  }
}

void AskUndecoded(Checking& checking, const SurveyedPart& part) {
  if (part.dataLength > kMostDecoded && !StreamsOf(checking, part).empty())
    checking.FailAtByte(
        part, part.dataOffset,
        "the codes in " + std::to_string(part.dataLength) + " bytes of data were not decoded");
}

void AskApplication(Checking& checking, const SurveyedPart& part) {
  AskStreams(checking, part, [](const JpegStream& stream) -> std::string {
    return stream.begins && !stream.hasApplication ? "it has no NITF application segment" : "";
  });
}

constexpr const char kJpeg[] = "ISO/IEC 10918-1; MIL-STD-188-198A";
constexpr Rule kRules[] = {
    {"jpeg.begin", Severity::Error, On::Image, "IC", kJpeg,
     "A JPEG stream begins with its marker, fill bytes in front allowed, and has a frame and a scan.",
     AskBegin},
    {"jpeg.end", Severity::Error, On::Image, "IC", kJpeg, "A JPEG stream ends with its marker.", AskEnd},
    {"jpeg.count", Severity::Error, On::Image, "IC", kJpeg, "Every block has a JPEG stream.", AskCount},
    {"jpeg.size", Severity::Error, On::Image, "NPPBH", kJpeg, "A JPEG stream has the size of its block.",
     AskSize},
    {"jpeg.components", Severity::Error, On::Image, "NBANDS", kJpeg,
     "A JPEG stream has a component for each band.", AskComponents},
    {"jpeg.precision", Severity::Error, On::Image, "ABPP", kJpeg,
     "A JPEG stream has the depth of the samples.", AskPrecision},
    {"jpeg.process", Severity::Error, On::Image, "IC", kJpeg, "C5 is lossless JPEG; C3 and I1 are not.",
     AskProcess},
    {"jpeg.tables", Severity::Error, On::Image, "IC", kJpeg,
     "A JPEG stream defines the tables that it uses.", AskTables},
    {"jpeg.restarts", Severity::Error, On::Image, "IC", kJpeg,
     "Restart markers stand where the restart interval says.", AskRestarts},
    {"jpeg.restarts.order", Severity::Error, On::Image, "IC", "ISO/IEC 10918-1, B.2.1",
     "Restart markers count from RST0 to RST7 and again.", AskRestartOrder},
    {"jpeg.codes", Severity::Error, On::Image, "IC", kJpeg, "The codes of a JPEG stream decode.",
     AskCodes},
    {"jpeg.undecoded", Severity::Note, On::Image, "IC", kJpeg,
     "Data of up to 8 MiB is decoded once; of more, markers alone are examined.", AskUndecoded},
    {"jpeg.application", Severity::Note, On::Image, "IC", "MIL-STD-188-198A",
     "A JPEG stream says in an APP6 segment that it is one of a NITF file.", AskApplication},
};

}  // namespace

const Rules kJpegRules = kRules;

}  // namespace core
