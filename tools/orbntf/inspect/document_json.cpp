#include "tools/orbntf/inspect/document_json.h"

#include "core/format/geography.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/inspect/values.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

constexpr int kFormatVersion = 1;  // grows when a key changes its meaning

template <class R>
std::string_view TextOf(const FieldRow<R>& row, const R& record) {
  const FieldView field = row.view(const_cast<R&>(record));
  return row.raw ? std::string_view(field.text, row.width) : std::string_view(field.text);
}

void WriteKey(JsonText& json, const FieldTraits& field) {
  char name[32] = {};
  const std::string_view prefix(field.prefix), rest(field.name);
  const size_t front = prefix.copy(name, sizeof name / 2);
  json.Key({name, front + rest.copy(name + front, sizeof name / 2)});
}

// Field texts by mnemonic.
template <class R>
void WriteFields(JsonText& json, const R& record) {
  for (const auto& row : R::Table()) {
    if (!row.IsPresent(record)) continue;
    WriteKey(json, row);
    json.FieldText(TextOf(row, record));
  }
}

// Of the fields that mean more than a text, what they mean.
template <class R>
void WriteValues(JsonText& json, const R& record) {
  for (const auto& row : R::Table()) {
    if (!HasValue(row) || !row.IsPresent(record)) continue;
    WriteKey(json, row);
    WriteValue(json, row, TextOf(row, record));
  }
}

template <class R>
void WriteValuesObject(JsonText& json, const R& record) {
  json.Key("values");
  json.BeginObject();
  WriteValues(json, record);
  json.EndObject();
}

void WriteNumber(JsonText& json, const char* name, int64_t value) {
  json.Key(name);
  json.Number(value);
}

void WriteBytes(JsonText& json, const char* name, const ExtendedData& data) {
  if (data.bytes.size() == 0) return;
  json.Key(name);
  json.FieldText(data.Data());
}

void WriteLengths(JsonText& json, const char* name, const LengthTable& table, uint32_t width,
                  uint32_t SegmentLengths::*length) {
  json.Key(name);
  json.BeginArray();
  for (const SegmentLengths& lengths : table.inFile) {
    char text[16];
    (void)FormatNumberField(text, width, lengths.*length);
    json.FieldText(text);
  }
  json.EndArray();
}

// Where a segment lies in the file.
void WritePlace(JsonText& json, const NitfFile& document, SegmentKind kind, uint32_t index) {
  const SegmentLengths lengths = document.header.Lengths(kind).InFile(index);
  const int64_t start = document.StartOf(kind, index);
  json.Key("place");
  json.BeginObject();
  WriteNumber(json, "subheaderOffset", start);
  WriteNumber(json, "subheaderLength", lengths.subheader);
  WriteNumber(json, "dataOffset", start + lengths.subheader);
  WriteNumber(json, "dataLength", lengths.data);
  json.EndObject();
}

void WriteRecord(JsonText& json, const FileHeader& header) {
  WriteFields(json, header);
  for (const SegmentLengthFields& names : kSegmentLengths) {
    const LengthTable& table = header.*names.table;
    if (table.Count() == 0) continue;
    WriteLengths(json, names.subheaderName, table, names.subheaderWidth, &SegmentLengths::subheader);
    WriteLengths(json, names.dataName, table, names.dataWidth, &SegmentLengths::data);
  }
  WriteBytes(json, "UDHD", header.userDefined);
  WriteBytes(json, "XHD", header.extended);
  WriteValuesObject(json, header);
}

void WriteBands(JsonText& json, const ImageSubheader& header) {
  if (header.bands.size() == 0) return;
  json.Key("bands");
  json.BeginArray();
  for (const BandFields& band : header.bands) {
    json.BeginObject();
    WriteFields(json, band);
    if (band.NLUTS.value != 0) {
      json.Key("NELUT");
      json.FieldText(band.NELUT.text);
    }
    json.EndObject();
  }
  json.EndArray();
}

void WriteMask(JsonText& json, const ImageSubheader& header) {
  if (!header.HasMaskTable()) return;
  WriteNumber(json, "IMDATOFF", header.mask.IMDATOFF);
  WriteNumber(json, "BMRLNTH", header.mask.BMRLNTH);
  WriteNumber(json, "TMRLNTH", header.mask.TMRLNTH);
  WriteNumber(json, "TPXCDLNTH", header.mask.TPXCDLNTH);
}

