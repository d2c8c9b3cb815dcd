// What JPEG 2000 codestreams of images say of themselves (ISO/IEC 15444-1, annex A).
#pragma once

#include "core/format/bytes.h"
#include "core/format/part.h"

namespace core {

/// What is wrong with a codestream at a byte of its image's data.
struct CodestreamFault {
  uint64_t at = 0;
  std::string words;  ///< empty for nothing
};

struct Codestream {
  bool begins = false, ends = false;
  bool isWrapped = false;  ///< a JP2 file stands around it
  uint64_t width = 0, height = 0, tileWidth = 0, tileHeight = 0,
           components = 0;  ///< on the reference grid
  uint64_t tilesAcross = 0, tilesDown = 0;
  bool beginsElsewhere = false;                    ///< its tiles do not begin at the image's corner
  uint64_t least = 0, most = 0;                    ///< depth of the components
  bool hasStyle = false, hasQuantisation = false;  ///< COD and QCD in its main header
  bool isReversible = false;
  uint64_t layers = 0, levels = 0;
  uint32_t progression = 0;  ///< 0 LRCP, 1 RLCP, 2 RPCL, 3 PCRL, 4 CPRL
  bool hasLengths = false;   ///< PLT, PLM or TLM
  CodestreamFault parts;     ///< of its tile parts, walked from the first to the end
  uint64_t tilesMissing = 0;

  uint64_t Tiles() const { return tilesAcross * tilesDown; }
};

/// Whether an image says that its data is one.
bool HasCodestream(const SurveyedPart& part);
/// Walks its main header and the heads of its tile parts; of an image without one nothing.
Codestream ReadCodestream(const FileBytes& file, const SurveyedPart& part);

}  // namespace core
