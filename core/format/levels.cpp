#include "core/format/levels.h"

#include <algorithm>

namespace core {
namespace {

constexpr ComplexityLevel kLevels[] = {
    {3, {2048, (50 << 20) - 1, 9, 20, 10, 1 << 20, 100, 32}},
    {5, {8192, (1 << 30) - 1, 255, 20, 50, 2 << 20, 100, 32}},
    {6, {65536, (int64_t{1} << 31) - 1, 999, 100, 100, 2 << 20, 100, 32}},
    {7, {99999999, (int64_t{10} << 30) - 1, 999, 100, 100, 2 << 20, 100, 32}}};

}  // namespace

void AddNeeds(const SurveyedPart& part, uint64_t dataBytes, FileNeeds& needs) {
  switch (part.kind) {
    case PartKind::Image:
      ++needs.images;
      needs.bands = std::max(needs.bands, part.Bands());
      break;
    case PartKind::Graphic:
      ++needs.graphics;
      needs.graphicBytes += static_cast<int64_t>(dataBytes);
      break;
    case PartKind::Text:
      ++needs.texts;
      break;
    case PartKind::DataExtension:
      ++needs.extensions;
      break;
    default:
      break;
  }
}

FileNeeds NeedsOf(const Survey& survey, const Places& places) {
  FileNeeds needs;
  needs.side = std::max(places.Height(), places.Width());
  needs.bytes = static_cast<int64_t>(survey.file.Size());
  for (const SurveyedPart& part : survey.parts) AddNeeds(part, part.dataLength, needs);
  return needs;
}

const ComplexityLevel* LevelOf(int64_t number) {
  const auto* found = std::find_if(std::begin(kLevels), std::end(kLevels),
                                   [&](const ComplexityLevel& level) { return level.number == number; });
  return found != std::end(kLevels) ? found : nullptr;
}

bool Holds(const ComplexityLevel& level, const FileNeeds& needs) {
  const FileNeeds& most = level.most;
  return needs.side <= most.side && needs.bytes <= most.bytes && needs.bands <= most.bands &&
         needs.images <= most.images && needs.extensions <= most.extensions &&
         needs.graphicBytes <= most.graphicBytes && needs.graphics <= most.graphics &&
         needs.texts <= most.texts;
}

int64_t LowestLevel(const FileNeeds& needs) {
  const auto* found = std::find_if(std::begin(kLevels), std::end(kLevels),
                                   [&](const ComplexityLevel& level) { return Holds(level, needs); });
  return found != std::end(kLevels) ? found->number : 9;
}

}  // namespace core
