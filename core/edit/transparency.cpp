#include "core/edit/transparency.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace core {
namespace {

constexpr uint32_t kMostBits = 16;  // of samples whose values are told apart

uint64_t ValueAt(const uint8_t* sample, uint32_t bytes) {
  if (bytes == 1) return *sample;
  uint16_t value;
  std::memcpy(&value, sample, sizeof value);
  return value;
}
void PutAt(uint8_t* sample, uint32_t bytes, uint64_t value) {
  if (bytes == 1) {
    *sample = static_cast<uint8_t>(value);
    return;
  }
  const auto wide = static_cast<uint16_t>(value);
  std::memcpy(sample, &wide, sizeof wide);
}

}  // namespace

std::optional<uint64_t> BitsOfNumber(const std::string& words, SampleKind kind, uint32_t bits) {
  const char* text = words.c_str();
  char* end = nullptr;
  const double value = std::strtod(text, &end);
  if (end == text || std::strspn(end, " ") != std::strlen(end)) return std::nullopt;
  if (kind == SampleKind::Real) {
    return bits == 32 ? uint64_t{std::bit_cast<uint32_t>(static_cast<float>(value))}
                      : std::bit_cast<uint64_t>(value);
  }
  if (kind == SampleKind::Complex || !std::isfinite(value) || value != std::floor(value))
    return std::nullopt;
  const bool isSigned = kind == SampleKind::Signed;
  const double most = std::ldexp(1.0, static_cast<int>(bits) - (isSigned ? 1 : 0)) - 1;
  if (value > most || value < (isSigned ? -most - 1 : 0)) return std::nullopt;
  const auto number = static_cast<uint64_t>(static_cast<int64_t>(value));
  return number & (~uint64_t{0} >> (64 - 8 * PieceBytes(bits)));
}

OpaqueRaster::OpaqueRaster(Raster& raster, const StoreOptions& options)
    : raster_(raster), options_(options) {
  form_ = raster.Form();
  if (form_.noData) TakeNoData();
  if (!form_.paletteAlpha.empty()) TakePaletteAlpha();
  if (form_.hasAlpha) TakeAlpha();
}

void OpaqueRaster::TakeNoData() { pad_ = BitsOfNumber(*form_.noData, form_.kind, form_.bits); }

// Of a palette one entry may be transparent; its number is the pad value.
void OpaqueRaster::TakePaletteAlpha() {
  const std::vector<uint8_t>& alpha = form_.paletteAlpha;
  const auto clear = std::count(alpha.begin(), alpha.end(), 0),
             opaque = std::count(alpha.begin(), alpha.end(), 255);
  const bool isPlain = options_.way == StoreOptions::Way::Plain;
  if (clear + opaque == static_cast<ptrdiff_t>(alpha.size()) && clear <= 1 && !options_.background &&
      isPlain) {
    if (clear == 1)
      pad_ = static_cast<uint64_t>(std::find(alpha.begin(), alpha.end(), 0) - alpha.begin());
    return;
  }
  if (opaque == static_cast<ptrdiff_t>(alpha.size())) return;
  if (!options_.background)
    throw PictureError(
        "some of its palette's colours are transparent; --background #RRGGBB shines through them");
  for (size_t i = 0; i < alpha.size() && 3 * i + 2 < form_.palette.size(); ++i) {
    for (size_t c = 0; c < 3; ++c) {
      uint8_t& part = form_.palette[3 * i + c];
      part = static_cast<uint8_t>((part * alpha[i] + (*options_.background)[c] * (255 - alpha[i]) + 127) /
                                  255);
    }
  }
}

