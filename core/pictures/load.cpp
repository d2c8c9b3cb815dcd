#include "core/pictures/load.h"

#include "media/drawing/metafile.h"

namespace core {

media::Outcome LoadDrawing(const std::string& bytes, media::Drawing& drawing) {
  drawing.bytes = bytes.size();
  return media::DecodeCgm(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), drawing);
}

}  // namespace core
