// Reading image segments: a blocked JPEG against libjpeg alone, and vector quantisation in pixels a
// second.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <benchmark/benchmark.h>
#include <jpeglib.h>
#include <openjpeg.h>

#include "Common/HandlImg.h"
#include "tests/support/builder.h"

namespace {

constexpr int kBlocks = 16, kBlockSide = 256;

std::string BlockStream(int block) {
  std::vector<uint8_t> pixels(kBlockSide * kBlockSide);
  for (size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = static_cast<uint8_t>((i * 7 + i / 256 * 13 + static_cast<size_t>(block)) % 251 / 4 + 90);
  }
  jpeg_compress_struct codec{};
  jpeg_error_mgr errors;
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  unsigned char* out = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&codec, &out, &size);
  codec.image_width = codec.image_height = kBlockSide;
  codec.input_components = 1;
  codec.in_color_space = JCS_GRAYSCALE;
  jpeg_set_defaults(&codec);
  jpeg_start_compress(&codec, TRUE);
  while (codec.next_scanline < codec.image_height) {
    JSAMPROW row = &pixels[codec.next_scanline * kBlockSide];
    jpeg_write_scanlines(&codec, &row, 1);
  }
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
  std::string bytes(reinterpret_cast<char*>(out), size);
  std::free(out);
  return bytes;
}

const std::vector<std::string>& Streams() {
  static const std::vector<std::string> streams = [] {
    std::vector<std::string> made;
    for (int block = 0; block < kBlocks * kBlocks; ++block) made.push_back(BlockStream(block));
    return made;
  }();
  return streams;
}

// Loads the first image of a file over and over.
void LoadFirstImage(benchmark::State& state, const std::string& bytes) {
  std::string path = std::string(P_tmpdir) + "/orbntf-bench-XXXXXX";
  close(mkstemp(path.data()));
  std::ofstream(path, std::ios::binary) << bytes;
  NitfFile document;
  const std::u16string wide(path.begin(), path.end());
  if (!Ok(document.ReadDocument(wide.c_str()))) state.SkipWithError("does not open");
  for (auto _ : state) {
    OwnedBitmap bitmap;
    if (!Ok(LoadImageSegment(nullptr, document, 0, bitmap))) state.SkipWithError("does not load");
  }
  const int64_t side = kBlocks * kBlockSide;
  state.SetItemsProcessed(state.iterations() * side * side);
  unlink(path.c_str());
}

test::ImageForm Blocked(const char* compression) {
  test::ImageForm form;
  form.width = form.height = kBlockSide;
  form.blocksAcross = form.blocksDown = kBlocks;
  form.compression = compression;
  return form;
}

void BlockedJpeg(benchmark::State& state) {
  std::string data;
  for (const std::string& stream : Streams()) data += stream;
  LoadFirstImage(state, test::NitfBuilder().Image(Blocked("C3"), data).Bytes());
}
BENCHMARK(BlockedJpeg)->Unit(benchmark::kMillisecond);

void LibjpegAlone(benchmark::State& state) {
  std::vector<uint8_t> pixels(kBlockSide * kBlockSide);
  for (auto _ : state) {
    for (const std::string& stream : Streams()) {
      jpeg_decompress_struct codec{};
      jpeg_error_mgr errors;
      codec.err = jpeg_std_error(&errors);
      jpeg_create_decompress(&codec);
      jpeg_mem_src(&codec, reinterpret_cast<const uint8_t*>(stream.data()), stream.size());
      jpeg_read_header(&codec, TRUE);
      jpeg_start_decompress(&codec);
      while (codec.output_scanline < codec.output_height) {
        JSAMPROW row = &pixels[codec.output_scanline * kBlockSide];
        jpeg_read_scanlines(&codec, &row, 1);
      }
      jpeg_finish_decompress(&codec);
      jpeg_destroy_decompress(&codec);
    }
  }
}
BENCHMARK(LibjpegAlone)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------- JPEG 2000

constexpr OPJ_UINT32 kCodestreamSide = 2048;

const std::string& CodestreamPath() {
  static const std::string path = [] {
    std::string made = std::string(P_tmpdir) + "/orbntf-bench-XXXXXX";
    close(mkstemp(made.data()));
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    opj_image_cmptparm_t component = {};
    component.dx = component.dy = 1;
    component.w = component.h = kCodestreamSide;
    component.prec = 8;
    opj_image_t* image = opj_image_create(1, &component, OPJ_CLRSPC_GRAY);
    image->x1 = image->y1 = kCodestreamSide;
    for (OPJ_UINT32 i = 0; i < kCodestreamSide * kCodestreamSide; ++i) {
      image->comps[0].data[i] = static_cast<OPJ_INT32>((i * 7 + i / kCodestreamSide * 13) % 251);
    }
    opj_codec_t* codec = opj_create_compress(OPJ_CODEC_J2K);
    opj_setup_encoder(codec, &parameters, image);
    opj_stream_t* stream = opj_stream_create_default_file_stream(made.c_str(), OPJ_FALSE);
    const bool done = opj_start_compress(codec, image, stream) && opj_encode(codec, stream) &&
                      opj_end_compress(codec, stream);
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
    opj_image_destroy(image);
    return done ? made : std::string();
  }();
  return path;
}

void Jpeg2000(benchmark::State& state) {
  std::ifstream file(CodestreamPath(), std::ios::binary);
  const std::string data((std::istreambuf_iterator<char>(file)), {});
  test::ImageForm form = Blocked("C8");
  form.blocksAcross = form.blocksDown = kCodestreamSide / kBlockSide;
  LoadFirstImage(state, test::NitfBuilder().Image(form, data).Bytes());
}
BENCHMARK(Jpeg2000)->Unit(benchmark::kMillisecond)->UseRealTime();

void OpenjpegAlone(benchmark::State& state) {
  for (auto _ : state) {
    opj_codec_t* codec = opj_create_decompress(OPJ_CODEC_J2K);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_setup_decoder(codec, &parameters);
    opj_codec_set_threads(codec, static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)));
    opj_stream_t* stream = opj_stream_create_default_file_stream(CodestreamPath().c_str(), OPJ_TRUE);
    opj_image_t* image = nullptr;
    if (!opj_read_header(stream, codec, &image) || !opj_decode(codec, stream, image)) {
      state.SkipWithError("does not decode");
    }
    opj_image_destroy(image);
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
  }
}
BENCHMARK(OpenjpegAlone)->Unit(benchmark::kMillisecond)->UseRealTime();

void VectorQuantised(benchmark::State& state) {
  using test::Big;
  std::string data =
      Big(64, 4) + Big(64, 4) + Big(12, 1) + Big(1, 2) + Big(4, 2) + Big(0, 2) + Big(6, 4) + Big(14, 2);
  for (uint64_t table = 0; table < 4; ++table)
    data += Big(table, 2) + Big(4096, 4) + Big(4, 2) + Big(8, 2) + Big(0, 4);
  for (int i = 0; i < 4 * 4096 * 4; ++i) data += static_cast<char>(i);
  for (int i = 0; i < kBlocks * kBlocks * 64 * 64 * 12 / 8; ++i) data += static_cast<char>(i * 31);
  LoadFirstImage(state, test::NitfBuilder().Image(Blocked("C4"), data).Bytes());
}
BENCHMARK(VectorQuantised)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
