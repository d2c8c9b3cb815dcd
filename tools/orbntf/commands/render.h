// What render was asked for.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/pictures/picture.h"
#include "core/view/view.h"
#include "tools/orbntf/commands/batch.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/output/output.h"

namespace tool {

/// A part of a picture, in its pixels.
struct Region {
  uint32_t row = 0, column = 0, height = 0, width = 0;
};

struct RenderOptions {
  BatchOptions batch;
  std::string output, folder, scale = "1/1", format, segment, regionText, stretchText;
  bool module = false, fixedCanvas = false, liftDark = false, standard = false, partial = false;
  PictureForm form = PictureForm::Png;
  uint32_t factor = 1, image = 0, size = 0;
  bool fast = false, stretchEach = false, cloud = false, world = false;
  std::vector<uint32_t> bands;
  Stretch stretch;
  std::optional<Region> region;
  bool progress = false;
  std::shared_ptr<Inputs> inputs;  ///< all of them
};

/// Tells how far a picture is, on a terminal.
void ShowProgress(uint32_t row, uint32_t rows);

/// Draws a file into an output by the core. Returns the exit code.
int RenderView(const RenderOptions& options, const std::string& file, Output& output);
/// The same as the module does, through the filter's exports or, of one image, through its document.
int RenderByModule(const RenderOptions& options, const std::string& file, Output& output);

}  // namespace tool
