// JPEG 2000 codestreams.
#include <algorithm>
#include <cstring>
#include <memory>
#include <span>

#include <openjpeg.h>

#include "hostkit/hostkit.h"
#include "media/codecs/codestream.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/extract/decoders.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct MemoryStream {
  std::string_view bytes;
  size_t position = 0;
};
OPJ_SIZE_T ReadMemory(void* to, OPJ_SIZE_T count, void* user) {
  auto& memory = *static_cast<MemoryStream*>(user);
  const size_t moved = std::min<size_t>(count, memory.bytes.size() - memory.position);
  if (moved == 0) return static_cast<OPJ_SIZE_T>(-1);
  memory.bytes.copy(static_cast<char*>(to), moved, memory.position);
  memory.position += moved;
  return moved;
}
OPJ_OFF_T SkipMemory(OPJ_OFF_T count, void* user) {
  auto& memory = *static_cast<MemoryStream*>(user);
  if (count < 0) return -1;
  const size_t moved =
      std::min<size_t>(static_cast<size_t>(count), memory.bytes.size() - memory.position);
  memory.position += moved;
  return static_cast<OPJ_OFF_T>(moved);
}
OPJ_BOOL SeekMemory(OPJ_OFF_T position, void* user) {
  auto& memory = *static_cast<MemoryStream*>(user);
  if (position < 0 || static_cast<uint64_t>(position) > memory.bytes.size()) return OPJ_FALSE;
  memory.position = static_cast<size_t>(position);
  return OPJ_TRUE;
}

using CodecPtr = std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)>;
using StreamPtr = std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)>;
using ImagePtr = std::unique_ptr<opj_image_t, decltype(&opj_image_destroy)>;

StreamPtr OpenMemory(MemoryStream& memory) {
  StreamPtr stream(opj_stream_create(64 << 10, OPJ_TRUE), &opj_stream_destroy);
  if (stream == nullptr) return stream;
  opj_stream_set_user_data(stream.get(), &memory, nullptr);
  opj_stream_set_user_data_length(stream.get(), memory.bytes.size());
  opj_stream_set_read_function(stream.get(), ReadMemory);
  opj_stream_set_skip_function(stream.get(), SkipMemory);
  opj_stream_set_seek_function(stream.get(), SeekMemory);
  return stream;
}

// Whether a codestream's claims are worth its bytes and go with its image.
bool IsWorth(std::string_view bytes, const SampleSource& source) {
  const std::span<const uint8_t> stream(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  media::CodestreamSize size;
  return media::FindCodestreamSize(stream, size) &&
         media::WeighCodestream(stream, size) == media::CodestreamWorth::Fine &&
         size.width <= 2 * static_cast<uint64_t>(source.part.Number("NCOLS")) &&
         size.height <= 2 * static_cast<uint64_t>(source.part.Number("NROWS"));
}

ImagePtr Decode(std::string_view bytes, const SampleSource& source, std::string& problem) {
  MemoryStream memory{bytes};
  ImagePtr none(nullptr, &opj_image_destroy);
  problem = "the codestream claims more than its bytes and its image are worth";
  if (!IsWorth(bytes, source)) return none;
  const CodecPtr codec(opj_create_decompress(OPJ_CODEC_J2K), &opj_destroy_codec);
  const StreamPtr stream = OpenMemory(memory);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  parameters.cp_reduce = source.reduce;
  opj_image_t* decoded = nullptr;
  if (codec == nullptr || stream == nullptr || !opj_setup_decoder(codec.get(), &parameters)) return none;
  opj_codec_set_threads(codec.get(), 2);
  problem = "the codestream does not decode";
  const bool begun = opj_read_header(stream.get(), codec.get(), &decoded) != OPJ_FALSE;
  ImagePtr image(decoded, &opj_image_destroy);
  if (!begun) {
    if (source.reduce != 0) problem += ", or has no picture as small as that";
    return none;
  }
  if (!opj_decode(codec.get(), stream.get(), image.get())) return none;
  (void)opj_end_decompress(codec.get(), stream.get());
  return image;
}

// A component of fewer samples than the image has each of them for several pixels.
void TakeComponent(const opj_image_comp_t& component, uint32_t band, SampleImage& image) {
  if (component.data == nullptr || component.w == 0 || component.h == 0) return;
  for (uint32_t y = 0; y < image.height; ++y) {
    const auto row = static_cast<uint32_t>(uint64_t{y} * component.h / image.height);
    for (uint32_t x = 0; x < image.width; ++x) {
      const auto column = static_cast<uint32_t>(uint64_t{x} * component.w / image.width);
      const int32_t value = component.data[size_t{row} * component.w + column];
      PutSample(image, x, y, band, static_cast<uint64_t>(static_cast<int64_t>(value)));
    }
  }
}

}  // namespace

ExtractFault ReadJpeg2000(const SampleSource& source, SampleImage& image) {
  const std::string data = source.survey.Data(source.part);
  const size_t start =
      std::min<size_t>(source.part.IsMasked() ? source.part.mask.dataOffset : 0, data.size());
  // What the host would not take is not decoded.
  const auto reduced = [&](const char* side) {
    return std::max<uint64_t>(1, static_cast<uint64_t>(source.part.Number(side)) >> source.reduce);
  };
  if (ExtractFault fault = CheckSize(image, reduced("NCOLS"), reduced("NROWS")); fault.Met())
    return fault;
  constexpr uint64_t kDecodeCost = 30;  // nanoseconds a sample
  if (!media::Spend(kDecodeCost * reduced("NCOLS") * reduced("NROWS") * image.bands))
    return {kHostOverBudget, MeaningOf(kHostOverBudget)};
  std::string problem;
  const ImagePtr decoded = Decode(std::string_view(data).substr(start), source, problem);
  if (decoded == nullptr || decoded->numcomps == 0) return {ORB_BAD_STRUCTURE, problem};
  uint64_t width = 0, height = 0;
  for (uint32_t c = 0; c < decoded->numcomps; ++c) {
    width = std::max<uint64_t>(width, decoded->comps[c].w);
    height = std::max<uint64_t>(height, decoded->comps[c].h);
  }
  if (decoded->numcomps < image.bands)
    return {ORB_BAD_STRUCTURE, "the codestream has " + std::to_string(decoded->numcomps) + " components"};
  if (ExtractFault fault = MakeSamples(image, width, height); fault.Met()) return fault;
  for (uint32_t band = 0; band < image.bands; ++band) TakeComponent(decoded->comps[band], band, image);
  return {};
}

}  // namespace tool
