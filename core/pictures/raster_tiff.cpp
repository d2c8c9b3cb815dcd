// TIFF files strip by strip or tile by tile.
#include <cstring>

#include "core/format/file_source.h"
#include "core/pictures/geo_tags.h"
#include "core/pictures/raster.h"
#include "media/codecs/tiff_source.h"

namespace core {
namespace {

// The fields that say how samples are stored.
struct TiffForm {
  uint32_t width = 0, height = 0;
  uint16_t bits = 1, samples = 1, photometric = PHOTOMETRIC_MINISBLACK, planar = PLANARCONFIG_CONTIG,
           format = SAMPLEFORMAT_UINT, compression = COMPRESSION_NONE;
  bool isTiled = false, isShown = false;  // shown: as libtiff shows it, in colours of 8 bits
};

TiffForm FormOf(TIFF* tiff) {
  TiffForm form;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &form.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &form.height);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &form.bits);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &form.samples);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &form.planar);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &form.format);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &form.compression);
  TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &form.photometric);
  if (form.format == SAMPLEFORMAT_VOID) form.format = SAMPLEFORMAT_UINT;
  form.isTiled = TIFFIsTiled(tiff) != 0;
  return form;
}

SampleKind KindOf(const TiffForm& form) {
  const std::string bits = "TIFF samples of " + std::to_string(form.bits) + " bits";
  switch (form.format) {
    case SAMPLEFORMAT_UINT:
    case SAMPLEFORMAT_INT:
      if (form.bits < 1 || form.bits > 32)
        throw PictureError(bits + " are not taken: whole numbers have 1 to 32");
      return form.format == SAMPLEFORMAT_INT ? SampleKind::Signed : SampleKind::Unsigned;
    case SAMPLEFORMAT_IEEEFP:
      if (form.bits != 32 && form.bits != 64)
        throw PictureError(bits + " are not taken: reals have 32 or 64");
      return SampleKind::Real;
    case SAMPLEFORMAT_COMPLEXIEEEFP:
      if (form.bits != 64)
        throw PictureError(bits + " are not taken: complex numbers have two reals of 32");
      return SampleKind::Complex;
    default:
      throw PictureError(
          "TIFF: complex numbers of whole numbers are not taken: two reals of 32 bits are");
  }
}

class TiffRaster : public Raster {
 public:
  TiffRaster(const FileBytes& file, std::optional<uint32_t> page)
      : bytes_(file, 0, file.Size()), source_{"", bytes_.Get()}, tiff_(Open(source_)) {
    Require(tiff_ != nullptr);
    SetPage(page);
    tiffForm_ = FormOf(tiff_.get());
    TakeColours();
    if (!tiffForm_.isShown) TakeForm();
    form_.reference = GetGeoTags(tiff_.get());
    RequireSize(form_);
  }

  void Read(const TakePiece& take) override {
    if (tiffForm_.isShown) return ReadShown(take);
    const uint32_t planes = tiffForm_.planar == PLANARCONFIG_SEPARATE ? form_.bands : 1;
    for (uint32_t plane = 0; plane < planes; ++plane) {
      if (tiffForm_.isTiled) {
        ReadTiles(plane, planes, take);
      } else {
        ReadStrips(plane, planes, take);
      }
    }
  }

 private:
  static media::TiffPtr Open(media::TiffSource& source) {
    DeclareGeoTags();
    return media::OpenTiff(source);
  }
  void Require(bool isGood, const std::string& words = "TIFF: it is damaged") const {
    bytes_.Check();
    if (!isGood) throw PictureError(words);
  }

  // Pages, but for smaller ones of others.
  void SetPage(std::optional<uint32_t> page) {
    std::vector<tdir_t> pages;
    constexpr size_t kMost = 10000;
    do {
      uint32_t type = 0;
      TIFFGetFieldDefaulted(tiff_.get(), TIFFTAG_SUBFILETYPE, &type);
      if ((type & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) == 0)
        pages.push_back(TIFFCurrentDirectory(tiff_.get()));
    } while (pages.size() < kMost && TIFFReadDirectory(tiff_.get()) == 1);
    bytes_.Check();
    if (!page && pages.size() > 1)
      throw PictureError("TIFF: it has " + std::to_string(pages.size()) +
                         " pages; --page N takes one, from 0");
    const size_t number = page.value_or(0);
    if (number >= std::max<size_t>(1, pages.size()))
      throw PictureError("TIFF: it has no page " + std::to_string(number));
    Require(TIFFSetDirectory(tiff_.get(), pages.empty() ? tdir_t{0} : pages[number]) == 1);
  }

