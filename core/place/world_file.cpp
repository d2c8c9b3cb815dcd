#include "core/place/world_file.h"

#include <charconv>
#include <iterator>

#include "core/place/projection.h"

namespace core {
namespace {

// Where the ending of a name begins; its end where it has none.
size_t EndingAt(const std::string& name) {
  const size_t dot = name.rfind('.'), slash = name.rfind('/');
  const size_t first = slash == std::string::npos ? 0 : slash + 1;
  return dot == std::string::npos || dot <= first ? name.size() : dot;
}

std::string LineOf(double number) {
  char text[32];
  const auto end = std::to_chars(std::begin(text), std::end(text), number);
  return std::string(text, end.ptr) + "\n";
}

}  // namespace

std::string WorldText(const Georeference& reference) {
  if (!reference.affine) return "";
  const auto& [east, eastByColumn, eastByRow, north, northByColumn, northByRow] = *reference.affine;
  return LineOf(eastByColumn) + LineOf(northByColumn) + LineOf(eastByRow) + LineOf(northByRow) +
         LineOf(east + (eastByColumn + eastByRow) / 2) + LineOf(north + (northByColumn + northByRow) / 2);
}

std::string SystemText(const Georeference& reference) {
  const std::string text = reference.projection.empty()
                               ? Projection::TextOf(reference.epsg)
                               : Projection::TextOf(reference.projection, reference.datum);
  return text.empty() ? "" : text + "\n";
}

std::string WorldName(const std::string& picture) {
  const size_t at = EndingAt(picture);
  const std::string ending = picture.substr(at);
  constexpr size_t kLeast = 3;  // a dot and two letters
  if (ending.size() < kLeast) return picture.substr(0, at) + ".wld";
  return picture.substr(0, at) + "." + ending[1] + ending.back() + "w";
}

std::string SystemName(const std::string& picture) {
  return picture.substr(0, EndingAt(picture)) + ".prj";
}

}  // namespace core
