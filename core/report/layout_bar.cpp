// Where everything lies in the file, as a bar to scale and as a table.
#include <algorithm>

#include "core/report/html.h"
#include "core/report/report.h"

namespace core {
namespace {

struct Stretch {
  std::string name;
  uint64_t offset, length;
  int colour;
};

std::vector<Stretch> StretchesOf(const Survey& survey) {
  std::vector<Stretch> stretches;
  for (const SurveyedPart& part : survey.parts) {
    const int colour = static_cast<int>(part.kind);
    const bool isFile = part.kind == PartKind::File;
    stretches.push_back({isFile ? "file header" : part.Title() + ", subheader", part.offset,
                         part.headerLength, isFile ? 0 : 5});
    if (!isFile) stretches.push_back({part.Title() + ", data", part.dataOffset, part.dataLength, colour});
  }
  const uint64_t size = survey.file.Size();
  if (survey.segmentsEnd < size)
    stretches.push_back({"bytes of no segment", survey.segmentsEnd, size - survey.segmentsEnd, 5});
  return stretches;
}

}  // namespace

std::string LayoutSection(const ReportedFile& file, const PageDetail& detail) {
  const size_t most = std::min<size_t>(400, detail.allRows);
  if (most == 0) return "";
  const std::vector<Stretch> stretches = StretchesOf(file.survey);
  uint64_t whole = 1;
  for (const Stretch& stretch : stretches) whole = std::max(whole, stretch.offset + stretch.length);
  std::string bar, rows;
  size_t count = 0;
  for (const Stretch& stretch : stretches) {
    if (++count > most) break;
    const double share = 100.0 * static_cast<double>(stretch.length) / static_cast<double>(whole);
    const std::string colour = "k" + std::to_string(stretch.colour);
    bar += Tag("span", "",
               "class=\"" + colour + "\" style=\"width:" + Fixed(share, 3) + "%\" title=\"" +
                   Escaped(stretch.name) + "\"");
    rows += TableRow({"<span class=\"swatch " + colour + "\"></span>" + Escaped(stretch.name),
                      Grouped(stretch.offset), Grouped(stretch.length), Fixed(share, 1) + " %"});
  }
  if (stretches.size() > most)
    rows += TableRow({"…", std::to_string(stretches.size() - most) + " more", "", ""});
  return Section(
      file.id + "-layout", "Bytes",
      Tag("div", bar,
          "class=\"bar\" role=\"img\" aria-label=\"The file's parts to scale; the table tells them\"") +
          Tag("details",
              Tag("summary", "Offsets and lengths") +
                  Tag("div", Table("Parts of the file", {"Part", "Offset", "Bytes", "Share"}, rows),
                      "class=\"scroll\"")));
}

}  // namespace core
