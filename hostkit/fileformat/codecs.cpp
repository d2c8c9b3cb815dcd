// The codecs of a build with all libraries.
#include "hostkit/fileformat/codec.h"

std::span<const hostkit::Codec* const> hostkit::Codecs() {
  static constexpr const Codec* kAll[] = {&kJpegCodec, &kJpeg2000Codec};
  return kAll;
}

int32_t hostkit::UnknownImage() { return kHostNotRecognised; }
