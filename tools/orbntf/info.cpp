// orbntf info: what a file holds, for people or as JSON.
#include <cstdio>

#include <nlohmann/json.hpp>

#include "Common/NitfFile.h"
#include "tools/orbntf/tool.h"
#include "tools/orbntf/verify.h"

namespace tool {
namespace {

using Json = nlohmann::ordered_json;

// Field texts are single bytes of the file's own character set; JSON takes them as Latin-1.
std::string ToUtf8(std::string_view text) {
  std::string utf8;
  utf8.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<uint8_t>(c);
    if (byte < 0x80) {
      utf8 += c;
    } else {
      utf8 += static_cast<char>(0xC0 | byte >> 6);
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

template <class R>
std::string TextOf(const FieldRow<R>& row, const R& record) {
  const FieldView field = row.view(const_cast<R&>(record));
  return ToUtf8(row.raw ? std::string_view(field.text, row.width) : std::string_view(field.text));
}

template <class R>
Json FieldsOf(const R& record) {
  constexpr size_t kOthers = 8;
  Json fields = Json::object();
  // No name comes twice, so none is looked for; members are not moved as they grow.
  auto& members = fields.get_ref<Json::object_t&>();
  members.reserve(R::Table().size() + kOthers);
  for (const auto& row : R::Table()) {
    if (row.IsPresent(record))
      members.emplace_back(std::string(row.prefix) + row.name, TextOf(row, record));
  }
  return fields;
}

void AddBytes(Json& fields, const char* name, const ExtendedData& data) {
  if (data.bytes.size() != 0) fields[name] = ToUtf8(data.Data());
}

void AddLengths(Json& fields, const SegmentLengthFields& names, const LengthTable& table) {
  Json subheaders = Json::array(), data = Json::array();
  for (const SegmentLengths& lengths : table.inFile) {
    char text[16];
    (void)FormatNumberField(text, names.subheaderWidth, lengths.subheader);
    subheaders.push_back(text);
    (void)FormatNumberField(text, names.dataWidth, lengths.data);
    data.push_back(text);
  }
  if (table.Count() == 0) return;
  fields[names.subheaderName] = std::move(subheaders);
  fields[names.dataName] = std::move(data);
}

Json ToJson(const FileHeader& header) {
  Json fields = FieldsOf(header);
  for (const SegmentLengthFields& names : kSegmentLengths) AddLengths(fields, names, header.*names.table);
  AddBytes(fields, "UDHD", header.userDefined);
  AddBytes(fields, "XHD", header.extended);
  return fields;
}

Json ToJson(const ImageSubheader& header) {
  Json fields = FieldsOf(header);
  for (const Text<80>& comment : header.comments) fields["ICOM"].push_back(ToUtf8(comment.text));
  for (const BandFields& band : header.bands) {
    Json bandFields = FieldsOf(band);
    if (band.NLUTS.value != 0) bandFields["NELUT"] = ToUtf8(band.NELUT.text);
    fields["bands"].push_back(std::move(bandFields));
  }
  AddBytes(fields, "UDID", header.userDefined);
  AddBytes(fields, "IXSHD", header.extended);
  if (header.HasMaskTable()) {
    const MaskTable& mask = header.mask;
    fields["IMDATOFF"] = mask.IMDATOFF;
    fields["BMRLNTH"] = mask.BMRLNTH;
    fields["TMRLNTH"] = mask.TMRLNTH;
    fields["TPXCDLNTH"] = mask.TPXCDLNTH;
  }
  return fields;
}

Json ToJson(const GraphicSubheader& header) {
  Json fields = FieldsOf(header);
  AddBytes(fields, "SXSHD", header.extended);
  return fields;
}

Json ToJson(const TextSubheader& header) {
  Json fields = FieldsOf(header);
  AddBytes(fields, "TXSHD", header.extended);
  return fields;
}

Json ToJson(const DataExtensionSubheader& header) {
  Json fields = FieldsOf(header);
  if (header.DESSHF.size() != 0)
    fields["DESSHF"] = ToUtf8({header.DESSHF.data(), header.DESSHF.size() - 1});
  return fields;
}

template <class R>
Json ListToJson(const SegmentList<R>& list) {
  Json array = Json::array();
  array.get_ref<Json::array_t&>().reserve(list.Count());
  for (const R& record : list) array.push_back(ToJson(record));
  return array;
}

// A file as far as it could be read.
struct Inspection {
  NitfFile document;
  int32_t status = 0;
  uint32_t width = 0, height = 0;

  void Read(const std::string& path) {
    status = ToCaller(document.ReadDocument(Widen(path).c_str()));
    if (status == ORB_SUCCESS) status = GetActual_Width_Height(&document, &width, &height);
  }
};

Json ToJson(const std::string& path, const Inspection& file) {
  Json object = {{"file", path}, {"status", file.status}};
  if (const ParseFault& fault = file.document.fault; fault.offset >= 0) {
    object["fault"] = {{"field", std::string(fault.prefix) + fault.name}, {"offset", fault.offset}};
  }
  object["canvas"] = {{"width", file.width}, {"height", file.height}};
  const NitfFile& document = file.document;
  object["fileHeader"] = document.headerPresent ? ToJson(document.header) : Json::object();
  object["images"] = ListToJson(document.images);
  object["graphics"] = ListToJson(document.graphics);
  object["texts"] = ListToJson(document.texts);
  object["dataExtensions"] = ListToJson(document.dataExtensions);
  return object;
}

std::string Trimmed(const char* text) {
  std::string trimmed(text);
  trimmed.erase(trimmed.find_last_not_of(' ') + 1);
  return trimmed;
}

void PrintForPeople(const std::string& path, const Inspection& file) {
  const NitfFile& document = file.document;
  const FileHeader& header = document.header;
  std::printf("%s: %s %s, complexity %s, \"%s\"\n", path.c_str(), header.FHDR.text, header.FVER.text,
              header.CLEVEL.text, Trimmed(header.FTITLE.text).c_str());
  std::printf("  dated %s by %s, class %s, %s bytes, background #%02X%02X%02X\n", header.FDT.text,
              Trimmed(header.OSTAID.text).c_str(), header.security.CLAS.text, header.FL.text,
              document.background & 255, document.background >> 8 & 255, document.background >> 16);
  std::printf("  composite %u x %u\n", file.width, file.height);
  for (const ImageSubheader& image : document.images) {
    std::printf(
        "  image %u: \"%s\" %s %s, %u x %u in %u x %u blocks, %u band(s) of %u bits, mode %s, "
        "level %u on %u, at row %d, column %d\n",
        image.index, Trimmed(image.IID1.text).c_str(), Trimmed(image.IREP.text).c_str(), image.IC.text,
        image.NCOLS.value, image.NROWS.value, image.NBPR.value, image.NBPC.value, image.BandCount(),
        image.NBPP.value, image.IMODE.text, image.IDLVL.value, image.IALVL.value, image.ILOC.Row(),
        image.ILOC.Column());
  }
  for (const GraphicSubheader& graphic : document.graphics) {
    std::printf("  graphic %u: \"%s\" %s, level %u on %u, at row %d, column %d, %u bytes\n",
                graphic.index, Trimmed(graphic.SNAME.text).c_str(), graphic.SFMT.text,
                graphic.SDLVL.value, graphic.SALVL.value, graphic.SLOC.Row(), graphic.SLOC.Column(),
                document.DataLength(SegmentKind::Graphic, graphic.index));
  }
  for (const TextSubheader& text : document.texts) {
    std::printf("  text %u: \"%s\" %s, %u bytes\n", text.index, Trimmed(text.TXTITL.text).c_str(),
                text.TXTFMT.text, document.DataLength(SegmentKind::Text, text.index));
  }
  uint32_t index = 0;
  for (const DataExtensionSubheader& extension : document.dataExtensions) {
    std::printf("  data extension %u: %s, %u bytes\n", index, Trimmed(extension.DESID.text).c_str(),
                document.DataLength(SegmentKind::DataExtension, index));
    ++index;
  }
}

int RunInfo(const std::vector<std::string>& paths, bool asJson) {
  int exitCode = kExitOk;
  Json all = Json::array();
  for (const std::string& path : paths) {
    Inspection file;
    file.Read(path);
    if (asJson) {
      all.push_back(ToJson(path, file));
    } else if (file.status == ORB_SUCCESS) {
      PrintForPeople(path, file);
    }
    if (Report("info", path, file.status, PlaceOf(file.document.fault)) != kExitOk)
      exitCode = kExitStatus;
  }
  if (asJson) {
    const Json& shown = all.size() == 1 ? all[0] : all;
    std::printf("%s\n", shown.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
  }
  return exitCode;
}

}  // namespace

void AddInfo(CLI::App& app, Work& work) {
  struct Options {
    std::vector<std::string> files;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App* command =
      app.add_subcommand("info", "Show the file header, the segments and the composite size");
  command->add_flag("--json", options->json, "print JSON");
  command->add_option("FILE", options->files, "files to show")->required();
  command->callback(
      [&work, options] { work = [options] { return RunInfo(options->files, options->json); }; });
}

}  // namespace tool