void OpaqueRaster::TakeAlpha() {
  dropsAlpha_ = true;
  --form_.bands;
  const RasterForm& whole = raster_.Form();
  if (whole.kind != SampleKind::Unsigned || whole.bits > kMostBits)
    throw PictureError("its alpha has " + std::to_string(whole.bits) +
                       " bits, or a sign; up to 16 bits are taken");
  const uint32_t bytes = whole.sampleBytes;
  const uint64_t most = (uint64_t{1} << whole.bits) - 1;
  std::vector<bool> taken(static_cast<size_t>(most) + 1);
  bool isClear = false, isPartial = false;
  raster_.Read([&](const RasterPiece& piece) {
    if (piece.bands != whole.bands) throw PictureError("its alpha stands in a plane of its own");
    const uint8_t* pixel = piece.samples;
    for (uint64_t i = uint64_t{piece.width} * piece.height; i > 0;
         --i, pixel += size_t{whole.bands} * bytes) {
      const uint64_t alpha = ValueAt(pixel + size_t{form_.bands} * bytes, bytes);
      isClear = isClear || alpha == 0;
      isPartial = isPartial || (alpha != 0 && alpha != most);
      bool isOne = alpha != 0;  // one value in all bands
      const uint64_t first = ValueAt(pixel, bytes);
      for (uint32_t band = 1; isOne && band < form_.bands; ++band)
        isOne = ValueAt(pixel + size_t{band} * bytes, bytes) == first;
      if (isOne) taken[static_cast<size_t>(std::min(first, most))] = true;
    }
  });
  if (!isClear && !isPartial) return;
  blends_ = options_.background.has_value();
  if (blends_) return;
  const auto free = std::find(taken.begin(), taken.end(), false);
  const char* why = isPartial ? "some of its pixels are half transparent"
                    : options_.way != StoreOptions::Way::Plain
                        ? "some of its pixels are transparent, which this storage cannot tell"
                    : free == taken.end() ? "some of its pixels are transparent, and every value is taken"
                                          : nullptr;
  if (why != nullptr) throw PictureError(std::string(why) + "; --background #RRGGBB shines through them");
  pad_ = static_cast<uint64_t>(free - taken.begin());
}

void OpaqueRaster::Blend(const uint8_t* in, uint8_t* out, uint64_t alpha) const {
  const uint32_t bytes = form_.sampleBytes;
  const uint64_t most = (uint64_t{1} << form_.bits) - 1;
  for (uint32_t band = 0; band < form_.bands; ++band, in += bytes, out += bytes) {
    const std::array<uint8_t, 3>& background = *options_.background;
    const uint64_t grey =
        (299u * background[0] + 587u * background[1] + 114u * background[2] + 500) / 1000;
    const uint64_t behind = (form_.isColour && band < 3 ? background[band] : grey) * most / 255;
    PutAt(out, bytes, (ValueAt(in, bytes) * alpha + behind * (most - alpha) + most / 2) / most);
  }
}

void OpaqueRaster::Read(const TakePiece& take) {
  if (!dropsAlpha_) return raster_.Read(take);
  const uint32_t bytes = form_.sampleBytes;
  const size_t pixelBytes = size_t{form_.bands} * bytes;
  const uint64_t most = (uint64_t{1} << form_.bits) - 1;
  std::vector<uint8_t> samples;
  raster_.Read([&](const RasterPiece& piece) {
    samples.resize(uint64_t{piece.width} * piece.height * pixelBytes);
    const uint8_t* in = piece.samples;
    for (uint8_t* out = samples.data(); out != samples.data() + samples.size();
         in += pixelBytes + bytes, out += pixelBytes) {
      const uint64_t alpha = ValueAt(in + pixelBytes, bytes);
      if (blends_ && alpha != most) {
        Blend(in, out, alpha);
      } else if (pad_ && alpha == 0) {
        for (uint32_t band = 0; band < form_.bands; ++band)
          PutAt(out + size_t{band} * bytes, bytes, *pad_);
      } else {
        std::memcpy(out, in, pixelBytes);
      }
    }
    RasterPiece own = piece;
    own.bands = form_.bands;
    own.samples = samples.data();
    take(own);
  });
}

}  // namespace core
