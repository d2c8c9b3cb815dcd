#include "core/pictures/sample_files.h"

#include <unistd.h>

#include <algorithm>
#include <bit>
#include <csetjmp>
#include <cstring>

#include <png.h>

#include "core/pictures/cloud_tiff.h"
#include "core/pictures/geo_tags.h"
#include "core/pictures/tiff_file.h"

namespace core {
namespace {

bool HasPalette(const SampleImage& image) {
  return !image.palette.empty() && image.bands == 1 && image.kind == SampleKind::Unsigned &&
         image.bits <= 16;
}

// Bits of a sample in a file.
uint32_t StoredBits(const SampleImage& image) { return image.bits == 1 ? 1 : 8 * image.sampleBytes; }

// A row as the file has it: bits packed, the rest as it stands.
void TakeRow(const SampleImage& image, uint32_t y, std::vector<uint8_t>& row) {
  const uint8_t* in = image.Pixel(0, y);
  const size_t samples = size_t{image.width} * image.bands;
  if (image.bits != 1) {
    row.assign(in, in + samples * image.sampleBytes);
    return;
  }
  row.assign((samples + 7) / 8, 0);
  for (size_t i = 0; i < samples; ++i) {
    if (in[i] != 0) row[i / 8] = static_cast<uint8_t>(row[i / 8] | 0x80 >> i % 8);
  }
}

uint16_t Photometric(const SampleImage& image) {
  if (HasPalette(image)) return PHOTOMETRIC_PALETTE;
  if (image.bands != 3) return PHOTOMETRIC_MINISBLACK;
  if (image.representation == "YCbCr601") return PHOTOMETRIC_YCBCR;
  return image.representation == "RGB" ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
}

uint16_t FormatOf(const SampleImage& image) {
  constexpr uint16_t kFormats[] = {SAMPLEFORMAT_UINT, SAMPLEFORMAT_INT, SAMPLEFORMAT_IEEEFP,
                                   SAMPLEFORMAT_COMPLEXIEEEFP};
  return kFormats[static_cast<size_t>(image.kind)];
}

// Entries that the tables do not have are black.
bool SetPalette(TIFF* tiff, const SampleImage& image) {
  const size_t entries = size_t{1} << StoredBits(image);
  std::vector<uint16_t> colours[3];
  for (size_t c = 0; c < 3; ++c) {
    colours[c].resize(entries);
    for (size_t i = 0; i < std::min(entries, image.palette.size() / 3); ++i)
      colours[c][i] = static_cast<uint16_t>(image.palette[3 * i + c] * 257);
  }
  return TIFFSetField(tiff, TIFFTAG_COLORMAP, colours[0].data(), colours[1].data(), colours[2].data()) ==
         1;
}

// What tells of the samples, whatever the picture's size.
bool SetSampleTags(TIFF* tiff, const SampleImage& image) {
  const uint16_t photometric = Photometric(image);
  bool good = TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, StoredBits(image)) &&
              TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, image.bands) &&
              TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, FormatOf(image)) &&
              TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric) &&
              TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  if (photometric == PHOTOMETRIC_YCBCR) good = good && TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 1, 1);
  if (photometric == PHOTOMETRIC_MINISBLACK && image.bands > 1) {
    const std::vector<uint16_t> extra(image.bands - 1, EXTRASAMPLE_UNSPECIFIED);
    good = good && TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(extra.size()), extra.data());
  }
  if (photometric == PHOTOMETRIC_PALETTE) good = good && SetPalette(tiff, image);
  if (image.kind == SampleKind::Unsigned && image.significantBits < StoredBits(image) &&
      image.sampleBytes == 2)
    good = good && TIFFSetField(tiff, TIFFTAG_MAXSAMPLEVALUE, (1u << image.significantBits) - 1);
  if (image.noData) {
    const std::string text = std::to_string(*image.noData);
    good =
        good && TIFFSetField(tiff, kNoDataTag, static_cast<uint32_t>(text.size() + 1), text.c_str()) == 1;
  }
  return good;
}

// What tells of the whole picture.
bool SetPictureTags(TIFF* tiff, const TiffOptions& options) {
  return (!options.reference || SetGeoTags(tiff, *options.reference)) &&
         (options.description.empty() ||
          TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, options.description.c_str()) == 1);
}

