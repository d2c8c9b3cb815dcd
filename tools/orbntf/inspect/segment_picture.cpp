#include "tools/orbntf/inspect/segment_picture.h"

#include "orbntf/orbntf.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

Status Draw(NitfFile& document, uint32_t index, OwnedBitmap& canvas) {
  const ImageSubheader& image = *document.images.At(index);
  const CheckedSize width = image.FullWidth(), height = image.FullHeight();
  if (!width.Within(kMaxSide) || !height.Within(kMaxSide)) return Status::OutOfMemory;
  if (Status s = canvas.Allocate(static_cast<uint32_t>(width.Value()),
                                 static_cast<uint32_t>(height.Value()), 24, kOrderBgr, kViewTopLeft);
      !Ok(s)) {
    return s;
  }
  if (Status s = FromHost(KernelFillBitmap(&canvas.record, document.background)); !Ok(s)) return s;
  const BitmapDc dc(canvas.record);
  if (dc.get() == nullptr) return Status::OutOfMemory;
  ImagePainter painter(nullptr, dc.get(), document);
  if (Status s = painter.Draw(index, -image.ILOC.Row(), -image.ILOC.Column()); !Ok(s)) return s;
  return painter.Finish();
}

}  // namespace

int32_t DrawImageAlone(NitfFile& document, uint32_t index, OwnedBitmap& canvas) {
  const HostWork work;
  return index < document.ImageCount() ? ToCaller(Draw(document, index, canvas)) : ORB_NO_SUCH_RECORD;
}

}  // namespace tool
