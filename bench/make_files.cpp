// Writes the files that scripts/bench.sh draws: make_files FOLDER SIDE. Beside a compressed image stand
// its streams, for the bare library: NAME.streams, each with its length of four bytes in front, or
// NAME.tif.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <numeric>

#include "bench/streams.h"
#include "tests/support/builder.h"
#include "tests/support/metafile.h"
#include "tests/support/vq.h"

namespace {

using test::Big;
using test::ImageForm;
using test::NitfBuilder;

std::filesystem::path folder;
uint32_t side;

void Write(const std::string& name, const std::string& bytes) {
  std::ofstream(folder / name, std::ios::binary) << bytes;
}
void WriteImage(const std::string& name, const ImageForm& form, std::string data) {
  Write(name + ".ntf", NitfBuilder().Image(form, std::move(data)).Bytes());
}

ImageForm Blocked(uint32_t imageSide, uint32_t blockSide) {
  const int across = static_cast<int>(imageSide / blockSide);
  return {.width = static_cast<int>(blockSide),
          .height = static_cast<int>(blockSide),
          .blocksAcross = across,
          .blocksDown = across};
}

// Blocks of a picture, one after the other.
std::vector<std::string> Blocks(const std::string& picture, uint32_t imageSide, uint32_t blockSide) {
  std::vector<std::string> blocks;
  for (uint32_t top = 0; top < imageSide; top += blockSide) {
    for (uint32_t left = 0; left < imageSide; left += blockSide)
      blocks.push_back(bench::Part(picture, imageSide, left, top, blockSide));
  }
  return blocks;
}
std::string Joined(const std::vector<std::string>& parts) {
  return std::accumulate(parts.begin(), parts.end(), std::string());
}
std::string Streams(const std::vector<std::string>& streams) {
  std::string bytes;
  for (const std::string& stream : streams) bytes += Big(stream.size(), 4) + stream;
  return bytes;
}

// ---------------------------------------------------------------- one band

void WriteMono() {
  const std::string picture = bench::Picture(side, 1);
  WriteImage("mono_one", Blocked(side, side), picture);
  for (const uint32_t block : {256u, 1024u})
    WriteImage("mono_" + std::to_string(block), Blocked(side, block),
               Joined(Blocks(picture, side, block)));
  ImageForm form = Blocked(side, side);
  std::string lookup;
  for (int table = 0; table < 3; ++table) {
    for (int i = 0; i < 256; ++i) lookup += static_cast<char>(table == 1 ? 255 - i : i * (table + 1));
  }
  form.representation = "RGB/LUT", form.bandCodes = {"LU"}, form.lookup = lookup, form.lookupTables = 3;
  WriteImage("lookup_table", form, picture);
  std::string words, triples, bits;
  for (size_t i = 0; i < picture.size(); i += 8) {
    int byte = 0;
    for (size_t j = i; j < i + 8; ++j) {
      words += {picture[j], static_cast<char>(j)};
      byte = byte << 1 | (static_cast<uint8_t>(picture[j]) < 100);
      if (j % 2 == 0)
        triples +=
            {picture[j], static_cast<char>(picture[j + 1] >> 4), static_cast<char>(picture[j + 1] << 4)};
    }
    bits += static_cast<char>(byte);
  }
  form = Blocked(side, side);
  form.bits = 16;
  WriteImage("mono_16", form, words);
  form.bits = 12;
  WriteImage("mono_12", form, triples);
  form.bits = 1, form.pixelType = "B";
  WriteImage("bilevel", form, bits);
}

// ---------------------------------------------------------------- three bands

// The bands of a block in the order of a mode other than S.
std::string Interleaved(const std::string (&bands)[3], char mode, uint32_t blockSide) {
  std::string bytes;
  bytes.reserve(3 * bands[0].size());
  if (mode == 'B') return bands[0] + bands[1] + bands[2];
  const size_t run = mode == 'R' ? blockSide : 1;
  for (size_t at = 0; at < bands[0].size(); at += run) {
    for (const std::string& band : bands) bytes.append(band, at, run);
  }
  return bytes;
}

// Every fourth block is left out.
bool IsLeftOut(size_t block) { return block % 4 == 3; }

void WriteColour(const std::string& name, char mode, uint32_t blockSide, bool masked) {
  const std::vector<std::string> bands[3] = {Blocks(bench::Picture(side, 1), side, blockSide),
                                             Blocks(bench::Picture(side, 2), side, blockSide),
                                             Blocks(bench::Picture(side, 3), side, blockSide)};
  ImageForm form = Blocked(side, blockSide);
  form.bands = 3, form.representation = "RGB", form.mode = mode, form.bandCodes = {"R", "G", "B"};
  test::MaskForm mask{.padCode = 0};
  std::string data;
  const size_t blockBytes = size_t{blockSide} * blockSide * (mode == 'S' ? 1 : 3);
  for (int band = 0; band < (mode == 'S' ? 3 : 1); ++band) {
    for (size_t n = 0; n < bands[0].size(); ++n) {
      const bool stored = !masked || !IsLeftOut(n);
      mask.blocks.push_back(stored ? static_cast<uint32_t>(data.size()) : UINT32_MAX);
      if (!stored) continue;
      if (mode == 'S') {
        data += bands[band][n];
      } else {
        const std::string three[3] = {bands[0][n], bands[1][n], bands[2][n]};
        data += Interleaved(three, mode, blockSide);
      }
    }
  }
  if (data.size() % blockBytes != 0) std::abort();
  form.compression = masked ? "NM" : "NC";
  WriteImage(name, form, masked ? test::MaskBytes(mask) + data : data);
}

void WriteColours() {
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    const std::string name = std::string("rgb_") + static_cast<char>(mode + 32) + "_";
    WriteColour(name + "one", mode, side, false);
    WriteColour(name + "256", mode, 256, false);
    WriteColour(name + "1024", mode, 1024, false);
    // A band-sequential mask is read as if its stored blocks filled a rectangle.
    if (mode != 'S') WriteColour(name + "masked", mode, 1024, true);
  }
}