bool WriteCloud(std::FILE* file, const SampleImage& image, const TiffOptions& options) {
  CloudForm form;
  form.width = image.width, form.height = image.height;
  form.pixelBytes = image.PixelBytes();
  form.areBits = image.bits == 1 && image.bands == 1;
  const bool isNearest = form.areBits || HasPalette(image);
  form.halve = isNearest ? NearestPixels(form.pixelBytes)
                         : MeansOf(image.kind, image.sampleBytes, image.bands, image.noData);
  if (image.kind != SampleKind::Real && image.kind != SampleKind::Complex && image.bits != 1 &&
      image.sampleBytes <= 4)
    form.predictor = PREDICTOR_HORIZONTAL;
  form.setTags = [&](TIFF* tiff, bool isFull) {
    return SetSampleTags(tiff, image) && (!isFull || SetPictureTags(tiff, options));
  };
  try {
    CloudTiff cloud(std::move(form));
    for (uint32_t y = 0; y < image.height; ++y) cloud.PutRow(image.Pixel(0, y));
    return cloud.Write(file);
  } catch (const WriteError&) {
    return false;
  }
}

}  // namespace

std::string WhyNotAs(const std::string& form, const SampleImage& image) {
  if (form != "png")
    return image.bands > UINT16_MAX && form == "tif" ? "TIFF has at most 65535 bands" : "";
  if (image.kind != SampleKind::Unsigned || image.bits > 16) return "PNG has no samples of that kind";
  if (image.bands != 1 && image.bands != 3) return "PNG has one band or three";
  return image.bands == 3 && image.bits == 1 ? "PNG has no colours of single bits" : "";
}

bool WriteTiff(std::FILE* file, const SampleImage& image, const TiffOptions& options) {
  if (options.isCloud) return WriteCloud(file, image, options);
  constexpr uint64_t kMostClassic = uint64_t{4000} << 20;
  TIFF* tiff = OpenTiffFile(dup(fileno(file)), image.samples.size() > kMostClassic ? "w8" : "w");
  if (tiff == nullptr) return false;
  bool good = TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width) &&
              TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height) && SetSampleTags(tiff, image) &&
              TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0)) &&
              SetPictureTags(tiff, options);
  std::vector<uint8_t> row;
  for (uint32_t y = 0; good && y < image.height; ++y) {
    TakeRow(image, y, row);
    good = TIFFWriteScanline(tiff, row.data(), y, 0) == 1;
  }
  if (good) good = TIFFFlush(tiff) == 1;
  TIFFClose(tiff);
  return good;
}

// ---------------------------------------------------------------- PNG

namespace {

void Jump(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void Drop(png_structp, png_const_charp) {}

// Luminance and two colour differences of full range as red, green and blue of the same depth (ITU-R
// BT.601).
void ToRedGreenBlue(const SampleImage& image, uint16_t (&pixel)[3]) {
  const double most = static_cast<double>((uint64_t{1} << image.bits) - 1);
  const double middle = static_cast<double>(uint64_t{1} << (image.bits - 1));
  const double y = pixel[0], cb = pixel[1] - middle, cr = pixel[2] - middle;
  const double colours[] = {y + 1.402 * cr, y - 0.344136 * cb - 0.714136 * cr, y + 1.772 * cb};
  for (size_t c = 0; c < 3; ++c)
    pixel[c] = static_cast<uint16_t>(std::clamp(colours[c] + 0.5, 0.0, most));
}

bool HasColourDifferences(const SampleImage& image) {
  return image.bands == 3 && image.representation == "YCbCr601" && image.bits > 1;
}

void ShowColours(const SampleImage& image, std::vector<uint8_t>& row) {
  for (size_t at = 0; at < row.size(); at += 3 * size_t{image.sampleBytes}) {
    uint16_t pixel[3] = {};
    for (size_t c = 0; c < 3; ++c)
      std::memcpy(&pixel[c], &row[at + c * image.sampleBytes], image.sampleBytes);
    ToRedGreenBlue(image, pixel);
    for (size_t c = 0; c < 3; ++c)
      std::memcpy(&row[at + c * image.sampleBytes], &pixel[c], image.sampleBytes);
  }
}

// What is set up before the first row; the arrays live as long as the writing.
struct PngParts {
  int colourType = PNG_COLOR_TYPE_GRAY;
  png_color palette[256] = {};
  int entries = 0;
  png_color_16 noData = {};
  uint8_t alpha[256] = {};
  int alphas = 0;
  bool hasNoData = false;
};

PngParts Describe(const SampleImage& image) {
  PngParts parts;
  if (image.bands == 3) parts.colourType = PNG_COLOR_TYPE_RGB;
  const auto value = static_cast<uint16_t>(image.noData.value_or(0));
  parts.hasNoData = image.noData.has_value();
  uint16_t colours[3] = {value, value, value};
  if (HasColourDifferences(image)) ToRedGreenBlue(image, colours);
  parts.noData.gray = value;
  parts.noData.red = colours[0];
  parts.noData.green = colours[1];
  parts.noData.blue = colours[2];
  if (!HasPalette(image) || image.bits > 8) return parts;
  parts.colourType = PNG_COLOR_TYPE_PALETTE;
  // Every value that a sample can have has an entry.
  parts.entries = 1 << StoredBits(image);
  for (size_t i = 0; i < std::min<size_t>(static_cast<size_t>(parts.entries), image.palette.size() / 3);
       ++i)
    parts.palette[i] = {image.palette[3 * i], image.palette[3 * i + 1], image.palette[3 * i + 2]};
  std::fill(std::begin(parts.alpha), std::end(parts.alpha), uint8_t{255});
  if (value < 256) parts.alpha[value] = 0;
  parts.alphas = std::min(value + 1, parts.entries);
  return parts;
}

// libpng's errors jump back here; nothing with a destructor lives in between.
bool Encode(png_structp png, png_infop info, std::FILE* file, const SampleImage& image, PngParts& parts,
            std::vector<uint8_t>& row) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  const bool isPalette = parts.colourType == PNG_COLOR_TYPE_PALETTE;
  png_init_io(png, file);
  png_set_IHDR(png, info, image.width, image.height, static_cast<int>(StoredBits(image)),
               parts.colourType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  if (isPalette) png_set_PLTE(png, info, parts.palette, parts.entries);
  if (parts.hasNoData)
    png_set_tRNS(png, info, isPalette ? parts.alpha : nullptr, isPalette ? parts.alphas : 0,
                 isPalette ? nullptr : &parts.noData);
  png_write_info(png, info);
  if (image.sampleBytes == 2 && std::endian::native == std::endian::little) png_set_swap(png);
  for (uint32_t y = 0; y < image.height; ++y) {
    TakeRow(image, y, row);
    if (HasColourDifferences(image)) ShowColours(image, row);
    png_write_row(png, row.data());
  }
  png_write_end(png, info);
  return true;
}

}  // namespace

bool WritePng(std::FILE* file, const SampleImage& image) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, Jump, Drop);
  png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
  PngParts parts = Describe(image);
  std::vector<uint8_t> row;
  const bool good = info != nullptr && Encode(png, info, file, image, parts, row);
  png_destroy_write_struct(&png, &info);
  return good;
}

