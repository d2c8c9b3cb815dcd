#include "core/place/rational.h"

#include <cmath>

namespace core {
namespace {

constexpr double kReach = 2;  // scales around the middle in which the polynomials are believed

// Latitude, longitude and height as the polynomials take them.
struct Normalised {
  double latitude, longitude, height;
};
// The terms in the order of RPC00B, and their derivatives by latitude and longitude.
struct Terms {
  Coefficients value, byLatitude, byLongitude;
};

Terms TermsAt(const Normalised& at) {
  const double p = at.latitude, l = at.longitude, h = at.height;
  return {{1,         l,         p,         h,         l * p,     l * h,     p * h,
           l * l,     p * p,     h * h,     p * l * h, l * l * l, l * p * p, l * h * h,
           l * l * p, p * p * p, p * h * h, l * l * h, p * p * h, h * h * h},
          {0,     0, 1,         0, l,     0,         h,     0, 2 * p,     0,
           l * h, 0, 2 * l * p, 0, l * l, 3 * p * p, h * h, 0, 2 * p * h, 0},
          {0,     1,         0,     0,     p,         h, 0, 2 * l,     0, 0,
           p * h, 3 * l * l, p * p, h * h, 2 * l * p, 0, 0, 2 * l * h, 0, 0}};
}

double Sum(const Coefficients& coefficients, const Coefficients& terms) {
  double sum = 0;
  for (size_t i = 0; i < terms.size(); ++i) sum += coefficients[i] * terms[i];
  return sum;
}

// A quotient and its derivatives; false near a denominator of zero.
struct Quotient {
  double value, byLatitude, byLongitude;
};
bool Divide(const Coefficients& numerator, const Coefficients& denominator, const Terms& terms,
            Quotient& quotient) {
  constexpr double kLeast = 1e-9;
  const double below = Sum(denominator, terms.value);
  if (!(std::abs(below) > kLeast)) return false;
  quotient.value = Sum(numerator, terms.value) / below;
  const auto derivative = [&](const Coefficients& by) {
    return (Sum(numerator, by) - quotient.value * Sum(denominator, by)) / below;
  };
  quotient.byLatitude = derivative(terms.byLatitude);
  quotient.byLongitude = derivative(terms.byLongitude);
  return std::isfinite(quotient.value);
}

constexpr const char kPole[] = "the model's denominator is zero there";
constexpr const char kOutside[] = "it lies further from the model's middle than twice the model's scale";

class Rational : public PlaceModel {
 public:
  explicit Rational(const RationalForm& form) : form_(form) {}
  std::string Name() const override { return form_.tag; }
  double Error() const override { return std::hypot(form_.errorBias, form_.errorRandom); }
  std::optional<double> Height() const override { return form_.offset.height; }
  const RationalForm* Polynomials() const override { return &form_; }

  std::string ToImage(GroundPoint ground, ImagePoint& point) const override {
    const Normalised at = {(ground.latitude - form_.offset.latitude) / form_.scale.latitude,
                           Turned(ground.longitude - form_.offset.longitude) / form_.scale.longitude,
                           (ground.height - form_.offset.height) / form_.scale.height};
    if (!IsNear(at)) return kOutside;
    Quotient row, column;
    if (!Evaluate(at, row, column)) return kPole;
    point = {row.value * form_.imageScale.row + form_.imageOffset.row,
             column.value * form_.imageScale.column + form_.imageOffset.column};
    return "";
  }

  // Newton's iteration from the middle of the model, until a step is below the last digit that counts.
  std::string ToGround(ImagePoint point, double height, GroundPoint& ground) const override {
    constexpr int kMostSteps = 50;
    constexpr double kEnd = 1e-14, kLeast = 1e-12, kLongest = 0.5, kFar = 3 * kReach;
    const double wantedRow = (point.row - form_.imageOffset.row) / form_.imageScale.row,
                 wantedColumn = (point.column - form_.imageOffset.column) / form_.imageScale.column;
    Normalised at = {0, 0, (height - form_.offset.height) / form_.scale.height};
    if (!IsNear(at)) return "the height lies further from the model's than twice its scale";
    for (int step = 0; step < kMostSteps; ++step) {
      Quotient row, column;
      if (!Evaluate(at, row, column)) return kPole;
      const double determinant =
          row.byLatitude * column.byLongitude - row.byLongitude * column.byLatitude;
      if (!(std::abs(determinant) > kLeast)) return "the model does not tell places apart there";
      const double missingRow = wantedRow - row.value, missingColumn = wantedColumn - column.value;
      double p = (missingRow * column.byLongitude - missingColumn * row.byLongitude) / determinant,
             l = (missingColumn * row.byLatitude - missingRow * column.byLatitude) / determinant;
      const double length = std::hypot(p, l);
      if (length > kLongest) {
        p *= kLongest / length;
        l *= kLongest / length;
      }
      at.latitude += p;
      at.longitude += l;
      // Beyond that is no place that the polynomials are believed in.
      if (std::hypot(at.latitude, at.longitude) > kFar) return kOutside;
      if (length < kEnd || (step > kMostSteps / 2 && length < 100 * kEnd))
        return Found(at, height, ground);
    }
    return "no place was found for it";
  }

