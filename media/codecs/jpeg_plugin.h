// What the plugin of 12-bit and lossless JPEG gives: its library takes longer to set up than most
// commands take.
#pragma once

#include "media/codecs/jpeg.h"

namespace media {

struct WideJpegPlugin {
  decltype(&DecodeWideJpeg) decode;
  decltype(&EncodeWideJpeg) encode;
};

/// The plugin's only export. It is of the version of the folder that it lies in.
constexpr char kWideJpegExport[] = "media_wide_jpeg";
extern "C" __attribute__((visibility("default"))) const WideJpegPlugin* media_wide_jpeg();

}  // namespace media
