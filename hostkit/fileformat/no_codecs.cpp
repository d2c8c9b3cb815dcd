// A build without codec libraries: images are recognised by their first bytes, but neither decode nor
// encode.
#include <algorithm>

#include "hostkit/fileformat/codec.h"

namespace hostkit {
namespace {

constexpr uint8_t kJpegStart[] = {0xFF, 0xD8, 0xFF};

bool IsJpeg(Bytes bytes, HostFileInfo&) {
  return bytes.size() >= std::size(kJpegStart) &&
         std::equal(std::begin(kJpegStart), std::end(kJpegStart), bytes.begin());
}

int32_t Refuse(Bytes, const HostLoadOptions&, KernelBitmap&) { return kHostUnsupported; }

constexpr Codec kJpegWithoutLibrary = {&IsJpeg, &Refuse};

}  // namespace

std::span<const Codec* const> Codecs() {
  static constexpr const Codec* kAll[] = {&kJpegWithoutLibrary};
  return kAll;
}

int32_t UnknownImage() { return kHostUnsupported; }

int32_t EncodeJpeg(const KernelBitmap&, uint32_t, uint32_t, int32_t, std::string&) {
  return kHostUnsupported;
}

int32_t LoadFacsimile(Bytes, const HostRawDataInfo&, KernelBitmap&) { return kHostUnsupported; }

}  // namespace hostkit
