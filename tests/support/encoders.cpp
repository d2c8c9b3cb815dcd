#include "tests/support/encoders.h"

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
  return MakeJpeg(
      {.width = width,
       .height = height,
       .components = components,
       .colours = rgb ? JpegForm::Rgb : JpegForm::AsTheyAre,
       .progressive = progressive,
       .quality = 97},
      [&](int x, int y, int c) {
        return static_cast<uint8_t>(samples[static_cast<size_t>((y * width + x) * components + c)]);
      });
}

std::string BlockStream(int block, int across, const std::vector<int>& bands, bool rgb) {
  const int left = block % across * kSide, top = block / across * kSide;
  return EncodeJpeg(Samples(left, top, kSide, kSide, bands), kSide, kSide, static_cast<int>(bands.size()),
                    rgb);
}

std::string EncodeJpeg2000(int width, int height, const std::vector<int>& bands,
                           const Jpeg2000Form& form) {
  return MakeJpeg2000(width, height, static_cast<int>(bands.size()), form, [&](int x, int y, int c) {
    return Sample(x, y, bands[static_cast<size_t>(c)]) << (form.precision - 8);
  });
}

bool IsBlack(int x, int y) { return (x / 5 + y / 3) % 3 == 0; }

std::string EncodeFacsimile(int width, int height, bool twoDimensional) {
  return MakeFacsimile(width, height, twoDimensional, [](int x, int y, int) { return IsBlack(x, y); });
}

}  // namespace test
