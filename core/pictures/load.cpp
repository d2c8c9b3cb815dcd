// Pictures of PNG and Netpbm files at their own depth.
#include <algorithm>
#include <cctype>
#include <csetjmp>
#include <cstring>

#include <png.h>

#include "core/pictures/load.h"
#include "media/drawing/metafile.h"
#include "media/work.h"

namespace core {
namespace {

// Blends samples with an alpha behind them on white, in place; returns the samples without it.
void BlendOnWhite(Picture& picture) {
  const uint32_t most = picture.bits == 16 ? 65535 : 255, bytes = picture.bits / 8;
  const auto get = [&](const uint8_t* p) {
    return bytes == 2 ? static_cast<uint32_t>(p[0] << 8 | p[1]) : p[0];
  };
  uint8_t* out = picture.samples.data();
  const uint8_t* in = out;
  for (uint64_t i = uint64_t{picture.width} * picture.height; i > 0; --i) {
    const uint64_t alpha = get(in + size_t{picture.channels} * bytes);
    for (uint32_t c = 0; c < picture.channels; ++c, in += bytes, out += bytes) {
      const uint64_t value = (get(in) * alpha + most * (most - alpha) + most / 2) / most;
      out[0] = static_cast<uint8_t>(bytes == 2 ? value >> 8 : value);
      if (bytes == 2) out[1] = static_cast<uint8_t>(value);
    }
    in += bytes;
  }
  picture.samples.resize(static_cast<size_t>(out - picture.samples.data()));
  picture.lostAlpha = true;
}

// ---------------------------------------------------------------- PNG

struct PngSource {
  const std::string& bytes;
  size_t position = 0;
};
void ReadPngBytes(png_structp png, png_bytep to, png_size_t count) {
  auto& source = *static_cast<PngSource*>(png_get_io_ptr(png));
  if (count > source.bytes.size() - source.position) png_error(png, "end");
  std::memcpy(to, source.bytes.data() + source.position, count);
  source.position += count;
}
void Jump(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void Drop(png_structp, png_const_charp) {}

// libpng's errors jump back here; nothing with a destructor lives in between.
media::Outcome DecodePng(png_structp png, png_infop info, Picture& picture, bool& hasAlpha,
                         std::vector<png_bytep>& rows) {
  if (setjmp(png_jmpbuf(png)) != 0) return media::Outcome::BadData;
  png_read_info(png, info);
  png_set_palette_to_rgb(png);
  png_set_expand_gray_1_2_4_to_8(png);
  if (png_get_valid(png, info, PNG_INFO_tRNS) != 0) png_set_tRNS_to_alpha(png);
  (void)png_set_interlace_handling(png);
  png_read_update_info(png, info);
  const png_byte colour = png_get_color_type(png, info);
  hasAlpha = (colour & PNG_COLOR_MASK_ALPHA) != 0;
  picture.width = png_get_image_width(png, info);
  picture.height = png_get_image_height(png, info);
  picture.channels = (colour & PNG_COLOR_MASK_COLOR) != 0 ? 3 : 1;
  picture.bits = png_get_bit_depth(png, info);
  if (!IsTakeable(picture)) return media::Outcome::NoMemory;
  const size_t rowBytes = png_get_rowbytes(png, info);
  picture.samples.resize(rowBytes * picture.height);
  rows.resize(picture.height);
  for (size_t y = 0; y < rows.size(); ++y) rows[y] = &picture.samples[y * rowBytes];
  png_read_image(png, rows.data());
  return media::Outcome::Ok;
}

// ---------------------------------------------------------------- Netpbm

// A number of the header; white space and comments stand in front of it.
bool TakeNumber(const std::string& bytes, size_t& at, uint32_t& value) {
  while (at < bytes.size() && (std::isspace(static_cast<uint8_t>(bytes[at])) != 0 || bytes[at] == '#')) {
    if (bytes[at] == '#') at = std::min(bytes.find('\n', at), bytes.size());
    if (at < bytes.size()) ++at;
  }
  const size_t first = at;
  for (value = 0; at < bytes.size() && bytes[at] >= '0' && bytes[at] <= '9' && at - first < 9; ++at)
    value = value * 10 + static_cast<uint32_t>(bytes[at] - '0');
  return at > first;
}

}  // namespace

bool IsTakeable(const Picture& picture) {
  constexpr uint64_t kMostBytes = INT32_MAX;
  const uint64_t pixels = uint64_t{picture.width} * picture.height;
  return pixels != 0 && pixels <= kMostBytes / 3 && media::AllowsPixels(pixels);
}

media::Outcome LoadPicture(const std::string& bytes, Picture& picture) {
  for (const auto load : {&LoadPng, &LoadTiff, &LoadNetpbm}) {
    const media::Outcome outcome = load(bytes, picture);
    if (outcome != media::Outcome::NotRecognised) return outcome;
  }
  return media::Outcome::NotRecognised;
}

media::Outcome LoadDrawing(const std::string& bytes, media::Drawing& drawing) {
  drawing.bytes = bytes.size();
  return media::DecodeCgm(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), drawing);
}

media::Outcome LoadPng(const std::string& bytes, Picture& picture) {
  constexpr size_t kSignature = 8;
  const auto* begin = reinterpret_cast<const uint8_t*>(bytes.data());
  if (bytes.size() < kSignature || png_sig_cmp(begin, 0, kSignature) != 0)
    return media::Outcome::NotRecognised;
  PngSource source{bytes};
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, &Jump, &Drop);
  png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
  media::Outcome status = media::Outcome::NoMemory;
  bool hasAlpha = false;
  std::vector<png_bytep> rows;
  if (info != nullptr) {
    png_set_read_fn(png, &source, &ReadPngBytes);
    status = DecodePng(png, info, picture, hasAlpha, rows);
  }
  png_destroy_read_struct(&png, &info, nullptr);
  if (status == media::Outcome::Ok && hasAlpha) BlendOnWhite(picture);
  return status;
}

