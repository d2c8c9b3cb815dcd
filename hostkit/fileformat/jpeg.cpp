// JPEG: the marker scan, 8-bit decoding and encoding through libjpeg.
#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <new>
#include <vector>

#include <jpeglib.h>

#include "hostkit/fileformat/codec.h"
#include "hostkit/kernel/pixels_rows.h"
#include "media/work.h"

namespace hostkit {
namespace {

constexpr uint64_t kMaxPixelsPerByte = 4096;  // no JPEG stream packs more pixels into a byte
constexpr uint64_t kMaxCoefficientBytes = 96 << 20;
constexpr uint64_t kWorkPerSample = 5, kWorkPerScanSample = 4;  // nanoseconds

uint32_t Big16(const uint8_t* p) { return static_cast<uint32_t>(p[0] << 8 | p[1]); }

bool IsFrameMarker(uint8_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// Fill bytes may stand in front of any marker (ISO/IEC 10918-1, B.1.1.2), which decoders do not expect in
// front of the first.
Bytes WithoutFill(Bytes bytes) {
  while (bytes.size() > 1 && bytes[0] == 0xFF && bytes[1] == 0xFF) bytes = bytes.subspan(1);
  return bytes;
}

bool Describe(Bytes bytes, HostFileInfo& info) {
  JpegFrame frame;
  if (!FindJpegFrame(WithoutFill(bytes), frame)) return false;
  info.format = kFormatJpegYcc;
  info.width = frame.width;
  info.height = frame.height;
  info.bitsPerPixel = frame.components >= 3 ? 24 : frame.precision <= 8 ? 8 : 16;
  info.pageNumber = info.pageCount = 1;
  return true;
}

// ---------------------------------------------------------------- decoding

// Errors of libjpeg come back by a jump into the operation that called it; nothing with a destructor
// lives between the two.
struct ErrorReturn {
  jpeg_error_mgr manager;
  std::jmp_buf jump;
};
[[noreturn]] void ReturnError(j_common_ptr codec) {
  std::longjmp(reinterpret_cast<ErrorReturn*>(codec->err)->jump, 1);
}
void DropMessage(j_common_ptr) {}
void DropWarning(j_common_ptr, int) {}

jpeg_error_mgr* Silent(ErrorReturn& errors) {
  jpeg_std_error(&errors.manager);
  errors.manager.error_exit = ReturnError;
  errors.manager.output_message = DropMessage;
  errors.manager.emit_message = DropWarning;
  return &errors.manager;
}

void ChooseColourSpace(jpeg_decompress_struct& codec, const JpegFrame& frame,
                       const HostLoadOptions& options) {
  const bool selected = (options.flags & kLoadSelectedBands) != 0;
  if (codec.num_components == 1) {
    codec.jpeg_color_space = codec.out_color_space = JCS_GRAYSCALE;
  } else if (codec.num_components != 3 || selected) {
    codec.jpeg_color_space = codec.out_color_space = JCS_UNKNOWN;
  } else {
    const bool rgb = (options.flags & kLoadComponentsAreRgb) != 0 && !frame.declaresColour;
    if (rgb) codec.jpeg_color_space = JCS_RGB;
    if (!rgb && !frame.declaresColour) codec.jpeg_color_space = JCS_YCbCr;
    codec.out_color_space = JCS_EXT_BGR;
  }
}

// Keeps three components of interleaved samples as blue, green and red.
void PickComponents(const uint8_t* in, uint32_t count, uint32_t width, const HostLoadOptions& options,
                    uint8_t* bgr) {
  const uint32_t shown[3] = {ShownComponent(options, 0, count), ShownComponent(options, 1, count),
                             ShownComponent(options, 2, count)};
  for (uint32_t x = 0; x < width; ++x, in += count, bgr += 3) {
    for (int c = 0; c < 3; ++c) bgr[c] = in[shown[c]];
  }
}

// Limits a decoder's work: a stream of countless empty scans costs a pass over the picture each.
struct ScanLimit {
  jpeg_progress_mgr manager;
  int scan;
  uint64_t samples;
  bool exceeded;
};
void LimitScans(j_common_ptr codec) {
  constexpr int kMaxScans = 200;
  if (!codec->is_decompressor) return;
  auto& limit = *reinterpret_cast<ScanLimit*>(codec->progress);
  const int scan = reinterpret_cast<j_decompress_ptr>(codec)->input_scan_number;
  if (scan == limit.scan) return;
  limit.scan = scan;
  limit.exceeded = !media::Spend(kWorkPerScanSample * limit.samples);
  if (scan > kMaxScans || limit.exceeded) ReturnError(codec);
}

// Whether the decoder, which then keeps all coefficients, would take too much memory.
bool NeedsTooMuch(jpeg_decompress_struct& codec) {
  if (!jpeg_has_multiple_scans(&codec)) return false;
  uint64_t bytes = 0;
  for (int c = 0; c < codec.num_components; ++c) {
    const jpeg_component_info& component = codec.comp_info[c];
    bytes += uint64_t{component.width_in_blocks} * component.height_in_blocks * sizeof(JBLOCK);
  }
  return bytes > kMaxCoefficientBytes;
}

// Runs the decoder as far as the bitmap reaches; `samples` is a row buffer where a row does not go
// straight into the bitmap, else null. A host status.
int32_t RunDecoder(jpeg_decompress_struct& codec, ErrorReturn& errors, Bytes bytes,
                   const JpegFrame& frame, const HostLoadOptions& options, KernelBitmap& bitmap,
                   uint8_t* samples, bool pick, ScanLimit& limit) {
  if (setjmp(errors.jump) != 0) return limit.exceeded ? kHostOverBudget : kHostBadData;
  jpeg_create_decompress(&codec);
  jpeg_mem_src(&codec, bytes.data(), static_cast<unsigned long>(bytes.size()));
  jpeg_read_header(&codec, TRUE);
  // The bitmap was made for the frame that the scan found.
  if (codec.image_width != frame.width || codec.image_height != frame.height ||
      codec.num_components != static_cast<int>(frame.components) ||
      codec.data_precision != frame.precision) {
    return kHostBadData;
  }
  if (NeedsTooMuch(codec)) return kHostOverBudget;
  codec.progress = &limit.manager;
  ChooseColourSpace(codec, frame, options);
  jpeg_start_decompress(&codec);
  while (codec.output_scanline < bitmap.height) {
    uint8_t* row = Row(bitmap, codec.output_scanline);
    JSAMPROW target = samples != nullptr ? samples : row;
    jpeg_read_scanlines(&codec, &target, 1);
    if (pick) {
      PickComponents(samples, static_cast<uint32_t>(codec.output_components), bitmap.width, options, row);
    } else if (samples != nullptr) {
      std::memcpy(row, samples, size_t{bitmap.width} * static_cast<size_t>(codec.output_components));
    }
  }
  if (codec.output_scanline == codec.output_height) jpeg_finish_decompress(&codec);
  return kHostOk;
}

int32_t Load(Bytes stream, const HostLoadOptions& options, KernelBitmap& bitmap) {
  const Bytes bytes = WithoutFill(stream);
  JpegFrame frame;
  if (!FindJpegFrame(bytes, frame)) return kHostNotRecognised;
  const uint64_t pixels = uint64_t{frame.width} * frame.height;
  if (pixels / kMaxPixelsPerByte > bytes.size()) return kHostBadData;
  if (!media::Spend(kWorkPerSample * pixels * frame.components)) return kHostOverBudget;
  // libjpeg finds no more than four components in its scans.
  if (frame.precision != 8 || frame.IsLossless() || frame.components > 4) {
#if defined(HOSTKIT_WIDE_JPEG)
    return LoadWideJpeg(bytes, frame, options, bitmap);
#else
    return kHostUnsupported;
#endif
  }
  const bool grey = frame.components == 1;
  const int32_t status =
      KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, Wanted(frame.width, bitmap.width),
                           Wanted(frame.height, bitmap.height), grey ? 8 : 24,
                           grey ? kOrderRgb : kOrderBgr, nullptr, kViewTopLeft, nullptr, 0);
  if (status != kHostOk) return status;
  const bool pick = !grey && (frame.components != 3 || (options.flags & kLoadSelectedBands) != 0);
  const bool aside = pick || bitmap.width < frame.width;
  std::vector<uint8_t> samples(aside ? size_t{frame.width} * frame.components : 0);
  jpeg_decompress_struct codec{};
  ErrorReturn errors;
  codec.err = Silent(errors);
  ScanLimit limit = {{&LimitScans, 0, 0, 0, 0}, 0, pixels * frame.components, false};
  const int32_t decoded = RunDecoder(codec, errors, bytes, frame, options, bitmap,
                                     aside ? samples.data() : nullptr, pick, limit);
  jpeg_destroy_decompress(&codec);
  return decoded;
}

// ---------------------------------------------------------------- encoding

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
  if (!grown) ReturnError(reinterpret_cast<j_common_ptr>(codec));
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

// A quality factor of 2 keeps the most, 255 the least.
int LibraryQuality(int32_t factor) { return 100 - (factor - 2) * 99 / 253; }

// Rows of a bitmap as they are encoded: blue, green, red, or their luminance.
class EncodedRows {
 public:
  EncodedRows(const KernelBitmap& bitmap, bool grey)
      : bitmap_(bitmap),
        reader_(bitmap, PixelCount(bitmap)),
        bgr_(3 * size_t{bitmap.width}),
        grey_(grey ? bitmap.width : 0) {}
  uint8_t* Row(uint32_t y) {
    reader_.Read(PictureRow(bitmap_, y), 0, bitmap_.width, bgr_.data());
    if (grey_.empty()) return bgr_.data();
    for (size_t x = 0; x < grey_.size(); ++x) {
      const uint8_t* p = &bgr_[3 * x];
      grey_[x] = static_cast<uint8_t>((114u * p[0] + 587u * p[1] + 299u * p[2]) / 1000);
    }
    return grey_.data();
  }

