// Compressed streams that ask for much.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <jpeglib.h>
#include <openjpeg.h>

#include "tests/support/builder.h"

namespace bomb {

/// A codestream of one tile-part without data: `side` pixels in tiles of `tile`, and precincts of a size
/// unless that is 0.
inline std::string Codestream(uint32_t side, uint32_t tile, uint32_t components, uint8_t precinct = 0) {
  using test::Big;
  std::string stream = Big(0xFF4FFF51, 4) + Big(38 + 3 * components, 2) + Big(0, 2);
  for (const uint32_t value : {side, side, 0u, 0u, tile, tile, 0u, 0u}) stream += Big(value, 4);
  stream += Big(components, 2);
  for (uint32_t c = 0; c < components; ++c) stream += Big(0x070101, 3);
  const std::string precincts(precinct != 0 ? 6 : 0, static_cast<char>(precinct));
  stream += Big(0xFF52, 2) + Big(12 + precincts.size(), 2) + Big(precinct != 0, 1) + Big(0, 1) +
            Big(1, 2) + Big(0, 1) + Big(5, 1) + Big(0x0000, 2) + Big(0, 1) + Big(1, 1) + precincts;
  stream += Big(0xFF5C, 2) + Big(19, 2) + Big(0x40, 1) + std::string(16, '\x48');
  return stream + Big(0xFF90, 2) + Big(10, 2) + Big(0, 2) + Big(14, 4) + Big(0x0001, 2) + Big(0xFF93, 2) +
         Big(0xFFD9, 2);
}

/// A square as JPEG 2000.
inline std::string EncodeJpeg2000(uint32_t side) {
  opj_cparameters_t parameters;
  opj_set_default_encoder_parameters(&parameters);
  parameters.tile_size_on = OPJ_FALSE;
  opj_image_cmptparm_t component = {};
  component.dx = component.dy = 1;
  component.w = component.h = side;
  component.prec = 8;
  opj_image_t* image = opj_image_create(1, &component, OPJ_CLRSPC_GRAY);
  image->x1 = image->y1 = side;
  for (uint32_t i = 0; i < side * side; ++i)
    image->comps[0].data[i] = static_cast<OPJ_INT32>((i % side / 32 ^ i / side / 32) & 255);
  const std::string path = std::string(P_tmpdir) + "/orbntf-bomb.j2k";
  opj_codec_t* codec = opj_create_compress(OPJ_CODEC_J2K);
  opj_setup_encoder(codec, &parameters, image);
  opj_stream_t* stream = opj_stream_create_default_file_stream(path.c_str(), OPJ_FALSE);
  opj_start_compress(codec, image, stream);
  opj_encode(codec, stream);
  opj_end_compress(codec, stream);
  opj_stream_destroy(stream);
  opj_destroy_codec(codec);
  opj_image_destroy(image);
  std::string bytes;
  if (std::FILE* file = std::fopen(path.c_str(), "rb")) {
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) bytes += static_cast<char>(c);
    std::fclose(file);
  }
  std::remove(path.c_str());
  return bytes;
}

/// A square of one grey as progressive JPEG, with more scans of nothing behind the usual ones.
inline std::string EncodeProgressive(uint32_t side, int components, int moreScans) {
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
  for (int c = 0; c < components; ++c)
    codec.comp_info[c].h_samp_factor = codec.comp_info[c].v_samp_factor = 1;
  std::vector<jpeg_scan_info> scans;
  if (moreScans != 0) {
    // One bit after the other of each coefficient.
    scans.push_back({1, {0}, 0, 0, 0, 1});
    for (int k = 1; k < 64 && moreScans > 0; ++k) {
      for (int bit = 2; bit >= 0 && moreScans > 0; --bit, --moreScans)
        scans.push_back({1, {0}, k, k, bit == 2 ? 0 : bit + 1, bit});
    }
    codec.scan_info = scans.data();
    codec.num_scans = static_cast<int>(scans.size());
  } else {
    jpeg_simple_progression(&codec);
  }
  jpeg_start_compress(&codec, TRUE);
  std::vector<unsigned char> row(static_cast<size_t>(components) * side, 90);
  JSAMPROW line = row.data();
  while (codec.next_scanline < side) jpeg_write_scanlines(&codec, &line, 1);
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
  std::string bytes(reinterpret_cast<char*>(out), size);
  std::free(out);
  return bytes;
}

}  // namespace bomb
