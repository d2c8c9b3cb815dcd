#include "tools/orbntf/report/report.h"

#include <filesystem>

#include "orbntf/orbntf.h"
#include "tools/orbntf/report/html.h"
#include "tools/orbntf/report/template.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

// The version alone: what else --version tells is no affair of a page.
std::string Version() {
  const std::string text = VersionText();
  const std::string line = text.substr(0, text.find('\n'));
  return line.substr(line.find(' ') + 1, line.find(' ', line.find(' ') + 1) - line.find(' ') - 1);
}

std::string Head(const ReportedFile& file) {
  const SurveyedPart& header = file.survey.Header();
  const bool good = file.verdict.status == ORB_SUCCESS;
  std::string counts;
  for (const PartKind kind : {PartKind::Image, PartKind::Graphic, PartKind::Text, PartKind::DataExtension,
                              PartKind::Reserved}) {
    if (const uint32_t count = file.survey.Count(kind); count != 0)
      counts += (counts.empty() ? "" : ", ") + Counted(count, NameOf(kind));
  }
  std::string facts =
      Term("The module", Tag("span", Escaped(file.verdict.words),
                             std::string("class=\"verdict ") + (good ? "good\"" : "bad\"")));
  facts += Term("Format",
                EscapedField(std::string(header.Text("FHDR")) + " " + std::string(header.Text("FVER"))) +
                    ", complexity level " + EscapedField(header.Text("CLEVEL")));
  const std::string title = EscapedField(header.Text("FTITLE"));
  if (!title.empty()) facts += Term("Title", title);
  facts += Term("Date and station",
                EscapedField(header.Text("FDT")) + ", " + EscapedField(header.Text("OSTAID")));
  facts += Term("Classification", EscapedField(header.Text("FSCLAS")));
  facts += Term("Holds", counts.empty() ? "nothing" : counts);
  facts += Term("Size", Grouped(file.survey.file.Size()) + " bytes");
  return Section(file.id + "-summary", "Summary", Tag("dl", facts, "class=\"facts\""));
}

void Replace(std::string& text, const std::string& mark, const std::string& by) {
  for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + by.size()))
    text.replace(at, mark.size(), by);
}

}  // namespace

std::string ReportOf(ReportedFile& file) {
  file.verdict = AskModule(file.path);
  file.findings = FindFaults(file.survey, file.definitions);
  const Composite module = DrawSmall(file.path, file.survey, false);
  const Composite standard = DrawSmall(file.path, file.survey, true);
  return Head(file) + FindingsSection(file) + PictureSection(file, module, standard) +
         SegmentsSection(file) + LocationSection(file) + TextsSection(file) + RecordsSection(file) +
         FieldsSection(file) + LayoutSection(file);
}

// Marks are replaced in the template alone: what comes from files stands behind the last one.
std::string PageOf(const std::string& title, const std::vector<std::string>& reports,
                   const std::vector<std::string>& names) {
  std::string page(kTemplateTexts[0].text), index, body;
  for (size_t i = 0; i < reports.size(); ++i) {
    const std::string id = "f" + std::to_string(i + 1);
    index += Tag("li", Tag("a", Escaped(names[i]), "href=\"#" + id + "\""));
    const std::string heading = reports.size() > 1 ? Tag("h2", Escaped(names[i])) : "";
    body += Tag("article", heading + reports[i],
                "id=\"" + id + "\" aria-label=\"" + Escaped(names[i]) + "\"");
  }
  Replace(page, "{{VERSION}}", Escaped(Version()));
  const size_t at = page.find("{{BODY}}");
  std::string front = page.substr(0, at), back = page.substr(at + sizeof "{{BODY}}" - 1);
  Replace(front, "{{INDEX}}",
          reports.size() > 1 ? Tag("nav", Tag("ul", index), "aria-label=\"Files\"") : std::string());
  Replace(front, "{{TITLE}}", Escaped(title));
  return front + body + back;
}

}  // namespace tool
