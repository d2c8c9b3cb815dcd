#include "core/place/chip.h"

#include "core/place/rational.h"

#include <cmath>

namespace core {
namespace {

// In the record 0.5 is the middle of the first pixel.
constexpr double kMiddle = 0.5;

class OfChip : public PlaceModel {
 public:
  OfChip(std::unique_ptr<PlaceModel> full, const Chip& chip) : full_(std::move(full)), chip_(chip) {
    ImagePoint first{}, scale{};
    if (full_->Polynomials() == nullptr || !chip.IsUpright(first, scale)) return;
    form_ = *full_->Polynomials();
    form_->imageOffset = {(form_->imageOffset.row - first.row) / scale.row,
                          (form_->imageOffset.column - first.column) / scale.column};
    form_->imageScale = {form_->imageScale.row / scale.row, form_->imageScale.column / scale.column};
  }
  std::string Name() const override { return full_->Name() + " through ICHIPB"; }
  double Error() const override { return full_->Error(); }
  std::optional<double> Height() const override { return full_->Height(); }
  const RationalForm* Polynomials() const override { return form_ ? &*form_ : nullptr; }
  std::string ToGround(ImagePoint point, double height, GroundPoint& ground) const override {
    return full_->ToGround(chip_.ToFull(point), height, ground);
  }
  std::string ToImage(GroundPoint ground, ImagePoint& point) const override {
    std::string words = full_->ToImage(ground, point);
    if (words.empty()) point = chip_.FromFull(point);
    if (words.empty() && !(std::isfinite(point.row) && std::isfinite(point.column)))
      words = "it lies nowhere in the chip";
    return words;
  }

 private:
  std::unique_ptr<PlaceModel> full_;
  Chip chip_;
  std::optional<RationalForm> form_;  // in the chip's rows and columns, where it can be
};

// The points 11, 12, 21 and 22 of one of the two images.
bool TakePoints(const TaggedRecord& record, const char* prefix, std::array<ImagePoint, 4>& points) {
  constexpr const char* kNumbers[] = {"11", "12", "21", "22"};
  for (size_t i = 0; i < points.size(); ++i) {
    for (const auto& [axis, number] :
         {std::pair{"_ROW_", &points[i].row}, {"_COL_", &points[i].column}}) {
      const DecodedField* field = FindField(record.fields, std::string(prefix) + axis + kNumbers[i]);
      const auto value = field == nullptr ? std::nullopt : ValueOf(*field);
      if (!value || !std::isfinite(*value)) return false;
      *number = *value - kMiddle;
    }
  }
  return true;
}

// Whether no three of the points lie on a line.
bool IsQuadrangle(const std::array<ImagePoint, 4>& points) {
  for (size_t i = 0; i < points.size(); ++i) {
    const ImagePoint &a = points[i], &b = points[(i + 1) % 4], &c = points[(i + 2) % 4];
    const double area = (b.row - a.row) * (c.column - a.column) - (c.row - a.row) * (b.column - a.column);
    if (!(std::abs(area) > 1e-6)) return false;
  }
  return true;
}

}  // namespace

std::optional<Chip> Chip::Of(const TaggedRecord& record) {
  std::array<ImagePoint, 4> chip, full;
  const DecodedField* flag = FindField(record.fields, "XFRM_FLAG");
  if (!record.problem.empty() || flag == nullptr || DigitsOf(flag->text) != 0 ||
      !TakePoints(record, "OP", chip) || !TakePoints(record, "FI", full) || !IsQuadrangle(chip) ||
      !IsQuadrangle(full))
    return std::nullopt;
  Chip map;
  map.forward_ = Product(FromSquare(full), Inverse(FromSquare(chip)));
  map.backward_ = Product(FromSquare(chip), Inverse(FromSquare(full)));
  return map;
}

// The projective map that takes the corners of the unit square to four points: (0, 0), (0, 1), (1, 0) and
// (1, 1) in rows and columns.
Chip::Matrix Chip::FromSquare(const std::array<ImagePoint, 4>& corners) {
  const auto& [p00, p01, p10, p11] = corners;
  const double sumRow = p00.row - p01.row + p11.row - p10.row,
               sumColumn = p00.column - p01.column + p11.column - p10.column;
  const double rowA = p01.row - p11.row, rowB = p10.row - p11.row, columnA = p01.column - p11.column,
               columnB = p10.column - p11.column;
  const double determinant = rowA * columnB - rowB * columnA;
  // Of a parallelogram both are 0, and the map is affine.
  const double g = (sumRow * columnB - rowB * sumColumn) / determinant,
               h = (rowA * sumColumn - sumRow * columnA) / determinant;
  return {
      {{p01.row - p00.row + g * p01.row, p10.row - p00.row + h * p10.row, p00.row},
       {p01.column - p00.column + g * p01.column, p10.column - p00.column + h * p10.column, p00.column},
       {g, h, 1}}};
}

Chip::Matrix Chip::Inverse(const Matrix& m) {
  Matrix inverse{};
  // The adjugate: a factor does nothing to a projective map.
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      const size_t a = (j + 1) % 3, b = (j + 2) % 3, c = (i + 1) % 3, d = (i + 2) % 3;
      inverse[i][j] = m[a][c] * m[b][d] - m[a][d] * m[b][c];
    }
  }
  return inverse;
}

Chip::Matrix Chip::Product(const Matrix& a, const Matrix& b) {
  Matrix product{};
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      for (size_t k = 0; k < 3; ++k) product[i][j] += a[i][k] * b[k][j];
    }
  }
  return product;
}

ImagePoint Chip::Apply(const Matrix& matrix, ImagePoint point) {
  const auto row = [&](size_t i) {
    return matrix[i][0] * point.row + matrix[i][1] * point.column + matrix[i][2];
  };
  return {row(0) / row(2), row(1) / row(2)};
}

bool Chip::IsUpright(ImagePoint& first, ImagePoint& scale) const {
  constexpr double kFar = 10000, kLeast = 1e-3;
  first = ToFull({0, 0});
  const ImagePoint below = ToFull({kFar, 0}), right = ToFull({0, kFar}), across = ToFull({kFar, kFar});
  scale = {(below.row - first.row) / kFar, (right.column - first.column) / kFar};
  const auto isSame = [](double a, double b) { return std::abs(a - b) < kLeast; };
  return isSame(below.column, first.column) && isSame(right.row, first.row) &&
         isSame(across.row, below.row) && isSame(across.column, right.column) && scale.row > 0 &&
         scale.column > 0;
}

std::unique_ptr<PlaceModel> ThroughChip(std::unique_ptr<PlaceModel> full, const Chip& chip) {
  return std::make_unique<OfChip>(std::move(full), chip);
}

}  // namespace core
