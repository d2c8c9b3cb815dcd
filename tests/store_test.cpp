// Pictures as image segments: what goes in comes out, and the module reads it.
#include <fcntl.h>

#include <cstring>
#include <filesystem>

#include "core/edit/add.h"
#include "core/edit/prove.h"
#include "core/edit/recompress.h"
#include "core/samples/samples.h"
#include "tests/support/extract.h"
#include "tests/support/support.h"

namespace {

using core::PartKind;
using core::SampleKind;
using core::StoreOptions;
using test::TempFile;
using Way = core::StoreOptions::Way;
using namespace std::string_literals;

// Samples of a rule, pixels side by side in host order, which come in tiles or in planes.
class MadeRaster : public core::Raster {
 public:
  explicit MadeRaster(const core::RasterForm& form, uint32_t tile = 0, bool isPlanar = false)
      : tile_(tile), isPlanar_(isPlanar) {
    form_ = form;
    form_.sampleBytes = core::PieceBytes(form.bits);
    samples.resize(size_t{form.width} * form.height * form.bands * form_.sampleBytes);
    uint64_t state = 12345;
    for (size_t i = 0; i < samples.size(); i += form_.sampleBytes) {
      state = state * 6364136223846793005u + 1442695040888963407u;
      uint64_t value = state >> 20;
      if (form.bits < 64) value &= (uint64_t{1} << std::min(form.bits, 60u)) - 1;
      if (form.kind == SampleKind::Signed && (value >> (form.bits - 1) & 1) != 0)
        value |= ~uint64_t{0} << form.bits;
      std::memcpy(&samples[i], &value, form_.sampleBytes);
    }
  }
  void Read(const core::TakePiece& take) override {
    const size_t bytes = form_.sampleBytes, pixel = bytes * form_.bands;
    const uint32_t side = tile_ != 0 ? tile_ : std::max(form_.width, form_.height);
    std::string piece;
    for (uint32_t plane = 0; plane < (isPlanar_ ? form_.bands : 1); ++plane) {
      const uint32_t bands = isPlanar_ ? 1 : form_.bands;
      for (uint32_t top = 0; top < form_.height; top += side) {
        for (uint32_t left = 0; left < form_.width; left += side) {
          const uint32_t columns = std::min(side, form_.width - left),
                         rows = std::min(side, form_.height - top);
          piece.clear();
          for (uint32_t y = top; y < top + rows; ++y) {
            for (uint32_t x = left; x < left + columns; ++x)
              piece.append(&samples[(size_t{y} * form_.width + x) * pixel + plane * bytes],
                           bands * bytes);
          }
          take({left, top, columns, rows, plane, bands, reinterpret_cast<const uint8_t*>(piece.data())});
        }
      }
    }
  }
  std::string samples;

