#include "tools/orbntf/inspect/survey_json.h"

#include "core/format/products.h"
#include "core/format/streaming.h"
#include "core/format/values.h"
#include "core/place/extent.h"
#include "core/place/placed.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/inspect/show_records.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

constexpr int kFormatVersion = 1;  // grows when a key changes its meaning

struct ListOfKind {
  const char* name;
  PartKind kind;
  const char *subheaders, *data;  ///< of the lengths in the file header
};
constexpr ListOfKind kLists[] = {{"images", PartKind::Image, "LISH", "LI"},
                                 {"graphics", PartKind::Graphic, "LSSH", "LS"},
                                 {"texts", PartKind::Text, "LTSH", "LT"},
                                 {"dataExtensions", PartKind::DataExtension, "LDSH", "LD"},
                                 {"reservedExtensions", PartKind::Reserved, "LRESH", "LRE"}};

void WriteNumber(JsonText& json, const char* name, uint64_t value) {
  json.Key(name);
  json.Number(static_cast<int64_t>(value));
}

// A mnemonic and the number behind it: "IREPBAND2", "LISH12"; 0 for none. IID1, SBND2 and their like have
// none.
std::pair<std::string_view, uint32_t> NumberedName(std::string_view name) {
  constexpr std::string_view kNumbered[] = {"ICOM",  "IREPBAND", "ISUBCAT", "IFC",   "IMFLT", "NLUTS",
                                            "NELUT", "LISH",     "LI",      "LSSH",  "LS",    "LTSH",
                                            "LT",    "LDSH",     "LD",      "LRESH", "LRE"};
  const size_t digits = name.find_first_of("0123456789");
  for (const std::string_view base : kNumbered) {
    if (digits == base.size() && name.substr(0, digits) == base)
      return {base, static_cast<uint32_t>(DigitsOf(name.substr(digits)))};
  }
  return {name, 0};
}

class PartWriter {
 public:
  PartWriter(JsonText& json, const SurveyedPart& part) : json_(json), part_(part) {}

  void Write() {
    part_.ForEachField([&](const SurveyedField& field) { WriteField(field); });
    WriteRepeated("ICOM");
    if (part_.kind == PartKind::File) {
      for (const ListOfKind& list : kLists) {
        WriteRepeated(list.subheaders);
        WriteRepeated(list.data);
      }
    }
    if (part_.Bands() > 0) WriteBands();
    for (const RecordArea& area : part_.areas) {
      if (area.name == "DESDATA" || area.bytes.empty()) continue;
      json_.Key(area.name);
      json_.FieldText(area.bytes);
    }
    if (part_.IsMasked()) WriteMask();
    WriteMeanings();
  }

 private:
  void WriteField(const SurveyedField& field) {
    if (NumberedName(field.name).second != 0 || HoldsRecords(field.name) ||
        field.name.rfind("LUTD", 0) == 0)
      return;
    json_.Key(field.name);
    json_.FieldText(field.text);
  }

  void WriteRepeated(const std::string& base) {
    if (!part_.Has(base + "1")) return;
    json_.Key(base);
    json_.BeginArray();
    for (uint32_t n = 1; part_.Has(base + std::to_string(n)); ++n)
      json_.FieldText(part_.Text(base + std::to_string(n)));
    json_.EndArray();
  }

  void WriteBands() {
    json_.Key("bands");
    json_.BeginArray();
    for (int64_t band = 1; band <= part_.Bands(); ++band) {
      json_.BeginObject();
      for (const char* name : {"IREPBAND", "ISUBCAT", "IFC", "IMFLT", "NLUTS", "NELUT"}) {
        const auto field = part_.Find(name + std::to_string(band));
        if (!field) continue;
        json_.Key(name);
        json_.FieldText(field->text);
      }
      json_.EndObject();
    }
    json_.EndArray();
  }

  void WriteMask() {
    WriteNumber(json_, "IMDATOFF", part_.mask.dataOffset);
    WriteNumber(json_, "BMRLNTH", part_.mask.blockLength);
    WriteNumber(json_, "TMRLNTH", part_.mask.padLength);
    WriteNumber(json_, "TPXCDLNTH", part_.mask.padBits);
  }

  // Of the fields that mean more than a text, what they mean.
  void WriteMeanings() {
    json_.Key("values");
    WriteValues(json_, part_);
  }

  JsonText& json_;
  const SurveyedPart& part_;
};

void WriteRecordsOf(JsonText& json, const FileFacts& file, const SurveyedPart& part) {
  const std::vector<TaggedRecord> records = RecordsOf(part, file.definitions);
  if (records.empty()) return;
  json.Key("records");
  WriteRecords(json, records);
}

