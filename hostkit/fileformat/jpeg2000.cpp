// JPEG 2000 codestreams and JP2 files through OpenJPEG.
#include <algorithm>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include <openjpeg.h>

#include "hostkit/fileformat/codec.h"

namespace hostkit {
namespace {

constexpr uint8_t kCodestreamStart[] = {0xFF, 0x4F, 0xFF, 0x51};
constexpr uint8_t kJp2Signature[] = {0, 0, 0, 12, 'j', 'P', ' ', ' ', 0x0D, 0x0A, 0x87, 0x0A};
constexpr uint64_t kMaxSamples = uint64_t{1} << 29;
constexpr uint64_t kMaxSamplesPerByte = 65536;

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

// The image and tile size segment, read without the library so that sizes are known before memory is
// taken.
struct SizeSegment {
  uint32_t width, height, components, precision;
  uint32_t stepX, stepY;  // of the most finely sampled component: the pixels that are shown
};
uint32_t StepsBetween(uint32_t low, uint32_t high, uint32_t step) {
  const auto up = [step](uint32_t v) { return v / step + (v % step != 0 ? 1 : 0); };
  return up(high) - up(low);
}

bool FindSize(Bytes stream, SizeSegment& size) {
  const auto start =
      std::search(stream.begin(), stream.end(), std::begin(kCodestreamStart), std::end(kCodestreamStart));
  const size_t at = static_cast<size_t>(start - stream.begin());
  if (stream.size() - at < 43) return false;
  const uint8_t* p = stream.data() + at + 8;  // behind marker, length and capabilities
  const uint32_t right = Big32(p), bottom = Big32(p + 4), left = Big32(p + 8), top = Big32(p + 12);
  if (right <= left || bottom <= top) return false;
  const auto components = static_cast<uint32_t>(p[32] << 8 | p[33]);
  if (components == 0 || stream.size() - at - 42 < 3 * size_t{components}) return false;
  uint32_t stepX = 255, stepY = 255;
  for (uint32_t c = 0; c < components; ++c) {
    stepX = std::min<uint32_t>(stepX, p[35 + 3 * size_t{c}]);
    stepY = std::min<uint32_t>(stepY, p[36 + 3 * size_t{c}]);
  }
  if (stepX == 0 || stepY == 0) return false;
  size = {StepsBetween(left, right, stepX),
          StepsBetween(top, bottom, stepY),
          components,
          (p[34] & 0x7Fu) + 1,
          stepX,
          stepY};
  return size.width != 0 && size.height != 0;
}

bool Describe(Bytes bytes, HostFileInfo& info) {
  const Bytes stream = SkipMaskTable(bytes);
  SizeSegment size;
  if (!StartsWith(stream, kCodestreamStart) && !StartsWith(stream, kJp2Signature)) return false;
  if (!FindSize(stream, size)) return false;
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

// The image must be the one that was measured.
bool DecodeAsIs(Bytes bytes, const SizeSegment& size, ImageOwner& owner) {
  const bool jp2 = StartsWith(bytes, kJp2Signature);
  CodecPtr codec(opj_create_decompress(jp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K), &opj_destroy_codec);
  MemoryStream memory{bytes};
  const StreamPtr stream = OpenMemory(memory);
  if (codec == nullptr || stream == nullptr) return false;
  opj_set_error_handler(codec.get(), DropMessage, nullptr);
  opj_set_warning_handler(codec.get(), DropMessage, nullptr);
  opj_set_info_handler(codec.get(), DropMessage, nullptr);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  if (!opj_setup_decoder(codec.get(), &parameters)) return false;
  const unsigned cores = std::thread::hardware_concurrency();
  if (cores > 1) opj_codec_set_threads(codec.get(), static_cast<int>(cores));
  if (!opj_read_header(stream.get(), codec.get(), &owner.image)) return false;
  const opj_image_t& image = *owner.image;
  if (image.numcomps != size.components || StepsBetween(image.x0, image.x1, size.stepX) != size.width ||
      StepsBetween(image.y0, image.y1, size.stepY) != size.height) {
    return false;
  }
  return opj_decode(codec.get(), stream.get(), owner.image) &&
         opj_end_decompress(codec.get(), stream.get());
}

// A file whose boxes the library refuses, or that say something else than the codestream, is decoded from
// its codestream.
bool Decode(Bytes bytes, const SizeSegment& size, ImageOwner& owner) {
  if (DecodeAsIs(bytes, size, owner) && AreUsable(*owner.image)) return true;
  if (!StartsWith(bytes, kJp2Signature)) return false;
  const auto start =
      std::search(bytes.begin(), bytes.end(), std::begin(kCodestreamStart), std::end(kCodestreamStart));
  owner.Reset();
  return DecodeAsIs({start, bytes.end()}, size, owner) && AreUsable(*owner.image);
}

// ---------------------------------------------------------------- components to pixels

// Reads one component at the image's resolution, in 8 or 16 bits.
class Component {
 public:
  Component(const opj_image_comp_t& component, const SizeSegment& size, uint32_t bits)
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

void PutGrey(const opj_image_t& image, const SizeSegment& size, KernelBitmap& bitmap) {
  const uint32_t depth = bitmap.bitsPerPixel;
  const Component grey(image.comps[0], size, depth);
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    const OPJ_INT32* line = grey.Line(y);
    uint8_t* row = Row(bitmap, y);
    for (uint32_t x = 0; x < bitmap.width; ++x) {
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

void PutColour(const opj_image_t& image, const SizeSegment& size, const HostLoadOptions& options,
               KernelBitmap& bitmap) {
  const bool isYcc = IsYcc(image, options);
  const auto shown = [&](uint32_t colour) {
    return Component(image.comps[ShownComponent(options, colour, image.numcomps)], size, 8);
  };
  const Component colours[3] = {shown(0), shown(1), shown(2)};
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    uint8_t* row = Row(bitmap, y);
    for (uint32_t c = 0; c < 3; ++c) {
      const OPJ_INT32* line = colours[c].Line(y);
      for (uint32_t x = 0; x < bitmap.width; ++x) {
        row[3 * size_t{x} + c] = static_cast<uint8_t>(colours[c].At(line, x));
      }
    }
    for (uint32_t x = 0; isYcc && x < bitmap.width; ++x) YccToBgr(row + 3 * size_t{x});
  }
}

int32_t Load(Bytes bytes, const HostLoadOptions& options, KernelBitmap& bitmap) {
  const Bytes stream = SkipMaskTable(bytes);
  SizeSegment size;
  if (!FindSize(stream, size)) return kHostNotRecognised;
  const uint64_t pixels = uint64_t{size.width} * size.height;
  if (pixels > kMaxSamples || pixels * size.components > kMaxSamples) return kHostNoMemory;
  if (pixels * size.components / kMaxSamplesPerByte > stream.size()) return kHostBadData;
  ImageOwner owner;
  if (!Decode(stream, size, owner)) return kHostBadData;
  const opj_image_t& image = *owner.image;
  const bool grey = image.numcomps < 3;
  const uint32_t depth = !grey ? 24 : image.comps[0].prec <= 8 ? 8 : 16;
  const KernelColourOrder order = !grey ? kOrderBgr : depth == 8 ? kOrderRgb : kOrderGrey;
  const int32_t status = KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, size.width, size.height,
                                              depth, order, nullptr, kViewTopLeft, nullptr, 0);
  if (status != kHostOk) return status;
  grey ? PutGrey(image, size, bitmap) : PutColour(image, size, options, bitmap);
  return kHostOk;
}

}  // namespace

const Codec kJpeg2000Codec = {&Describe, &Load};

}  // namespace hostkit
