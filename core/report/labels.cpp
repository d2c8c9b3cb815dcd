#include "core/report/labels.h"

#include <algorithm>

#include "core/format/words.h"

namespace core {
namespace {

// Widths of letters differ: as wide as the widest usual ones.
constexpr double kLetter = 0.62, kLine = 1.3, kPadding = 0.3;

bool Collide(const PlacedLabel& a, const PlacedLabel& b) {
  return a.left < b.left + b.width && b.left < a.left + a.width && a.top < b.top + b.height &&
         b.top < a.top + a.height;
}

size_t LettersOf(std::string_view utf8) {
  return static_cast<size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

// As many letters as there is room for.
std::string Cut(const std::string& words, size_t most) {
  if (LettersOf(words) <= most) return words;
  std::string cut;
  std::string_view left = words;
  for (size_t letters = 0; letters + 1 < most && !left.empty(); ++letters) {
    const size_t bytes = std::max<size_t>(1, Utf8Bytes(left));
    cut += left.substr(0, bytes);
    left.remove_prefix(bytes);
  }
  return cut + "…";
}

// Places one label where no other one stands. Whether there is room.
bool Place(const Composite& composite, const Outline& outline, const std::vector<PlacedLabel>& placed,
           PlacedLabel& label) {
  constexpr int kRows = 12;
  const double right = std::max(0.0, composite.width - label.width),
               bottom = std::max(0.0, composite.height - label.height);
  const double columns[] = {outline.left, outline.left + outline.width - label.width};
  const auto isFree = [&] {
    return std::none_of(placed.begin(), placed.end(),
                        [&](const PlacedLabel& other) { return Collide(label, other); });
  };
  // From the upper edge down, then from the lower edge up.
  for (int row = 0; row < 2 * kRows; ++row) {
    const double step = (row % kRows) * label.height,
                 lower = std::clamp(outline.top + outline.height - label.height, 0.0, bottom);
    const double y = row < kRows ? std::clamp(outline.top, 0.0, bottom) + step : lower - step;
    for (const double x : columns) {
      label.left = std::clamp(x, 0.0, right);
      label.top = std::clamp(y, 0.0, bottom);
      if (isFree()) return true;
    }
  }
  return false;
}

}  // namespace

std::vector<PlacedLabel> PlaceLabels(const Composite& composite, double size) {
  constexpr size_t kMostLabels = 200;
  std::vector<PlacedLabel> placed;
  const double room = composite.width / size - 2 * kPadding;
  if (room < 2 * kLetter || composite.height < size * kLine) return placed;
  for (const Outline& outline : composite.outlines) {
    PlacedLabel label;
    label.words = Cut(outline.label, static_cast<size_t>(room / kLetter));
    label.width = (static_cast<double>(LettersOf(label.words)) * kLetter + 2 * kPadding) * size;
    label.height = kLine * size;
    if (placed.size() < kMostLabels && Place(composite, outline, placed, label)) placed.push_back(label);
  }
  return placed;
}

}  // namespace core
