#include "core/edit/store_streams.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "media/codecs/jpeg.h"
#include "media/codecs/jpeg2000.h"
#include "media/codecs/jpeg2000_encode.h"

namespace core {
namespace {

// Where streams go that are made one after the other.
class StreamFile {
 public:
  StreamFile(Draft& draft, const std::string& folder)
      : file_(draft.Keep(std::make_shared<ScratchFile>(folder))) {}
  void Add(const std::string& bytes) { file_.Write(file_.Size(), bytes.data(), bytes.size()); }
  ScratchFile& File() { return file_; }
  Pieces Data() {
    const FileBytes& bytes = file_.Bytes();
    return {{&bytes, 0, bytes.Size()}};
  }

 private:
  ScratchFile& file_;
};

void RequireEncoded(media::Outcome outcome, const char* what) {
  if (outcome != media::Outcome::Ok) throw PictureError(FaultOf(outcome, what).words);
}

// ---------------------------------------------------------------- JPEG

// Pixels beyond the picture repeat its last ones, so that nothing sharp stands at its edge.
void RepeatEdge(std::vector<uint8_t>& row, uint32_t there, uint32_t width, size_t pixelBytes) {
  for (size_t x = there; x < width; ++x)
    std::memcpy(&row[x * pixelBytes], &row[(there - 1) * pixelBytes], pixelBytes);
}

// The rows of a block, from the top; behind the picture's last one that one again.
class BlockRows {
 public:
  BlockRows(BlockStore& store, uint32_t column, uint32_t row)
      : store_(store), column_(column), row_(row) {
    const BlockForm& form = store.Form();
    columns_ = std::min(form.blockWidth, form.width - column * form.blockWidth);
    rows_ = std::min(form.blockHeight, form.height - row * form.blockHeight);
  }
  std::vector<uint8_t>& Row(uint32_t y) {
    const BlockForm& form = store_.Form();
    store_.ReadRows(column_, row_, std::min(y, rows_ - 1), 1, samples_);
    RepeatEdge(samples_, columns_, form.blockWidth, size_t{form.bands} * form.SampleBytes());
    return samples_;
  }

