// Writes files of little size that ask for much memory or work: make_bombs FOLDER.
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>

#include "bench/bomb_streams.h"
#include "tests/support/builder.h"
#include "tests/support/metafile.h"
#include "tests/support/vq.h"

namespace {

using test::Big;
using test::Element;
using test::I;
using test::ImageForm;
using test::NitfBuilder;

std::filesystem::path folder;

void Write(const std::string& name, const NitfBuilder& file) {
  std::ofstream(folder / (name + ".ntf"), std::ios::binary) << file.Bytes();
}

// ---------------------------------------------------------------- codecs

void WriteStream(const std::string& name, const std::string& compression, int side,
                 const std::string& stream) {
  const ImageForm form{.width = side, .height = side, .compression = compression};
  Write(name, NitfBuilder().Image(form, stream));
}

void WriteCodecBombs() {
  WriteStream("j2k_components", "C8", 450, bomb::Codestream(450, 10, 1000));
  WriteStream("j2k_tiles", "C8", 2040, bomb::Codestream(2040, 8, 1));
  WriteStream("j2k_precincts", "C8", 2040, bomb::Codestream(2040, 2040, 1, 0x11));
  WriteStream("j2k_twice", "C8", 4096, bomb::EncodeJpeg2000(8192));
  WriteStream("j2k_whole", "C8", 8192, bomb::EncodeJpeg2000(8192));
  WriteStream("jpeg_progressive", "C3", 8192, bomb::EncodeProgressive(8192, 3, 0));
  WriteStream("jpeg_progressive_twice", "C3", 4096, bomb::EncodeProgressive(8192, 3, 0));
  WriteStream("jpeg_scans", "C3", 4096, bomb::EncodeProgressive(4096, 1, 190));
}

// ---------------------------------------------------------------- vector quantisation

void WriteVectorBombs() {
  test::VqForm form{.blockWidth = 8192,
                    .blockHeight = 4,
                    .codeRows = 1,
                    .codesPerRow = 1,
                    .tables = 1,
                    .entries = 60000,
                    .codeBits = 16};
  Write("vq_codebook", NitfBuilder().Image(test::VqImage(form, "C4", 1, 1), test::VqData(form)));
  form.bands = 3;
  form.entries = 20000;
  form.blockHeight = 4;
  Write("vq_codebook_colour", NitfBuilder().Image(test::VqImage(form, "C4", 1, 1), test::VqData(form)));
  form.blockHeight = 8192;
  form.codeRows = 1;
  form.entries = 16;
  Write("vq_vector", NitfBuilder().Image(test::VqImage(form, "C4", 1, 1), test::VqData(form)));
  // Images whose records say that each holds the bytes of all behind it.
  test::VqForm shared{.blockWidth = 64, .blockHeight = 64, .codeRows = 16, .codesPerRow = 16};
  NitfBuilder copies;
  for (int i = 0; i < 100; ++i) {
    ImageForm image = test::VqImage(shared, "C4", 30, 30);
    image.level = i + 1;
    copies.Image(image, test::VqData(shared) + std::string(9000, 'c'));
  }
  Write("vq_copies", copies);
}

// ---------------------------------------------------------------- drawings

test::Record WholeCanvas(int side, int level) {
  test::Record record = test::GraphicRecord();
  record.Set("SDLVL", level).Set("SBND2", test::Digits(side - 1, 5) + test::Digits(side - 1, 5));
  return record;
}

std::string Points(int count, int side, unsigned seed) {
  std::mt19937 random(seed);
  std::string points;
  for (int i = 0; i < 2 * count; ++i) points += Big(random() % static_cast<unsigned>(side), 2);
  return points;
}

// An element of any length, in partitions.
std::string LongElement(int id, const std::string& parameters) {
  constexpr size_t kPartition = 32766;
  std::string bytes = Big(static_cast<uint64_t>(4 << 12 | id << 5 | 31), 2);
  for (size_t at = 0; at < parameters.size(); at += kPartition) {
    const std::string part = parameters.substr(at, kPartition);
    const bool more = at + kPartition < parameters.size();
    bytes += Big(part.size() | (more ? 0x8000 : 0), 2) + part;
  }
  return bytes;
}

std::string Repeated(const std::string& element, size_t bytes) {
  std::string all;
  while (all.size() + element.size() <= bytes) all += element;
  return all;
}

void WriteDrawing(const std::string& name, const std::string& body) {
  constexpr int kCanvas = 2048;
  const std::string cgm = test::Metafile(body, "", I({0, 0, kCanvas - 1, kCanvas - 1}));
  Write("cgm_" + name, NitfBuilder().Graphic(WholeCanvas(kCanvas, 1), cgm));
}

void WriteMarkerBombs() {
  WriteDrawing("markers", LongElement(3, Points(60000, 2048, 1)));
  WriteDrawing("markers_1mb", LongElement(3, Points(240000, 2048, 1)));
  for (const int type : {1, 4, 5}) {
    const std::string look = Element(5, 6, I({type})) + Element(2, 4, I({0})) + Element(5, 7, I({300}));
    WriteDrawing("markers_large_" + std::to_string(type), look + LongElement(3, Points(60000, 2048, 1)));
  }
  WriteDrawing("markers_single", Repeated(Element(4, 3, I({1000, 1000})), 960000));
}

// Many drawings, of which few can be held at once.
void WriteManyDrawings() {
  const std::string solid = Element(5, 22, I({1}));
  NitfBuilder many;
  for (int i = 0; i < 20; ++i) {
    const std::string cgm =
        test::Metafile(solid + Repeated(Element(4, 11, I({0, 0, 9, 9})), 990000), "", I({0, 0, 15, 15}));
    many.Graphic(WholeCanvas(16, i + 1), cgm);
  }
  Write("cgm_20_of_1mb", many);
  // Each reaches over many pieces, all the way down a narrow canvas.
  constexpr int kTall = 30000;
  NitfBuilder tall;
  for (int i = 0; i < 20; ++i) {
    const std::string cgm = test::Metafile(solid + Repeated(Element(4, 11, I({0, 0, 9, -kTall})), 990000),
                                           "", I({0, 0, 15, kTall}));
    test::Record record = WholeCanvas(16, i + 1);
    tall.Graphic(record.Set("SBND2", test::Digits(kTall, 5) + test::Digits(15, 5)), cgm);
  }
  Write("cgm_20_tall", tall);
}

void WriteDrawingBombs() {
  constexpr int kMost = 2047;
  const std::string solid = Element(5, 22, I({1})), full = Element(4, 11, I({0, 0, kMost, kMost}));
  const std::string direct = Element(2, 2, I({1}));
  WriteMarkerBombs();
  WriteDrawing("polyline", Element(5, 3, Big(0x00000014, 4)) + LongElement(1, Points(10000, 2048, 2)));
  WriteDrawing("polyline_wide",
               Element(5, 3, Big(0x00640000, 4)) + LongElement(1, Points(10000, 2048, 2)));
  WriteDrawing("polygon", solid + LongElement(7, Points(20000, 2048, 3)));
  WriteDrawing("polygon_1mb", solid + LongElement(7, Points(240000, 2048, 3)));
  WriteDrawing("fills", solid + Repeated(full, 11000));
  WriteDrawing("fills_1mb", solid + Repeated(full, 990000));
  WriteDrawing("hatches", Element(5, 22, I({3})) + Repeated(full, 200000));
  WriteDrawing("patterns", Element(5, 32, I({1, 2, 2, 0}) + std::string(12, 'p')) +
                               Element(5, 22, I({2})) + Element(5, 25, I({1})) + Repeated(full, 200000));
  // A pattern of many cells, which every shape uses.
  WriteDrawing("patterns_1mb", Element(5, 32, I({1, 50, 50, 0}) + std::string(7500, 'p')) +
                                   Element(5, 22, I({2})) + Element(5, 25, I({1})) +
                                   Repeated(Element(4, 11, I({0, 0, 9, 9})), 980000));
  WriteDrawing("circles", solid + Repeated(Element(4, 12, I({1024, 1024, 1000})), 240000));
  WriteDrawing("small_circles", solid + Repeated(Element(4, 12, I({1024, 1024, 2})), 990000));
  WriteDrawing("texts", Element(5, 15, I({1500})) +
                            Repeated(Element(4, 4, I({9, 9, 1}) + test::S("MWM")), 240000));
  WriteDrawing("small_texts", Element(5, 15, I({9})) +
                                  Repeated(Element(4, 4, I({99, 99, 1}) + test::S("text")), 990000));
  WriteDrawing("dashes",
               Element(5, 2, I({3})) + Repeated(Element(4, 1, I({0, 0, kMost, kMost})), 240000));
}

// ---------------------------------------------------------------- images without pixels

// 999 images; image n is moved by `shift` pixels where n is odd.
NitfBuilder Images(const ImageForm& form, const std::string& data, int count, int shift) {
  NitfBuilder file;
  for (int i = 0; i < count; ++i) {
    ImageForm image = form;
    image.level = i + 1;
    if (i % 2 == 1) image.location = test::Digits(shift, 5) + test::Digits(shift, 5);
    file.Image(image, data);
  }
  return file;
}

void WriteBlankBombs() {
  ImageForm form{.width = 4096, .height = 4096, .blocksAcross = 2, .blocksDown = 2, .compression = "NM"};
  const std::string blank = test::MaskBytes({.blocks = std::vector<uint32_t>(4, 0xFFFFFFFF)});
  Write("blank_999", Images(form, blank, 999, 0));
  form.bands = 3;
  form.representation = "RGB";
  const std::string colour = test::MaskBytes({.blocks = std::vector<uint32_t>(12, 0xFFFFFFFF)});
  Write("blank_999_colour", Images(form, colour, 999, 0));
  Write("blank_999_shifted", Images(form, colour, 999, 1));
  form = {.width = 4096, .height = 4096, .blocksAcross = 2, .blocksDown = 2, .compression = "C3"};
  const std::string none = "\xFF\xD8\xFF" + std::string(1100, 'x');
  Write("no_streams_999", Images(form, none + none + none + none + none, 999, 0));
  // Many samples of few bytes.
  form = {.width = 8192, .height = 8192, .compression = "NM"};
  Write("blank_40", Images(form, test::MaskBytes({.blocks = {0xFFFFFFFF}}), 40, 0));
  Write("blank_999_large", Images(form, test::MaskBytes({.blocks = {0xFFFFFFFF}}), 999, 0));
  // All blocks stand at one place of the data.
  form = {.width = 256, .height = 256, .blocksAcross = 32, .blocksDown = 32, .compression = "NM"};
  form.bands = 3;
  form.representation = "RGB";
  Write(
      "shared_blocks_99",
      Images(form, test::MaskBytes({.blocks = std::vector<uint32_t>(3072, 0)}) + std::string(196608, 's'),
             99, 1));
}

// ---------------------------------------------------------------- headers

void WriteHeaderBombs() {
  // Records without data, as many as the overflow of a header takes.
  NitfBuilder records;
  std::string empty;
  for (int i = 0; i < 100000; ++i) empty += "TAGXYZ00000";
  records.extensions.push_back(
      {test::DataExtensionRecord("TRE_OVERFLOW").Set("DESITEM", 0).Set("DESOFLW", "XHD"), empty});
  Write("records_100000", records);
  // Bands of thirteen bytes.
  ImageForm form{.width = 8, .height = 8, .bands = 75000, .representation = "MULTI"};
  NitfBuilder bands;
  for (int i = 0; i < 6; ++i) {
    form.level = i + 1;
    bands.Image(form, std::string(64, 'x'));
  }
  Write("bands_75000", bands);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_bombs FOLDER\n";
    return 2;
  }
  folder = argv[1];
  std::filesystem::create_directories(folder);
  WriteCodecBombs();
  WriteVectorBombs();
  WriteDrawingBombs();
  WriteManyDrawings();
  WriteBlankBombs();
  WriteHeaderBombs();
  return 0;
}
