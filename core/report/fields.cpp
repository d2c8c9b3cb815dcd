// Header fields with their meanings, tagged records and texts.
#include <algorithm>

#include "core/format/records.h"
#include "core/format/words.h"
#include "core/report/html.h"
#include "core/report/report.h"

namespace core {
namespace {

constexpr size_t kMostText = 400, kMostBytes = 64;

std::string ValueOf(const SurveyedField& field) {
  if (field.name == "FBKGC") return "#" + HexOf(field.text);
  if (HoldsBytes(field.name)) return Escaped(HexOf(field.text, kMostBytes));
  const std::string shown = EscapedField(std::string_view(field.text).substr(0, kMostText));
  return field.text.size() > kMostText ? shown + "…" : shown;
}

std::string PartTable(const SurveyedPart& part, size_t most) {
  std::string rows;
  size_t count = 0;
  part.ForEachField([&](const SurveyedField& field) {
    if (++count > most) return;
    rows += TableRow(
        {Escaped(field.name), ValueOf(field), Escaped(field.meaning), std::to_string(field.offset)});
  });
  if (count > most) rows += TableRow({"…", std::to_string(count - most) + " more fields", "", ""});
  return Table(part.Title(), {"Field", "Value", "Meaning", "Byte"}, rows, "fields");
}

void AddRows(const std::vector<DecodedField>& fields, const std::string& number, std::string& rows,
             size_t& left) {
  for (const DecodedField& field : fields) {
    const RecordField& known = *field.field;
    for (size_t turn = 0; turn < field.turns.size(); ++turn)
      AddRows(field.turns[turn], number + "[" + std::to_string(turn + 1) + "]", rows, left);
    if (!field.turns.empty() || !known.fields.empty() || (known.repeats && field.text.empty()) ||
        left == 0)
      continue;
    --left;
    const std::string value = IsAbsent(field) ? "–"
                                              : Escaped(ShownText(field)) +
                                                    (known.unit.empty() ? "" : " " + Escaped(known.unit));
    rows += TableRow({Escaped(known.name + number), value, Escaped(known.note)});
  }
}

std::string RecordHtml(const SurveyedPart& part, const TaggedRecord& record, size_t mostRows) {
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
  AddRows(record.fields, "", rows, mostRows);
  const std::string document =
      record.definition->document.empty() ? "" : ". " + Escaped(record.definition->document);
  return Tag("details", Tag("summary", tag + ": " + Escaped(record.definition->title)) +
                            Tag("p", place + document, "class=\"soft\"") +
                            Table(record.tag, {"Field", "Value", "Form or code"}, rows, "fields")) +
         "\n";
}

}  // namespace

std::string FieldsSection(const ReportedFile& file, const PageDetail& detail) {
  std::string parts;
  size_t left = detail.allRows, shown = 0;
  for (const SurveyedPart& part : file.survey.parts) {
    if (left == 0) break;
    const size_t rows = std::min({detail.rows, left, part.FieldCount()});
    left -= std::min(left, rows + 1);
    ++shown;
    parts +=
        Tag("details",
            Tag("summary", Escaped(part.Title())) + Tag("div", PartTable(part, rows), "class=\"scroll\""),
            part.kind == PartKind::File ? "open" : "") +
        "\n";
  }
  if (shown < file.survey.parts.size())
    parts += Tag("p", "and the fields of " + Counted(file.survey.parts.size() - shown, "more part"),
                 "class=\"soft\"");
  const std::string search =
      Tag("p",
          Tag("label", "Search the fields <input type=\"search\" autocomplete=\"off\">") +
              " <span class=\"count\" role=\"status\"></span>",
          "class=\"tools\" hidden");
  return Section(file.id + "-fields", "Header fields", search + parts);
}

std::string RecordsSection(const ReportedFile& file, const PageDetail& detail) {
  std::string all;
  size_t count = 0;
  for (const SurveyedPart& part : file.survey.parts) {
    for (const TaggedRecord& record : RecordsOf(part, file.definitions)) {
      if (++count <= detail.records) all += RecordHtml(part, record, detail.rows);
    }
  }
  if (count > detail.records)
    all += Tag("p", "and " + Counted(count - detail.records, "more record"), "class=\"soft\"");
  return all.empty() ? "" : Section(file.id + "-records", "Tagged records", all);
}

std::string TextsSection(const ReportedFile& file, const PageDetail& detail) {
  std::string all;
  uint64_t left = detail.textBytes, leftOut = 0;
  for (const SurveyedPart& part : file.survey.parts) {
    if (part.kind != PartKind::Text) continue;
    const std::string title = EscapedField(part.Text("TXTITL")), text = file.survey.Data(part, left);
    left -= text.size();
    leftOut += part.dataLength - text.size();
    const bool isUtf8 = part.Text("TXTFMT") == "U8S";
    all += Tag("h3", part.Title() + (title.empty() ? "" : ": " + title)) +
           Tag("pre", EscapedLines(isUtf8 ? text : ToUtf8(text))) + "\n";
  }
  if (leftOut != 0) all += Tag("p", "and " + Counted(leftOut, "more byte"), "class=\"soft\"");
  return all.empty() ? "" : Section(file.id + "-texts", "Texts", all);
}

}  // namespace core
