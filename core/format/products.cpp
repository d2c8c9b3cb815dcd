#include "core/format/products.h"

#include <algorithm>

#include "core/format/records.h"
#include "core/format/words.h"

namespace core {
namespace {

// "2 segments of 60000 rows": the images whose identification begins with a mark.
std::string SegmentsOf(const Survey& survey, std::string_view mark) {
  uint64_t count = 0;
  int64_t rows = 0;
  for (const SurveyedPart& part : survey.parts) {
    if (part.kind != PartKind::Image || part.Text("IID1").substr(0, mark.size()) != mark) continue;
    ++count;
    rows += std::max<int64_t>(0, part.Number("NROWS"));
  }
  if (count == 0) return "";
  return ", " + std::to_string(count) + (count == 1 ? " segment of " : " segments of ") +
         std::to_string(rows) + " rows";
}

// The version at the end of a namespace, "urn:SICD:1.3.0".
std::string VersionOf(std::string_view space) {
  return Shown(space.substr(std::min(space.rfind(':') + 1, space.size())));
}

bool HasRecord(const Survey& survey, std::string_view tag) {
  return std::any_of(survey.parts.begin(), survey.parts.end(), [&](const SurveyedPart& part) {
    return std::any_of(part.areas.begin(), part.areas.end(), [&](const RecordArea& area) {
      std::string_view left = area.bytes;
      for (int64_t length = 0; (length = RecordLengthAt(left)) >= 0;) {
        if (TrimmedText(left.substr(0, kTagWidth)) == tag) return true;
        left.remove_prefix(std::min(left.size(), kTagWidth + kLengthWidth + static_cast<size_t>(length)));
      }
      return false;
    });
  });
}

}  // namespace

std::vector<std::string> ProductsOf(const Survey& survey) {
  std::vector<std::string> products;
  const auto add = [&](const std::string& words) {
    if (std::find(products.begin(), products.end(), words) == products.end()) products.push_back(words);
  };
  for (const SurveyedPart& part : survey.parts) {
    if (part.kind != PartKind::DataExtension) continue;
    const std::string_view name = part.Trimmed("DESID"), space = part.Trimmed("DESSHTN");
    if (space.rfind("urn:SICD:", 0) == 0)
      add("radar image, SICD " + VersionOf(space) + SegmentsOf(survey, "SICD"));
    if (space.rfind("urn:SIDD:", 0) == 0)
      add("radar product, SIDD " + VersionOf(space) + SegmentsOf(survey, "SIDD"));
    if (name == "SICD_XML") add("radar image, SICD of an early version" + SegmentsOf(survey, "SICD"));
    if (name == "SIDD_XML") add("radar product, SIDD of an early version" + SegmentsOf(survey, "SIDD"));
  }
  if (HasRecord(survey, "RPFHDR")) {
    const SurveyedPart* image = survey.Find(PartKind::Image, 0);
    const std::string name = image != nullptr ? Shown(image->Text("IID1")) : "";
    add("raster product format" + (name.empty() ? "" : ", " + name));
  }
  if (HasRecord(survey, "MIMCSA")) add("motion imagery, MIE4NITF");
  if (HasRecord(survey, "MTIRPB")) add("moving target indication, MTIRPB");
  return products;
}

}  // namespace core
