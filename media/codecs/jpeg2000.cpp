// JPEG 2000 through OpenJPEG.
#include "media/codecs/jpeg2000.h"

#include <algorithm>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include <openjpeg.h>

#include "media/work.h"

namespace media {
namespace {

constexpr uint8_t kCodestreamStart[] = {0xFF, 0x4F, 0xFF, 0x51};
constexpr uint8_t kJp2Signature[] = {0, 0, 0, 12, 'j', 'P', ' ', ' ', 0x0D, 0x0A, 0x87, 0x0A};
constexpr uint64_t kSamplesAtOnce = 2 << 20;  // each takes four bytes of a decoder

template <size_t N>
bool StartsWith(const Source& source, const uint8_t (&mark)[N]) {
  uint8_t bytes[N];
  return source.Read(0, bytes, N) && std::equal(mark, mark + N, bytes);
}

// A source as the library reads it.
struct SourceStream {
  Source source;
  uint64_t position = 0;
};
OPJ_SIZE_T ReadSource(void* buffer, OPJ_SIZE_T count, void* user) {
  auto& stream = *static_cast<SourceStream*>(user);
  const auto moved =
      static_cast<size_t>(std::min<uint64_t>(count, stream.source.Size() - stream.position));
  if (moved == 0 || !stream.source.Read(stream.position, static_cast<uint8_t*>(buffer), moved))
    return static_cast<OPJ_SIZE_T>(-1);
  stream.position += moved;
  return moved;
}
OPJ_OFF_T SkipSource(OPJ_OFF_T count, void* user) {
  auto& stream = *static_cast<SourceStream*>(user);
  if (count < 0) return -1;
  const uint64_t moved = std::min(static_cast<uint64_t>(count), stream.source.Size() - stream.position);
  stream.position += moved;
  return static_cast<OPJ_OFF_T>(moved);
}
OPJ_BOOL SeekSource(OPJ_OFF_T position, void* user) {
  auto& stream = *static_cast<SourceStream*>(user);
  if (position < 0 || static_cast<uint64_t>(position) > stream.source.Size()) return OPJ_FALSE;
  stream.position = static_cast<uint64_t>(position);
  return OPJ_TRUE;
}

void DropMessage(const char*, void*) {}

using CodecPtr = std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)>;
using StreamPtr = std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)>;
struct ImageOwner {
  opj_image_t* image = nullptr;
  ~ImageOwner() { Reset(); }
  void Reset() { opj_image_destroy(std::exchange(image, nullptr)); }
};

StreamPtr OpenSource(SourceStream& source) {
  // Tiles that are not wanted are passed over: the library reads a piece at the beginning of each.
  constexpr OPJ_SIZE_T kPiece = 64 << 10;
  StreamPtr stream(opj_stream_create(kPiece, OPJ_TRUE), &opj_stream_destroy);
  if (stream == nullptr) return stream;
  opj_stream_set_user_data(stream.get(), &source, nullptr);
  opj_stream_set_user_data_length(stream.get(), source.source.Size());
  opj_stream_set_read_function(stream.get(), ReadSource);
  opj_stream_set_skip_function(stream.get(), SkipSource);
  opj_stream_set_seek_function(stream.get(), SeekSource);
  return stream;
}

bool AreUsable(const opj_image_t& image) {
  for (uint32_t c = 0; c < image.numcomps; ++c) {
    const opj_image_comp_t& component = image.comps[c];
    if (component.data == nullptr || component.w == 0 || component.h == 0 || component.dx == 0 ||
        component.dy == 0 || component.prec == 0 || component.prec > 31) {
      return false;
    }
  }
  return image.numcomps != 0;
}

DeclaredColour ColourOf(const opj_image_t& image) {
  switch (image.color_space) {
    case OPJ_CLRSPC_SRGB:
      return DeclaredColour::Rgb;
    case OPJ_CLRSPC_SYCC:
      return DeclaredColour::Ycc;
    case OPJ_CLRSPC_GRAY:
      return DeclaredColour::Grey;
    case OPJ_CLRSPC_UNKNOWN:
    case OPJ_CLRSPC_UNSPECIFIED:
      return DeclaredColour::None;
    default:
      return DeclaredColour::Other;
  }
}