media::Outcome LoadNetpbm(const std::string& bytes, Picture& picture) {
  if (bytes.size() < 3 || bytes[0] != 'P' || (bytes[1] != '5' && bytes[1] != '6'))
    return media::Outcome::NotRecognised;
  size_t at = 2;
  uint32_t most = 0;
  if (!TakeNumber(bytes, at, picture.width) || !TakeNumber(bytes, at, picture.height) ||
      !TakeNumber(bytes, at, most) || most == 0 || most > 65535 || at >= bytes.size()) {
    return media::Outcome::BadData;
  }
  ++at;  // one white space
  picture.channels = bytes[1] == '5' ? 1 : 3;
  picture.bits = most > 255 ? 16 : 8;
  if (!IsTakeable(picture)) return media::Outcome::NoMemory;
  const size_t count = size_t{picture.width} * picture.height * picture.channels;
  const size_t wanted = count * picture.bits / 8;
  if (bytes.size() - at < wanted) return media::Outcome::BadData;
  picture.samples.assign(bytes.begin() + static_cast<ptrdiff_t>(at),
                         bytes.begin() + static_cast<ptrdiff_t>(at + wanted));
  const uint32_t full = picture.bits == 16 ? 65535 : 255;
  for (size_t i = 0; most != full && i < count; ++i) {
    uint8_t* sample = &picture.samples[i * picture.bits / 8];
    const uint32_t value =
        picture.bits == 16 ? static_cast<uint32_t>(sample[0] << 8 | sample[1]) : sample[0];
    const uint32_t scaled = static_cast<uint32_t>(uint64_t{std::min(value, most)} * full / most);
    if (picture.bits == 16) *sample++ = static_cast<uint8_t>(scaled >> 8);
    *sample = static_cast<uint8_t>(scaled);
  }
  return media::Outcome::Ok;
}

}  // namespace core
