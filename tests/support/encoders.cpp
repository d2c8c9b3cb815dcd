#include "tests/support/encoders.h"

#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>
#include <openjpeg.h>
#include <tiffio.h>

#include "tests/support/support.h"

namespace test {

int Sample(int x, int y, int band) {
  const int wave = (x * (band + 1) + 2 * y) % 160 + 40;
  return (x / 8 + y / 8) % 2 != 0 ? wave : 220 - wave / 2;
}

std::string Samples(int left, int top, int width, int height, const std::vector<int>& bands) {
  std::string bytes;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int band : bands) bytes += static_cast<char>(Sample(left + x, top + y, band));
    }
  }
  return bytes;
}

ImageForm BlockForm(const std::string& compression, int across, int down, int bands,
                    const std::string& representation, const std::string& mode) {
  return {.width = kSide,
          .height = kSide,
          .blocksAcross = across,
          .blocksDown = down,
          .bands = bands,
          .compression = compression,
          .representation = representation,
          .mode = mode};
}

std::string EncodeJpeg(const std::string& samples, int width, int height, int components, bool rgb,
                       bool progressive) {
  jpeg_compress_struct codec{};
  jpeg_error_mgr errors;
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  unsigned char* out = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&codec, &out, &size);
  codec.image_width = static_cast<JDIMENSION>(width);
  codec.image_height = static_cast<JDIMENSION>(height);
  codec.input_components = components;
  codec.in_color_space = components == 1 ? JCS_GRAYSCALE : rgb ? JCS_RGB : JCS_UNKNOWN;
  jpeg_set_defaults(&codec);
  if (rgb) jpeg_set_colorspace(&codec, JCS_RGB);
  codec.write_JFIF_header = FALSE;
  codec.write_Adobe_marker = FALSE;
  jpeg_set_quality(&codec, 97, TRUE);
  std::vector<jpeg_scan_info> scans;  // a scan takes at most four components
  for (int c = 0; components > 4 && c < components; ++c) scans.push_back({1, {c}, 0, 63, 0, 0});
  if (!scans.empty()) {
    codec.scan_info = scans.data();
    codec.num_scans = static_cast<int>(scans.size());
  }
  if (progressive) jpeg_simple_progression(&codec);
  jpeg_start_compress(&codec, TRUE);
  while (codec.next_scanline < codec.image_height) {
    auto* row = reinterpret_cast<unsigned char*>(const_cast<char*>(
        samples.data() + size_t{codec.next_scanline} * static_cast<size_t>(width * components)));
    jpeg_write_scanlines(&codec, &row, 1);
  }
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
  std::string bytes(reinterpret_cast<char*>(out), size);
  std::free(out);
  return bytes;
}

std::string BlockStream(int block, int across, const std::vector<int>& bands, bool rgb) {
  const int left = block % across * kSide, top = block / across * kSide;
  return EncodeJpeg(Samples(left, top, kSide, kSide, bands), kSide, kSide, static_cast<int>(bands.size()),
                    rgb);
}

std::string EncodeJpeg2000(int width, int height, const std::vector<int>& bands,
                           const Jpeg2000Form& form) {
  opj_cparameters_t parameters;
  opj_set_default_encoder_parameters(&parameters);
  parameters.irreversible = 0;
  std::vector<opj_image_cmptparm_t> components(bands.size());
  const auto step = [&](size_t c) { return c == 0 ? 1 : form.chromaStep; };
  for (size_t c = 0; c < bands.size(); ++c) {
    opj_image_cmptparm_t& component = components[c];
    component = {};
    component.dx = component.dy = static_cast<OPJ_UINT32>(step(c));
    component.w = static_cast<OPJ_UINT32>(width / step(c));
    component.h = static_cast<OPJ_UINT32>(height / step(c));
    component.prec = static_cast<OPJ_UINT32>(form.precision);
  }
  opj_image_t* image = opj_image_create(static_cast<OPJ_UINT32>(bands.size()), components.data(),
                                        form.declared ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_UNSPECIFIED);
  image->x1 = static_cast<OPJ_UINT32>(width);
  image->y1 = static_cast<OPJ_UINT32>(height);
  for (size_t c = 0; c < bands.size(); ++c) {
    const int across = width / step(c);
    for (int i = 0; i < across * (height / step(c)); ++i) {
      image->comps[c].data[i] = Sample(i % across * step(c), i / across * step(c), bands[c])
                                << (form.precision - 8);
    }
  }
  const TempFile file("", ".j2k");
  opj_codec_t* codec = opj_create_compress(form.jp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K);
  opj_setup_encoder(codec, &parameters, image);
  opj_stream_t* stream = opj_stream_create_default_file_stream(file.Path().c_str(), OPJ_FALSE);
  EXPECT_TRUE(opj_start_compress(codec, image, stream) && opj_encode(codec, stream) &&
              opj_end_compress(codec, stream));
  opj_stream_destroy(stream);
  opj_destroy_codec(codec);
  opj_image_destroy(image);
  return file.Contents();
}

bool IsBlack(int x, int y) { return (x / 5 + y / 3) % 3 == 0; }

std::string EncodeFacsimile(int width, int height, bool twoDimensional) {
  const TempFile file("", ".tif");
  TIFF* tiff = TIFFOpen(file.Path().c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX3);
  TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, twoDimensional ? GROUP3OPT_2DENCODING : 0);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, height);
  std::vector<uint8_t> row(static_cast<size_t>((width + 7) / 8));
  for (int y = 0; y < height; ++y) {
    std::fill(row.begin(), row.end(), uint8_t{0});
    for (int x = 0; x < width; ++x) {
      if (IsBlack(x, y)) row[static_cast<size_t>(x / 8)] |= static_cast<uint8_t>(0x80 >> x % 8);
    }
    TIFFWriteScanline(tiff, row.data(), static_cast<uint32_t>(y), 0);
  }
  TIFFClose(tiff);
  tiff = TIFFOpen(file.Path().c_str(), "r");
  std::string bytes(static_cast<size_t>(TIFFRawStripSize(tiff, 0)), '\0');
  TIFFReadRawStrip(tiff, 0, bytes.data(), static_cast<tmsize_t>(bytes.size()));
  TIFFClose(tiff);
  return bytes;
}

}  // namespace test
