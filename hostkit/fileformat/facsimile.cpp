// Raw facsimile data through libtiff: a TIFF file is made around it in memory.
#include <algorithm>
#include <memory>
#include <vector>

#include <tiffio.h>

#include "hostkit/fileformat/codec.h"

namespace hostkit {
namespace {

// A one-strip TIFF: 8 header bytes, the directory, then the facsimile data.
class TiffWrapper {
 public:
  TiffWrapper(Bytes data, const HostRawDataInfo& info) {
    const bool twoDimensional = info.format == kFormatFacsimile2D;
    const struct {
      uint16_t tag, type;
      uint32_t value;
    } entries[] = {
        {TIFFTAG_IMAGEWIDTH, TIFF_LONG, info.width},
        {TIFFTAG_IMAGELENGTH, TIFF_LONG, info.height},
        {TIFFTAG_BITSPERSAMPLE, TIFF_SHORT, 1},
        {TIFFTAG_COMPRESSION, TIFF_SHORT, COMPRESSION_CCITTFAX3},
        {TIFFTAG_PHOTOMETRIC, TIFF_SHORT, PHOTOMETRIC_MINISWHITE},
        {TIFFTAG_FILLORDER, TIFF_SHORT, FILLORDER_MSB2LSB},
        {TIFFTAG_STRIPOFFSETS, TIFF_LONG, kHeaderBytes + 2 + 11 * 12 + 4},
        {TIFFTAG_SAMPLESPERPIXEL, TIFF_SHORT, 1},
        {TIFFTAG_ROWSPERSTRIP, TIFF_LONG, info.height},
        {TIFFTAG_STRIPBYTECOUNTS, TIFF_LONG, static_cast<uint32_t>(data.size())},
        {TIFFTAG_GROUP3OPTIONS, TIFF_LONG, twoDimensional ? uint32_t{GROUP3OPT_2DENCODING} : 0},
    };
    static_assert(std::size(entries) == 11);
    Put16(0x4949);
    Put16(42);
    Put32(kHeaderBytes);
    Put16(std::size(entries));
    for (const auto& entry : entries) {
      Put16(entry.tag);
      Put16(entry.type);
      Put32(1);
      Put32(entry.value);
    }
    Put32(0);
    bytes_.insert(bytes_.end(), data.begin(), data.end());
  }

  static tmsize_t Read(thandle_t self, void* to, tmsize_t count) {
    auto& wrapper = *static_cast<TiffWrapper*>(self);
    const size_t left = wrapper.bytes_.size() - std::min(wrapper.position_, wrapper.bytes_.size());
    const size_t moved = std::min<size_t>(static_cast<size_t>(std::max<tmsize_t>(count, 0)), left);
    if (moved != 0) std::memcpy(to, wrapper.bytes_.data() + wrapper.position_, moved);
    wrapper.position_ += moved;
    return static_cast<tmsize_t>(moved);
  }
  static tmsize_t Write(thandle_t, void*, tmsize_t) { return 0; }
  static toff_t Seek(thandle_t self, toff_t offset, int whence) {
    auto& wrapper = *static_cast<TiffWrapper*>(self);
    const size_t base = whence == SEEK_SET   ? 0
                        : whence == SEEK_CUR ? wrapper.position_
                                             : wrapper.bytes_.size();
    wrapper.position_ = base + static_cast<size_t>(offset);
    return wrapper.position_;
  }
  static int Close(thandle_t) { return 0; }
  static toff_t Size(thandle_t self) { return static_cast<TiffWrapper*>(self)->bytes_.size(); }

 private:
  static constexpr uint32_t kHeaderBytes = 8;

  void Put16(uint32_t value) {
    bytes_.push_back(static_cast<uint8_t>(value));
    bytes_.push_back(static_cast<uint8_t>(value >> 8));
  }
  void Put32(uint32_t value) {
    Put16(value & 0xFFFF);
    Put16(value >> 16);
  }

  std::vector<uint8_t> bytes_;
  size_t position_ = 0;
};

int DropMessage(TIFF*, void*, const char*, const char*, va_list) { return 1; }

using TiffPtr = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

TiffPtr Open(TiffWrapper& wrapper) {
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                 &TIFFOpenOptionsFree);
  if (options == nullptr) return {nullptr, &TIFFClose};
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), DropMessage, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), DropMessage, nullptr);
  return {TIFFClientOpenExt("facsimile", "rm", &wrapper, TiffWrapper::Read, TiffWrapper::Write,
                            TiffWrapper::Seek, TiffWrapper::Close, TiffWrapper::Size, nullptr, nullptr,
                            options.get()),
          &TIFFClose};
}

}  // namespace

// Rows behind the first that does not decode stay white; data without a single row is an error.
int32_t LoadFacsimile(Bytes bytes, const HostRawDataInfo& info, KernelBitmap& bitmap) {
  if (info.format != kFormatFacsimile1D && info.format != kFormatFacsimile2D) return kHostUnsupported;
  constexpr uint32_t kMaxWidth = 1 << 20;  // the decoder keeps tables of a row's runs
  if (info.bitsPerPixel != 1 || info.width > kMaxWidth || bytes.size() > INT32_MAX)
    return kHostUnsupported;
  const int32_t status = KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, info.width, info.height, 1,
                                              kOrderRgb, nullptr, kViewTopLeft, nullptr, 0);
  if (status != kHostOk) return status;
  TiffWrapper wrapper(bytes, info);
  const TiffPtr tiff = Open(wrapper);
  if (tiff == nullptr) return kHostBadData;
  std::vector<uint8_t> row(static_cast<size_t>(TIFFScanlineSize(tiff.get())));
  std::memset(Pixels(bitmap), 0xFF, static_cast<size_t>(bitmap.byteCount));
  const size_t rowBytes = std::min<size_t>(row.size(), bitmap.bytesPerLine);
  for (uint32_t y = 0; y < info.height; ++y) {
    if (TIFFReadScanline(tiff.get(), row.data(), y, 0) != 1) return y != 0 ? kHostOk : kHostBadData;
    uint8_t* out = Row(bitmap, y);
    for (size_t i = 0; i < rowBytes; ++i) out[i] = static_cast<uint8_t>(~row[i]);
  }
  return kHostOk;
}

}  // namespace hostkit
