#include "tools/orbntf/inspect/info_table.h"

#include "core/format/numbers.h"
#include "core/format/words.h"
#include "core/place/extent.h"
#include "core/place/placed.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

// A cell as spreadsheets read it (RFC 4180).
std::string Cell(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

std::string Line(const std::vector<std::string>& cells) {
  std::string line;
  for (size_t i = 0; i < cells.size(); ++i) line += (i == 0 ? "" : ",") + Cell(cells[i]);
  return line + "\n";
}

std::string FieldOf(const SurveyedPart& part, const char* name) { return Shown(part.Text(name)); }

class RecordLines {
 public:
  RecordLines(const std::string& path, const std::string& part) : path_(path), part_(part) {}
  std::string Of(const TaggedRecord& record) {
    tag_ = record.tag.empty() ? "" : Shown(record.tag);
    area_ = record.area;
    lines_.clear();
    if (!record.problem.empty()) Add("", "", HexOf(record.bytes, 64), "", record.problem);
    Walk(record.fields, "");
    return lines_;
  }

 private:
  void Add(const std::string& field, const std::string& turn, const std::string& value,
           const std::string& unit, const std::string& problem = "") {
    lines_ += Line({Printable(InputName(path_)), part_, area_, tag_, field, turn, value, unit, problem});
  }
  void Walk(const std::vector<DecodedField>& fields, const std::string& turn) {
    for (const DecodedField& field : fields) {
      for (size_t i = 0; i < field.turns.size(); ++i)
        Walk(field.turns[i], turn + (turn.empty() ? "" : ".") + std::to_string(i + 1));
      const bool isGroup = !field.turns.empty() || !field.field->fields.empty();
      if (isGroup || (field.field->repeats && field.text.empty())) continue;
      Add(Printable(field.field->name), turn, IsAbsent(field) ? "" : ShownText(field),
          Printable(field.field->unit));
    }
  }

  const std::string& path_;
  const std::string part_;
  std::string tag_, area_, lines_;
};

}  // namespace

std::string CsvHead(bool ofRecords) {
  return ofRecords ? "file,part,area,tag,field,turn,value,unit,problem\n"
                   : "file,status,format,version,level,title,date,station,classification,bytes,width,"
                     "height,images,"
                     "graphics,texts,extensions,problem\n";
}

std::string CsvLine(const std::string& path, const FileFacts& file) {
  const SurveyedPart& header = file.survey.Header();
  const auto count = [&](PartKind kind) { return std::to_string(file.survey.Count(kind)); };
  const std::string date = IsoDate(header.Text("FDT"));
  return Line({Printable(InputName(path)), std::to_string(file.module.status), FieldOf(header, "FHDR"),
               FieldOf(header, "FVER"), FieldOf(header, "CLEVEL"), FieldOf(header, "FTITLE"),
               date.empty() ? FieldOf(header, "FDT") : date, FieldOf(header, "OSTAID"),
               FieldOf(header, "FSCLAS"), std::to_string(file.survey.file.Size()),
               std::to_string(file.width), std::to_string(file.height), count(PartKind::Image),
               count(PartKind::Graphic), count(PartKind::Text), count(PartKind::DataExtension),
               Printable(file.module.words)});
}

std::string CsvFailure(const std::string& path, const std::string& words, bool ofRecords) {
  std::vector<std::string> cells(ofRecords ? 9 : 17);
  cells.front() = Printable(InputName(path));
  if (!ofRecords) cells[1] = std::to_string(ORB_SHORT_READ);
  cells.back() = Printable(words);
  return Line(cells);
}

std::string CsvRecords(const std::string& path, const FileFacts& file) {
  std::string lines;
  for (const SurveyedPart& part : file.survey.parts) {
    RecordLines of(path, part.Title());
    for (const TaggedRecord& record : RecordsOf(part, file.definitions)) lines += of.Of(record);
  }
  return lines;
}

void WriteFeature(JsonText& json, const std::string& path, const Survey& survey,
                  const RecordDefinitions& definitions) {
  json.BeginObject();
  json.Key("type");
  json.String("Feature");
  std::vector<GeographicCorners> corners;
  for (const SurveyedPart& part : survey.parts) {
    if (part.kind != PartKind::Image) continue;
    const Placed placed = PlaceOf(part, survey.Header(), definitions);
    const auto extent = placed.model == nullptr ? std::nullopt : ExtentOf(*placed.model, part);
    if (extent) corners.push_back(extent->corners);
  }
  json.Key("geometry");
  if (corners.empty()) {
    json.Null();
  } else {
    json.BeginObject();
    json.Key("type");
    json.String("GeometryCollection");
    json.Key("geometries");
    json.BeginArray();
    for (const GeographicCorners& own : corners) WritePolygon(json, own);
    json.EndArray();
    json.EndObject();
  }
  json.Key("properties");
  json.BeginObject();
  for (const auto& [key, text] : {std::pair{"file", InputName(path)},
                                  {"title", std::string(survey.Header().Trimmed("FTITLE"))},
                                  {"date", IsoDate(survey.Header().Text("FDT"))}}) {
    json.Key(key);
    json.FieldText(text);
  }
  json.EndObject();
  json.EndObject();
}

}  // namespace tool