  void TakeColours() {
    TiffForm& form = tiffForm_;
    const bool isYcc = form.photometric == PHOTOMETRIC_YCBCR;
    if (isYcc && form.compression == COMPRESSION_JPEG) {
      TIFFSetField(tiff_.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
      form.photometric = PHOTOMETRIC_RGB;
    }
    const bool isPlain = form.photometric == PHOTOMETRIC_MINISBLACK ||
                         form.photometric == PHOTOMETRIC_MINISWHITE ||
                         form.photometric == PHOTOMETRIC_RGB || form.photometric == PHOTOMETRIC_PALETTE;
    if (isPlain) return;
    char words[1024] = "";
    if (TIFFRGBAImageOK(tiff_.get(), words) != 1)
      throw PictureError("TIFF: its colours are neither grey nor red, green and blue");
    form.isShown = true;
    form_.width = form.width;
    form_.height = form.height;
    form_.bands = 3;
    form_.isColour = true;
  }

  void TakeForm() {
    form_.width = tiffForm_.width;
    form_.height = tiffForm_.height;
    form_.bands = tiffForm_.samples;
    form_.kind = KindOf(tiffForm_);
    form_.bits = tiffForm_.bits;
    form_.sampleBytes = PieceBytes(form_.bits);
    form_.isColour = tiffForm_.photometric == PHOTOMETRIC_RGB && form_.bands >= 3;
    uint16_t extras = 0;
    uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(tiff_.get(), TIFFTAG_EXTRASAMPLES, &extras, &kinds);
    form_.hasAlpha = extras >= 1 && kinds != nullptr && form_.bands > 1 &&
                     kinds[extras - 1] != EXTRASAMPLE_UNSPECIFIED;
    if (form_.hasAlpha && kinds[extras - 1] == EXTRASAMPLE_ASSOCALPHA)
      throw PictureError("TIFF: its colours are multiplied by their alpha already");
    char* text = nullptr;
    uint32_t count = 0;
    if (TIFFGetField(tiff_.get(), kNoDataTag, &count, &text) == 1 && text != nullptr)
      form_.noData = std::string(text, strnlen(text, count));
    if (tiffForm_.photometric == PHOTOMETRIC_PALETTE) TakePalette();
  }

  void TakePalette() {
    uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
    Require(form_.bits <= 8 && TIFFGetField(tiff_.get(), TIFFTAG_COLORMAP, &red, &green, &blue) == 1,
            "TIFF: palettes of more than 256 colours are not taken");
    for (uint32_t i = 0; i < 1u << form_.bits; ++i) {
      for (const uint16_t* part : {red, green, blue})
        form_.palette.push_back(static_cast<uint8_t>(part[i] >> 8));
    }
  }

  // Samples of any depth from bits that follow one another to the bytes of pieces.
  void Unpack(const uint8_t* row, size_t count, uint8_t* out) const {
    const uint32_t bits = form_.bits;
    if (bits == 8 || bits == 16 || bits == 32 || bits == 64) {
      std::memcpy(out, row, count * bits / 8);
      if (form_.kind == SampleKind::Complex && TIFFIsByteSwapped(tiff_.get()) != 0) {
        // They were turned as one number of 64 bits.
        for (size_t i = 0; i < count; ++i)
          std::swap_ranges(out + 8 * i, out + 8 * i + 4, out + 8 * i + 4);
      }
    } else {
      const std::string_view bytes(reinterpret_cast<const char*>(row), (count * bits + 7) / 8);
      for (size_t i = 0; i < count; ++i) {
        uint64_t value = BitsAt(bytes, uint64_t{bits} * i, bits);
        if (form_.kind == SampleKind::Signed && (value >> (bits - 1) & 1) != 0)
          value |= ~uint64_t{0} << bits;
        std::memcpy(out + i * form_.sampleBytes, &value, form_.sampleBytes);
      }
    }
    if (tiffForm_.photometric == PHOTOMETRIC_MINISWHITE && form_.kind == SampleKind::Unsigned)
      Invert(out, count);
  }
  void Invert(uint8_t* out, size_t count) const {
    const uint64_t most = form_.bits == 64 ? ~uint64_t{0} : (uint64_t{1} << form_.bits) - 1;
    for (size_t i = 0; i < count; ++i, out += form_.sampleBytes) {
      uint64_t value = 0;
      std::memcpy(&value, out, form_.sampleBytes);
      value = most - value;
      std::memcpy(out, &value, form_.sampleBytes);
    }
  }

  void ReadStrips(uint32_t plane, uint32_t planes, const TakePiece& take) {
    const uint32_t bands = planes > 1 ? 1 : form_.bands;
    const size_t count = size_t{form_.width} * bands;
    std::vector<uint8_t> row(static_cast<size_t>(TIFFScanlineSize(tiff_.get()))),
        samples(count * form_.sampleBytes);
    Require(row.size() >= (count * form_.bits + 7) / 8);
    for (uint32_t y = 0; y < form_.height; ++y) {
      Require(TIFFReadScanline(tiff_.get(), row.data(), y, static_cast<uint16_t>(plane)) == 1);
      Unpack(row.data(), count, samples.data());
      take({0, y, form_.width, 1, plane, bands, samples.data()});
    }
  }

  void ReadTiles(uint32_t plane, uint32_t planes, const TakePiece& take) {
    constexpr uint64_t kMostBytes = 256 << 20;
    uint32_t width = 0, height = 0;
    TIFFGetField(tiff_.get(), TIFFTAG_TILEWIDTH, &width);
    TIFFGetField(tiff_.get(), TIFFTAG_TILELENGTH, &height);
    const uint32_t bands = planes > 1 ? 1 : form_.bands;
    const auto bytes = static_cast<uint64_t>(std::max<tmsize_t>(0, TIFFTileSize(tiff_.get())));
    Require(width != 0 && height != 0 && bytes != 0);
    Require(bytes <= kMostBytes && uint64_t{width} * height * bands * form_.sampleBytes <= kMostBytes,
            "TIFF: its tiles are too large to be held");
    const size_t rowBytes = static_cast<size_t>(TIFFTileRowSize(tiff_.get()));
    Require(rowBytes >= (size_t{width} * bands * form_.bits + 7) / 8 && rowBytes * height <= bytes);
    std::vector<uint8_t> tile(static_cast<size_t>(bytes)), samples;
    for (uint32_t top = 0; top < form_.height; top += std::min(height, form_.height - top)) {
      for (uint32_t left = 0; left < form_.width; left += std::min(width, form_.width - left)) {
        Require(TIFFReadTile(tiff_.get(), tile.data(), left, top, 0, static_cast<uint16_t>(plane)) >= 0);
        const uint32_t columns = std::min(width, form_.width - left),
                       rows = std::min(height, form_.height - top);
        const size_t count = size_t{columns} * bands;
        samples.resize(count * rows * form_.sampleBytes);
        for (uint32_t y = 0; y < rows; ++y)
          Unpack(&tile[y * rowBytes], count, &samples[y * count * form_.sampleBytes]);
        take({left, top, columns, rows, plane, bands, samples.data()});
      }
    }
  }

  // Rows of a strip or of a row of tiles at a time.
  void ReadShown(const TakePiece& take) {
    uint32_t width = form_.width, height = form_.height;
    if (tiffForm_.isTiled) {
      TIFFGetField(tiff_.get(), TIFFTAG_TILEWIDTH, &width);
      TIFFGetField(tiff_.get(), TIFFTAG_TILELENGTH, &height);
    } else {
      TIFFGetFieldDefaulted(tiff_.get(), TIFFTAG_ROWSPERSTRIP, &height);
      height = std::min(height, form_.height);
    }
    constexpr uint64_t kMostPixels = 64 << 20;
    Require(width != 0 && height != 0);
    Require(uint64_t{width} * height <= kMostPixels,
            "TIFF: its strips or tiles are too large to be held");
    std::vector<uint32_t> pixels(size_t{width} * height);
    std::vector<uint8_t> samples;
    for (uint32_t top = 0; top < form_.height; top += std::min(height, form_.height - top)) {
      for (uint32_t left = 0; left < form_.width; left += std::min(width, form_.width - left)) {
        Require((tiffForm_.isTiled ? TIFFReadRGBATile(tiff_.get(), left, top, pixels.data())
                                   : TIFFReadRGBAStrip(tiff_.get(), top, pixels.data())) == 1);
        const uint32_t columns = std::min(width, form_.width - left),
                       rows = std::min(height, form_.height - top);
        samples.resize(size_t{columns} * rows * 3);
        uint8_t* out = samples.data();
        // Rows come from the bottom; of a last strip only those that there are.
        const uint32_t last = (tiffForm_.isTiled ? height : rows) - 1;
        for (uint32_t y = 0; y < rows; ++y) {
          const uint32_t* row = &pixels[size_t{last - y} * width];
          for (uint32_t x = 0; x < columns; ++x) {
            *out++ = static_cast<uint8_t>(TIFFGetR(row[x]));
            *out++ = static_cast<uint8_t>(TIFFGetG(row[x]));
            *out++ = static_cast<uint8_t>(TIFFGetB(row[x]));
          }
        }
        take({left, top, columns, rows, 0, 3, samples.data()});
      }
    }
  }

  FileSource bytes_;
  media::TiffSource source_;
  media::TiffPtr tiff_;
  TiffForm tiffForm_;
};

}  // namespace

std::unique_ptr<Raster> OpenTiff(const FileBytes& file, std::optional<uint32_t> page) {
  using namespace std::string_view_literals;
  const std::string mark = file.At(0, 4);
  if (mark != "II*\0"sv && mark != "MM\0*"sv && mark != "II+\0"sv && mark != "MM\0+"sv) return nullptr;
  return std::make_unique<TiffRaster>(file, page);
}

}  // namespace core
