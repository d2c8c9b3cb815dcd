// Painting into device contexts of Windows, in strips of converted rows.
#include <algorithm>
#include <vector>

#include "hostkit/display/placement.h"
#include "hostkit/kernel/pixels_rows.h"

namespace {

constexpr int64_t kStripBytes = 1 << 20;

BITMAPINFO StripForm(int64_t width, int64_t rows) {
  BITMAPINFO form = {};
  form.bmiHeader.biSize = sizeof form.bmiHeader;
  form.bmiHeader.biWidth = static_cast<LONG>(width);
  form.bmiHeader.biHeight = static_cast<LONG>(-rows);  // top row first
  form.bmiHeader.biPlanes = 1;
  form.bmiHeader.biBitCount = 24;
  return form;
}

// A strip of 24-bit rows in a memory device context, for painting with one colour left out.
class TransparentStrip {
 public:
  TransparentStrip(HDC dc, int64_t width, int64_t rows) : dc_(CreateCompatibleDC(dc)) {
    const BITMAPINFO form = StripForm(width, rows);
    section_ = CreateDIBSection(dc_, &form, DIB_RGB_COLORS, &bits_, nullptr, 0);
    before_ = section_ != nullptr ? SelectObject(dc_, section_) : nullptr;
  }
  ~TransparentStrip() {
    if (before_ != nullptr) SelectObject(dc_, before_);
    if (section_ != nullptr) DeleteObject(section_);
    if (dc_ != nullptr) DeleteDC(dc_);
  }
  TransparentStrip(const TransparentStrip&) = delete;
  TransparentStrip& operator=(const TransparentStrip&) = delete;
  uint8_t* Bits() const { return static_cast<uint8_t*>(bits_); }
  bool Paint(HDC to, int left, int top, int width, int rows, COLORREF transparent) const {
    GdiFlush();
    return GdiTransparentBlt(to, left, top, width, rows, dc_, 0, 0, width, rows, transparent);
  }

 private:
  HDC dc_;
  void* bits_ = nullptr;
  HBITMAP section_ = nullptr;
  HGDIOBJ before_ = nullptr;
};

}  // namespace

int32_t hostkit::PaintBitmap(HDC dc, const KernelBitmap& bitmap, const RECT* source,
                             const RECT& destination, const RECT* clip, const COLORREF* transparent) {
  RECT bounds = {};
  if (GetClipBox(dc, &bounds) == ERROR) return kHostInvalid;
  const Placement place = PlaceBitmap(bounds, bitmap, source, destination, clip);
  if (place.width <= 0 || place.height <= 0) return kHostOk;
  RowReader reader(bitmap, static_cast<uint64_t>(place.width * place.height));
  const int64_t stride = (3 * place.width + 3) & ~int64_t{3};
  const int64_t stripRows = std::clamp<int64_t>(kStripBytes / stride, 1, place.height);
  const auto left = static_cast<int>(place.left), width = static_cast<int>(place.width);
  std::vector<uint8_t> rows(transparent == nullptr ? static_cast<size_t>(stride * stripRows) : 0);
  for (int64_t y = 0; y < place.height; y += stripRows) {
    const int64_t count = std::min(stripRows, place.height - y);
    const auto top = static_cast<int>(place.top + y), height = static_cast<int>(count);
    const auto convert = [&](uint8_t* bits) {
      for (int64_t row = 0; row < count; ++row) {
        reader.Read(PictureRow(bitmap, static_cast<uint32_t>(place.sourceY + y + row)),
                    static_cast<uint32_t>(place.sourceX), static_cast<uint32_t>(width),
                    bits + row * stride);
      }
    };
    if (transparent != nullptr) {
      const TransparentStrip strip(dc, width, count);
      if (strip.Bits() == nullptr) return kHostNoMemory;
      convert(strip.Bits());
      if (!strip.Paint(dc, left, top, width, height, *transparent)) return kHostInvalid;
    } else {
      convert(rows.data());
      const BITMAPINFO form = StripForm(width, count);
      if (SetDIBitsToDevice(dc, left, top, static_cast<DWORD>(width), static_cast<DWORD>(height), 0, 0, 0,
                            static_cast<UINT>(height), rows.data(), &form, DIB_RGB_COLORS) == 0) {
        return kHostInvalid;
      }
    }
  }
  return kHostOk;
}