// A decoder that has read a stream's header and gives one part after the other.
class PartDecoder {
 public:
  /// Starts on a stream whose image must be the one that was measured.
  bool Start(const Source& source, const CodestreamSize& size, uint32_t reduce) {
    source_ = {source};
    owner_.Reset();
    stream_ = OpenSource(source_);
    codec_.reset(opj_create_decompress(IsJp2(source) ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K));
    if (codec_ == nullptr || stream_ == nullptr) return false;
    opj_set_error_handler(codec_.get(), DropMessage, nullptr);
    opj_set_warning_handler(codec_.get(), DropMessage, nullptr);
    opj_set_info_handler(codec_.get(), DropMessage, nullptr);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    parameters.cp_reduce = reduce;
    if (!opj_setup_decoder(codec_.get(), &parameters)) return false;
    constexpr uint64_t kWorthThreads = 1 << 18;  // samples
    const unsigned cores = std::thread::hardware_concurrency();
    const uint64_t samples = uint64_t{size.width} * size.height * size.components;
    if (cores > 1 && samples >= kWorthThreads)
      opj_codec_set_threads(codec_.get(), static_cast<int>(cores));
    if (!opj_read_header(stream_.get(), codec_.get(), &owner_.image)) return false;
    const opj_image_t& image = *owner_.image;
    return image.numcomps == size.components && image.x0 == size.left && image.x1 == size.right &&
           image.y0 == size.top && image.y1 == size.bottom;
  }
  bool DecodePart(const CodestreamSize& size, const Window& part) {
    const auto edge = [](uint32_t origin, uint64_t pixels, uint32_t step, uint32_t end) {
      return static_cast<OPJ_INT32>(std::min<uint64_t>(origin + pixels * step, end));
    };
    return opj_set_decode_area(codec_.get(), owner_.image,
                               edge(size.left, part.left, size.stepX, size.right),
                               edge(size.top, part.top, size.stepY, size.bottom),
                               edge(size.left, part.Right(), size.stepX, size.right),
                               edge(size.top, part.Bottom(), size.stepY, size.bottom)) &&
           DecodeAll();
  }
  bool DecodeAll() {
    return opj_decode(codec_.get(), stream_.get(), owner_.image) && AreUsable(*owner_.image);
  }
  bool Finish() { return opj_end_decompress(codec_.get(), stream_.get()); }
  const opj_image_t& Image() const { return *owner_.image; }

 private:
  SourceStream source_{Bytes()};
  StreamPtr stream_{nullptr, &opj_stream_destroy};
  CodecPtr codec_{nullptr, &opj_destroy_codec};
  ImageOwner owner_;
};

// What is decoded of an image: all of it at once, or in several parts where that would take much memory
// or where not all of it is wanted.
struct Plan {
  Window wanted;
  uint32_t columnsAtOnce, rowsAtOnce;
  bool inParts;
};

// As many units of a side as `pixels` allow, at least one.
uint32_t PartOf(uint32_t side, uint32_t unit, uint64_t pixels) {
  const uint64_t units = std::max<uint64_t>(1, pixels / unit);
  return static_cast<uint32_t>(std::min<uint64_t>(side, units * unit));
}

// As much of a side as there is behind a corner.
uint32_t Within(uint32_t side, uint32_t corner, uint32_t asked) {
  const uint32_t left = side - std::min(side, corner);
  return asked == 0 ? left : std::min(left, asked);
}

Plan PlanOf(const CodestreamSize& size, const Jpeg2000Request& request) {
  Plan plan = {.wanted = request.window};
  Window& wanted = plan.wanted;
  wanted.width = Within(size.width, wanted.left, wanted.width);
  wanted.height = Within(size.height, wanted.top, wanted.height);
  plan.columnsAtOnce = wanted.width;
  plan.rowsAtOnce = wanted.height;
  const bool large =
      (uint64_t{wanted.width} * wanted.height * size.components >> (2 * request.reduce)) > kSamplesAtOnce;
  plan.inParts = wanted.width < size.width || wanted.height < size.height ||
                 (large && size.mostStepX <= 4 * size.stepX && size.mostStepY <= 4 * size.stepY);
  if (!plan.inParts || !large) return plan;
  const uint64_t pixels = (kSamplesAtOnce / size.components) << (2 * request.reduce);
  if (size.tiles == 1) {
    // Parts begin where each component has a row, at each resolution.
    plan.rowsAtOnce = PartOf(wanted.height, std::max(64u, 4u << request.reduce), pixels / wanted.width);
    return plan;
  }
  // Parts are made of tiles, side by side before one below the other.
  const uint32_t tileWidth = std::max(1u, size.tileWidth / size.stepX);
  const uint32_t tileHeight = std::max(1u, size.tileHeight / size.stepY);
  // Each component must have a column of its own where a part begins.
  if (size.tileWidth % (size.mostStepX << request.reduce) == 0 &&
      size.left % (size.mostStepX << request.reduce) == 0 && wanted.left % tileWidth == 0)
    plan.columnsAtOnce = PartOf(wanted.width, tileWidth, pixels / std::min(tileHeight, wanted.height));
  const bool startsOnGrid =
      wanted.top % tileHeight == 0 && tileHeight % (size.mostStepY << request.reduce) == 0;
  if (startsOnGrid || request.reduce == 0)
    plan.rowsAtOnce = PartOf(wanted.height, tileHeight, pixels / plan.columnsAtOnce);
  return plan;
}

