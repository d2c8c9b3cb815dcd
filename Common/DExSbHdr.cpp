#include "Common/DExSbHdr.h"

#include "Common/NitfFile.h"

namespace {

constexpr char16_t kSourceFile[] = u"DExSbHdr";

using H = DataExtensionSubheader;

Status AcceptMark(H& header) {
  if (std::string_view(header.DE.text) != "DE") return Status::BadStructure;
  header.loaded = true;
  return Status::Success;
}

Status AcceptVersion(H& header) {
  const int32_t version = DecimalOf(header.DESVER.text);
  return version >= 0 && version <= 99 ? Status::Success : Status::BadStructure;
}

bool HasOverflow(const H& header) {
  std::string_view id(header.DESID.text);
  id = id.substr(0, id.find_last_not_of(' ') + 1);
  return id == "TRE_OVERFLOW";
}

Status ReadUserFields(H& header, FieldReader& reader) {
  const int32_t count = header.DESSHL.Signed();
  if (count <= 0) return Status::Success;
  if (Status s = reader.RequireField(header.DESSHL.value); !Ok(s)) return s;
  if (Status s = header.DESSHF.Make(header.DESSHL.value + 1, ORB_HERE); !Ok(s)) return s;
  return reader.Take(header.DESSHF.data(), header.DESSHL.value);
}

Status WriteUserFields(const H& header, FieldWriter& writer) {
  if (header.DESSHF.size() == 0) return Status::Success;
  return writer.PutBytes(header.DESSHF.data(), header.DESSHL.value);
}

constexpr auto kTable = [] {
  auto table = JoinRows<H>(
      std::array{
          Field<&H::DE>("DE", 2).Accept(&AcceptMark),
          Field<&H::DESID>("DESID", 25),
          Field<&H::DESVER>("DESVER", 2).Accept(&AcceptVersion),
      },
      SecurityRows<H, &H::security>({.prefix = "DES",
                                     .classPrefix = "DE",
                                     .fill = '0',
                                     .classFill = '0',
                                     .blank = false,
                                     .narrow = true}),
      std::array{
          Field<&H::DESOFLW>("DESOFLW", 6).When(&HasOverflow),
          Field<&H::DESITEM>("DESITEM", 3).When(&HasOverflow),
          Field<&H::DESSHL>("DESSHL", 4).Then(&ReadUserFields, &WriteUserFields),
      });
  for (auto& row : table) row.fill = '0';
  return table;
}();

}  // namespace

FieldTable<DataExtensionSubheader> DataExtensionSubheader::Table() { return kTable; }

DataExtensionSubheader::DataExtensionSubheader() { ApplyDefaults<DataExtensionSubheader>(kTable, *this); }

Status DataExtensionSubheader::ReadSubheader(NitfFile& document, StreamingFileHeader& streaming,
                                             ReadMode mode) {
  return document.ParseHeader(*this, Table(), streaming, mode);
}
