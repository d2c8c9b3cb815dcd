// A build without the library of 12-bit and lossless JPEG.
#include "media/codecs/jpeg.h"

namespace media {

bool HasWideJpeg() { return false; }

Outcome DecodeWideJpeg(Bytes, const JpegFrame&, const TakeRow&) { return Outcome::Unsupported; }

Outcome EncodeWideJpeg(const JpegPlan&, const uint16_t*, std::string&) { return Outcome::Unsupported; }

}  // namespace media