 private:
  BlockStore& store_;
  uint32_t column_, row_, columns_, rows_;
  std::vector<uint8_t> samples_;
};

// The segment that tells readers of the format what the stream is (MIL-STD-188-198A, table B-I), behind
// the first marker.
std::string WithApplication(const std::string& stream, const BlockForm& form, uint32_t bits,
                            bool isColour) {
  std::string segment("\xFF\xE6\x00\x19NITF\0", 9);
  const auto add = [&](uint32_t value, size_t bytes) {
    for (size_t i = bytes; i-- > 0;) segment += static_cast<char>(value >> (8 * i));
  };
  add(0x0200, 2);  // version
  add(isColour ? 'P' : 'B', 1);
  add(form.Across(), 2);
  add(form.Down(), 2);
  add(isColour ? 1 : 0, 1);
  add(bits, 1);
  add(0, 1);                  // class
  add(bits == 8 ? 1 : 4, 1);  // baseline, or extended sequential
  add(0, 1);                  // its own tables
  add(isColour ? 2 : 0, 1);   // luminance and differences
  add(bits, 1);
  add(0, 4);  // filters and flags
  return stream.substr(0, 2) + segment + stream.substr(2);
}

std::string EncodeBlock(BlockStore& store, uint32_t column, uint32_t row, const RasterForm& raster,
                        int quality) {
  const BlockForm& form = store.Form();
  BlockRows rows(store, column, row);
  std::string stream;
  if (raster.bits <= 8) {
    const media::JpegPlan plan = {form.blockWidth, form.blockHeight, form.bands == 1,
                                  false,           quality,          raster.isYcc};
    std::vector<uint8_t> swapped;
    RequireEncoded(media::EncodeJpeg(
                       plan,
                       [&](uint32_t y) -> const uint8_t* {
                         std::vector<uint8_t>& samples = rows.Row(y);
                         for (size_t x = 0; raster.isColour && x < samples.size(); x += 3)
                           std::swap(samples[x], samples[x + 2]);
                         return samples.data();
                       },
                       stream),
                   "the JPEG stream");
    return stream;
  }
  std::vector<uint16_t> samples(size_t{form.blockWidth} * form.blockHeight);
  for (uint32_t y = 0; y < form.blockHeight; ++y) {
    const std::vector<uint8_t>& bytes = rows.Row(y);
    for (size_t x = 0; x < form.blockWidth; ++x)
      samples[size_t{y} * form.blockWidth + x] =
          static_cast<uint16_t>(bytes[2 * x] << 8 | bytes[2 * x + 1]);
  }
  RequireEncoded(media::EncodeWideJpeg({form.blockWidth, form.blockHeight, true, false, quality},
                                       samples.data(), stream),
                 "the 12-bit JPEG stream");
  return stream;
}

// ---------------------------------------------------------------- JPEG 2000

constexpr double kLayerRates[] = {0.03125, 0.0625, 0.125, 0.25, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0,
                                  1.1,     1.2,    1.3,   1.5,  1.7, 2.0, 2.3, 3.5, 3.9};
constexpr uint32_t kWavelets = 5;

std::string RateText(const char* form, double rate) {
  char text[16];
  (void)std::snprintf(text, sizeof text, form, rate);
  return text;
}

media::Jpeg2000Plan PlanOf(const BlockForm& form, const RasterForm& raster, double rate) {
  media::Jpeg2000Plan plan;
  plan.width = form.width;
  plan.height = form.height;
  plan.tileWidth = form.blockWidth;
  plan.tileHeight = form.blockHeight;
  plan.components = form.bands;
  plan.precision = raster.bits;
  plan.isSigned = raster.kind == SampleKind::Signed;
  plan.isColour = raster.isColour && form.bands == 3;
  plan.isLossless = rate == 0;
  plan.levels = kWavelets;
  for (const double layer : kLayerRates) {
    if (layer < (rate == 0 ? plan.precision : rate)) plan.layers.push_back(layer);
  }
  if (!plan.isLossless) plan.layers.push_back(rate);
  return plan;
}

// What the layers were made for (J2KLRA); the last one has the rate that was achieved.
std::string LayerRecord(const media::Jpeg2000Plan& plan, uint32_t bands, double achieved) {
  const std::vector<double>& layers = plan.layers;
  std::string record = "0" + NumberDigits(media::LevelsOf(plan), 2, "NLEVELS_O") +
                       NumberDigits(bands, 5, "NBANDS_O") +
                       NumberDigits(layers.size() + 1, 3, "NLAYERS_O");
  for (size_t i = 0; i <= layers.size(); ++i)
    record +=
        NumberDigits(i, 3, "LAYER_ID") + RateText("%09.6f", i < layers.size() ? layers[i] : achieved);
  return record;
}

// A tile's samples, component by component, in host order.
void GatherTile(BlockStore& store, const media::Window& place, std::vector<uint8_t>& samples) {
  const BlockForm& form = store.Form();
  const size_t bytes = form.SampleBytes(), pixel = bytes * form.bands;
  const size_t count = size_t{place.width} * place.height;
  std::vector<uint8_t> rows;
  store.ReadRows(place.left / form.blockWidth, place.top / form.blockHeight, 0, place.height, rows);
  samples.resize(count * pixel);
  for (uint32_t band = 0; band < form.bands; ++band) {
    uint8_t* out = &samples[band * count * bytes];
    for (uint32_t y = 0; y < place.height; ++y) {
      const uint8_t* in = &rows[size_t{y} * form.blockWidth * pixel + band * bytes];
      for (uint32_t x = 0; x < place.width; ++x, in += pixel, out += bytes) {
        std::memcpy(out, in, bytes);
        if constexpr (std::endian::native == std::endian::little) std::reverse(out, out + bytes);
      }
    }
  }
}

}  // namespace

void RequireStorable(const RasterForm& form, const StoreOptions& options) {
  const std::string what =
      std::to_string(form.bands) + " bands of " + std::to_string(form.bits) + " bits";
  if (options.block > 8192) throw PictureError("--block: a block has up to 8192 pixels on a side");
  if (options.way == StoreOptions::Way::Jpeg) {
    if (form.kind != SampleKind::Unsigned ||
        (form.bands != 1 && !(form.bands == 3 && (form.isColour || form.isYcc))))
      throw PictureError(
          "JPEG holds one band, or three of colour, of whole numbers without a sign; this has " + what +
          ": --lossless");
    if (form.bits > 12 || (form.bits > 8 && form.bands != 1))
      throw PictureError("JPEG holds 8 bits, or 12 in one band; this has " + what +
                         ": --lossless or --jpeg2000 store them as they are");
  }
  if (options.way == StoreOptions::Way::Jpeg2000) {
    constexpr uint32_t kMostBits = 31;
    if (form.kind == SampleKind::Real || form.kind == SampleKind::Complex || form.bits > kMostBits)
      throw PictureError(
          "JPEG 2000 holds whole numbers of up to 31 bits; --lossless stores others as they are");
    constexpr uint64_t kMostTile = 64 << 20;
    const uint64_t side = options.block != 0 ? options.block : 1024;
    if (side * side * form.bands > kMostTile)
      throw PictureError("a tile of " + what + " is too large to be made; --block makes it smaller");
  }
}

void StoreJpeg(Draft& draft, BlockStore& store, const RasterForm& raster, int quality,
               StoredImage& image) {
  const BlockForm& form = store.Form();
  StreamFile streams(draft, "");
  const bool isColour = form.bands == 3;
  const uint32_t bits = raster.bits <= 8 ? 8 : 12;
  for (uint32_t row = 0; row < form.Down(); ++row) {
    for (uint32_t column = 0; column < form.Across(); ++column)
      streams.Add(
          WithApplication(EncodeBlock(store, column, row, raster, quality), form, bits, isColour));
  }
  image.form.compression = "C3";
  image.form.rate = "00.0";
  image.form.mode = isColour ? 'P' : 'B';
  image.form.bits = bits;
  image.form.significantBits = bits == 8 ? 8 : raster.bits;
  if (isColour) image.form.representation = "YCbCr601";
  constexpr const char* kNames[] = {"Y", "Cb", "Cr"};
  for (size_t i = 0; i < 3 && isColour; ++i) image.form.bands[i].representation = kNames[i];
  image.data = streams.Data();
}

void StoreJpeg2000(Draft& draft, BlockStore& store, const RasterForm& raster, double rate,
                   StoredImage& image) {
  const BlockForm& form = store.Form();
  StreamFile stream(draft, "");
  media::Jpeg2000Plan plan = PlanOf(form, raster, rate);
  const auto give = [&](const media::Window& place, std::vector<uint8_t>& samples) {
    GatherTile(store, place, samples);
  };
  const auto put = [&](uint64_t at, const uint8_t* bytes, size_t count) {
    try {
      stream.File().Write(at, bytes, count);
      return true;
    } catch (const std::exception&) {
      return false;
    }
  };
  RequireEncoded(media::EncodeJpeg2000(plan, give, put), "the codestream");
  image.data = stream.Data();
  const double achieved = 8.0 * static_cast<double>(LengthOf(image.data)) /
                          (static_cast<double>(form.width) * form.height * form.bands);
  image.form.compression = "C8";
  image.form.mode = 'B';
  image.form.rate =
      plan.isLossless
          ? "N" + NumberDigits(static_cast<uint64_t>(std::llround(std::min(99.9, achieved) * 10)), 3,
                               "COMRAT")
          : NumberDigits(static_cast<uint64_t>(std::llround(rate * 100)), 4, "COMRAT");
  image.form.bits = image.form.significantBits = raster.bits;
  if (raster.bits == 1) image.form.pixelType = "B";
  if (!plan.isLossless) plan.layers.pop_back();
  image.layers = LayerRecord(plan, form.bands, achieved);
}

}  // namespace core
