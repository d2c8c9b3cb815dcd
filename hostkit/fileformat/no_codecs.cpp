// A build without codec libraries: images neither decode nor encode.
#include "hostkit/fileformat/codec.h"

namespace hostkit {

std::span<const Codec* const> Codecs() { return {}; }

int32_t EncodeJpeg(const KernelBitmap&, uint32_t, uint32_t, int32_t, std::string&) {
  return kHostUnsupported;
}

int32_t LoadFacsimile(Bytes, const HostRawDataInfo&, KernelBitmap&) { return kHostUnsupported; }

}  // namespace hostkit
