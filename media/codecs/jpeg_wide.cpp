// 12-bit and lossless JPEG, and more than four components, through DCMTK's decoders, which carry one
// build of the codec per precision.
#include <memory>
#include <vector>

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmjpeg/djcparam.h>
#include <dcmtk/dcmjpeg/djdijg12.h>
#include <dcmtk/dcmjpeg/djdijg16.h>
#include <dcmtk/dcmjpeg/djdijg8.h>
#include <dcmtk/dcmjpeg/djeijg12.h>
#include <dcmtk/oflog/oflog.h>

#include "media/codecs/jpeg_plugin.h"

namespace media {
namespace {

constexpr uint64_t kMaxKeptBytes = 96 << 20;

// Whether the first scan leaves components to later ones. The decoder then keeps all samples.
bool HasSeveralScans(Bytes bytes, const JpegFrame& frame) {
  for (auto at = static_cast<size_t>(frame.end); at + 5 <= bytes.size() && bytes[at] == 0xFF;) {
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

Outcome Decode(Bytes bytes, const JpegFrame& frame, const TakeRow& take) {
  if (frame.precision < 2 || frame.precision > 16 || frame.components > 10) return Outcome::Unsupported;
  SilenceOnce();
  const DJCodecParameter parameters(ECC_lossyYCbCr, EDC_never, EUC_default, EPC_default);
  const std::unique_ptr<DJDecoder> decoder = MakeDecoder(frame.precision, parameters);
  const RowForm form = {frame.width, frame.height, frame.components, frame.precision};
  const uint64_t rowBytes = uint64_t{frame.width} * frame.components * form.SampleBytes();
  const uint64_t size = rowBytes * frame.height;
  if (size > INT32_MAX) return Outcome::NoMemory;
  if ((frame.IsProgressive() || HasSeveralScans(bytes, frame)) && size > kMaxKeptBytes)
    return Outcome::OverBudget;
  std::vector<uint8_t> samples(static_cast<size_t>(size));
  if (decoder->init().bad()) return Outcome::BadData;
  const OFCondition result =
      decoder->decode(const_cast<Uint8*>(bytes.data()), static_cast<Uint32>(bytes.size()), samples.data(),
                      static_cast<Uint32>(size), OFFalse);
  if (result.bad()) return Outcome::BadData;
  for (uint32_t y = 0; y < frame.height; ++y) {
    const Outcome taken = take(form, y, &samples[static_cast<size_t>(rowBytes) * y]);
    if (taken != Outcome::Ok) return taken;
  }
  return Outcome::Ok;
}

Outcome Encode(const JpegPlan& plan, const uint16_t* samples, std::string& bytes) {
  SilenceOnce();
  const DJCodecParameter parameters(ECC_lossyYCbCr, EDC_never, EUC_default, EPC_default);
  DJCompressIJG12Bit encoder(parameters, EJM_sequential, static_cast<Uint8>(plan.quality));
  Uint8* made = nullptr;
  Uint32 length = 0;
  const OFCondition result =
      encoder.encode(static_cast<Uint16>(plan.width), static_cast<Uint16>(plan.height), EPI_Monochrome2,
                     1, const_cast<Uint16*>(samples), made, length);
  const std::unique_ptr<Uint8[]> owned(made);
  if (result.bad() || made == nullptr) return Outcome::BadData;
  bytes.assign(made, made + length);
  // It is filled up to an even length.
  while (bytes.size() > 2 && bytes.compare(bytes.size() - 2, 2, "\xFF\xD9") != 0) bytes.pop_back();
  return Outcome::Ok;
}

}  // namespace

extern "C" const WideJpegPlugin* media_wide_jpeg() {
  static const WideJpegPlugin plugin = {&Decode, &Encode};
  return &plugin;
}

}  // namespace media