bool WriteRaw(std::FILE* file, const SampleImage& image) {
  const size_t rowBytes = image.width * image.PixelBytes();
  std::vector<uint8_t> row(rowBytes);
  for (uint32_t y = 0; y < image.height; ++y) {
    std::memcpy(row.data(), image.Pixel(0, y), rowBytes);
    if (std::endian::native == std::endian::little) {
      const size_t step = image.kind == SampleKind::Complex ? image.sampleBytes / 2 : image.sampleBytes;
      for (size_t at = 0; at < rowBytes; at += step)
        std::reverse(row.begin() + static_cast<ptrdiff_t>(at),
                     row.begin() + static_cast<ptrdiff_t>(at + step));
    }
    if (std::fwrite(row.data(), 1, rowBytes, file) != rowBytes) return false;
  }
  return true;
}

bool WriteNpy(std::FILE* file, const SampleImage& image) {
  constexpr size_t kFront = 10, kUnit = 64;
  constexpr const char kKinds[] = {'u', 'i', 'f', 'c'};
  const char order = image.sampleBytes == 1                       ? '|'
                     : std::endian::native == std::endian::little ? '<'
                                                                  : '>';
  std::string header = std::string("{'descr': '") + order + kKinds[static_cast<size_t>(image.kind)] +
                       std::to_string(image.sampleBytes) + "', 'fortran_order': False, 'shape': (" +
                       std::to_string(image.bands) + ", " + std::to_string(image.height) + ", " +
                       std::to_string(image.width) + "), }";
  header.append(kUnit - 1 - (kFront + header.size()) % kUnit, ' ');
  header += '\n';
  const std::string front = {'\x93',
                             'N',
                             'U',
                             'M',
                             'P',
                             'Y',
                             1,
                             0,
                             static_cast<char>(header.size() & 0xFF),
                             static_cast<char>(header.size() >> 8)};
  header.insert(0, front);
  if (std::fwrite(header.data(), 1, header.size(), file) != header.size()) return false;
  std::vector<uint8_t> row(size_t{image.width} * image.sampleBytes);
  for (uint32_t band = 0; band < image.bands; ++band) {
    for (uint32_t y = 0; y < image.height; ++y) {
      const uint8_t* from = image.Pixel(0, y) + size_t{band} * image.sampleBytes;
      for (uint32_t x = 0; x < image.width; ++x, from += image.PixelBytes())
        std::memcpy(&row[size_t{x} * image.sampleBytes], from, image.sampleBytes);
      if (std::fwrite(row.data(), 1, row.size(), file) != row.size()) return false;
    }
  }
  return true;
}

}  // namespace core