void WriteRecord(JsonText& json, const ImageSubheader& header) {
  WriteFields(json, header);
  if (header.comments.size() != 0) {
    json.Key("ICOM");
    json.BeginArray();
    for (const Text<80>& comment : header.comments) json.FieldText(comment.text);
    json.EndArray();
  }
  WriteBands(json, header);
  WriteBytes(json, "UDID", header.userDefined);
  WriteBytes(json, "IXSHD", header.extended);
  WriteMask(json, header);
  json.Key("values");
  json.BeginObject();
  WriteValues(json, header);
  if (header.HasCoordinates()) {
    json.Key("IGEOLO");
    WriteGeography(json, header.ICORDS.text[0], header.IGEOLO.text);
  }
  json.EndObject();
}

void WriteRecord(JsonText& json, const GraphicSubheader& header) {
  WriteFields(json, header);
  WriteBytes(json, "SXSHD", header.extended);
  WriteValuesObject(json, header);
}

void WriteRecord(JsonText& json, const TextSubheader& header) {
  WriteFields(json, header);
  WriteBytes(json, "TXSHD", header.extended);
  WriteValuesObject(json, header);
}

void WriteRecord(JsonText& json, const DataExtensionSubheader& header) {
  WriteFields(json, header);
  if (header.DESSHF.size() != 0) {
    json.Key("DESSHF");
    json.FieldText({header.DESSHF.data(), header.DESSHF.size() - 1});
  }
  WriteValuesObject(json, header);
}

// The subheaders that parsed.
template <class R>
void WriteList(JsonText& json, const char* name, const NitfFile& document, SegmentKind kind,
               const SegmentList<R>& list, const RecordLists& records) {
  json.Key(name);
  json.BeginArray();
  for (const R& record : list) {
    if (!record.parsed) continue;
    json.BeginObject();
    WriteRecord(json, record);
    WriteNumber(json, "index", record.index);
    WritePlace(json, document, kind, record.index);
    records.Write(json, kind, record.index);
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace

void Inspection::Read(const std::string& path) {
  const std::u16string wide = Widen(path);
  document.readsOn = true;
  status = ToCaller(document.ReadDocument(wide.c_str()));
  if (status == ORB_BAD_VERSION || status == ORB_BAD_COMPLEXITY) {
    const ParseFault fault = document.fault;
    document.FreeObjects();
    document.replacement = {};
    document.header.rules.everyVersion = true;
    (void)document.ReadDocument(wide.c_str());
    document.fault = fault;
  }
  if (status == ORB_SUCCESS) status = GetActual_Width_Height(&document, &width, &height);
}

void WriteFile(JsonText& json, const std::string& path, const Inspection& file,
               const RecordLists& records) {
  const NitfFile& document = file.document;
  json.BeginObject();
  WriteNumber(json, "formatVersion", kFormatVersion);
  json.Key("file");
  json.String(path);
  WriteNumber(json, "status", file.status);
  json.Key("statusText");
  json.String(MeaningOf(file.status));
  if (const ParseFault& fault = document.fault; fault.offset >= 0) {
    json.Key("fault");
    json.BeginObject();
    json.Key("field");
    json.String(std::string(fault.prefix) + fault.name);
    WriteNumber(json, "offset", fault.offset);
    json.EndObject();
  }
  json.Key("canvas");
  json.BeginObject();
  WriteNumber(json, "width", file.width);
  WriteNumber(json, "height", file.height);
  json.EndObject();
  json.Key("fileHeader");
  json.BeginObject();
  if (document.headerPresent) {
    WriteRecord(json, document.header);
    records.Write(json, PartKind::File, 0);
  }
  json.EndObject();
  WriteList(json, "images", document, SegmentKind::Image, document.images, records);
  WriteList(json, "graphics", document, SegmentKind::Graphic, document.graphics, records);
  WriteList(json, "texts", document, SegmentKind::Text, document.texts, records);
  WriteList(json, "dataExtensions", document, SegmentKind::DataExtension, document.dataExtensions,
            records);
  json.EndObject();
}

void WriteFailure(JsonText& json, const std::string& path, const std::string& words) {
  json.BeginObject();
  WriteNumber(json, "formatVersion", kFormatVersion);
  json.Key("file");
  json.String(path);
  WriteNumber(json, "status", ORB_SHORT_READ);
  json.Key("statusText");
  json.String(words);
  json.Key("canvas");
  json.BeginObject();
  WriteNumber(json, "width", 0);
  WriteNumber(json, "height", 0);
  json.EndObject();
  json.Key("fileHeader");
  json.BeginObject();
  json.EndObject();
  for (const char* list : {"images", "graphics", "texts", "dataExtensions"}) {
    json.Key(list);
    json.BeginArray();
    json.EndArray();
  }
  json.EndObject();
}

}  // namespace tool
