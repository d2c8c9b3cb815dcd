// JPEG streams of blocks.
#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>

#include "hostkit/hostkit.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/check/jpeg_stream.h"
#include "tools/orbntf/extract/decoders.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct ErrorManager {
  jpeg_error_mgr base;
  std::jmp_buf jump;
};
void JumpOut(j_common_ptr codec) { std::longjmp(reinterpret_cast<ErrorManager*>(codec->err)->jump, 1); }
void DropMessage(j_common_ptr, int) {}

// Three components stay as they are, but those that a stream declares to be luminance and colour
// differences of an image that is RGB.
void ChooseColours(jpeg_decompress_struct& codec, bool isRgb) {
  const bool declared = codec.saw_JFIF_marker || codec.saw_Adobe_marker;
  if (codec.num_components == 3) {
    const bool converts = isRgb && declared && codec.jpeg_color_space == JCS_YCbCr;
    if (!converts) codec.jpeg_color_space = JCS_RGB;
    codec.out_color_space = JCS_RGB;
  } else if (codec.num_components != 1) {
    codec.jpeg_color_space = codec.out_color_space = JCS_UNKNOWN;
  }
}

// libjpeg's errors jump back here; nothing with a destructor lives in between.
bool Decode(jpeg_decompress_struct& codec, ErrorManager& errors, std::string_view bytes, bool isRgb,
            uint32_t reduce, DecodedStream& stream) {
  if (setjmp(errors.jump) != 0) return false;
  jpeg_create_decompress(&codec);
  jpeg_mem_src(&codec, reinterpret_cast<const uint8_t*>(bytes.data()),
               static_cast<unsigned long>(bytes.size()));
  if (jpeg_read_header(&codec, TRUE) != JPEG_HEADER_OK) return false;
  ChooseColours(codec, isRgb);
  codec.scale_num = 1;
  codec.scale_denom = 1u << reduce;
  jpeg_start_decompress(&codec);
  stream.width = codec.output_width;
  stream.height = codec.output_height;
  stream.components = static_cast<uint32_t>(codec.output_components);
  const size_t rowBytes = size_t{stream.width} * stream.components;
  stream.bytes.resize(rowBytes * stream.height);
  while (codec.output_scanline < codec.output_height) {
    JSAMPROW row = stream.bytes.data() + rowBytes * codec.output_scanline;
    jpeg_read_scanlines(&codec, &row, 1);
  }
  return true;
}

bool DecodeNarrow(std::string_view bytes, bool isRgb, uint32_t reduce, DecodedStream& stream) {
  jpeg_decompress_struct codec = {};
  ErrorManager errors = {};
  codec.err = jpeg_std_error(&errors.base);
  errors.base.error_exit = JumpOut;
  errors.base.emit_message = DropMessage;
  const bool good = Decode(codec, errors, bytes, isRgb, reduce, stream);
  jpeg_destroy_decompress(&codec);
  return good;
}

// libjpeg scales down to an eighth.
constexpr uint32_t kMostReduce = 3;
constexpr uint64_t kMostPixelsPerByte = 4096;
constexpr uint32_t kMostScans = 200;
// A decoder keeps all of them where several scans tell of each.
constexpr uint64_t kMostCoefficientBytes = 96 << 20;

uint64_t Reduced(uint64_t side, uint32_t reduce) {
  return (side + (uint64_t{1} << reduce) - 1) >> reduce;
}

class JpegBlocks {
 public:
  JpegBlocks(const SampleSource& source, SampleImage& image)
      : source_(source), image_(image), data_(source.survey.Data(source.part)) {}

