// What drawing a file into a picture takes at least: floor io FILE OUT PIXELS MEMORY reads the file once
// and writes a picture of three bytes a pixel once; floor jpeg|jpeg2000|facsimile FILE OUT PIXELS MEMORY
// decodes the file's streams with the bare library, and writes such a picture. MEMORY is a number of
// bytes that are taken and touched first: 0, or what the bitmaps of a drawing take.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include <jpeglib.h>
#include <openjpeg.h>
#include <tiffio.h>

namespace {

constexpr size_t kPiece = 1 << 20;

[[noreturn]] void Fail(const char* what) {
  std::cerr << "floor: " << what << '\n';
  std::exit(1);
}

void ReadOnce(const char* path) {
  const int file = open(path, O_RDONLY);
  std::vector<uint8_t> piece(kPiece);
  while (read(file, piece.data(), piece.size()) > 0) continue;
  close(file);
}

void WriteOnce(const char* path, uint64_t bytes) {
  const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  const std::vector<uint8_t> piece(kPiece, 0x55);
  while (bytes > 0) {
    const ssize_t wrote = write(file, piece.data(), std::min<uint64_t>(bytes, piece.size()));
    if (wrote <= 0) Fail("cannot write");
    bytes -= static_cast<uint64_t>(wrote);
  }
  close(file);
}

// Takes memory and writes to it, in large pages where the system has them. It is never given back.
void Touch(size_t bytes) {
  if (bytes == 0) return;
  void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) Fail("no memory");
  (void)madvise(memory, bytes, MADV_HUGEPAGE);
  std::memset(memory, 0x55, bytes);
}

using Bytes = std::vector<uint8_t>;

std::vector<Bytes> ReadStreams(const char* path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<Bytes> streams;
  uint8_t length[4];
  while (file.read(reinterpret_cast<char*>(length), 4)) {
    const uint32_t bytes =
        static_cast<uint32_t>(length[0] << 24 | length[1] << 16 | length[2] << 8 | length[3]);
    Bytes stream(bytes);
    file.read(reinterpret_cast<char*>(stream.data()), static_cast<std::streamsize>(bytes));
    streams.push_back(std::move(stream));
  }
  return streams;
}

void DecodeJpeg(const Bytes& stream, Bytes& pixels) {
  jpeg_decompress_struct codec{};
  jpeg_error_mgr errors;
  codec.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&codec);
  jpeg_mem_src(&codec, stream.data(), stream.size());
  jpeg_read_header(&codec, TRUE);
  jpeg_start_decompress(&codec);
  const size_t stride = size_t{codec.output_width} * static_cast<size_t>(codec.output_components);
  pixels.resize(stride * codec.output_height);
  while (codec.output_scanline < codec.output_height) {
    JSAMPROW row = &pixels[codec.output_scanline * stride];
    jpeg_read_scanlines(&codec, &row, 1);
  }
  jpeg_finish_decompress(&codec);
  jpeg_destroy_decompress(&codec);
}

struct Memory {
  const Bytes& bytes;
  size_t position = 0;
};
OPJ_SIZE_T ReadMemory(void* to, OPJ_SIZE_T count, void* user) {
  auto& memory = *static_cast<Memory*>(user);
  const size_t moved = std::min<size_t>(count, memory.bytes.size() - memory.position);
  std::copy_n(memory.bytes.data() + memory.position, moved, static_cast<uint8_t*>(to));
  memory.position += moved;
  return moved == 0 ? static_cast<OPJ_SIZE_T>(-1) : moved;
}
OPJ_OFF_T SkipMemory(OPJ_OFF_T count, void* user) {
  auto& memory = *static_cast<Memory*>(user);
  const size_t moved = std::min(static_cast<size_t>(count), memory.bytes.size() - memory.position);
  memory.position += moved;
  return static_cast<OPJ_OFF_T>(moved);
}

void DecodeJpeg2000(const Bytes& bytes) {
  Memory memory{bytes};
  opj_stream_t* stream = opj_stream_default_create(OPJ_TRUE);
  opj_stream_set_user_data(stream, &memory, nullptr);
  opj_stream_set_user_data_length(stream, bytes.size());
  opj_stream_set_read_function(stream, ReadMemory);
  opj_stream_set_skip_function(stream, SkipMemory);
  opj_codec_t* codec = opj_create_decompress(OPJ_CODEC_J2K);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  opj_setup_decoder(codec, &parameters);
  opj_codec_set_threads(codec, static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)));
  opj_image_t* image = nullptr;
  if (!opj_read_header(stream, codec, &image) || !opj_decode(codec, stream, image)) Fail("JPEG 2000");
  opj_image_destroy(image);
  opj_stream_destroy(stream);
  opj_destroy_codec(codec);
}

void DecodeFacsimile(const char* path) {
  TIFF* tiff = TIFFOpen(path, "r");
  if (tiff == nullptr) Fail("TIFF");
  uint32_t rows = 0;
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &rows);
  Bytes row(static_cast<size_t>(TIFFScanlineSize(tiff)));
  for (uint32_t y = 0; y < rows; ++y) {
    if (TIFFReadScanline(tiff, row.data(), y, 0) != 1) Fail("facsimile");
  }
  TIFFClose(tiff);
}

}  // namespace

int main(int count, char** words) {
  if (count != 6) Fail("usage: floor KIND FILE OUT PIXELS MEMORY");
  Touch(std::strtoull(words[5], nullptr, 10));
  const std::string kind = words[1];
  if (kind == "io") ReadOnce(words[2]);
  if (kind == "facsimile") DecodeFacsimile(words[2]);
  if (kind == "jpeg" || kind == "jpeg2000") {
    Bytes pixels;
    for (const Bytes& stream : ReadStreams(words[2]))
      kind == "jpeg" ? DecodeJpeg(stream, pixels) : DecodeJpeg2000(stream);
  }
  WriteOnce(words[3], 3 * std::strtoull(words[4], nullptr, 10));
  return 0;
}
