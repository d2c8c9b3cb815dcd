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
  const uint64_t size =
      uint64_t{frame.width} * frame.height * frame.components * (frame.precision <= 8 ? 1 : 2);
  if (size > INT32_MAX) return kHostNoMemory;
  std::vector<uint8_t> decoded(static_cast<size_t>(size));
  if (decoder->init().bad()) return kHostBadData;
  const OFCondition result =
      decoder->decode(const_cast<Uint8*>(bytes.data()), static_cast<Uint32>(bytes.size()), decoded.data(),
                      static_cast<Uint32>(decoded.size()), OFFalse);
  if (result.bad()) return kHostBadData;
  const bool isYcc = frame.components == 3 && !frame.IsLossless() &&
                     (options.flags & (kLoadComponentsAreRgb | kLoadSelectedBands)) == 0;
  return SamplesToBitmap({frame.width, frame.height, frame.components, frame.precision, decoded}, options,
                         isYcc, bitmap);
}

}  // namespace hostkit
