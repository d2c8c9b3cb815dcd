// Draws a NITF file's composite and writes it as PPM. Usage: render_ppm FILE OUT.ppm
#include <cstdio>
#include <vector>

#include <orbntf/orbntf.hpp>

int main(int count, char** words) {
  if (count != 3) return 2;
  orbntf::Document document;
  orbntf::Bitmap picture;
  orbntf::Status status = document.Open(words[1]);
  if (IsSuccess(status)) status = document.Render(picture);
  if (!IsSuccess(status)) {
    std::fprintf(stderr, "%s: %s\n", words[1], TextOf(status));
    return 1;
  }
  std::FILE* out = std::fopen(words[2], "wb");
  if (out == nullptr) return 1;
  std::fprintf(out, "P6\n%u %u\n255\n", picture.Width(), picture.Height());
  std::vector<uint8_t> rgb(3 * static_cast<size_t>(picture.Width()));
  for (uint32_t y = 0; y < picture.Height(); ++y) {
    const uint8_t* bgr = picture.Row(y);
    for (size_t i = 0; i < rgb.size(); i += 3) {
      rgb[i] = bgr[i + 2];
      rgb[i + 1] = bgr[i + 1];
      rgb[i + 2] = bgr[i];
    }
    std::fwrite(rgb.data(), 1, rgb.size(), out);
  }
  return std::fclose(out) == 0 ? 0 : 1;
}
