// Header fields with their meanings, tagged records and texts.
#include <algorithm>

#include "core/format/records.h"
#include "core/format/streaming.h"
#include "core/format/words.h"
#include "core/format/xml.h"
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

// A row that a finding leads to has its id.
std::string FieldRow(const std::vector<std::string>& cells, const std::string& id) {
  const std::string row = TableRow(cells);
  return id.empty() ? row : "<tr id=\"" + id + "\"" + row.substr(std::string_view("<tr").size());
}

std::string PartTable(const ReportedFile& file, const SurveyedPart& part, size_t most,
                      const std::set<std::string>& wanted, std::set<std::string>& shown) {
  std::string rows;
  size_t count = 0;
  part.ForEachField([&](const SurveyedField& field) {
    if (++count > most) return;
    std::string id = RowId(file, part.Title(), field.name);
    if (wanted.count(id) == 0 || !shown.insert(id).second) id.clear();
    const std::string byte = Tag("span", "byte ", "class=\"narrow\"") + std::to_string(field.offset);
    rows += FieldRow({Escaped(field.name), ValueOf(field), Escaped(field.meaning), byte}, id);
  });
  if (count > most) rows += TableRow({"…", std::to_string(count - most) + " more fields", "", ""});
  for (const DataField& field : StreamingFields(file.survey.file, part)) {
    const std::string value =
        field.text.empty() ? std::to_string(field.length) + " bytes" : EscapedField(field.text);
    const std::string byte = Tag("span", "byte ", "class=\"narrow\"") + std::to_string(field.offset);
    rows += TableRow({field.name, value, field.meaning, byte});
  }
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

std::string PlaceOf(const SurveyedPart& part, const TaggedRecord& record) {
  return part.Title() + ", " + record.area + ", " + std::to_string(record.bytes.size()) + " bytes at " +
         std::to_string(record.offset);
}

std::string RecordHtml(const SurveyedPart& part, const TaggedRecord& record, size_t mostRows) {
  const std::string tag = record.tag.empty() ? "bytes" : EscapedField(record.tag);
  const std::string place = PlaceOf(part, record);
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

// An XML document with a line an element; as it is where it is not well-formed.
std::string XmlHtml(const ReportedFile& file, const SurveyedPart& part, uint64_t& left,
                    uint64_t& leftOut) {
  const std::string data = file.survey.Data(part, left);
  std::string shown = data.size() == part.dataLength ? IndentedXml(data) : "";
  if (shown.empty()) shown = data;
  const uint64_t taken = std::min<uint64_t>(left, shown.size());
  left -= taken;
  leftOut += part.dataLength - data.size() + (shown.size() - taken);
  shown.resize(taken);
  return Tag("details", Tag("summary", part.Title() + ": XML") + Tag("pre", EscapedLines(shown))) + "\n";
}

struct PlacedRecord {
  const SurveyedPart* part;
  TaggedRecord record;
};

// Records of a tag without a definition, together.
std::string UnknownHtml(const std::string& tag, const std::vector<PlacedRecord>& records) {
  constexpr size_t kMost = 20;
  std::string all;
  for (size_t i = 0; i < std::min(records.size(), kMost); ++i) {
    const TaggedRecord& record = records[i].record;
    all += Tag("p", PlaceOf(*records[i].part, record), "class=\"soft\"") +
           Tag("pre", Escaped(HexOf(record.bytes, 1024)));
  }
  if (records.size() > kMost)
    all += Tag("p", "and " + Counted(records.size() - kMost, "more record"), "class=\"soft\"");
  const std::string count = records.size() == 1 ? "" : ", " + Counted(records.size(), "record");
  return Tag("details",
             Tag("summary", EscapedField(tag) + ": " + Escaped(records[0].record.problem) + count) +
                 all) +
         "\n";
}

}  // namespace

std::string RowId(const ReportedFile& file, const std::string& part, const std::string& field) {
  std::string id = file.id + "-" + part + "-" + field;
  for (char& character : id) {
    const bool isPlain = (character >= '0' && character <= '9') ||
                         (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
    if (!isPlain) character = '-';
  }
  return id;
}

std::string FieldsSection(const ReportedFile& file, const PageDetail& detail,
                          std::set<std::string>& rows) {
  std::string parts;
  std::set<std::string> wanted;
  for (const Finding& finding : file.findings) {
    wanted.insert(RowId(file, finding.part, finding.field));
    wanted.insert(RowId(file, file.survey.Header().Title(), finding.field));
  }
  size_t left = detail.allRows, shown = 0;
  for (const SurveyedPart& part : file.survey.parts) {
    if (left == 0) break;
    const size_t most = std::min({detail.rows, left, part.FieldCount()});
    left -= std::min(left, most + 1);
    ++shown;
    parts += Tag("details",
                 Tag("summary", Escaped(part.Title())) +
                     Tag("div", PartTable(file, part, most, wanted, rows), "class=\"scroll\""),
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
  std::map<std::string, std::vector<PlacedRecord>> unknown;
  for (const SurveyedPart& part : file.survey.parts) {
    for (const TaggedRecord& record : RecordsOf(part, file.definitions)) {
      if (record.definition == nullptr && !record.tag.empty()) {
        unknown[record.tag].push_back({&part, record});
      } else if (++count <= detail.records) {
        all += RecordHtml(part, record, detail.rows);
      }
    }
  }
  for (const auto& [tag, records] : unknown) {
    if (++count <= detail.records) all += UnknownHtml(tag, records);
  }
  if (count > detail.records)
    all += Tag("p", "and " + Counted(count - detail.records, "more record"), "class=\"soft\"");
  return all.empty() ? "" : Section(file.id + "-records", "Tagged records", all);
}

std::string TextsSection(const ReportedFile& file, const PageDetail& detail) {
  std::string all;
  uint64_t left = detail.textBytes, leftOut = 0;
  for (const SurveyedPart& part : file.survey.parts) {
    const bool isXml =
        part.kind == PartKind::DataExtension && part.Trimmed("DESID") == "XML_DATA_CONTENT";
    if (isXml) all += XmlHtml(file, part, left, leftOut);
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