// Where an image lies, by the best model that tells it.
void WriteLocation(JsonText& json, const FileFacts& file, const SurveyedPart& image) {
  const Placed placed = PlaceOf(image, file.survey.Header(), file.definitions);
  if (placed.model == nullptr) return;
  json.Key("location");
  json.BeginObject();
  json.Key("model");
  json.String(placed.model->Name());
  json.Key("error_m");
  json.Real(placed.model->Error());
  if (!placed.unused.empty()) {
    json.Key("unused");
    json.BeginArray();
    for (const std::string& tag : placed.unused) json.String(tag);
    json.EndArray();
  }
  if (const auto extent = ExtentOf(*placed.model, image)) {
    for (const auto& [key, number] : {std::pair{"latitude", extent->middle.latitude},
                                      {"longitude", extent->middle.longitude},
                                      {"row_m", extent->rowSpacing},
                                      {"column_m", extent->columnSpacing},
                                      {"area_m2", extent->area},
                                      {"north_deg", extent->north}}) {
      json.Key(key);
      json.Real(number);
    }
    json.Key("corners");
    json.BeginArray();
    for (const GeographicPoint& corner : extent->corners) {
      json.BeginArray();
      json.Real(corner.latitude);
      json.Real(corner.longitude);
      json.EndArray();
    }
    json.EndArray();
    json.Key("footprint");
    WritePolygon(json, extent->corners);
  }
  json.EndObject();
}

// The fields of the data of a streaming file header.
void WriteDataFields(JsonText& json, const std::vector<DataField>& fields) {
  if (fields.empty()) return;
  json.Key("dataFields");
  json.BeginArray();
  for (const DataField& field : fields) {
    json.BeginObject();
    json.Key("name");
    json.String(field.name);
    WriteNumber(json, "offset", field.offset);
    WriteNumber(json, "length", field.length);
    if (!field.text.empty()) {
      json.Key("text");
      json.FieldText(field.text);
    }
    json.EndObject();
  }
  json.EndArray();
}

void WriteSegment(JsonText& json, const FileFacts& file, const SurveyedPart& part) {
  json.BeginObject();
  PartWriter(json, part).Write();
  WriteNumber(json, "index", part.index);
  json.Key("place");
  json.BeginObject();
  WriteNumber(json, "subheaderOffset", part.offset);
  WriteNumber(json, "subheaderLength", part.headerLength);
  WriteNumber(json, "dataOffset", part.dataOffset);
  WriteNumber(json, "dataLength", part.dataLength);
  json.EndObject();
  if (part.kind == PartKind::Image) WriteLocation(json, file, part);
  WriteDataFields(json, StreamingFields(file.survey.file, part));
  WriteRecordsOf(json, file, part);
  json.EndObject();
}

void WriteFront(JsonText& json, const std::string& path, int32_t status, const std::string& words) {
  WriteNumber(json, "formatVersion", kFormatVersion);
  json.Key("file");
  json.String(path);
  json.Key("status");
  json.Number(status);
  json.Key("statusText");
  json.String(words);
}

void WriteCanvas(JsonText& json, uint64_t width, uint64_t height) {
  json.Key("canvas");
  json.BeginObject();
  WriteNumber(json, "width", width);
  WriteNumber(json, "height", height);
  json.EndObject();
}

}  // namespace

void WriteFile(JsonText& json, const std::string& path, const FileFacts& file) {
  json.BeginObject();
  WriteFront(json, path, file.module.status, MeaningOf(file.module.status));
  if (!file.module.words.empty()) {
    json.Key("refused");
    json.String(file.module.words);
  }
  if (file.module.offset >= 0) {
    json.Key("fault");
    json.BeginObject();
    json.Key("field");
    json.String(file.module.field);
    WriteNumber(json, "offset", static_cast<uint64_t>(file.module.offset));
    json.EndObject();
  }
  WriteCanvas(json, file.width, file.height);
  if (const std::vector<std::string> products = ProductsOf(file.survey); !products.empty()) {
    json.Key("products");
    json.BeginArray();
    for (const std::string& product : products) json.String(product);
    json.EndArray();
  }
  json.Key("fileHeader");
  json.BeginObject();
  const SurveyedPart& header = file.survey.Header();
  if (header.FieldCount() != 0) {
    PartWriter(json, header).Write();
    WriteRecordsOf(json, file, header);
  }
  json.EndObject();
  for (const ListOfKind& list : kLists) {
    json.Key(list.name);
    json.BeginArray();
    for (const SurveyedPart& part : file.survey.parts) {
      if (part.kind == list.kind) WriteSegment(json, file, part);
    }
    json.EndArray();
  }
  json.EndObject();
}

void WriteFailure(JsonText& json, const std::string& path, const std::string& words) {
  json.BeginObject();
  WriteFront(json, path, ORB_SHORT_READ, words);
  WriteCanvas(json, 0, 0);
  json.Key("fileHeader");
  json.BeginObject();
  json.EndObject();
  for (const ListOfKind& list : kLists) {
    json.Key(list.name);
    json.BeginArray();
    json.EndArray();
  }
  json.EndObject();
}

}  // namespace tool
