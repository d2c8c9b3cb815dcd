// What the codecs offer to the stand-in file-format library.
#pragma once

#include <span>

#include "host/fileformat.h"
#include "hostkit/kernel/internal.h"
#include "media/codecs/stream.h"

namespace hostkit {

using media::Bytes;

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

/// Makes a bitmap for rows of samples: one component as 8- or 16-bit grey, more as 24-bit colour.
int32_t AllocateForSamples(const media::RowForm& form, KernelBitmap& bitmap);
/// Puts a row of samples into such a bitmap: grey, or the first three or the three selected.
void PutSamples(const media::RowForm& form, const uint8_t* samples, const HostLoadOptions& options,
                bool isYcc, KernelBitmap& bitmap, uint32_t y);
/// How much of a side is decoded: what its bitmap's record asks for, 0 for all of it.
constexpr uint32_t Wanted(uint32_t side, uint32_t asked) {
  return asked == 0 || asked > side ? side : asked;
}
/// The component shown as blue (0), green (1) or red (2) of `count`.
uint32_t ShownComponent(const HostLoadOptions& options, uint32_t colour, uint32_t count);
/// YCbCr to blue, green, red, full range.
void YccToBgr(uint8_t* bgr);

}  // namespace hostkit
