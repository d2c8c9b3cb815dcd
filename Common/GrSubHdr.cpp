#include "Common/GrSubHdr.h"

#include "Common/NitfFile.h"

namespace {

constexpr char16_t kSourceFile[] = u"GrSubHdr";

using H = GraphicSubheader;

Status AcceptMark(H& header) {
  return std::string_view(header.SY.text) == "SY" ? Status::Success : Status::BadStructure;
}

Status AcceptForm(H& header) {
  const bool known = header.HasForm('C') || header.HasForm('O') || header.HasForm('B');
  return known ? Status::Success : Status::BadStructure;
}

// Whatever the record holds, the file says that colour is part of the metafile.
void FormatColour(const H&, char (&text)[16]) { text[0] = 'C'; }

constexpr auto kTable = JoinRows<H>(
    std::array{
        Field<&H::SY>("SY", 2).Starts("SY").Accept(&AcceptMark),
        Field<&H::SID>("SID", 10).Starts("ID        "),
        Field<&H::SNAME>("SNAME", 20).Blank(),
    },
    SecurityRows<H, &H::security>({.prefix = "SS", .classPrefix = "SS", .fill = ' ', .classFill = '0'}),
    std::array{
        Field<&H::ENCRYP>("ENCRYP", 1).Fill('0').SetNumber(),
        Field<&H::SFMT>("SFMT", 1).Fill('0').Starts("C").Accept(&AcceptForm),
        Field<&H::SSTRUCT>("SSTRUCT", 13).Fill('0').SetNumber(),
        Field<&H::SDLVL>("SDLVL", 3).Fill('0').SetNumber(true).Write(WriteFrom::Value),
        Field<&H::SALVL>("SALVL", 3).Fill('0').SetNumber(true).Write(WriteFrom::Value),
        Field<&H::SLOC>("SLOC", 10).Fill('0').Set(SetAs::Location),
        Field<&H::SBND1>("SBND1", 10).Fill('0').Set(SetAs::Location),
        Field<&H::SCOLOR>("SCOLOR", 1).Blank().WriteWith(&FormatColour),
        Field<&H::SBND2>("SBND2", 10).Fill('0').Set(SetAs::Location),
        Field<&H::SRES1>("SRES1", 2).Fill('0').SetNumber(),
    },
    ExtendedRows<H, &H::extended>("SXSHDL", "SXSOFL"));

}  // namespace

FieldTable<GraphicSubheader> GraphicSubheader::Table() { return kTable; }

GraphicSubheader::GraphicSubheader() { ApplyDefaults<GraphicSubheader>(kTable, *this); }

Status GraphicSubheader::ReadSubheader(NitfFile& document, StreamingFileHeader& streaming,
                                       ReadMode mode) {
  return document.ParseHeader(*this, Table(), streaming, mode);
}

Status GraphicSubheader::SetGraphicData(const void* bytes, uint32_t count) {
  KernelBuffer<uint8_t> copy;
  if (Status s = copy.Allocate(count, ORB_HERE); !Ok(s)) return s;
  KernelCopyMemory(copy.data(), bytes, count);
  graphicData = std::move(copy);
  hasGraphicData = true;
  return Status::Success;
}
