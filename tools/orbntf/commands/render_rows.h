// What render was asked for, and the rows that it writes.
#pragma once

#include <cstdio>
#include <memory>
#include <optional>

#include "core/pictures/box_scaler.h"
#include "core/pictures/picture.h"
#include "host/kernel.h"
#include "media/shuffle.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/commands/batch.h"

namespace tool {

// A part of a canvas, in its pixels.
struct Region {
  uint32_t row = 0, column = 0, height = 0, width = 0;
};

struct RenderOptions {
  BatchOptions batch;
  std::string output, folder, scale = "1/1", format, segment, regionText;
  bool fixedCanvas = false, liftDark = false, standard = false;
  PictureForm form = PictureForm::Png;
  uint32_t factor = 1, image = 0;
  std::optional<Region> region;
  bool progress = false;
};

// Receives rows of blue, green, red from the top of a canvas and writes those that are asked for.
class RowSink {
 public:
  RowSink(const RenderOptions& options, uint32_t width, uint32_t height, std::FILE* file)
      : part_(options.region ? *options.region : Region{0, 0, height, width}),
        scaler_(part_.width, part_.height, options.factor),
        writer_(PictureWriter::Start(options.form, file, scaler_.Width(), scaler_.Height())),
        rgb_(3 * size_t{scaler_.Width()}),
        height_(height),
        showsProgress_(options.progress) {}

  static int32_t ORB_CALL Take(void*, KernelBitmap*, uint8_t* row, uint32_t, int32_t number, int32_t,
                               void* userData) {
    return static_cast<RowSink*>(userData)->Put(row, static_cast<uint32_t>(number));
  }
  int32_t Put(const uint8_t* row, uint32_t number) {
    if (showsProgress_ && (number % 256 == 0 || number + 1 == height_))
      std::fprintf(stderr, "\rrow %u of %u%s", number + 1, height_, number + 1 == height_ ? "\n" : "");
    if (number < part_.row || number - part_.row >= part_.height) return ORB_SUCCESS;
    const uint8_t* bgr = scaler_.Take(row + 3 * size_t{part_.column});
    if (bgr == nullptr) return ORB_SUCCESS;
    media::SwapEnds(bgr, scaler_.Width(), rgb_.data());
    return writer_->PutRow(rgb_.data()) ? ORB_SUCCESS : ORB_SHORT_WRITE;
  }
  int32_t Finish() { return writer_->Finish() ? ORB_SUCCESS : ORB_SHORT_WRITE; }

 private:
  Region part_;
  BoxScaler scaler_;
  std::unique_ptr<PictureWriter> writer_;
  std::vector<uint8_t> rgb_;
  uint32_t height_;
  bool showsProgress_;
};

}  // namespace tool
