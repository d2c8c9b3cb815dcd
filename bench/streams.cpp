#include "bench/streams.h"

#include "tests/support/codec_streams.h"

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
  const int width = static_cast<int>(side);
  return test::MakeJpeg(
      {.width = width, .height = width, .components = components, .colours = test::JpegForm::Converted},
      [&](int x, int y, int c) {
        return static_cast<uint8_t>(
            pixels[static_cast<size_t>(y * width + x) * static_cast<size_t>(components) +
                   static_cast<size_t>(c)]);
      });
}

std::string EncodeJpeg2000(const std::string& pixels, uint32_t side, uint32_t tile) {
  const int width = static_cast<int>(side);
  return test::MakeJpeg2000(width, width, 1, {.tile = static_cast<int>(tile)}, [&](int x, int y, int) {
    return static_cast<uint8_t>(pixels[static_cast<size_t>(y * width + x)]);
  });
}

std::string EncodeFacsimile(const std::string& pixels, uint32_t side, const std::string& path) {
  const int width = static_cast<int>(side);
  return test::MakeFacsimile(
      width, width, true,
      [&](int x, int y, int) {
        return static_cast<uint8_t>(pixels[static_cast<size_t>(y * width + x)]) < 100;
      },
      path);
}

}  // namespace bench