 private:
  static bool IsNear(const Normalised& at) {
    return std::abs(at.latitude) <= kReach && std::abs(at.longitude) <= kReach &&
           std::abs(at.height) <= kReach;
  }
  bool Evaluate(const Normalised& at, Quotient& row, Quotient& column) const {
    const Terms terms = TermsAt(at);
    return Divide(form_.rowNumerator, form_.rowDenominator, terms, row) &&
           Divide(form_.columnNumerator, form_.columnDenominator, terms, column);
  }
  std::string Found(const Normalised& at, double height, GroundPoint& ground) const {
    if (!IsNear(at)) return kOutside;
    ground = {at.latitude * form_.scale.latitude + form_.offset.latitude,
              Turned(at.longitude * form_.scale.longitude + form_.offset.longitude), height};
    return std::abs(ground.latitude) <= 90 ? "" : "the model puts it beyond a pole";
  }

  RationalForm form_;
};

// ---------------------------------------------------------------- records

std::optional<double> NumberIn(const std::vector<DecodedField>& fields, const std::string& name) {
  const DecodedField* field = FindField(fields, name);
  const auto value = field == nullptr ? std::nullopt : ValueOf(*field);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

// Twenty of a name: one field that repeats, or fields that are numbered.
bool TakeCoefficients(const std::vector<DecodedField>& fields, const std::string& name,
                      Coefficients& coefficients) {
  const DecodedField* repeated = FindField(fields, name);
  if (repeated != nullptr && repeated->turns.size() != coefficients.size()) return false;
  for (size_t i = 0; i < coefficients.size(); ++i) {
    const auto value = repeated != nullptr ? ValueOf(repeated->turns[i].front())
                                           : NumberIn(fields, name + "_" + std::to_string(i + 1));
    if (!value || !std::isfinite(*value)) return false;
    coefficients[i] = *value;
  }
  return true;
}

// RPC00A has the same terms in another order: where each of RPC00B stands in it.
void Reorder(Coefficients& coefficients) {
  constexpr size_t kOrder[] = {0, 1, 2, 3, 4, 5, 6, 8, 9, 10, 7, 11, 14, 17, 12, 15, 18, 13, 16, 19};
  const Coefficients given = coefficients;
  for (size_t i = 0; i < given.size(); ++i) coefficients[i] = given[kOrder[i]];
}

}  // namespace

std::optional<RationalForm> RationalOf(const TaggedRecord& record) {
  const std::vector<DecodedField>& fields = record.fields;
  RationalForm form;
  form.tag = TrimmedText(record.tag);
  if (!record.problem.empty() || NumberIn(fields, "SUCCESS") != 1.0) return std::nullopt;
  const std::pair<const char*, double*> kNumbers[] = {
      {"ERR_BIAS", &form.errorBias},           {"ERR_RAND", &form.errorRandom},
      {"LINE_OFF", &form.imageOffset.row},     {"SAMP_OFF", &form.imageOffset.column},
      {"LAT_OFF", &form.offset.latitude},      {"LONG_OFF", &form.offset.longitude},
      {"HEIGHT_OFF", &form.offset.height},     {"LINE_SCALE", &form.imageScale.row},
      {"SAMP_SCALE", &form.imageScale.column}, {"LAT_SCALE", &form.scale.latitude},
      {"LONG_SCALE", &form.scale.longitude},   {"HEIGHT_SCALE", &form.scale.height}};
  for (const auto& [name, number] : kNumbers) {
    const auto value = NumberIn(fields, name);
    const bool isScale = std::string_view(name).find("SCALE") != std::string_view::npos;
    if (!value || (isScale && *value == 0)) return std::nullopt;
    *number = *value;
  }
  const std::pair<const char*, Coefficients*> kPolynomials[] = {
      {"LINE_NUM_COEFF", &form.rowNumerator},
      {"LINE_DEN_COEFF", &form.rowDenominator},
      {"SAMP_NUM_COEFF", &form.columnNumerator},
      {"SAMP_DEN_COEFF", &form.columnDenominator}};
  for (const auto& [name, coefficients] : kPolynomials) {
    if (!TakeCoefficients(fields, name, *coefficients)) return std::nullopt;
    if (form.tag == "RPC00A") Reorder(*coefficients);
  }
  return form;
}

std::unique_ptr<PlaceModel> MakeRational(const RationalForm& form) {
  return std::make_unique<Rational>(form);
}

}  // namespace core
