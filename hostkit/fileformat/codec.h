// What the codecs offer to the stand-in file-format library.
#pragma once

#include <span>

#include "host/fileformat.h"
#include "hostkit/kernel/internal.h"

namespace hostkit {

using Bytes = std::span<const uint8_t>;

/// A codec: whether bytes are its own and what they hold, and their decoding into a fresh bitmap, of as
/// much as its record asks for. Both may throw std::bad_alloc.
struct Codec {
  bool (*describe)(Bytes bytes, HostFileInfo& info);
  int32_t (*load)(Bytes bytes, const HostLoadOptions& options, KernelBitmap& bitmap);
};
extern const Codec kJpegCodec;
extern const Codec kJpeg2000Codec;
/// The codecs of this build, in the order in which they are asked.
std::span<const Codec* const> Codecs();
/// Status of an image that none of them knows.
int32_t UnknownImage();

/// Encodes a bitmap as JPEG.
int32_t EncodeJpeg(const KernelBitmap& bitmap, uint32_t format, uint32_t bitsPerPixel,
                   int32_t qualityFactor, std::string& bytes);

/// Decodes raw facsimile data as a load-information callback described it.
int32_t LoadFacsimile(Bytes bytes, const HostRawDataInfo& info, KernelBitmap& bitmap);

/// The frame header of a JPEG stream.
struct JpegFrame {
  uint8_t marker;  ///< SOF0 (0xC0) to SOF15
  uint8_t precision;
  uint32_t width, height, components;
  bool declaresColour;  ///< JFIF or Adobe segment
  size_t end;           ///< where the segment behind the frame header begins
  bool IsLossless() const { return marker == 0xC3 || marker == 0xC7 || marker == 0xCB; }
  bool IsProgressive() const { return marker == 0xC2 || marker == 0xC6 || marker == 0xCA; }
};
bool FindJpegFrame(Bytes bytes, JpegFrame& frame);

/// Samples of a decoded image, components interleaved, in host byte order.
struct DecodedSamples {
  uint32_t width, height, components, precision;
  std::span<const uint8_t> bytes;  ///< one byte a sample up to 8 bits, else two
};
/// Makes a bitmap for samples, of as much as its record asks for: one component as 8- or 16-bit grey,
/// more as 24-bit colour.
int32_t AllocateForSamples(const DecodedSamples& samples, KernelBitmap& bitmap);
/// Puts samples into such a bitmap: grey, or the first three or the three selected. The samples of pixels
/// of their own size may stand in the bitmap's rows.
void PutSamples(const DecodedSamples& samples, const HostLoadOptions& options, bool isYcc,
                KernelBitmap& bitmap);
/// How much of a side is decoded: what its bitmap's record asks for, 0 for all of it.
constexpr uint32_t Wanted(uint32_t side, uint32_t asked) {
  return asked == 0 || asked > side ? side : asked;
}
/// The component shown as blue (0), green (1) or red (2) of `count`.
uint32_t ShownComponent(const HostLoadOptions& options, uint32_t colour, uint32_t count);
/// YCbCr to blue, green, red, full range.
void YccToBgr(uint8_t* bgr);

#if defined(HOSTKIT_WIDE_JPEG)
/// 12-bit and lossless JPEG, and streams of more than four components.
int32_t LoadWideJpeg(Bytes bytes, const JpegFrame& frame, const HostLoadOptions& options,
                     KernelBitmap& bitmap);
#endif

}  // namespace hostkit
