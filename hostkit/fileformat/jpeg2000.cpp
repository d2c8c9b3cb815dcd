// JPEG 2000 codestreams and JP2 files through OpenJPEG.
#include <algorithm>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include <openjpeg.h>

#include "hostkit/fileformat/codec.h"
#include "media/codecs/codestream.h"
#include "media/work.h"

namespace hostkit {
namespace {

constexpr uint8_t kCodestreamStart[] = {0xFF, 0x4F, 0xFF, 0x51};
constexpr uint8_t kJp2Signature[] = {0, 0, 0, 12, 'j', 'P', ' ', ' ', 0x0D, 0x0A, 0x87, 0x0A};
constexpr uint64_t kSamplesAtOnce = 2 << 20;  // each takes four bytes of a decoder

uint32_t Big32(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) << 24 | p[1] << 16 | p[2] << 8 | p[3];
}

template <size_t N>
bool StartsWith(Bytes bytes, const uint8_t (&mark)[N]) {
  return bytes.size() >= N && std::equal(mark, mark + N, bytes.begin());
}

// The stream itself: masked NITF data has its mask table in front, whose first word tells where the
// codestream begins.
Bytes SkipMaskTable(Bytes bytes) {
  if (StartsWith(bytes, kCodestreamStart) || StartsWith(bytes, kJp2Signature) || bytes.size() < 14) {
    return bytes;
  }
  const uint32_t offset = Big32(bytes.data());
  if (offset >= bytes.size()) return {};
  return bytes.subspan(offset);
}

bool Describe(Bytes bytes, HostFileInfo& info) {
  const Bytes stream = SkipMaskTable(bytes);
  media::CodestreamSize size;
  if (!StartsWith(stream, kCodestreamStart) && !StartsWith(stream, kJp2Signature)) return false;
  if (!media::FindCodestreamSize(stream, size)) return false;
  info.format = 0;
  info.width = size.width;
  info.height = size.height;
  info.bitsPerPixel = size.components >= 3 ? 24 : size.precision <= 8 ? 8 : 16;
  info.pageNumber = info.pageCount = 1;
  return true;
}

// ---------------------------------------------------------------- OpenJPEG

struct MemoryStream {
  Bytes bytes;
  size_t position = 0;
};
OPJ_SIZE_T ReadMemory(void* buffer, OPJ_SIZE_T count, void* user) {
  auto& memory = *static_cast<MemoryStream*>(user);
  const size_t left = memory.bytes.size() - memory.position;
  if (left == 0) return static_cast<OPJ_SIZE_T>(-1);
  const size_t moved = std::min<size_t>(count, left);
  std::memcpy(buffer, memory.bytes.data() + memory.position, moved);
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
  if (position < 0 || static_cast<size_t>(position) > memory.bytes.size()) return OPJ_FALSE;
  memory.position = static_cast<size_t>(position);
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

StreamPtr OpenMemory(MemoryStream& memory) {
  StreamPtr stream(opj_stream_default_create(OPJ_TRUE), &opj_stream_destroy);
  if (stream == nullptr) return stream;
  opj_stream_set_user_data(stream.get(), &memory, nullptr);
  opj_stream_set_user_data_length(stream.get(), memory.bytes.size());
  opj_stream_set_read_function(stream.get(), ReadMemory);
  opj_stream_set_skip_function(stream.get(), SkipMemory);
  opj_stream_set_seek_function(stream.get(), SeekMemory);
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

// Pixels of the image that are decoded at once.
struct Part {
  uint32_t left, top, width, height;
};

// A decoder that has read a stream's header and gives one part after the other.
class Decoder {
 public:
  /// Starts on a stream whose image must be the one that was measured.
  bool Start(Bytes bytes, const media::CodestreamSize& size) {
    const bool jp2 = StartsWith(bytes, kJp2Signature);
    memory_ = {bytes};
    owner_.Reset();
    stream_ = OpenMemory(memory_);
    codec_.reset(opj_create_decompress(jp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K));
    if (codec_ == nullptr || stream_ == nullptr) return false;
    opj_set_error_handler(codec_.get(), DropMessage, nullptr);
    opj_set_warning_handler(codec_.get(), DropMessage, nullptr);
    opj_set_info_handler(codec_.get(), DropMessage, nullptr);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
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
  bool DecodePart(const media::CodestreamSize& size, const Part& part) {
    const auto edge = [](uint32_t origin, uint64_t pixels, uint32_t step, uint32_t end) {
      return static_cast<OPJ_INT32>(std::min<uint64_t>(origin + pixels * step, end));
    };
    return opj_set_decode_area(
               codec_.get(), owner_.image, edge(size.left, part.left, size.stepX, size.right),
               edge(size.top, part.top, size.stepY, size.bottom),
               edge(size.left, uint64_t{part.left} + part.width, size.stepX, size.right),
               edge(size.top, uint64_t{part.top} + part.height, size.stepY, size.bottom)) &&
           DecodeAll();
  }
  bool DecodeAll() {
    return opj_decode(codec_.get(), stream_.get(), owner_.image) && AreUsable(*owner_.image);
  }
  bool Finish() { return opj_end_decompress(codec_.get(), stream_.get()); }
  const opj_image_t& Image() const { return *owner_.image; }

 private:
  MemoryStream memory_;
  StreamPtr stream_{nullptr, &opj_stream_destroy};
  CodecPtr codec_{nullptr, &opj_destroy_codec};
  ImageOwner owner_;
};

// ---------------------------------------------------------------- components to pixels

// Reads one component at the image's resolution, in 8 or 16 bits.
class Component {
 public:
  Component(const opj_image_comp_t& component, const media::CodestreamSize& size, uint32_t bits)
      : component_(component),
        stepX_(std::max(1u, component.dx / size.stepX)),
        stepY_(std::max(1u, component.dy / size.stepY)),
        offset_(component.sgnd != 0 ? 1 << (component.prec - 1) : 0),
        from_((int64_t{1} << component.prec) - 1),
        to_((int64_t{1} << bits) - 1) {}

  const OPJ_INT32* Line(uint32_t y) const {
    const uint32_t line = std::min(y / stepY_, component_.h - 1);
    return component_.data + size_t{line} * component_.w;
  }
  uint32_t At(const OPJ_INT32* line, uint32_t x) const {
    const uint32_t column = stepX_ == 1 ? x : x / stepX_;
    const int64_t value =
        std::clamp<int64_t>(int64_t{line[std::min(column, component_.w - 1)]} + offset_, 0, from_);
    return static_cast<uint32_t>(from_ == to_ ? value : value * to_ / from_);
  }

 private:
  const opj_image_comp_t& component_;
  uint32_t stepX_, stepY_;
  int32_t offset_;
  int64_t from_, to_;
};

// Put a decoded part into the bitmap.
void PutGrey(const opj_image_t& image, const media::CodestreamSize& size, const Part& part,
             KernelBitmap& bitmap) {
  const uint32_t depth = bitmap.bitsPerPixel;
  const Component grey(image.comps[0], size, depth);
  for (uint32_t y = 0; y < part.height; ++y) {
    const OPJ_INT32* line = grey.Line(y);
    uint8_t* row = Row(bitmap, part.top + y) + size_t{part.left} * (depth / 8);
    for (uint32_t x = 0; x < part.width; ++x) {
      const auto value = static_cast<uint16_t>(grey.At(line, x));
      if (depth == 8) {
        row[x] = static_cast<uint8_t>(value);
      } else {
        std::memcpy(row + 2 * size_t{x}, &value, 2);
      }
    }
  }
}

// Three components that nothing declares are taken as luminance and chrominance, as for JPEG.
bool IsYcc(const opj_image_t& image, const HostLoadOptions& options) {
  if ((options.flags & kLoadSelectedBands) != 0) return false;
  if (image.color_space == OPJ_CLRSPC_SYCC) return true;
  const bool declared =
      image.color_space != OPJ_CLRSPC_UNKNOWN && image.color_space != OPJ_CLRSPC_UNSPECIFIED;
  return image.numcomps == 3 && !declared && (options.flags & kLoadComponentsAreRgb) == 0;
}

void PutColour(const opj_image_t& image, const media::CodestreamSize& size,
               const HostLoadOptions& options, const Part& part, KernelBitmap& bitmap) {
  const bool isYcc = IsYcc(image, options);
  const auto shown = [&](uint32_t colour) {
    return Component(image.comps[ShownComponent(options, colour, image.numcomps)], size, 8);
  };
  const Component colours[3] = {shown(0), shown(1), shown(2)};
  for (uint32_t y = 0; y < part.height; ++y) {
    uint8_t* row = Row(bitmap, part.top + y) + 3 * size_t{part.left};
    for (uint32_t c = 0; c < 3; ++c) {
      const OPJ_INT32* line = colours[c].Line(y);
      for (uint32_t x = 0; x < part.width; ++x) {
        row[3 * size_t{x} + c] = static_cast<uint8_t>(colours[c].At(line, x));
      }
    }
    for (uint32_t x = 0; isYcc && x < part.width; ++x) YccToBgr(row + 3 * size_t{x});
  }
}

// What is decoded of an image: all of it at once, or in several parts where that would take much memory
// or where not all of it is wanted.
struct Plan {
  uint32_t width, height;  // of what is wanted
  uint32_t columnsAtOnce, rowsAtOnce;
  bool inParts;
};

// As many units of a side as `pixels` allow, at least one.
uint32_t PartOf(uint32_t side, uint32_t unit, uint64_t pixels) {
  const uint64_t units = std::max<uint64_t>(1, pixels / unit);
  return static_cast<uint32_t>(std::min<uint64_t>(side, units * unit));
}

Plan PlanOf(const media::CodestreamSize& size, const KernelBitmap& wanted) {
  Plan plan = {.width = Wanted(size.width, wanted.width), .height = Wanted(size.height, wanted.height)};
  plan.columnsAtOnce = plan.width;
  plan.rowsAtOnce = plan.height;
  const bool large = uint64_t{plan.width} * plan.height * size.components > kSamplesAtOnce;
  plan.inParts = plan.width < size.width || plan.height < size.height ||
                 (large && size.mostStepX <= 4 * size.stepX && size.mostStepY <= 4 * size.stepY);
  if (!plan.inParts || !large) return plan;
  const uint64_t pixels = kSamplesAtOnce / size.components;
  if (size.tiles == 1) {
    // Parts begin where each component has a row.
    plan.rowsAtOnce = PartOf(plan.height, 64, pixels / plan.width);
    return plan;
  }
  // Parts are made of tiles, side by side before one below the other.
  const uint32_t tileWidth = std::max(1u, size.tileWidth / size.stepX);
  const uint32_t tileHeight = std::max(1u, size.tileHeight / size.stepY);
  // Each component must have a column of its own where a part begins.
  if (size.tileWidth % size.mostStepX == 0 && size.left % size.mostStepX == 0)
    plan.columnsAtOnce = PartOf(plan.width, tileWidth, pixels / std::min(tileHeight, plan.height));
  plan.rowsAtOnce = PartOf(plan.height, tileHeight, pixels / plan.columnsAtOnce);
  return plan;
}

int32_t AllocateFor(const opj_image_t& image, const Plan& plan, KernelBitmap& bitmap) {
  const bool grey = image.numcomps < 3;
  const uint32_t depth = !grey ? 24 : image.comps[0].prec <= 8 ? 8 : 16;
  const KernelColourOrder order = !grey ? kOrderBgr : depth == 8 ? kOrderRgb : kOrderGrey;
  return KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, plan.width, plan.height, depth, order,
                              nullptr, kViewTopLeft, nullptr, 0);
}

int32_t DecodeInto(Bytes stream, const media::CodestreamSize& size, const Plan& plan,
                   const HostLoadOptions& options, KernelBitmap& bitmap) {
  Decoder decoder;
  Part part = {};
  for (; part.top < plan.height; part.top += part.height) {
    part.height = std::min(plan.rowsAtOnce, plan.height - part.top);
    for (part.left = 0; part.left < plan.width; part.left += part.width) {
      part.width = std::min(plan.columnsAtOnce, plan.width - part.left);
      const bool isFirst = part.top == 0 && part.left == 0;
      // A decoder gives several parts of an image of one tile only.
      if ((isFirst || size.tiles > 1) && !decoder.Start(stream, size)) return kHostBadData;
      if (!(plan.inParts ? decoder.DecodePart(size, part) : decoder.DecodeAll())) return kHostBadData;
      if (!plan.inParts && !decoder.Finish()) return kHostBadData;
      const opj_image_t& image = decoder.Image();
      if (isFirst) {
        if (const int32_t status = AllocateFor(image, plan, bitmap); status != kHostOk) return status;
      }
      image.numcomps < 3 ? PutGrey(image, size, part, bitmap)
                         : PutColour(image, size, options, part, bitmap);
    }
  }
  return kHostOk;
}

int32_t Load(Bytes bytes, const HostLoadOptions& options, KernelBitmap& bitmap) {
  const Bytes stream = SkipMaskTable(bytes);
  media::CodestreamSize size;
  if (!media::FindCodestreamSize(stream, size)) return kHostNotRecognised;
  const media::CodestreamWorth worth = media::WeighCodestream(stream, size);
  if (worth == media::CodestreamWorth::TooManySamples) return kHostNoMemory;
  if (worth == media::CodestreamWorth::TooFewBytes) return kHostBadData;
  const Plan plan = PlanOf(size, bitmap);
  const uint64_t wanted = uint64_t{plan.width} * plan.height;
  if (!media::AllowsPixels(wanted)) return kHostNoMemory;
  if (worth == media::CodestreamWorth::TooManyTables) return kHostOverBudget;
  if (!media::SpendSamples(wanted * size.components)) return kHostOverBudget;
  const int32_t status = DecodeInto(stream, size, plan, options, bitmap);
  if (status != kHostBadData || !StartsWith(stream, kJp2Signature)) return status;
  // A file whose boxes the library refuses, or that say something else than the codestream, is decoded
  // from its codestream.
  const auto start =
      std::search(stream.begin(), stream.end(), std::begin(kCodestreamStart), std::end(kCodestreamStart));
  KernelFreeBitmap(&bitmap);
  return DecodeInto({start, stream.end()}, size, plan, options, bitmap);
}

}  // namespace

const Codec kJpeg2000Codec = {&Describe, &Load};

}  // namespace hostkit
