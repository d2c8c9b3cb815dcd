// 12-bit and lossless JPEG, and more than four components, through DCMTK's decoders, which carry one
// build of the codec per precision.
#include <memory>
#include <vector>

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmjpeg/djcparam.h>
#include <dcmtk/dcmjpeg/djdijg12.h>
#include <dcmtk/dcmjpeg/djdijg16.h>
#include <dcmtk/dcmjpeg/djdijg8.h>
#include <dcmtk/oflog/oflog.h>

#include "hostkit/fileformat/codec.h"

namespace hostkit {
namespace {

constexpr uint64_t kMaxKeptBytes = 96 << 20;

// Whether the first scan leaves components to later ones. The decoder then keeps all samples.
bool HasSeveralScans(Bytes bytes, const JpegFrame& frame) {
  for (size_t at = frame.end; at + 5 <= bytes.size() && bytes[at] == 0xFF;) {
    if (bytes[at + 1] == 0xDA) return bytes[at + 4] < frame.components;
    at += 2 + size_t{bytes[at + 2]} * 256 + bytes[at + 3];
  }
  return false;
}

void SilenceOnce() {
  static const bool silenced = [] {
    OFLog::configure(OFLogger::OFF_LOG_LEVEL);
    return true;
  }();
  (void)silenced;
}

std::unique_ptr<DJDecoder> MakeDecoder(uint32_t precision, const DJCodecParameter& parameters) {
  if (precision <= 8) return std::make_unique<DJDecompressIJG8Bit>(parameters, OFFalse);
  if (precision <= 12) return std::make_unique<DJDecompressIJG12Bit>(parameters, OFFalse);
  return std::make_unique<DJDecompressIJG16Bit>(parameters, OFFalse);
}

}  // namespace

int32_t LoadWideJpeg(Bytes bytes, const JpegFrame& frame, const HostLoadOptions& options,
                     KernelBitmap& bitmap) {
  if (frame.precision < 2 || frame.precision > 16 || frame.components > 10) return kHostUnsupported;
  SilenceOnce();
  const DJCodecParameter parameters(ECC_lossyYCbCr, EDC_never, EUC_default, EPC_default);
  const std::unique_ptr<DJDecoder> decoder = MakeDecoder(frame.precision, parameters);
  const uint64_t sampleBytes = frame.precision <= 8 ? 1 : 2;
  const uint64_t size = uint64_t{frame.width} * frame.height * frame.components * sampleBytes;
  if (size > INT32_MAX) return kHostNoMemory;
  if ((frame.IsProgressive() || HasSeveralScans(bytes, frame)) && size > kMaxKeptBytes)
    return kHostOverBudget;
  DecodedSamples samples = {frame.width, frame.height, frame.components, frame.precision, {}};
  if (const int32_t status = AllocateForSamples(samples, bitmap); status != kHostOk) return status;
  // Samples that take as much as their pixels are decoded where they are shown.
  const bool direct = (frame.components == 1 || (frame.components == 3 && sampleBytes == 1)) &&
                      bitmap.height == frame.height &&
                      bitmap.bytesPerLine == frame.width * frame.components * sampleBytes;
  std::vector<uint8_t> aside(direct ? 0 : static_cast<size_t>(size));
  uint8_t* decoded = direct ? Pixels(bitmap) : aside.data();
  samples.bytes = {decoded, static_cast<size_t>(size)};
  if (decoder->init().bad()) return kHostBadData;
  const OFCondition result =
      decoder->decode(const_cast<Uint8*>(bytes.data()), static_cast<Uint32>(bytes.size()), decoded,
                      static_cast<Uint32>(size), OFFalse);
  if (result.bad()) return kHostBadData;
  const bool isYcc = frame.components == 3 && !frame.IsLossless() &&
                     (options.flags & (kLoadComponentsAreRgb | kLoadSelectedBands)) == 0;
  PutSamples(samples, options, isYcc, bitmap);
  return kHostOk;
}

}  // namespace hostkit
