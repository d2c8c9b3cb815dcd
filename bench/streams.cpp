#include "bench/streams.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include <jpeglib.h>
#include <openjpeg.h>
#include <tiffio.h>

namespace bench {

std::string Picture(uint32_t side, uint32_t seed) {
  std::string pixels(size_t{side} * side, '\0');
  uint32_t noise = seed * 2654435761u + 1;
  for (uint32_t y = 0; y < side; ++y) {
    char* row = pixels.data() + size_t{y} * side;
    for (uint32_t x = 0; x < side; ++x) {
      noise = noise * 1664525 + 1013904223;
      const uint32_t edges = ((x >> 6) * 37 + (y >> 6) * 59 + seed * 31) % 97;
      row[x] = static_cast<char>((x + 2 * y) / 32 % 128 + edges + (noise >> 27));
    }
  }
  return pixels;
}

std::string Part(const std::string& picture, uint32_t side, uint32_t left, uint32_t top,
                 uint32_t partSide) {
  std::string part;
  part.reserve(size_t{partSide} * partSide);
  for (uint32_t y = top; y < top + partSide; ++y) part.append(picture, size_t{y} * side + left, partSide);
  return part;
}

std::string EncodeJpeg(const std::string& pixels, uint32_t side, int components) {
  jpeg_compress_struct codec{};
  jpeg_error_mgr errors;
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  unsigned char* out = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&codec, &out, &size);
  codec.image_width = codec.image_height = side;
  codec.input_components = components;
  codec.in_color_space = components == 1 ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_set_defaults(&codec);
  jpeg_start_compress(&codec, TRUE);
  const size_t stride = size_t{side} * static_cast<size_t>(components);
  while (codec.next_scanline < codec.image_height) {
    const auto* row = reinterpret_cast<const uint8_t*>(pixels.data()) + codec.next_scanline * stride;
    JSAMPROW rows = const_cast<JSAMPROW>(row);
    jpeg_write_scanlines(&codec, &rows, 1);
  }
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
  std::string bytes(reinterpret_cast<char*>(out), size);
  std::free(out);
  return bytes;
}

std::string EncodeJpeg2000(const std::string& pixels, uint32_t side, uint32_t tile) {
  opj_cparameters_t parameters;
  opj_set_default_encoder_parameters(&parameters);
  parameters.tile_size_on = OPJ_TRUE;
  parameters.cp_tdx = parameters.cp_tdy = static_cast<int>(tile);
  opj_image_cmptparm_t component = {};
  component.dx = component.dy = 1;
  component.w = component.h = side;
  component.prec = 8;
  opj_image_t* image = opj_image_create(1, &component, OPJ_CLRSPC_GRAY);
  image->x1 = image->y1 = side;
  for (size_t i = 0; i < pixels.size(); ++i) image->comps[0].data[i] = static_cast<uint8_t>(pixels[i]);
  std::string path = std::string(P_tmpdir) + "/orbntf-bench.j2k";
  opj_codec_t* codec = opj_create_compress(OPJ_CODEC_J2K);
  opj_setup_encoder(codec, &parameters, image);
  opj_codec_set_threads(codec, 2);
  opj_stream_t* stream = opj_stream_create_default_file_stream(path.c_str(), OPJ_FALSE);
  if (!opj_start_compress(codec, image, stream) || !opj_encode(codec, stream) ||
      !opj_end_compress(codec, stream)) {
    std::abort();
  }
  opj_stream_destroy(stream);
  opj_destroy_codec(codec);
  opj_image_destroy(image);
  std::ifstream file(path, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(file), {}};
  std::remove(path.c_str());
  return bytes;
}

std::string EncodeFacsimile(const std::string& pixels, uint32_t side, const std::string& path) {
  TIFF* tiff = TIFFOpen(path.c_str(), "w");
  if (tiff == nullptr) std::abort();
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, side);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, side);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX3);
  TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, GROUP3OPT_2DENCODING);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, side);
  std::vector<uint8_t> row(side / 8);
  for (uint32_t y = 0; y < side; ++y) {
    for (uint32_t x = 0; x < side; x += 8) {
      int bits = 0;
      for (uint32_t i = 0; i < 8; ++i)
        bits = bits << 1 | (static_cast<uint8_t>(pixels[size_t{y} * side + x + i]) < 100);
      row[x / 8] = static_cast<uint8_t>(bits);
    }
    TIFFWriteScanline(tiff, row.data(), y, 0);
  }
  TIFFClose(tiff);
  tiff = TIFFOpen(path.c_str(), "r");
  if (tiff == nullptr) std::abort();
  const auto offset = static_cast<std::streamoff>(TIFFGetStrileOffset(tiff, 0));
  std::string strip(TIFFGetStrileByteCount(tiff, 0), '\0');
  TIFFClose(tiff);
  std::ifstream(path, std::ios::binary)
      .seekg(offset)
      .read(strip.data(), static_cast<std::streamsize>(strip.size()));
  return strip;
}

}  // namespace bench
