// Writes the seed corpora of the fuzz targets: FOLDER/document and FOLDER/drawing.
#include <filesystem>
#include <fstream>
#include <iostream>

#include "host/fileformat.h"
#include "orbntf/orbntf.h"
#include "tests/support/builder.h"
#include "tests/support/metafile.h"

namespace {

using test::Element;
using test::I;
using test::ImageForm;
using test::NitfBuilder;

// A metafile of one primitive of every kind.
std::string Drawing() {
  std::string cgm;
  cgm += Element(5, 22, I({1})) + Element(5, 23, "\xFF\x80\x10") + Element(5, 30, I({1}));
  cgm += Element(5, 2, I({2})) + Element(5, 15, I({9})) + Element(5, 18, I({3, 1, 0, 0, 0, 0}));
  for (const int id : {1, 2, 3, 7}) cgm += Element(4, id, I({10, 10, 40, 30, 70, 20, 20, 80}));
  cgm += Element(4, 4, I({20, 30, 1}) + "\x04text") + Element(4, 5, I({30, 9, 20, 60, 1}) + "\x03box");
  cgm += Element(4, 8, I({1, 1, 1, 9, 1, 1, 9, 9, 3}));
  cgm += Element(4, 9, I({10, 10, 50, 50, 50, 10, 2, 2, 8, 1}) + std::string(12, '\x7F'));
  cgm += Element(4, 11, I({20, 20, 60, 50})) + Element(4, 12, I({50, 50, 20}));
  for (const int id : {13, 14}) cgm += Element(4, id, I({10, 50, 50, 90, 90, 50, 1}));
  for (const int id : {15, 16}) cgm += Element(4, id, I({50, 50, 10, 0, 0, 10, 30, 0}));
  cgm += Element(4, 17, I({50, 50, 80, 50, 50, 70}));
  for (const int id : {18, 19}) cgm += Element(4, id, I({50, 50, 80, 50, 50, 70, 1, 0, 0, 1, 1}));
  return test::Metafile(cgm);
}

void Write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// A file of one uncompressed or masked image.
std::string ImageFile(ImageForm form) {
  form.blocksAcross = 2;
  const std::string mask =
      form.compression == "NM"
          ? test::MaskBytes({.blocks = {0, 0xFFFFFFFF}, .pads = {0, 1}, .padCode = 7})
          : "";
  const auto bytes = static_cast<size_t>(2 * 64 * form.bands * ((form.bits + 7) / 8));
  return NitfBuilder().Image(form, mask + std::string(bytes, '\x5A')).Bytes();
}

void WriteImages(const std::filesystem::path& folder) {
  for (const char* mode : {"B", "P", "R", "S"}) {
    for (const char* compression : {"NC", "NM"}) {
      ImageForm form;
      form.bands = 3;
      form.representation = "RGB";
      form.mode = mode;
      form.compression = compression;
      Write(folder / (std::string(mode) + compression), ImageFile(form));
    }
  }
  for (const int bits : {1, 8, 12, 16, 32, 64}) {
    ImageForm form;
    form.bits = bits;
    form.pixelType = bits == 1 ? "B" : bits == 64 ? "C" : bits == 32 ? "R" : "INT";
    Write(folder / ("bits" + std::to_string(bits)), ImageFile(form));
  }
  for (const char* compression : {"C1", "C3", "C4", "C8", "M1", "M3", "M4"}) {
    ImageForm form;
    form.compression = compression;
    form.rate = "1D  ";
    Write(folder / compression, NitfBuilder().Image(form, std::string(200, '\x11')).Bytes());
  }
}

// A JPEG image, appended as a caller would.
void WriteJpeg(const std::string& path) {
  NitfHandle document = nullptr;
  KernelBitmap bitmap = {};
  if (Orb_NITFCreate(&document, nullptr) == ORB_SUCCESS &&
      KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, 20, 12, 24, kOrderBgr, nullptr, kViewTopLeft,
                           nullptr, 0) == 1) {
    (void)Orb_NITFAppendImageSegment(document, &bitmap, kFormatJpegRgb, 24, 30);
    (void)Orb_NITFSaveFileA(document, path.c_str());
    KernelFreeBitmap(&bitmap);
  }
  Orb_NITFDestroy(&document);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_seeds FOLDER\n";
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  std::filesystem::create_directories(folder / "document");
  std::filesystem::create_directories(folder / "drawing");
  WriteImages(folder / "document");
  WriteJpeg((folder / "document" / "jpeg").string());
  Write(folder / "drawing" / "every", Drawing());
  NitfBuilder whole;
  whole.Image(ImageForm{}, std::string(64, 'i'))
      .Graphic(test::GraphicRecord(), Drawing())
      .Text("some text");
  whole.extensions.push_back({test::DataExtensionRecord("TRE_OVERFLOW"), "data"});
  Write(folder / "document" / "whole", whole.Bytes());
  return 0;
}