// Gives what a decoder has of a part.
Outcome Give(const opj_image_t& image, const CodestreamSize& size, const Window& part, const Plan& plan,
             uint32_t reduce, const std::function<Outcome(const CodestreamPart&)>& take) {
  std::vector<Plane> planes;
  for (uint32_t c = 0; c < image.numcomps; ++c) {
    const opj_image_comp_t& component = image.comps[c];
    planes.push_back({component.data, component.w, component.h, std::max(1u, component.dx / size.stepX),
                      std::max(1u, component.dy / size.stepY), component.prec, component.sgnd != 0});
  }
  const uint32_t left = part.left - plan.wanted.left, top = part.top - plan.wanted.top;
  // Edges of the reduced picture, from the corner of what is wanted.
  const auto cut = [&](uint64_t at, uint32_t side) {
    return std::min(static_cast<uint32_t>((at + (uint64_t{1} << reduce) - 1) >> reduce),
                    Reduced(side, reduce));
  };
  Window place;
  place.left = cut(left, plan.wanted.width);
  place.top = cut(top, plan.wanted.height);
  place.width = cut(uint64_t{left} + part.width, plan.wanted.width) - place.left;
  place.height = cut(uint64_t{top} + part.height, plan.wanted.height) - place.top;
  return take({place, planes, ColourOf(image)});
}

Outcome DecodeParts(const Source& stream, const CodestreamSize& size, const Plan& plan, uint32_t reduce,
                    const std::function<Outcome(const CodestreamPart&)>& take) {
  PartDecoder decoder;
  const Window& wanted = plan.wanted;
  Window part = wanted;
  for (; part.top < wanted.Bottom(); part.top += part.height) {
    part.height = static_cast<uint32_t>(std::min<uint64_t>(plan.rowsAtOnce, wanted.Bottom() - part.top));
    for (part.left = wanted.left; part.left < wanted.Right(); part.left += part.width) {
      part.width =
          static_cast<uint32_t>(std::min<uint64_t>(plan.columnsAtOnce, wanted.Right() - part.left));
      const bool isFirst = part.top == wanted.top && part.left == wanted.left;
      // A decoder gives several parts of an image of one tile only.
      if ((isFirst || size.tiles > 1) && !decoder.Start(stream, size, reduce)) return Outcome::BadData;
      if (!(plan.inParts ? decoder.DecodePart(size, part) : decoder.DecodeAll())) return Outcome::BadData;
      if (!plan.inParts && !decoder.Finish()) return Outcome::BadData;
      const Outcome taken = Give(decoder.Image(), size, part, plan, reduce, take);
      if (taken != Outcome::Ok) return taken;
    }
  }
  return Outcome::Ok;
}

}  // namespace

bool IsCodestream(const Source& source) { return StartsWith(source, kCodestreamStart); }
bool IsJp2(const Source& source) { return StartsWith(source, kJp2Signature); }

Source CodestreamOf(const Source& source) {
  if (IsCodestream(source)) return source;
  return source.From(IsJp2(source) ? SourceBytes(source).Find(kCodestreamStart, 0) : source.Size());
}

Outcome DecodeJpeg2000(const Source& source, const Jpeg2000Request& request,
                       const std::function<Outcome(const CodestreamPart&)>& take) {
  constexpr uint32_t kMostReduce = 31;
  CodestreamSize size;
  if (!FindCodestreamSize(source, size)) return Outcome::NotRecognised;
  if (request.reduce > kMostReduce) return Outcome::BadData;
  const Plan plan = PlanOf(size, request);
  const uint64_t wanted = uint64_t{plan.wanted.width} * plan.wanted.height >> (2 * request.reduce);
  const CodestreamWorth worth = WeighCodestream(source, size, wanted);
  if (worth == CodestreamWorth::TooManySamples) return Outcome::NoMemory;
  if (worth == CodestreamWorth::TooFewBytes) return Outcome::BadData;
  if (!AllowsPixels(wanted)) return Outcome::NoMemory;
  if (worth == CodestreamWorth::TooManyTables) return Outcome::OverBudget;
  if (!SpendSamples(wanted * size.components)) return Outcome::OverBudget;
  if (request.asStored) return DecodeParts(CodestreamOf(source), size, plan, request.reduce, take);
  const Outcome outcome = DecodeParts(source, size, plan, request.reduce, take);
  if (outcome != Outcome::BadData || !IsJp2(source)) return outcome;
  // A file whose boxes the library refuses, or that say something else than the codestream, is decoded
  // from its codestream.
  return DecodeParts(CodestreamOf(source), size, plan, request.reduce, take);
}

}  // namespace media
