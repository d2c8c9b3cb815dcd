#include "Common/GrSubHdr.h"

namespace {

constexpr char16_t kSourceFile[] = u"GrSubHdr";

using H = GraphicSubheader;

Status AcceptForm(H& header) {
  const bool known = header.HasForm('C') || header.HasForm('O') || header.HasForm('B');
  return known ? Status::Success : Status::BadStructure;
}

// Whatever the record holds, the file says that colour is part of the metafile.
void FormatColour(const H&, char (&text)[16]) { text[0] = 'C'; }

constexpr auto kTable = MakeTable<H>(
    '0',
    std::array{
        Field<&H::SY>("SY").Starts("SY").Mark("SY").Fill(' '),
        Field<&H::SID>("SID").Starts("ID        ").Fill(' '),
        Field<&H::SNAME>("SNAME").Blank().Fill(' '),
    },
    SecurityRows<H, &H::security>({.prefix = "SS", .classPrefix = "SS", .fill = ' ', .classFill = '0'}),
    std::array{
        Field<&H::ENCRYP>("ENCRYP").SetNumber(),
        Field<&H::SFMT>("SFMT").Starts("C").Accept(&AcceptForm),
        Field<&H::SSTRUCT>("SSTRUCT").SetNumber(),
        Field<&H::SDLVL>("SDLVL").SetNumber(true).Write(WriteFrom::Value),
        Field<&H::SALVL>("SALVL").SetNumber(true).Write(WriteFrom::Value),
        Field<&H::SLOC>("SLOC").Set(SetAs::SignedLocation),
        Field<&H::SBND1>("SBND1").Set(SetAs::Location),
        Field<&H::SCOLOR>("SCOLOR").Blank().WriteWith(&FormatColour),
        Field<&H::SBND2>("SBND2").Set(SetAs::Location),
        Field<&H::SRES1>("SRES1").SetNumber(),
    },
    ExtendedRows<H, &H::extended>("SXSHDL", "SXSOFL"));

}  // namespace

FieldTable<GraphicSubheader> GraphicSubheader::Table() { return kTable; }

GraphicSubheader::GraphicSubheader() { ApplyDefaults<GraphicSubheader>(kTable, *this); }

Status GraphicSubheader::SetGraphicData(const void* bytes, uint32_t count) {
  return appended.Set(bytes, count, ORB_HERE);
}
