#include "core/format/geography.h"

#include <cmath>
#include <cstdint>

namespace core {
namespace {

constexpr size_t kCornerWidth = 15;
constexpr double kPi = 3.14159265358979323846;

// Digits only.
std::optional<int32_t> NumberOf(std::string_view digits) {
  int32_t value = 0;
  for (const char c : digits) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + (c - '0');
  }
  return value;
}

// "+dd.ddd" or "-ddd.ddd".
std::optional<double> DecimalOf(std::string_view text) {
  const size_t point = text.size() - 4;
  const auto whole = NumberOf(text.substr(1, point - 1)), part = NumberOf(text.substr(point + 1));
  if ((text[0] != '+' && text[0] != '-') || text[point] != '.' || !whole || !part) return std::nullopt;
  const double value = *whole + *part / 1000.0;
  return text[0] == '-' ? -value : value;
}

// "ddmmssN" or "dddmmssE".
std::optional<double> SexagesimalOf(std::string_view text, char positive, char negative) {
  const size_t end = text.size() - 1;
  const auto degrees = NumberOf(text.substr(0, end - 4)), minutes = NumberOf(text.substr(end - 4, 2)),
             seconds = NumberOf(text.substr(end - 2, 2));
  if (!degrees || !minutes || !seconds || *minutes > 59 || *seconds > 59) return std::nullopt;
  const double value = *degrees + *minutes / 60.0 + *seconds / 3600.0;
  if (text[end] == positive) return value;
  return text[end] == negative ? std::optional(-value) : std::nullopt;
}

std::optional<GeographicPoint> Checked(std::optional<double> latitude, std::optional<double> longitude) {
  if (!latitude || !longitude || std::abs(*latitude) > 90 || std::abs(*longitude) > 180)
    return std::nullopt;
  return GeographicPoint{*latitude, *longitude};
}

// "zzeeeeeennnnnnn".
std::optional<GeographicPoint> UtmPoint(std::string_view text, bool north) {
  const auto zone = NumberOf(text.substr(0, 2)), easting = NumberOf(text.substr(2, 6)),
             northing = NumberOf(text.substr(8, 7));
  if (!zone || !easting || !northing || *zone < 1 || *zone > 60) return std::nullopt;
  const GeographicPoint point = FromUtm(*zone, north, *easting, *northing);
  return Checked(point.latitude, point.longitude);
}

// Where in an alphabet without I and O a letter stands; -1 for none.
int LetterNumber(char letter) {
  if (letter < 'A' || letter > 'Z' || letter == 'I' || letter == 'O') return -1;
  return letter - 'A' - (letter > 'I') - (letter > 'O');
}

// "zzBJKeeeeennnnn": zone, latitude band, square of 100 km, metres in it.
std::optional<GeographicPoint> MgrsPoint(std::string_view text) {
  // The least northing of each band from C to X, in 100 km.
  constexpr int kLeast[] = {11, 20, 28, 37, 46, 55, 64, 73, 82, 91, 0, 8, 17, 26, 35, 44, 53, 62, 70, 79};
  constexpr int kFirstBand = 2, kRows = 20, kColumns = 8, kNorthFrom = 10;
  const auto zone = NumberOf(text.substr(0, 2)), east = NumberOf(text.substr(5, 5)),
             north = NumberOf(text.substr(10, 5));
  const int band = LetterNumber(text[2]) - kFirstBand, column = LetterNumber(text[3]),
            row = LetterNumber(text[4]);
  if (!zone || !east || !north || *zone < 1 || *zone > 60 || band < 0 || band >= kRows || column < 0 ||
      row < 0 || row >= kRows) {
    return std::nullopt;
  }
  const int firstColumn = (*zone - 1) % 3 * kColumns;
  if (column < firstColumn || column >= firstColumn + kColumns) return std::nullopt;
  int northSquare = (row + (*zone % 2 == 0 ? 15 : 0)) % kRows;
  while (northSquare < kLeast[band]) northSquare += kRows;
  const GeographicPoint point = FromUtm(
      *zone, band >= kNorthFrom, (column - firstColumn + 1) * 1e5 + *east, northSquare * 1e5 + *north);
  return Checked(point.latitude, point.longitude);
}

std::optional<GeographicPoint> PointOf(char icords, std::string_view text) {
  switch (icords) {
    case 'G':
    case 'C':
      return Checked(SexagesimalOf(text.substr(0, 7), 'N', 'S'), SexagesimalOf(text.substr(7), 'E', 'W'));
    case 'D':
      return Checked(DecimalOf(text.substr(0, 7)), DecimalOf(text.substr(7)));
    case 'N':
    case 'S':
      return UtmPoint(text, icords == 'N');
    case 'U':
      return MgrsPoint(text);
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<GeographicCorners> CornersOf(char icords, std::string_view igeolo) {
  GeographicCorners corners;
  if (igeolo.size() != corners.size() * kCornerWidth) return std::nullopt;
  for (size_t i = 0; i < corners.size(); ++i) {
    const auto point = PointOf(icords, igeolo.substr(i * kCornerWidth, kCornerWidth));
    if (!point) return std::nullopt;
    corners[i] = *point;
  }
  return corners;
}

// Krueger's series to the third power of the third flattening: below a millimetre within a zone.
GeographicPoint FromUtm(int zone, bool north, double easting, double northing) {
  constexpr double kAxis = 6378137.0, kFlattening = 1 / 298.257223563, kScale = 0.9996;
  constexpr double n = kFlattening / (2 - kFlattening), n2 = n * n, n3 = n2 * n;
  constexpr double kRadius = kAxis / (1 + n) * (1 + n2 / 4 + n2 * n2 / 64);
  constexpr double kBeta[] = {n / 2 - 2 * n2 / 3 + 37 * n3 / 96, n2 / 48 + n3 / 15, 17 * n3 / 480};
  constexpr double kDelta[] = {2 * n - 2 * n2 / 3 - 2 * n3, 7 * n2 / 3 - 8 * n3 / 5, 56 * n3 / 15};
  const double xi = (northing - (north ? 0 : 1e7)) / (kScale * kRadius);
  const double eta = (easting - 5e5) / (kScale * kRadius);
  double x = xi, y = eta;
  for (int j = 1; j <= 3; ++j) {
    x -= kBeta[j - 1] * std::sin(2 * j * xi) * std::cosh(2 * j * eta);
    y -= kBeta[j - 1] * std::cos(2 * j * xi) * std::sinh(2 * j * eta);
  }
  const double chi = std::asin(std::sin(x) / std::cosh(y));
  double latitude = chi;
  for (int j = 1; j <= 3; ++j) latitude += kDelta[j - 1] * std::sin(2 * j * chi);
  const double longitude = std::atan2(std::sinh(y), std::cos(x)) * 180 / kPi + zone * 6 - 183;
  return {latitude * 180 / kPi, longitude > 180 ? longitude - 360 : longitude};
}

}  // namespace core
