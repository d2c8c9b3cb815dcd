// Header fields with their meanings, tagged records and texts.
#include "tools/orbntf/inspect/words.h"
#include "tools/orbntf/report/html.h"
#include "tools/orbntf/report/report.h"

namespace tool {
namespace {

constexpr size_t kMostRows = 2000, kMostText = 400, kMostBytes = 64;

std::string ValueOf(const SurveyedField& field) {
  if (field.name == "FBKGC") return "#" + HexOf(field.text);
  if (HoldsBytes(field.name)) return Escaped(HexOf(field.text, kMostBytes));
  const std::string shown = EscapedField(std::string_view(field.text).substr(0, kMostText));
  return field.text.size() > kMostText ? shown + "…" : shown;
}

std::string PartTable(const SurveyedPart& part) {
  std::string rows;
  size_t count = 0;
  for (const SurveyedField& field : part.fields) {
    if (++count > kMostRows) break;
    rows += TableRow(
        {Escaped(field.name), ValueOf(field), Escaped(field.meaning), std::to_string(field.offset)});
  }
  if (part.fields.size() > kMostRows)
    rows += TableRow({"…", std::to_string(part.fields.size() - kMostRows) + " more fields", "", ""});
  return Table(part.Title(), {"Field", "Value", "Meaning", "Byte"}, rows, "fields");
}

void AddRows(const std::vector<DecodedField>& fields, const std::string& number, std::string& rows,
             size_t& count) {
  for (const DecodedField& field : fields) {
    const RecordField& known = *field.field;
    for (size_t turn = 0; turn < field.turns.size(); ++turn)
      AddRows(field.turns[turn], number + "[" + std::to_string(turn + 1) + "]", rows, count);
    if (!field.turns.empty() || !known.fields.empty() || (known.repeats && field.text.empty()) ||
        ++count > kMostRows)
      continue;
    const std::string value = IsAbsent(field) ? "–"
                                              : EscapedField(field.text) +
                                                    (known.unit.empty() ? "" : " " + Escaped(known.unit));
    rows += TableRow({Escaped(known.name + number), value, Escaped(known.note)});
  }
}

std::string RecordHtml(const SurveyedPart& part, const TaggedRecord& record) {
  const std::string tag = record.tag.empty() ? "bytes" : EscapedField(record.tag);
  const std::string place = part.Title() + ", " + record.area + ", " +
                            std::to_string(record.bytes.size()) + " bytes at " +
                            std::to_string(record.offset);
  if (!record.problem.empty())
    return Tag("details", Tag("summary", tag + ": " + Escaped(record.problem)) +
                              Tag("p", place, "class=\"soft\"") +
                              Tag("pre", Escaped(HexOf(record.bytes, 1024)))) +
           "\n";
  std::string rows;
  size_t count = 0;
  AddRows(record.fields, "", rows, count);
  const std::string document =
      record.definition->document.empty() ? "" : ". " + Escaped(record.definition->document);
  return Tag("details", Tag("summary", tag + ": " + Escaped(record.definition->title)) +
                            Tag("p", place + document, "class=\"soft\"") +
                            Table(record.tag, {"Field", "Value", "Form or code"}, rows, "fields")) +
         "\n";
}

}  // namespace

std::string FieldsSection(const ReportedFile& file) {
  std::string parts;
  for (const SurveyedPart& part : file.survey.parts)
    parts += Tag("details",
                 Tag("summary", Escaped(part.Title())) + Tag("div", PartTable(part), "class=\"scroll\""),
                 part.kind == PartKind::File ? "open" : "") +
             "\n";
  const std::string search =
      Tag("p",
          Tag("label", "Search the fields <input type=\"search\" autocomplete=\"off\">") +
              " <span class=\"count\" role=\"status\"></span>",
          "class=\"tools\" hidden");
  return Section(file.id + "-fields", "Header fields", search + parts);
}

std::string RecordsSection(const ReportedFile& file) {
  constexpr size_t kMostRecords = 500;
  std::string all;
  size_t count = 0;
  for (const SurveyedPart& part : file.survey.parts) {
    for (const TaggedRecord& record : RecordsOf(part, file.definitions)) {
      if (++count <= kMostRecords) all += RecordHtml(part, record);
    }
  }
  if (count > kMostRecords)
    all += Tag("p", "and " + Counted(count - kMostRecords, "more record"), "class=\"soft\"");
  return all.empty() ? "" : Section(file.id + "-records", "Tagged records", all);
}

std::string TextsSection(const ReportedFile& file) {
  std::string all;
  for (const SurveyedPart& part : file.survey.parts) {
    if (part.kind != PartKind::Text) continue;
    const std::string title = EscapedField(part.Text("TXTITL")), text = file.survey.Data(part);
    const bool isUtf8 = part.Text("TXTFMT") == "U8S";
    all += Tag("h3", part.Title() + (title.empty() ? "" : ": " + title)) +
           Tag("pre", EscapedLines(isUtf8 ? text : ToUtf8(text))) + "\n";
  }
  return all.empty() ? "" : Section(file.id + "-texts", "Texts", all);
}

}  // namespace tool
