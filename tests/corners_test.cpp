// Where picture files lie, in their tags and as the corners of images.
#include "core/edit/corners.h"

#include <cstdio>

#include "core/format/geography.h"
#include "core/pictures/sample_files.h"
#include "core/place/georeference.h"
#include "core/place/grid.h"
#include "core/place/rational.h"
#include "tests/support/support.h"

namespace test {
namespace {

using core::CornerFields;
using core::Georeference;

constexpr uint32_t kColumns = 100, kRows = 50;

// A picture written with a place and read again.
core::RasterForm ReadBack(const Georeference& reference) {
  core::SampleImage image;
  image.width = kColumns;
  image.height = kRows;
  image.samples.assign(size_t{kColumns} * kRows, 7);
  image.noData = 250;
  const TempFile out("", ".tif");
  std::FILE* file = std::fopen(out.Path().c_str(), "w+b");
  EXPECT_TRUE(core::WriteTiff(file, image, {.reference = reference}));
  std::fclose(file);
  return core::OpenRaster(out.Path())->Form();
}

Georeference Affine(int epsg, const std::array<double, 6>& affine) {
  Georeference reference;
  reference.epsg = epsg;
  reference.affine = affine;
  return reference;
}

CornerFields Corners(const Georeference& reference, char icords = 0, uint32_t top = 0,
                     std::vector<std::string>* notes = nullptr) {
  std::vector<std::string> own;
  return core::CornersFor(ReadBack(reference), top, kRows - top, icords, notes != nullptr ? *notes : own);
}

TEST(Corners, TheTagsOfAPictureAreReadAsTheyWereWritten) {
  for (const auto& written :
       {Affine(4326, {10, 0.01, 0, 52, 0, -0.02}), Affine(32733, {5e5, 30, 0, 8e6, 0, -30}),
        Affine(4326, {10, 0.01, 0.002, 52, -0.003, -0.02})}) {
    const auto read = ReadBack(written).reference;
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->epsg, written.epsg);
    EXPECT_EQ(read->affine, written.affine);
    EXPECT_EQ(ReadBack(written).noData, "250");
  }
  Georeference controls;
  controls.controls = {{0, 0, 10, 52, 0}, {100, 0, 11, 52, 0}, {0, 50, 10, 51, 0}};
  controls.rational.assign(92, 1.5);
  const auto read = ReadBack(controls).reference;
  ASSERT_TRUE(read.has_value());
  EXPECT_EQ(read->affine, std::nullopt);
}

TEST(Corners, AreThoseOfTheMiddlesOfPixels) {
  const Georeference degrees = Affine(4326, {9.995, 0.01, 0, 52.01, 0, -0.02});
  const CornerFields all = Corners(degrees);
  EXPECT_EQ(all.icords, "D");
  EXPECT_EQ(all.igeolo, "+52.000+010.000+52.000+010.990+51.020+010.990+51.020+010.000");
  EXPECT_EQ(Corners(degrees, 'G').igeolo, "520000N0100000E520000N0105924E510112N0105924E510112N0100000E");
  EXPECT_EQ(Corners(degrees, 0, 10).igeolo,
            "+51.800+010.000+51.800+010.990+51.020+010.990+51.020+010.000")
      << "rows from the tenth on";
  const CornerFields south = Corners(Affine(32733, {499985, 30, 0, 8000015, 0, -30}));
  EXPECT_EQ(south.icords, "S");
  EXPECT_EQ(south.igeolo.substr(0, 30), "335000008000000335029708000000");
  EXPECT_EQ(Corners(Affine(32633, {499985, 30, 0, 5000015, 0, -30})).icords, "N");
}

TEST(Corners, WhatCannotBeToldIsRefusedOrSaid) {
  std::vector<std::string> notes;
  EXPECT_EQ(Corners(Affine(3857, {0, 1, 0, 0, 0, -1}), 0, 0, &notes).igeolo, "");
  EXPECT_EQ(notes.size(), 1u);
  // Pixels of a centimetre have one corner in degrees of three digits.
  EXPECT_EQ(Corners(Affine(4326, {10, 1e-7, 0, 52, 0, -1e-7}), 'D', 0, &notes).igeolo, "");
  EXPECT_EQ(notes.size(), 2u);
  Georeference controls;
  controls.controls = {{0, 0, 10, 52, 0}, {100, 0, 11, 52, 0}};
  EXPECT_EQ(Corners(controls, 0, 0, &notes).igeolo, "");
  EXPECT_EQ(notes.size(), 3u);
  EXPECT_EQ(core::CornersFor({}, 0, 1, 0, notes).igeolo, "");
  EXPECT_THROW((void)Corners(Affine(4326, {10, 0.01, 0, 52, 0, -0.02}), 'S'), core::PictureError);
  EXPECT_THROW((void)Corners(Affine(4326, {10, 0.01, 0, 95, 0, -0.02})), core::PictureError)
      << "beyond a pole";
  // Half the earth in a zone: straight lines there are not those in degrees.
  EXPECT_THROW((void)Corners(Affine(32633, {-2.5e6, 5e4, 0, 7e6, 0, -5e4}), 'D'), core::PictureError);
}

// A model that is affine, and one that is not.
TEST(Corners, PiecesOfModels) {
  core::RationalForm form{};
  form.scale = {1, 1, 1};
  form.imageScale = {1000, 1000};
  form.rowNumerator[2] = -1;
  form.columnNumerator[1] = 1;
  form.rowDenominator[0] = form.columnDenominator[0] = 1;
  const core::PlacedPiece piece = {100, 200, 50, 60, 2, 4};
  auto reference = GeoreferenceOf(*MakeRational(form), piece);
  ASSERT_TRUE(reference && reference->affine);
  // The outer corner of the piece's first pixel is half a pixel of the image in front of its middle.
  EXPECT_NEAR((*reference->affine)[0], 0.1995, 1e-9);
  EXPECT_NEAR((*reference->affine)[3], -0.0995, 1e-9);
  EXPECT_NEAR((*reference->affine)[1], 0.004, 1e-9);
  EXPECT_NEAR((*reference->affine)[5], -0.002, 1e-9);
  ASSERT_EQ(reference->rational.size(), 92u);
  EXPECT_EQ(reference->rational[2], (0 - 100 + 0.5) / 2 - 0.5);
  EXPECT_EQ(reference->rational[3], (0 - 200 + 0.5) / 4 - 0.5);
  EXPECT_EQ(reference->rational[7], 500);
  form.rowNumerator[8] = 20;
  reference = GeoreferenceOf(*MakeRational(form), piece);
  ASSERT_TRUE(reference.has_value());
  EXPECT_EQ(reference->affine, std::nullopt);
  EXPECT_EQ(reference->controls.size(), 25u);
}

}  // namespace
}  // namespace test
