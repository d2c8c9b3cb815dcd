// Reading image segments: a blocked JPEG against libjpeg alone, JPEG 2000 against OpenJPEG alone, vector
// quantisation; and the loops over pixels, each against its general form.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <benchmark/benchmark.h>
#include <jpeglib.h>
#include <openjpeg.h>

#include "Common/HandlImg.h"
#include "bench/streams.h"
#include "hostkit/kernel/internal.h"
#include "hostkit/kernel/pixels_rows.h"
#include "media/shuffle.h"
#include "tests/support/builder.h"
#include "tests/support/vq.h"

namespace {

constexpr int kBlocks = 16, kBlockSide = 256;

const std::vector<std::string>& Streams() {
  static const std::vector<std::string> streams = [] {
    std::vector<std::string> made;
    for (uint32_t block = 0; block < kBlocks * kBlocks; ++block)
      made.push_back(bench::EncodeJpeg(bench::Picture(kBlockSide, block), kBlockSide, 1));
    return made;
  }();
  return streams;
}

std::string TemporaryFile(const std::string& bytes) {
  std::string path = std::string(P_tmpdir) + "/orbntf-bench-XXXXXX";
  close(mkstemp(path.data()));
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

// Loads the first image of a file over and over.
void LoadFirstImage(benchmark::State& state, const std::string& bytes) {
  const std::string path = TemporaryFile(bytes);
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

const std::string& Codestream() {
  static const std::string stream =
      bench::EncodeJpeg2000(bench::Picture(kCodestreamSide, 1), kCodestreamSide, kCodestreamSide);
  return stream;
}

void Jpeg2000(benchmark::State& state) {
  test::ImageForm form = Blocked("C8");
  form.blocksAcross = form.blocksDown = kCodestreamSide / kBlockSide;
  LoadFirstImage(state, test::NitfBuilder().Image(form, Codestream()).Bytes());
}
BENCHMARK(Jpeg2000)->Unit(benchmark::kMillisecond)->UseRealTime();

void OpenjpegAlone(benchmark::State& state) {
  const std::string path = TemporaryFile(Codestream());
  for (auto _ : state) {
    opj_codec_t* codec = opj_create_decompress(OPJ_CODEC_J2K);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_setup_decoder(codec, &parameters);
    opj_codec_set_threads(codec, static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)));
    opj_stream_t* stream = opj_stream_create_default_file_stream(path.c_str(), OPJ_TRUE);
    opj_image_t* image = nullptr;
    if (!opj_read_header(stream, codec, &image) || !opj_decode(codec, stream, image)) {
      state.SkipWithError("does not decode");
    }
    opj_image_destroy(image);
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
  }
  unlink(path.c_str());
}
BENCHMARK(OpenjpegAlone)->Unit(benchmark::kMillisecond)->UseRealTime();

void VectorQuantised(benchmark::State& state) {
  const test::VqForm form{.blockWidth = 256,
                          .blockHeight = 256,
                          .codeRows = 64,
                          .codesPerRow = 64,
                          .entries = 4096,
                          .stored = std::vector<bool>(kBlocks * kBlocks, true)};
  LoadFirstImage(
      state,
      test::NitfBuilder().Image(test::VqImage(form, "C4", kBlocks, kBlocks), test::VqData(form)).Bytes());
}
BENCHMARK(VectorQuantised)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------- rows

// A row of a depth to colour: the way that is chosen for many pixels, and the general one.
void ReadRow(benchmark::State& state) {
  constexpr uint32_t kWidth = 8192;
  const auto depth = static_cast<uint32_t>(state.range(0));
  const bool chosen = state.range(1) != 0, palette = state.range(2) != 0;
  KernelBitmap bitmap;
  KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, kWidth, 1, depth, kOrderRgb, nullptr, kViewTopLeft,
                       nullptr, 0);
  if (palette) hostkit::Palette(bitmap)[0].red = 9;
  std::vector<uint8_t> bgr(3 * kWidth);
  const hostkit::RowReader reader(bitmap, kWidth);
  for (auto _ : state) {
    chosen ? reader.Read(hostkit::Row(bitmap, 0), 0, kWidth, bgr.data())
           : hostkit::RowToBgr(bitmap, hostkit::Row(bitmap, 0), 0, kWidth, bgr.data());
    benchmark::DoNotOptimize(bgr.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kWidth);
  KernelFreeBitmap(&bitmap);
}
BENCHMARK(ReadRow)
    ->ArgNames({"depth", "chosen", "palette"})
    ->ArgsProduct({{1, 8}, {0, 1}, {0, 1}})
    ->ArgsProduct({{12, 16, 24}, {0, 1}, {0}});

void InterleaveBands(benchmark::State& state) {
  constexpr uint32_t kWidth = 8192;
  const std::vector<uint8_t> band(kWidth, 7);
  std::vector<uint8_t> pixels(3 * kWidth);
  for (auto _ : state) {
    media::Interleave(band.data(), band.data(), band.data(), kWidth, pixels.data());
    benchmark::DoNotOptimize(pixels.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kWidth);
}
BENCHMARK(InterleaveBands);

}  // namespace

BENCHMARK_MAIN();