 private:
  uint32_t tile_;
  bool isPlanar_;
};

core::RasterForm Form(uint32_t width, uint32_t height, uint32_t bands, uint32_t bits,
                      SampleKind kind = SampleKind::Unsigned) {
  core::RasterForm form;
  form.width = width;
  form.height = height;
  form.bands = bands;
  form.bits = bits;
  form.kind = kind;
  form.isColour = bands == 3;
  return form;
}

const core::Labels kLabels = {"20261126120000", ""};

// A new file of a picture.
std::string Stored(core::Raster& raster, const StoreOptions& options,
                   std::vector<std::string>* errors = nullptr) {
  core::Draft draft = core::NewFile(kLabels);
  std::vector<std::string> notes;
  core::AddImages(draft, core::StoreRaster(draft, raster, "", options, notes), {}, kLabels);
  core::SetLevel(draft, 0, true);
  const TempFile out("");
  const core::Descriptor descriptor(open(out.Path().c_str(), O_WRONLY));
  const core::Proof proof =
      core::WriteProven(draft, descriptor.Get(), out.Path(), core::RecordDefinitions());
  EXPECT_EQ(proof.fault, "");
  if (errors != nullptr) {
    *errors = proof.errors;
  } else {
    EXPECT_TRUE(proof.errors.empty()) << proof.errors[0];
  }
  return out.Contents();
}

std::string Why(core::Raster& raster, const StoreOptions& options) {
  try {
    (void)Stored(raster, options);
  } catch (const core::PictureError& error) {
    return error.what();
  }
  return "";
}

core::SampleImage SamplesOf(const std::string& bytes, uint32_t index = 0) {
  const core::Survey survey{std::string_view(bytes)};
  core::SampleImage image;
  const core::SampleFault fault =
      core::ReadSamples(survey, *survey.Find(PartKind::Image, index), 0, image);
  EXPECT_FALSE(fault.Met()) << fault.words;
  return image;
}
std::string TextOf(const core::SampleImage& image) {
  return {image.samples.begin(), image.samples.end()};
}
std::string Field(const std::string& bytes, uint32_t index, const char* name) {
  const core::Survey survey{std::string_view(bytes)};
  return std::string(survey.Find(PartKind::Image, index)->Trimmed(name));
}

class StoreTest : public test::ModuleTest {};

TEST_F(StoreTest, EveryDepthAndModeComesOutAsItWentIn) {
  int stored = 0;
  for (const auto& [bits, kind] : {std::pair<uint32_t, SampleKind>{1, SampleKind::Unsigned},
                                   {8, SampleKind::Unsigned},
                                   {8, SampleKind::Signed},
                                   {11, SampleKind::Unsigned},
                                   {16, SampleKind::Unsigned},
                                   {16, SampleKind::Signed},
                                   {32, SampleKind::Unsigned},
                                   {32, SampleKind::Real},
                                   {64, SampleKind::Real},
                                   {64, SampleKind::Complex}}) {
    for (const uint32_t bands : {1u, 3u, 8u}) {
      for (const auto& [tile, planar] :
           {std::pair{0u, false}, std::pair{16u, false}, std::pair{0u, true}}) {
        MadeRaster raster(Form(37, 21, bands, bits, kind), tile, planar);
        for (const uint32_t block : {0u, 16u}) {
          for (const char mode : {'B', 'P', 'R', 'S'}) {
            StoreOptions options;
            options.block = block;
            options.mode = mode;
            SCOPED_TRACE(std::to_string(bits) + " bits, " + std::to_string(bands) + " bands, mode " +
                         mode + std::to_string(block) + std::to_string(planar));
            const core::SampleImage image = SamplesOf(Stored(raster, options));
            ASSERT_EQ(image.sampleBytes, raster.Form().sampleBytes);
            ASSERT_EQ(TextOf(image), raster.samples);
            ++stored;
          }
        }
      }
    }
  }
  EXPECT_EQ(stored, 720);
}

TEST_F(StoreTest, LosslessCodestreamsHoldEverySample) {
  for (const auto& [bits, kind] : {std::pair<uint32_t, SampleKind>{8, SampleKind::Unsigned},
                                   {12, SampleKind::Unsigned},
                                   {16, SampleKind::Signed}}) {
    for (const uint32_t bands : {1u, 3u, 5u}) {
      MadeRaster raster(Form(150, 70, bands, bits, kind), 64);
      StoreOptions options;
      options.way = Way::Jpeg2000;
      options.block = 64;
      const std::string file = Stored(raster, options);
      EXPECT_EQ(TextOf(SamplesOf(file)), raster.samples) << bits << ' ' << bands;
      EXPECT_EQ(Field(file, 0, "COMRAT")[0], 'N');
      EXPECT_NE(file.find("J2KLRA"), std::string::npos);
    }
  }
  MadeRaster reals(Form(8, 8, 1, 32, SampleKind::Real));
  StoreOptions options;
  options.way = Way::Jpeg2000;
  EXPECT_NE(Why(reals, options).find("--lossless"), std::string::npos);
}

TEST_F(StoreTest, LossyStoragesAreNearTheirSamples) {
  core::RasterForm form = Form(200, 150, 3, 8);
  for (const uint32_t bits : {8u, 12u}) {
    for (const uint32_t bands : {1u, 3u}) {
      form.bits = bits;
      form.bands = bands;
      form.isColour = bands == 3;
      MadeRaster raster(form);
      for (size_t i = 0; i < raster.samples.size(); i += raster.Form().sampleBytes) {
        const auto pixel = static_cast<uint32_t>(i / raster.Form().sampleBytes / bands);
        const auto smooth = static_cast<uint16_t>((pixel % 200 + pixel / 200) << (bits - 8) >> 1);
        std::memcpy(&raster.samples[i], &smooth, raster.Form().sampleBytes);
      }
      for (const Way way : {Way::Jpeg, Way::Jpeg2000}) {
        if (way == Way::Jpeg && bits == 12 && bands == 3) continue;
        StoreOptions options;
        options.way = way;
        options.quality = 95;
        options.rate = way == Way::Jpeg2000 ? 2 : 0;
        options.block = 64;
        const std::string file = Stored(raster, options);
        if (way == Way::Jpeg && bands == 3) continue;  // stored as luminance and differences
        const core::SampleImage image = SamplesOf(file);
        ASSERT_EQ(image.samples.size(), raster.samples.size());
        uint32_t greatest = 0;
        for (size_t i = 0; i < raster.samples.size(); i += image.sampleBytes) {
          uint16_t was = 0, is = 0;
          std::memcpy(&was, &raster.samples[i], image.sampleBytes);
          std::memcpy(&is, &image.samples[i], image.sampleBytes);
          greatest = std::max<uint32_t>(greatest, static_cast<uint32_t>(std::abs(was - is)));
        }
        EXPECT_LE(greatest, bits == 8 ? 8u : 64u) << bits << ' ' << bands << ' ' << static_cast<int>(way);
      }
    }
  }
}

TEST_F(StoreTest, TheModuleDrawsWhatIsStoredAtLevelThree) {
  for (const Way way : {Way::Plain, Way::Jpeg, Way::Jpeg2000}) {
    for (const uint32_t bands : {1u, 3u}) {
      MadeRaster raster(Form(100, 80, bands, 8));
      StoreOptions options;
      options.way = way;
      const std::string file = Stored(raster, options);
      EXPECT_EQ(file.substr(9, 2), "03");
      const test::Picture picture = test::RenderBytes(file);
      ASSERT_EQ(picture.status, 1);
      EXPECT_EQ(picture.width, 100u);
      EXPECT_EQ(picture.height, 80u);
      if (way == Way::Jpeg) continue;
      const auto* pixel = reinterpret_cast<const uint8_t*>(&raster.samples[(5 * 100 + 7) * bands]);
      EXPECT_EQ(picture.At(7, 5),
                (test::Rgb{pixel[0], pixel[bands == 3 ? 1 : 0], pixel[bands == 3 ? 2 : 0]}));
    }
  }
}

TEST_F(StoreTest, NoDataIsPadPixelsAndEmptyBlocksAreLeftOut) {
  core::RasterForm form = Form(64, 32, 2, 16);
  form.noData = "7";
  MadeRaster raster(form);
  const uint16_t none = 7;
  for (uint32_t y = 0; y < 16; ++y) {
    for (uint32_t x = 16; x < 40; ++x) {
      for (uint32_t band = 0; band < 2; ++band)
        std::memcpy(&raster.samples[((y * 64 + x) * 2 + band) * 2], &none, 2);
    }
  }
  for (const char mode : {'B', 'P', 'S'}) {
    StoreOptions options;
    options.block = 16;
    options.mode = mode;
    const std::string whole = Stored(raster, options);
    options.isMasked = true;
    const std::string masked = Stored(raster, options);
    EXPECT_LT(masked.size(), whole.size());
    for (const std::string& file : {whole, masked}) {
      const core::SampleImage image = SamplesOf(file);
      EXPECT_EQ(TextOf(image), raster.samples);
      EXPECT_EQ(image.noData, 7u);
      EXPECT_EQ(Field(file, 0, "IC"), "NM");
    }
  }
  MadeRaster plain(Form(16, 16, 1, 8));
  StoreOptions options;
  options.isMasked = true;
  EXPECT_NE(Why(plain, options).find("--masked"), std::string::npos);
}

TEST_F(StoreTest, TransparentPixelsArePadsOrBlend) {
  core::RasterForm form = Form(32, 8, 4, 8);
  form.isColour = form.hasAlpha = true;
  MadeRaster raster(form);
  for (size_t i = 3; i < raster.samples.size(); i += 4) raster.samples[i] = i % 16 == 3 ? '\0' : '\xFF';
  const core::SampleImage image = SamplesOf(Stored(raster, {}));
  ASSERT_EQ(image.bands, 3u);
  ASSERT_TRUE(image.noData.has_value());
  for (size_t pixel = 0; pixel < 32 * 8; ++pixel) {
    const bool isClear = raster.samples[4 * pixel + 3] == 0;
    bool isPad = true;
    for (size_t band = 0; band < 3; ++band) {
      isPad = isPad && image.samples[3 * pixel + band] == *image.noData;
      const auto was = static_cast<uint8_t>(raster.samples[4 * pixel + band]);
      EXPECT_TRUE(isClear || image.samples[3 * pixel + band] == was);
    }
    EXPECT_EQ(isPad, isClear);
  }
  StoreOptions jpeg;
  jpeg.way = Way::Jpeg;
  EXPECT_NE(Why(raster, jpeg).find("--background"), std::string::npos);
  raster.samples[3] = '\x80';
  EXPECT_NE(Why(raster, {}).find("half transparent"), std::string::npos);
  StoreOptions white;
  white.background = {255, 255, 255};
  const core::SampleImage blended = SamplesOf(Stored(raster, white));
  EXPECT_EQ(blended.samples[3 * 4], 255) << "white shines through";
  EXPECT_FALSE(blended.noData.has_value());
}

TEST_F(StoreTest, PalettesAreTables) {
  core::RasterForm form = Form(20, 10, 1, 4);
  for (int i = 0; i < 48; ++i) form.palette.push_back(static_cast<uint8_t>(5 * i));
  MadeRaster raster(form);
  const std::string file = Stored(raster, {});
  EXPECT_EQ(TextOf(SamplesOf(file)), raster.samples);
  EXPECT_EQ(SamplesOf(file).palette, form.palette);
  const test::Picture picture = test::RenderBytes(file);
  ASSERT_EQ(picture.status, 1);
  const auto entry = static_cast<size_t>(raster.samples[0]) * 3;
  EXPECT_EQ(picture.At(0, 0),
            (test::Rgb{form.palette[entry], form.palette[entry + 1], form.palette[entry + 2]}));
}

TEST_F(StoreTest, WhatIsLargerThanASegmentIsSplitByRows) {
  MadeRaster raster(Form(40, 100, 1, 8));
  StoreOptions options;
  options.block = 16;
  options.mostBytes = 2000;
  const std::string file = Stored(raster, options);
  const core::Survey survey{std::string_view(file)};
  ASSERT_EQ(survey.Count(PartKind::Image), 4u);
  std::string all;
  for (uint32_t i = 0; i < 4; ++i) all += TextOf(SamplesOf(file, i));
  EXPECT_EQ(all, raster.samples);
  const core::Places places(survey);
  EXPECT_EQ(places.Of(*survey.Find(PartKind::Image, 2))->top, 64);
  EXPECT_EQ(Field(file, 2, "IALVL"), "002");
  EXPECT_EQ(Field(file, 2, "ILOC"), "0003200000");
}

TEST_F(StoreTest, StreamsAreStoredAsTheyAre) {
  MadeRaster raster(Form(50, 30, 3, 8));
  for (const Way way : {Way::Jpeg, Way::Jpeg2000}) {
    StoreOptions options;
    options.way = way;
    const std::string file = Stored(raster, options);
    const core::Survey survey{std::string_view(file)};
    const std::string stream = survey.Data(*survey.Find(PartKind::Image, 0));
    const TempFile picture(stream, ".bin");
    core::Draft draft = core::NewFile(kLabels);
    StoreOptions asIs;
    asIs.isAsIs = true;
    std::vector<std::string> notes;
    core::AddImages(draft, core::StorePicture(draft, picture.Path(), "", asIs, notes), {}, kLabels);
    const TempFile out("");
    const core::Descriptor descriptor(open(out.Path().c_str(), O_WRONLY));
    const core::Proof proof =
        core::WriteProven(draft, descriptor.Get(), out.Path(), core::RecordDefinitions());
    EXPECT_EQ(proof.fault, "");
    EXPECT_TRUE(proof.errors.empty()) << proof.errors[0];
    const std::string again = out.Contents();
    const core::Survey own{std::string_view(again)};
    EXPECT_EQ(own.Data(*own.Find(PartKind::Image, 0)), stream);
    EXPECT_EQ(test::RenderBytes(again).pixels, test::RenderBytes(file).pixels);
  }
}

TEST_F(StoreTest, RecompressingKeepsSamplesAndAllElse) {
  MadeRaster raster(Form(90, 60, 3, 16));
  const TempFile source(Stored(raster, {}));
  const core::Survey survey(source.Path());
  for (const Way way : {Way::Plain, Way::Jpeg2000}) {
    core::Draft draft(survey);
    StoreOptions options;
    options.way = way;
    options.block = 32;
    options.mode = 'R';
    std::vector<std::string> notes;
    core::Recompress(draft, 0, "", options, notes);
    const TempFile out("");
    const core::Descriptor descriptor(open(out.Path().c_str(), O_WRONLY));
    const core::Proof proof =
        core::WriteProven(draft, descriptor.Get(), out.Path(), core::RecordDefinitions());
    EXPECT_EQ(proof.fault, "");
    EXPECT_TRUE(proof.errors.empty()) << proof.errors[0];
    EXPECT_EQ(TextOf(SamplesOf(out.Contents())), raster.samples);
    EXPECT_EQ(Field(out.Contents(), 0, "IDATIM"), kLabels.date);
    EXPECT_EQ(Field(out.Contents(), 0, "NPPBH"), "0032");
  }
}

}  // namespace