  ExtractFault Read() {
    std::vector<FoundJpeg> streams = FindJpegStreams(source_.part, data_);
    if (streams.empty()) return {ORB_BAD_STRUCTURE, "no stream was found"};
    if (source_.reduce > kMostReduce) return {ORB_UNSUPPORTED, "JPEG has pictures of 1/2, 1/4 and 1/8"};
    uint64_t width = static_cast<uint64_t>(source_.part.Number("NCOLS")),
             height = static_cast<uint64_t>(source_.part.Number("NROWS"));
    // A downsampled image has the size of its stream.
    if (source_.part.Text("IC") == "I1") {
      width = std::min<uint64_t>(width, streams[0].stream.width);
      height = std::min<uint64_t>(height, streams[0].stream.height);
    }
    if (ExtractFault fault =
            MakeSamples(image_, Reduced(width, source_.reduce), Reduced(height, source_.reduce));
        fault.Met())
      return fault;
    // Blocks of one stream follow one another: it is decoded once for all of them.
    std::stable_sort(streams.begin(), streams.end(),
                     [](const FoundJpeg& a, const FoundJpeg& b) { return a.offset < b.offset; });
    for (const FoundJpeg& found : streams) {
      if (ExtractFault fault = ReadStream(found); fault.Met()) return fault;
    }
    return {};
  }

 private:
  ExtractFault ReadStream(const FoundJpeg& found) {
    const Blocks& blocks = source_.blocks;
    const auto count = static_cast<uint64_t>(blocks.Count()),
               across = static_cast<uint64_t>(blocks.across);
    const uint64_t block = found.number % count, band = blocks.sequential ? found.number / count : 0;
    if (found.number >= count * (blocks.sequential ? image_.bands : 1)) return {};
    if (decodedAt_ != found.offset) {
      if (ExtractFault fault = Decode(found); fault.Met()) return fault;
    }
    const auto left = Reduced(static_cast<uint64_t>(blocks.width), source_.reduce) * (block % across);
    const auto top = Reduced(static_cast<uint64_t>(blocks.height), source_.reduce) * (block / across);
    PlaceStream(decoded_, static_cast<uint32_t>(left), static_cast<uint32_t>(top),
                static_cast<uint32_t>(band), image_);
    return {};
  }

  ExtractFault Decode(const FoundJpeg& found) {
    const Blocks& blocks = source_.blocks;
    const std::string where = "stream " + std::to_string(found.number);
    const JpegStream& facts = found.stream;
    const std::string_view bytes = std::string_view(data_).substr(
        found.offset + facts.fill, static_cast<size_t>(facts.size - facts.fill));
    if (facts.scans > kMostScans)
      return {ORB_BAD_STRUCTURE, where + " has more scans than pictures have"};
    if (!facts.hasFrame || !facts.hasScan) return {ORB_BAD_STRUCTURE, where + " is no JPEG stream"};
    if (uint64_t{facts.width} * facts.height > kMostPixelsPerByte * bytes.size() ||
        facts.width > 2 * blocks.width || facts.height > 2 * blocks.height)
      return {ORB_BAD_STRUCTURE, where + " has " + std::to_string(facts.width) + " x " +
                                     std::to_string(facts.height) + " pixels"};
    const bool keepsAll = facts.scans > 1 || facts.IsProgressive();
    if (keepsAll && 2 * uint64_t{facts.width} * facts.height * facts.components > kMostCoefficientBytes)
      return {ORB_UNSUPPORTED, where + " takes more memory than its blocks are worth"};
    constexpr uint64_t kDecodeCost = 8, kScanCost = 3;  // nanoseconds a sample
    if (!media::Spend((kDecodeCost + kScanCost * facts.scans) * facts.width * facts.height *
                      facts.components))
      return {kHostOverBudget, MeaningOf(kHostOverBudget)};
    decoded_ = {};
    const bool isWide = facts.precision > 8 || facts.IsLossless();
    if (isWide && source_.reduce != 0) return {ORB_UNSUPPORTED, where + " has no smaller picture in it"};
    const bool good = isWide
                          ? DecodeWideJpeg(bytes, facts.precision, decoded_)
                          : DecodeNarrow(bytes, image_.representation == "RGB", source_.reduce, decoded_);
    if (!good) return {isWide ? ORB_UNSUPPORTED : ORB_BAD_STRUCTURE, where + " does not decode"};
    decodedAt_ = found.offset;
    return {};
  }

  const SampleSource& source_;
  SampleImage& image_;
  std::string data_;
  DecodedStream decoded_;
  std::optional<size_t> decodedAt_;
};

}  // namespace

ExtractFault ReadJpeg(const SampleSource& source, SampleImage& image) {
  return JpegBlocks(source, image).Read();
}

}  // namespace tool
