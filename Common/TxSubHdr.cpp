#include "Common/TxSubHdr.h"

namespace {

constexpr char16_t kSourceFile[] = u"TxSubHdr";

using H = TextSubheader;

constexpr auto kTable =
    MakeTable<H>('0',
                 std::array{
                     Field<&H::TE>("TE").Starts("TE").Mark("TE"),
                     Field<&H::TEXTID, 7>("TEXTID").Starts("ID        "),
                     Field<&H::TXTALVL>("TXTALVL").SetNumber(true).Write(WriteFrom::Value),
                     Field<&H::TXTDT>("TXTDT").Blank().Set(SetAs::Date),
                     Field<&H::TXTITL>("TXTITL").Blank().Fill(' '),
                 },
                 SecurityRows<H, &H::security>({.prefix = "TS", .classPrefix = "TS", .validated = false}),
                 std::array{
                     Field<&H::ENCRYP>("ENCRYP").SetNumber(),
                     Field<&H::TXTFMT>("TXTFMT").Starts("STA"),
                 },
                 ExtendedRows<H, &H::extended, ShortLength::TakeAsZero>("TXSHDL", "TXSOFL"));

}  // namespace

FieldTable<TextSubheader> TextSubheader::Table() { return kTable; }

TextSubheader::TextSubheader() { ApplyDefaults<TextSubheader>(kTable, *this); }

Status TextSubheader::SetTextData(const void* bytes, uint32_t count) {
  return appended.Set(bytes, count, ORB_HERE);
}
