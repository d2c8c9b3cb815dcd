#include "tools/orbntf/output/beside.h"

#include <sys/stat.h>

#include "core/place/world_file.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/output/output.h"
#include "tools/orbntf/tool.h"

namespace tool {

std::string WhyNoWorld(const std::optional<core::Georeference>& reference) {
  if (!reference) return "--world: nothing tells where all of it lies";
  if (!reference->affine)
    return "--world: its place is no affine map within half a pixel; a .tif tells it by control points";
  if (core::SystemText(*reference).empty()) return "--world: PROJ does not find its database, proj-data";
  return "";
}

std::string WhyNotBeside(const Inputs& inputs, const std::string& picture) {
  struct stat status;
  if (stat(picture.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
    return "--world: the output is no file that another one could stand beside";
  for (const std::string& name : {core::WorldName(picture), core::SystemName(picture)}) {
    if (name == picture || IsSameFile(name, picture))
      return "--world: " + name + " would be the picture itself; give it another ending";
    if (inputs.Hold(name)) return "--world: " + name + " is an input; give the output another name";
  }
  return "";
}

int WriteBeside(const char* command, const std::string& picture, const core::Georeference& reference) {
  for (const auto& [name, text] : {std::pair{core::WorldName(picture), core::WorldText(reference)},
                                   {core::SystemName(picture), core::SystemText(reference)}}) {
    Output output(name, Output::Way::InOrder);
    std::FILE* stream = output.Problem().empty() ? output.Stream() : nullptr;
    const bool isWritten =
        stream != nullptr && std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    if (!isWritten && stream != nullptr) output.NoteFailure();
    if (!isWritten || !output.Commit()) return Report(command, name, ORB_SHORT_WRITE, output.Problem());
  }
  return kExitOk;
}

}  // namespace tool
