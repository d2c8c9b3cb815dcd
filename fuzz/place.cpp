// Where an image lies by its corners and the records that an input is.
#include <cmath>

#include "core/place/apart.h"
#include "core/place/extent.h"
#include "core/place/georeference.h"
#include "core/place/placed.h"
#include "core/place/world_file.h"
#include "fuzz/support.h"
#include "tests/support/builder.h"

namespace {

constexpr uint32_t kSide = 8;

std::string FileOf(const std::string& corners, const std::string& records) {
  test::NitfBuilder file;
  test::ImageForm form;
  form.width = form.height = kSide;
  file.Image(form, std::string(size_t{kSide} * kSide, 'x'));
  test::Record& image = file.images[0].subheader;
  if (!corners.empty())
    image.Set("ICORDS", corners.substr(0, 1)).InsertAfter("ICORDS", "IGEOLO", corners.substr(1));
  if (!records.empty())
    image.Set("IXSHDL", static_cast<int64_t>(3 + records.size()))
        .InsertAfter("IXSHDL", "IXS", "000" + records);
  return file.Bytes();
}

void Ask(const core::PlaceModel& model, fuzz::Choices& choices) {
  const double height = model.Height().value_or(0) + static_cast<int8_t>(choices.Byte()) * 50.0;
  core::GroundPoint ground{};
  core::ImagePoint point{};
  for (int i = 0; i < 3; ++i) {
    const core::ImagePoint asked = {choices.Byte() / 8.0 - 8, choices.Byte() / 8.0 - 8};
    if (!model.ToGround(asked, height, ground).empty()) continue;
    fuzz::Require(std::abs(ground.latitude) <= 90 && std::abs(ground.longitude) <= 180,
                  "a place on earth");
    if (model.ToImage(ground, point).empty())
      fuzz::Require(std::isfinite(point.row) && std::isfinite(point.column), "a point of the image");
  }
  fuzz::Require(model.Error() >= 0, "an error has a size");
  core::PlacedPiece piece;
  piece.rows = piece.columns = kSide;
  if (const auto extent = core::ExtentOf(model, kSide, kSide))
    fuzz::Require(!core::SizeText(*extent).empty(), "an extent has words");
  if (const auto reference = core::GeoreferenceOf(model, piece))
    fuzz::Require(core::WorldText(*reference).empty() == !reference->affine, "an affine map has a file");
}

}  // namespace

int fuzz::Place(const uint8_t* data, size_t size) {
  static const core::RecordDefinitions definitions;
  constexpr size_t kCorners = 61, kMost = 99990;
  Begin(size);
  Choices choices(data, size);
  const bool hasCorners = choices.Byte() % 2 != 0 && size >= kCorners;
  std::string records(reinterpret_cast<const char*>(data), std::min(size, kMost));
  const std::string corners = hasCorners ? records.substr(0, kCorners) : "";
  const std::string bytes = FileOf(corners, records.substr(corners.size()));
  const core::Survey survey{std::string_view(bytes)};
  const core::SurveyedPart* image = survey.Find(core::PartKind::Image, 0);
  Require(image != nullptr, "the file has an image");
  const core::Placed placed = core::PlaceOf(*image, survey.Header(), definitions);
  if (placed.model != nullptr) Ask(*placed.model, choices);
  for (const core::Apart& apart : core::ApartFromCorners(*image, core::RecordsOf(*image, definitions)))
    Require(apart.metres > apart.allowed, "what is apart is further than is allowed");
  return 0;
}
