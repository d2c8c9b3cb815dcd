// orbntf text: a text segment's text.
#include <unistd.h>

#include "core/format/survey.h"
#include "core/format/words.h"
#include "core/format/xml.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/explain.h"
#include "tools/orbntf/output/output.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct TextOptions {
  std::string file, output;
  std::string part = "0";
};

// Lines whose characters a terminal does not act upon.
std::string ForTerminal(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const size_t end = text.find_first_of("\n\t\r");
    shown += Printable(ToUtf8(text.substr(0, end)));
    if (end == std::string_view::npos) break;
    if (text[end] != '\r') shown += text[end];
    text.remove_prefix(end + 1);
  }
  return shown;
}

// A text segment, or the data extension that "data:N" names; null where there is none.
const SurveyedPart* PartOf(const std::string& name, const Survey& survey) {
  constexpr std::string_view kData = "data:";
  const bool isData = name.rfind(kData, 0) == 0;
  const int64_t index = DigitsOf(isData ? std::string_view(name).substr(kData.size()) : name);
  if (index < 0 || index > UINT32_MAX) return nullptr;
  return survey.Find(isData ? PartKind::DataExtension : PartKind::Text, static_cast<uint32_t>(index));
}

// What a part says: of XML a line an element, where it is well-formed.
std::string TextOf(const Survey& survey, const SurveyedPart& part) {
  std::string text = survey.Data(part);
  if (part.kind == PartKind::Text) return text;
  const std::string indented = IndentedXml(text);
  return indented.empty() ? text : indented;
}

int RunText(TextOptions& options) {
  options.file = TakeInput(options.file);
  const Survey survey(options.file);
  if (const std::string why = WhyUnreadable(options.file); !why.empty())
    return Report("text", options.file, ORB_SHORT_READ, why);
  const SurveyedPart* part = PartOf(options.part, survey);
  if (part == nullptr) return Report("text", options.file, ORB_NO_SUCH_RECORD);
  if (!survey.HoldsData(*part))
    return Report("text", options.file, ORB_SHORT_READ, part->Title() + " ends behind the file");
  std::string text = TextOf(survey, *part);
  if (Inputs({options.file}).Hold(options.output))
    return Refuse("text", "the output is the input; give another name");
  const bool toTerminal = options.output == "-" && isatty(STDOUT_FILENO) != 0;
  if (toTerminal) text = ForTerminal(text);
  Output output(options.output, Output::Way::InOrder);
  std::FILE* stream = output.Stream();
  const bool written =
      stream != nullptr && std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  if (!written) output.NoteFailure();
  return Report("text", options.output, written && output.Commit() ? ORB_SUCCESS : ORB_SHORT_WRITE,
                output.Problem());
}

}  // namespace

void AddText(const Command& top, CommandLine& line) {
  auto options = std::make_shared<TextOptions>();
  options->output = "-";
  const Command command = top.Add("text", "Print a text segment, or the XML of a data extension");
  command.Take("FILE", options->file, "file to read").Required();
  command.Take("INDEX", options->part, "text segment, from 0, or data:N");
  command.Take("-o,--output", options->output, "file to write instead of standard output");
  command.Runs(line.work, [options] { return RunText(*options); });
}

}  // namespace tool
