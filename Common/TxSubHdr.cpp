#include "Common/TxSubHdr.h"

#include "Common/NitfFile.h"

namespace {

constexpr char16_t kSourceFile[] = u"TxSubHdr";

using H = TextSubheader;

Status AcceptMark(H& header) {
  if (std::string_view(header.TE.text) != "TE") return Status::BadStructure;
  header.loaded = true;
  return Status::Success;
}

constexpr auto kTable = [] {
  auto table = JoinRows<H>(
      std::array{
          Field<&H::TE>("TE", 2).Starts("TE").Accept(&AcceptMark),
          Field<&H::TEXTID>("TEXTID", 7).Starts("ID        "),
          Field<&H::TXTALVL>("TXTALVL", 3).SetNumber(true).Write(WriteFrom::Value),
          Field<&H::TXTDT>("TXTDT", 14).Blank().Set(SetAs::Date),
          Field<&H::TXTITL>("TXTITL", 80).Blank(),
      },
      SecurityRows<H, &H::security>(
          {.prefix = "TS", .classPrefix = "TS", .fill = '0', .classFill = '0', .validated = false}),
      std::array{
          Field<&H::ENCRYP>("ENCRYP", 1).SetNumber(),
          Field<&H::TXTFMT>("TXTFMT", 3).Starts("STA"),
      },
      ExtendedRows<H, &H::extended, ShortLength::TakeAsZero>("TXSHDL", "TXSOFL"));
  for (auto& row : table) {
    if (!row.Is("TXTITL")) row.fill = '0';
  }
  return table;
}();

}  // namespace

FieldTable<TextSubheader> TextSubheader::Table() { return kTable; }

TextSubheader::TextSubheader() { ApplyDefaults<TextSubheader>(kTable, *this); }

Status TextSubheader::ReadSubheader(NitfFile& document, StreamingFileHeader& streaming, ReadMode mode) {
  return document.ParseHeader(*this, Table(), streaming, mode);
}

Status TextSubheader::SetTextData(const void* bytes, uint32_t count) {
  if (bytes == nullptr) return Status::NoData;
  KernelBuffer<char> copy;
  if (Status s = copy.Allocate(uint64_t{count} + 1, ORB_HERE); !Ok(s)) return s;
  KernelCopyMemory(copy.data(), bytes, count);
  text = std::move(copy);
  hasText = true;
  return Status::Success;
}