// ---------------------------------------------------------------- compressed

void WriteJpeg() {
  const std::string picture = bench::Picture(side, 1);
  std::vector<std::string> streams;
  for (const std::string& block : Blocks(picture, side, 256))
    streams.push_back(bench::EncodeJpeg(block, 256, 1));
  ImageForm form = Blocked(side, 256);
  form.compression = "C3";
  WriteImage("jpeg_256", form, Joined(streams));
  Write("jpeg_256.streams", Streams(streams));
  const std::string three[3] = {picture, bench::Picture(side, 2), bench::Picture(side, 3)};
  streams = {bench::EncodeJpeg(Interleaved(three, 'P', side), side, 3)};
  form = Blocked(side, side);
  form.compression = "C3", form.bands = 3, form.representation = "YCbCr601", form.mode = "P";
  WriteImage("jpeg_one_colour", form, streams[0]);
  Write("jpeg_one_colour.streams", Streams(streams));
}

void WriteJpeg2000() {
  const std::vector<std::string> streams = {bench::EncodeJpeg2000(bench::Picture(side, 1), side, 1024)};
  ImageForm form = Blocked(side, 1024);
  form.compression = "C8", form.rate = "N010";
  WriteImage("jpeg2000_1024", form, streams[0]);
  Write("jpeg2000_1024.streams", Streams(streams));
}

void WriteFacsimile() {
  ImageForm form = Blocked(side, side);
  form.compression = "C1", form.rate = "2DS", form.pixelType = "B", form.bits = 1;
  WriteImage("facsimile", form,
             bench::EncodeFacsimile(bench::Picture(side, 1), side, folder / "facsimile.tif"));
}

void WriteVectorQuantised() {
  const int across = static_cast<int>(side / 256);
  const test::VqForm form{
      .blockWidth = 256,
      .blockHeight = 256,
      .codeRows = 64,
      .codesPerRow = 64,
      .entries = 4096,
      .stored = std::vector<bool>(static_cast<size_t>(across) * static_cast<size_t>(across), true)};
  Write("vector_quantised.ntf",
        NitfBuilder().Image(test::VqImage(form, "C4", across, across), test::VqData(form)).Bytes());
}

// ---------------------------------------------------------------- many segments, growing sides

std::string Location(int row, int column) { return test::Digits(row, 5) + test::Digits(column, 5); }

void WriteManySegments() {
  NitfBuilder images;
  for (int i = 0; i < 999; ++i) {
    ImageForm form{.width = 16, .height = 16, .level = i + 1};
    form.location = Location(i / 32 * 16, i % 32 * 16);
    images.Image(form, std::string(256, static_cast<char>(i)));
  }
  Write("images_999.ntf", images.Bytes());
  NitfBuilder graphics;
  using test::Element, test::I;
  const std::string lines =
      Element(4, 1, I({0, 0, 100, 100, 100, 0, 0, 100})) + Element(4, 12, I({50, 50, 30}));
  for (int i = 0; i < 500; ++i) {
    test::Record record = test::GraphicRecord();
    record.Set("SDLVL", i + 1).Set("SLOC", Location(i / 25 * 40, i % 25 * 40)).Set("SBND2", "0010000100");
    graphics.Graphic(record, test::Metafile(lines));
  }
  Write("graphics_500.ntf", graphics.Bytes());
}

void WriteGrowth() {
  for (uint32_t growing = side / 8; growing <= 2 * side; growing *= 2) {
    const uint32_t block = std::min(growing, 1024u);
    WriteImage("growth_" + std::to_string(growing), Blocked(growing, block),
               Joined(Blocks(bench::Picture(growing, 1), growing, block)));
  }
}

}  // namespace

int main(int count, char** words) {
  side = count == 3 ? static_cast<uint32_t>(std::atoi(words[2])) : 0;
  if (side < 1024 || side > 8192 || side % 1024 != 0) {
    std::cerr << "usage: make_files FOLDER SIDE, a multiple of 1024 up to 8192\n";
    return 2;
  }
  folder = words[1];
  WriteMono();
  WriteColours();
  WriteJpeg();
  WriteJpeg2000();
  WriteFacsimile();
  WriteVectorQuantised();
  WriteManySegments();
  WriteGrowth();
  return 0;
}
