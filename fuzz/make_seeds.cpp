// Writes seed corpora into FOLDER/TARGET: make_seeds FOLDER KEPT, where KEPT holds the files that the
// tests make (ORBNTF_KEPT_FILES).
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "Common/NitfFile.h"
#include "core/pictures/picture.h"
#include "hostkit/hostkit.h"

namespace {

std::filesystem::path folder;

void Write(const std::string& target, const std::string& bytes) {
  const std::string name = std::to_string(std::hash<std::string>()(bytes));
  std::filesystem::create_directories(folder / target);
  std::ofstream(folder / target / name, std::ios::binary) << bytes;
}

std::string DataOf(NitfFile& document, SegmentKind kind, uint32_t index) {
  constexpr uint32_t kMost = 100000;
  std::string data(std::min(document.DataLength(kind, index), kMost), '\0');
  document.SeekToData(kind, index);
  data.resize(KernelRead(document.FileHandle(), data.data(), static_cast<uint32_t>(data.size())));
  return data;
}

// The streams of a file's segments, each with bytes behind it that choose what its target does.
void WriteStreams(NitfFile& document) {
  const std::string choices(16, '\x01');
  for (uint32_t i = 0; i < document.ImageCount(); ++i) {
    const ImageSubheader& image = *document.images.At(i);
    const std::string data = DataOf(document, SegmentKind::Image, i);
    switch (image.Family()) {
      case ReaderFamily::Jpeg:
        Write("jpeg", data + choices);
        Write("jpeg2000", data + std::string(8, '\0'));
        break;
      case ReaderFamily::Facsimile:
        Write("facsimile", data + std::string(5, '\0') + "\x40\x01\x04\x01");
        break;
      case ReaderFamily::VectorQuantised:
        Write("vector", data.substr(std::min<size_t>(data.size(), 77)) +
                            std::string("\x08\x0c\x10\x04\x04\x04\x08\x08\x01", 9));
        break;
      default:
        break;
    }
  }
  for (uint32_t i = 0; i < document.GraphicCount(); ++i)
    Write("drawing", DataOf(document, SegmentKind::Graphic, i) + '\x80');
}

void WritePicture() {
  const std::string path = (folder / "picture.png").string();
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return;
  {
    const auto writer = core::StartPicture(core::PictureForm::Png, file, 9, 4);
    const std::string row(27, '\x5A');
    for (int y = 0; y < 4; ++y) writer->PutRow(reinterpret_cast<const uint8_t*>(row.data()));
    writer->Finish();
  }
  std::fclose(file);
  std::ifstream stored(path, std::ios::binary);
  Write("input", std::string(std::istreambuf_iterator<char>(stored), {}) + '\0');
  std::filesystem::remove(path);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: make_seeds FOLDER KEPT\n";
    return 2;
  }
  HostkitSetMessageHandler([](const char*, const char*) {});
  folder = argv[1];
  std::filesystem::create_directories(folder);
  WritePicture();
  Write("input", std::string("a text of\r\ntwo lines\x01"));
  for (const auto& entry : std::filesystem::directory_iterator(argv[2])) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    Write("filter", bytes + '\0');
    Write("api", bytes + std::string("\x04\x01\x02\x03\x06\x07", 6));
    NitfFile document;
    if (Ok(document.ReadDocument(entry.path().u16string().c_str()))) WriteStreams(document);
  }
  return 0;
}
