// 12-bit and lossless JPEG through DCMTK's decoders, where the build has them.
#include "tools/orbntf/extract/decoders.h"

#if defined(ORBNTF_HAS_WIDE_JPEG)
#include <memory>

#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmjpeg/djcparam.h>
#include <dcmtk/dcmjpeg/djdijg12.h>
#include <dcmtk/dcmjpeg/djdijg16.h>
#include <dcmtk/dcmjpeg/djdijg8.h>
#include <dcmtk/oflog/oflog.h>

#include "tools/orbntf/check/jpeg_stream.h"
#endif

namespace tool {

#if defined(ORBNTF_HAS_WIDE_JPEG)
bool DecodeWideJpeg(std::string_view bytes, uint32_t precision, DecodedStream& stream) {
  const JpegStream facts = WalkJpeg(bytes);
  if (precision < 2 || precision > 16 || facts.components > 10) return false;
  OFLog::configure(OFLogger::OFF_LOG_LEVEL);
  const DJCodecParameter parameters(ECC_lossyYCbCr, EDC_never, EUC_default, EPC_default);
  std::unique_ptr<DJDecoder> decoder;
  if (precision <= 8)
    decoder = std::make_unique<DJDecompressIJG8Bit>(parameters, OFFalse);
  else if (precision <= 12)
    decoder = std::make_unique<DJDecompressIJG12Bit>(parameters, OFFalse);
  else
    decoder = std::make_unique<DJDecompressIJG16Bit>(parameters, OFFalse);
  stream.width = facts.width;
  stream.height = facts.height;
  stream.components = facts.components;
  stream.sampleBytes = precision <= 8 ? 1 : 2;
  const uint64_t size = uint64_t{facts.width} * facts.height * facts.components * stream.sampleBytes;
  if (size == 0 || size > INT32_MAX) return false;
  stream.bytes.resize(static_cast<size_t>(size));
  std::string copy(bytes);
  return decoder->init().good() &&
         decoder
             ->decode(reinterpret_cast<Uint8*>(copy.data()), static_cast<Uint32>(copy.size()),
                      stream.bytes.data(), static_cast<Uint32>(size), OFFalse)
             .good();
}
#else
bool DecodeWideJpeg(std::string_view, uint32_t, DecodedStream&) { return false; }
#endif

}  // namespace tool