 private:
  const KernelBitmap& bitmap_;
  RowReader reader_;
  std::vector<uint8_t> bgr_, grey_;
};

bool RunEncoder(jpeg_compress_struct& codec, ErrorReturn& errors, const KernelBitmap& bitmap,
                uint32_t format, bool grey, int quality, Destination& out, EncodedRows& rows) {
  if (setjmp(errors.jump) != 0) return false;
  jpeg_create_compress(&codec);
  codec.dest = &out.manager;
  codec.image_width = bitmap.width;
  codec.image_height = bitmap.height;
  codec.input_components = grey ? 1 : 3;
  codec.in_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGR;
  jpeg_set_defaults(&codec);
  if (!grey) jpeg_set_colorspace(&codec, format == kFormatJpegRgb ? JCS_RGB : JCS_YCbCr);
  jpeg_set_quality(&codec, quality, TRUE);
  jpeg_start_compress(&codec, TRUE);
  while (codec.next_scanline < codec.image_height) {
    JSAMPROW row = rows.Row(codec.next_scanline);
    jpeg_write_scanlines(&codec, &row, 1);
  }
  jpeg_finish_compress(&codec);
  return true;
}

}  // namespace

const Codec kJpegCodec = {&Describe, &Load};

bool FindJpegFrame(Bytes bytes, JpegFrame& frame) {
  if (bytes.size() < 4 || bytes[0] != 0xFF || bytes[1] != 0xD8 || bytes[2] != 0xFF) return false;
  frame = {};
  size_t at = 2;
  while (at + 4 <= bytes.size()) {
    if (bytes[at] != 0xFF) return false;
    const uint8_t marker = bytes[at + 1];
    if (marker == 0xFF || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8)) {
      at += marker == 0xFF ? 1 : 2;
      continue;
    }
    const uint8_t* segment = &bytes[at + 4];
    const uint32_t length = Big16(&bytes[at + 2]);
    const size_t left = bytes.size() - at - 4;
    if (length < 2 || length - 2 > left || marker == 0xDA || marker == 0xD9) return false;
    if (marker == 0xE0 && length >= 7 && std::memcmp(segment, "JFIF", 5) == 0)
      frame.declaresColour = true;
    if (marker == 0xEE && length >= 14 && std::memcmp(segment, "Adobe", 5) == 0)
      frame.declaresColour = true;
    if (IsFrameMarker(marker) && length >= 8) {
      frame.marker = marker;
      frame.precision = segment[0];
      frame.height = Big16(segment + 1);
      frame.width = Big16(segment + 3);
      frame.components = segment[5];
      frame.end = at + 2 + length;
      return frame.width != 0 && frame.height != 0 && frame.components != 0;
    }
    at += 2 + length;
  }
  return false;
}

int32_t EncodeJpeg(const KernelBitmap& bitmap, uint32_t format, uint32_t bitsPerPixel,
                   int32_t qualityFactor, std::string& bytes) {
  if (bitmap.width > JPEG_MAX_DIMENSION || bitmap.height > JPEG_MAX_DIMENSION) return kHostUnsupported;
  const bool grey = bitsPerPixel == 8;
  EncodedRows rows(bitmap, grey);
  jpeg_compress_struct codec{};
  ErrorReturn errors;
  codec.err = Silent(errors);
  std::vector<uint8_t> encoded;
  Destination destination = {{nullptr, 0, &StartDestination, &GrowDestination, &EndDestination}, encoded};
  const bool done =
      RunEncoder(codec, errors, bitmap, format, grey, LibraryQuality(qualityFactor), destination, rows);
  jpeg_destroy_compress(&codec);
  if (done) bytes.assign(encoded.begin(), encoded.end());
  return done ? kHostOk : kHostBadData;
}

}  // namespace hostkit
