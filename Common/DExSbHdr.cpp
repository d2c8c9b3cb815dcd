#include "Common/DExSbHdr.h"

namespace {

constexpr char16_t kSourceFile[] = u"DExSbHdr";

using H = DataExtensionSubheader;

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

constexpr auto kTable = MakeTable<H>(
    '0',
    std::array{
        Field<&H::DE>("DE").Mark("DE"),
        Field<&H::DESID>("DESID"),
        Field<&H::DESVER>("DESVER").Accept(&AcceptVersion),
    },
    SecurityRows<H, &H::security>({.prefix = "DES", .classPrefix = "DE", .blank = false, .narrow = true}),
    std::array{
        Field<&H::DESOFLW>("DESOFLW").When(&HasOverflow),
        Field<&H::DESITEM>("DESITEM").When(&HasOverflow),
        Field<&H::DESSHL>("DESSHL").Then(&ReadUserFields, &WriteUserFields),
    });

}  // namespace

FieldTable<DataExtensionSubheader> DataExtensionSubheader::Table() { return kTable; }

DataExtensionSubheader::DataExtensionSubheader() { ApplyDefaults<DataExtensionSubheader>(kTable, *this); }
