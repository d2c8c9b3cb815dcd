// Encoding through libjpeg.
#include <algorithm>
#include <new>
#include <vector>

#include "media/codecs/jpeg.h"
#include "media/codecs/jpeg_codec.h"

namespace media {
namespace {

// Where the encoder writes: a buffer of ours that grows, since the library's own one is lost, and freed
// twice, when it cannot grow.
struct Destination {
  jpeg_destination_mgr manager;
  std::vector<uint8_t>& bytes;
};
void Grow(jpeg_compress_struct* codec, size_t filled) {
  constexpr size_t kLeast = 16384;
  auto& destination = *reinterpret_cast<Destination*>(codec->dest);
  bool grown = true;
  try {
    destination.bytes.resize(std::max(2 * filled, kLeast));
  } catch (const std::bad_alloc&) {
    grown = false;
  }
  if (!grown) ReturnJpegError(reinterpret_cast<j_common_ptr>(codec));
  destination.manager.next_output_byte = destination.bytes.data() + filled;
  destination.manager.free_in_buffer = destination.bytes.size() - filled;
}
void StartDestination(jpeg_compress_struct* codec) { Grow(codec, 0); }
// The buffer is full, whatever is said to be free in it.
boolean GrowDestination(jpeg_compress_struct* codec) {
  Grow(codec, reinterpret_cast<Destination*>(codec->dest)->bytes.size());
  return TRUE;
}
void EndDestination(jpeg_compress_struct* codec) {
  auto& destination = *reinterpret_cast<Destination*>(codec->dest);
  destination.bytes.resize(destination.bytes.size() - destination.manager.free_in_buffer);
}

bool RunEncoder(jpeg_compress_struct& codec, JpegErrors& errors, const JpegPlan& plan, Destination& out,
                const std::function<const uint8_t*(uint32_t)>& source) {
  if (setjmp(errors.jump) != 0) return false;
  jpeg_create_compress(&codec);
  codec.dest = &out.manager;
  codec.image_width = plan.width;
  codec.image_height = plan.height;
  codec.input_components = plan.isGrey ? 1 : 3;
  codec.in_color_space = plan.isGrey ? JCS_GRAYSCALE : plan.isYcc ? JCS_YCbCr : JCS_EXT_BGR;
  jpeg_set_defaults(&codec);
  if (!plan.isGrey) jpeg_set_colorspace(&codec, plan.storesRgb ? JCS_RGB : JCS_YCbCr);
  jpeg_set_quality(&codec, plan.quality, TRUE);
  jpeg_start_compress(&codec, TRUE);
  while (codec.next_scanline < codec.image_height) {
    JSAMPROW row = const_cast<JSAMPROW>(source(codec.next_scanline));
    jpeg_write_scanlines(&codec, &row, 1);
  }
  jpeg_finish_compress(&codec);
  return true;
}

}  // namespace

Outcome EncodeJpeg(const JpegPlan& plan, const std::function<const uint8_t*(uint32_t)>& row,
                   std::string& bytes) {
  if (plan.width > JPEG_MAX_DIMENSION || plan.height > JPEG_MAX_DIMENSION) return Outcome::Unsupported;
  jpeg_compress_struct codec{};
  JpegErrors errors;
  codec.err = Silent(errors);
  std::vector<uint8_t> encoded;
  Destination destination = {{nullptr, 0, &StartDestination, &GrowDestination, &EndDestination}, encoded};
  const bool done = RunEncoder(codec, errors, plan, destination, row);
  jpeg_destroy_compress(&codec);
  if (done) bytes.assign(encoded.begin(), encoded.end());
  return done ? Outcome::Ok : Outcome::BadData;
}

}  // namespace media
