// The picture that the module draws.
#include <cerrno>

#include "core/pictures/box_scaler.h"
#include "host/kernel.h"
#include "media/shuffle.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/commands/render.h"
#include "tools/orbntf/inspect/drawing.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/inspect/segment_picture.h"

namespace tool {
namespace {

// Receives rows of blue, green, red from the top of a canvas and writes those that are asked for.
class RowSink {
 public:
  RowSink(const RenderOptions& options, uint32_t width, uint32_t height, std::FILE* file)
      : part_(options.region ? *options.region : Region{0, 0, height, width}),
        scaler_(part_.width, part_.height, options.factor),
        writer_(StartPicture(options.form, file, scaler_.Width(), scaler_.Height())),
        rgb_(3 * size_t{scaler_.Width()}),
        height_(height),
        showsProgress_(options.progress) {}

  static int32_t ORB_CALL Take(void*, KernelBitmap*, uint8_t* row, uint32_t, int32_t number, int32_t,
                               void* userData) {
    return static_cast<RowSink*>(userData)->Put(row, static_cast<uint32_t>(number));
  }
  int32_t Put(const uint8_t* row, uint32_t number) {
    if (showsProgress_) ShowProgress(number, height_);
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

uint32_t LoadFlags(const RenderOptions& options) {
  return (options.fixedCanvas ? kLoadFixedCanvas : 0) | (options.liftDark ? kLoadLiftDarkImages : 0);
}

// The region must lie on the canvas: there is nothing to show elsewhere.
bool IsOnCanvas(const RenderOptions& options, uint32_t width, uint32_t height) {
  if (!options.region) return true;
  const Region& part = *options.region;
  return part.row < height && part.height <= height - part.row && part.column < width &&
         part.width <= width - part.column;
}

int32_t DrawComposite(const RenderOptions& options, const std::string& file, Output& output) {
  HostFileInfo info = {};
  if (const int32_t status = AskFilterSize(file, LoadFlags(options), info); status != ORB_SUCCESS)
    return status;
  if (!IsOnCanvas(options, info.width, info.height)) return ORB_INVALID_PARAMETER;
  WorkAccount::AllowPixels(uint64_t{info.width} * info.height);
  std::FILE* stream = output.Stream();
  if (stream == nullptr) return ORB_SHORT_WRITE;
  RowSink sink(options, info.width, info.height, stream);
  const int32_t status = LoadThroughFilter(file, LoadFlags(options), &RowSink::Take, &sink);
  return status == ORB_SUCCESS ? sink.Finish() : status;
}

// Gives a bitmap's rows to the output, the top one first.
int32_t PutBitmap(const RenderOptions& options, const KernelBitmap& bitmap, Output& output) {
  if (!IsOnCanvas(options, bitmap.width, bitmap.height)) return ORB_INVALID_PARAMETER;
  std::FILE* stream = output.Stream();
  if (stream == nullptr) return ORB_SHORT_WRITE;
  RowSink sink(options, bitmap.width, bitmap.height, stream);
  const auto* rows = reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(bitmap.pixels));
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    if (const int32_t put = sink.Put(rows + size_t{y} * bitmap.bytesPerLine, y); put != ORB_SUCCESS)
      return put;
  }
  return sink.Finish();
}

int32_t DrawImage(const RenderOptions& options, const std::string& file, Output& output) {
  Document document;
  if (const int32_t status = document.Open(file); status != ORB_SUCCESS) return status;
  document.get()->liftDarkImages = options.liftDark;
  OwnedBitmap canvas;
  if (const ImageSubheader* image = document.get()->images.At(options.image); image != nullptr)
    WorkAccount::AllowPixels(image->FullWidth().Value() * image->FullHeight().Value());
  const int32_t status = DrawImageAlone(*document.get(), options.image, canvas);
  return status == ORB_SUCCESS ? PutBitmap(options, canvas.record, output) : status;
}

}  // namespace

int RenderByModule(const RenderOptions& options, const std::string& file, Output& output) {
  errno = 0;
  const WorkAccount account(file);
  const auto draw = options.segment.empty() ? &DrawComposite : &DrawImage;
  const int32_t status = draw(options, file, output);
  if (status == ORB_SHORT_WRITE && errno != 0) output.NoteFailure();
  if (status == ORB_SHORT_WRITE || (status == ORB_SUCCESS && !output.Commit()))
    return Report("render", options.output.empty() ? file : options.output, ORB_SHORT_WRITE,
                  output.Problem());
  if (status == ORB_INVALID_PARAMETER && options.region)
    return Report("render", file, status, "--region is not on the picture");
  return ReportFile("render", file, status);
}

}  // namespace tool
