// The markers of JPEG streams (ISO/IEC 10918-1), without decoding.
#pragma once

#include <cstdint>
#include <vector>

#include "core/format/bytes.h"
#include "core/format/part.h"

namespace core {

struct JpegStream {
  uint64_t fill = 0;    ///< bytes FF in front of its marker
  bool begins = false;  ///< with SOI, fill bytes in front of it allowed
  bool ends = false;    ///< with EOI
  bool hasFrame = false, hasScan = false;
  uint8_t frame = 0;  ///< second byte of the frame's marker, 0xC0 to 0xCF
  uint32_t precision = 0, width = 0, height = 0, components = 0;
  uint32_t maxAcross = 1, maxDown = 1;  ///< greatest sampling factors
  uint32_t interval = 0;                ///< restart interval in MCUs, 0 for none
  uint32_t scans = 0, restarts = 0;     ///< restart markers in all scans
  bool restartsInOrder = true;          ///< they count from RST0 to RST7 and again
  bool hasApplication = false;          ///< an APP6 segment "NITF"
  const char* missing = nullptr;        ///< a table that a scan uses and nothing defines
  uint64_t size = 0;                    ///< bytes up to the stream's end

  bool IsLossless() const { return frame == 0xC3 || frame == 0xC7 || frame == 0xCB; }
  bool IsProgressive() const { return frame == 0xC2 || frame == 0xC6 || frame == 0xCA; }
  /// MCUs of a scan of all components.
  uint64_t Units() const;
};
/// A stream of an image.
struct FoundJpeg {
  uint64_t number;  ///< of its block, of IMODE S among those of all bands
  uint64_t offset;  ///< in the image's data
  JpegStream stream;
};
/// The streams of an image's data, walked segment by segment with the codes between them: where its mask
/// table says, or one behind the other.
std::vector<FoundJpeg> FindJpegStreams(const FileBytes& file, const SurveyedPart& part);

}  // namespace core
