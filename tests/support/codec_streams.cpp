#include "tests/support/codec_streams.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include <jpeglib.h>
#include <openjpeg.h>
#include <tiffio.h>

namespace test {
namespace {

// A name that is free for a file, which goes with it.
class ScratchName {
 public:
  ScratchName() {
    const char* folder = std::getenv("TMPDIR");
    name_ = std::string(folder != nullptr ? folder : P_tmpdir) + "/orbntf-stream-XXXXXX";
    const int descriptor = mkstemp(name_.data());
    if (descriptor < 0) std::abort();
    close(descriptor);
  }
  ~ScratchName() { std::remove(name_.c_str()); }
  ScratchName(const ScratchName&) = delete;
  ScratchName& operator=(const ScratchName&) = delete;
  const std::string& Name() const { return name_; }
  std::string Contents() const {
    std::ifstream file(name_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::string name_;
};

// The scans of a stream that has not the usual ones. One takes at most four components.
std::vector<jpeg_scan_info> ScansOf(const JpegForm& form) {
  std::vector<jpeg_scan_info> scans;
  int more = form.scans;
  if (more > 0) scans.push_back({1, {0}, 0, 0, 0, 1});
  for (int k = 1; k < 64 && more > 0; ++k) {
    for (int bit = 2; bit >= 0 && more > 0; --bit, --more)
      scans.push_back({1, {0}, k, k, bit == 2 ? 0 : bit + 1, bit});
  }
  for (int c = 0; form.components > 4 && c < form.components; ++c) scans.push_back({1, {c}, 0, 63, 0, 0});
  return scans;
}

void Describe(jpeg_compress_struct& codec, const JpegForm& form) {
  codec.image_width = static_cast<JDIMENSION>(form.width);
  codec.image_height = static_cast<JDIMENSION>(form.height);
  codec.input_components = form.components;
  codec.in_color_space = form.components == 1                  ? JCS_GRAYSCALE
                         : form.colours == JpegForm::AsTheyAre ? JCS_UNKNOWN
                                                               : JCS_RGB;
  jpeg_set_defaults(&codec);
  if (form.colours == JpegForm::Rgb && form.components != 1) jpeg_set_colorspace(&codec, JCS_RGB);
  if (form.colours != JpegForm::Converted) {
    codec.write_JFIF_header = FALSE;
    codec.write_Adobe_marker = FALSE;
  }
  jpeg_set_quality(&codec, form.quality, TRUE);
}

}  // namespace

std::string MakeJpeg(const JpegForm& form, const SampleAt& sample) {
  jpeg_compress_struct codec{};
  jpeg_error_mgr errors;
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  unsigned char* out = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&codec, &out, &size);
  Describe(codec, form);
  const std::vector<jpeg_scan_info> scans = ScansOf(form);
  if (!scans.empty()) {
    codec.scan_info = scans.data();
    codec.num_scans = static_cast<int>(scans.size());
  }
  codec.restart_interval = form.restart;
  if (form.progressive) jpeg_simple_progression(&codec);
  jpeg_start_compress(&codec, TRUE);
  std::vector<unsigned char> row(static_cast<size_t>(form.width) * static_cast<size_t>(form.components));
  JSAMPROW line = row.data();
  for (int y = 0; y < form.height; ++y) {
    unsigned char* to = line;
    for (int x = 0; x < form.width; ++x) {
      for (int c = 0; c < form.components; ++c) *to++ = static_cast<unsigned char>(sample(x, y, c));
    }
    jpeg_write_scanlines(&codec, &line, 1);
  }
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
  std::string bytes(reinterpret_cast<char*>(out), size);
  std::free(out);
  return bytes;
}

namespace {

opj_image_t* MakeImage(int width, int height, int count, const Jpeg2000Form& form,
                       const SampleAt& sample) {
  std::vector<opj_image_cmptparm_t> components(static_cast<size_t>(count));
  const auto step = [&](int c) { return c == 0 ? 1 : form.chromaStep; };
  for (int c = 0; c < count; ++c) {
    opj_image_cmptparm_t& component = components[static_cast<size_t>(c)];
    component = {};
    component.dx = component.dy = static_cast<OPJ_UINT32>(step(c));
    component.w = static_cast<OPJ_UINT32>(width / step(c));
    component.h = static_cast<OPJ_UINT32>(height / step(c));
    component.prec = static_cast<OPJ_UINT32>(form.precision);
  }
  opj_image_t* image = opj_image_create(static_cast<OPJ_UINT32>(count), components.data(),
                                        count < 3       ? OPJ_CLRSPC_GRAY
                                        : form.declared ? OPJ_CLRSPC_SRGB
                                                        : OPJ_CLRSPC_UNSPECIFIED);
  image->x1 = static_cast<OPJ_UINT32>(width);
  image->y1 = static_cast<OPJ_UINT32>(height);
  for (int c = 0; c < count; ++c) {
    OPJ_INT32* to = image->comps[c].data;
    for (int y = 0; y < height / step(c); ++y) {
      for (int x = 0; x < width / step(c); ++x) *to++ = sample(x * step(c), y * step(c), c);
    }
  }
  return image;
}

}  // namespace

std::string MakeJpeg2000(int width, int height, int count, const Jpeg2000Form& form,
                         const SampleAt& sample) {
  opj_cparameters_t parameters;
  opj_set_default_encoder_parameters(&parameters);
  parameters.irreversible = 0;
  while (parameters.numresolution > 1 && std::min(width, height) >> (parameters.numresolution - 1) == 0)
    --parameters.numresolution;
  if (form.tile != 0) {
    parameters.tile_size_on = OPJ_TRUE;
    parameters.cp_tdx = parameters.cp_tdy = form.tile;
  }
  opj_image_t* image = MakeImage(width, height, count, form, sample);
  const ScratchName file;
  opj_codec_t* codec = opj_create_compress(form.jp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K);
  opj_setup_encoder(codec, &parameters, image);
  opj_codec_set_threads(codec, 2);
  opj_stream_t* stream = opj_stream_create_default_file_stream(file.Name().c_str(), OPJ_FALSE);
  const bool made = opj_start_compress(codec, image, stream) && opj_encode(codec, stream) &&
                    opj_end_compress(codec, stream);
  opj_stream_destroy(stream);
  opj_destroy_codec(codec);
  opj_image_destroy(image);
  if (!made) std::abort();
  return file.Contents();
}

std::string MakeFacsimile(int width, int height, bool twoDimensional, const SampleAt& sample,
                          const std::string& path) {
  const ScratchName scratch;
  const std::string name = path.empty() ? scratch.Name() : path;
  TIFF* tiff = TIFFOpen(name.c_str(), "w");
  if (tiff == nullptr) std::abort();
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX3);
  TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, twoDimensional ? GROUP3OPT_2DENCODING : 0);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, height);
  std::vector<uint8_t> row(static_cast<size_t>((width + 7) / 8));
  for (int y = 0; y < height; ++y) {
    std::fill(row.begin(), row.end(), uint8_t{0});
    for (int x = 0; x < width; ++x) {
      if (sample(x, y, 0) != 0) row[static_cast<size_t>(x / 8)] |= static_cast<uint8_t>(0x80 >> x % 8);
    }
    TIFFWriteScanline(tiff, row.data(), static_cast<uint32_t>(y), 0);
  }
  TIFFClose(tiff);
  tiff = TIFFOpen(name.c_str(), "r");
  if (tiff == nullptr) std::abort();
  std::string bytes(static_cast<size_t>(TIFFRawStripSize(tiff, 0)), '\0');
  TIFFReadRawStrip(tiff, 0, bytes.data(), static_cast<tmsize_t>(bytes.size()));
  TIFFClose(tiff);
  return bytes;
}

}  // namespace test
