#include "Common/ImSubHdr.h"

#include <algorithm>
#include <cmath>

#include "Common/NitfFile.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImSubHdr";

using H = ImageSubheader;

constexpr uint32_t kCommentWidth = 80;
constexpr uint32_t kBandWidth = 13;

// ---------------------------------------------------------------- code tables

constexpr CodeRow kPixelTypeRows[] = {{"I", 0, "INT"}, {"B", 1, "B"}};
constexpr CodeRow kRepresentationRows[] = {
    {"MONO", 0, "MONO"},   {"RGB/LUT", 2, "RGB/LUT"},   {"RGB", 1, "RGB"},
    {"MULTI", 3, "MULTI"}, {"NODISPLY", 4, "NODISPLY"}, {"NVECTOR", 5, "NVECTOR"},
    {"POLAR", 6, "POLAR"}, {"VPH", 7, "VPH"},           {"YCbCr601", 8, "YCbCr601"}};
constexpr CodeRow kJustificationRows[] = {{"L", 0, "L"}, {"R", 1, "R"}};
constexpr CodeRow kCompressionRows[] = {
    {"NC", 0, "NC"},  {"NM", 1, "NM"},  {"C0", 2, "C0"},  {"C1", 3, "C1"},  {"C2", 4, "C2"},
    {"C3", 5, "C3"},  {"C4", 6, "C4"},  {"C5", 7, "C5"},  {"C6", 8, "C6"},  {"C8", 9, "C8"},
    {"I1", 10, "I1"}, {"M0", 11, "M0"}, {"M1", 12, "M1"}, {"M2", 13, "M2"}, {"M3", 14, "M3"},
    {"M4", 15, "M4"}, {"M5", 16, "M5"}, {"M6", 17, "M6"}, {"M8", 18, "M8"}};
constexpr CodeRow kImageModeRows[] = {{"B", 0, "B"}, {"P", 1, "P"}, {"R", 2, "R"}, {"S", 3, "S"}};
constexpr CodeRow kBiLevelRows[] = {{"1D", 0, "1D"}, {"2DS", 1, "2DS"}, {"2DH", 2, "2DH"}};
constexpr CodeRow kBandRows[] = {{"LU", 1, "LU"}, {"R", 2, "R"}, {"G", 3, "G"},   {"B", 4, "B"},
                                 {"M", 5, "M"},   {"Y", 6, "Y"}, {"Cb", 7, "Cb"}, {"Cr", 8, "Cr"}};

constexpr CodeTable kPixelTypes = {kPixelTypeRows, true};
constexpr CodeTable kRepresentations = {kRepresentationRows, true};
constexpr CodeTable kJustifications = {kJustificationRows, true};
constexpr CodeTable kCompressions = {kCompressionRows, false};
constexpr CodeTable kImageModes = {kImageModeRows, true};
constexpr CodeTable kBiLevelOptions = {kBiLevelRows, true};
constexpr CodeTable kBandCodes = {kBandRows, true};

constexpr BandFields kFreshBand = {{}, {}, {"N"}, {"   "}, {}, {}};

// ---------------------------------------------------------------- checks and conditions

Status AcceptMark(H& header) {
  if (std::string_view(header.IM.text) != "IM") return Status::BadStructure;
  header.loaded = true;
  return Status::Success;
}

Status RefuseWithMessage(const char* message, Status status) {
  MessageBoxA(nullptr, message, "Error", MB_OK);
  return status;
}

Status AcceptPixelType(H& header) {
  if (kPixelTypes.Find(header.PVTYPE.text) != nullptr) return Status::Success;
  return RefuseWithMessage("Unsupported PVTYPE", Status::BadPixelType);
}

Status TakeJustification(H& header) {
  header.PJUST.code = header.PJUST.text[0] == 'L' ? 0 : 1;
  return Status::Success;
}

Status TakeCompression(H& header) {
  if (kCompressions.Find(header.IC.text) == nullptr) {
    header.IC.code = static_cast<uint32_t>(Compression::Unknown);
  }
  return Status::Success;
}

Status TakeCompressionRate(H& header) {
  if (const CodeRow* row = kBiLevelOptions.Find(header.COMRAT.text)) header.biLevelOption = row->code;
  return Status::Success;
}

Status AcceptImageMode(H& header) {
  return kImageModes.Find(header.IMODE.text) != nullptr ? Status::Success : Status::BadStructure;
}

Status AcceptSampleDepth(H& header) {
  if (header.bandCount <= 1 || header.NBPP.value != 16) return Status::Success;
  return RefuseWithMessage("Unsupported BPP", Status::BadSampleDepth);
}

Status TakeBandCode(BandFields& band) {
  if (kBandCodes.Find(band.IREPBAND.text) == nullptr) band.IREPBAND.code = 0;
  return Status::Success;
}

Status TakeMagnification(H& header) {
  const std::string_view text(header.IMAG.text);
  if (text.substr(0, 1) != "/") {
    header.magnification = RealOf(text);
    return Status::Success;
  }
  const double divisor = RealOf(text.substr(1));
  header.magnification = divisor != 0 ? 1.0 / divisor : 1.0;
  return Status::Success;
}

bool HasCoordinates(const H& header) { return header.ICORDS.text[0] != ' '; }
bool HasCompressionRate(const H& header) { return header.IsCompressed(); }
// More bands than one digit counts are counted by XBANDS.
bool HasExtendedBands(const H& header) { return header.NBANDS.value == 0 || header.bandCount > 9; }

// ---------------------------------------------------------------- comments and bands

Status ReadComments(H& header, FieldReader& reader) {
  const uint32_t count = LengthOf(header.NICOM.text);
  if (Status s = reader.Require(CheckedSize(count) * kCommentWidth); !Ok(s)) return s;
  if (count != header.comments.size()) {
    if (Status s = header.comments.Make(count, ORB_HERE); !Ok(s)) return s;
  }
  for (Text<kCommentWidth>& comment : header.comments) {
    if (Status s = reader.TakeText(comment.text, kCommentWidth, false); !Ok(s)) return s;
  }
  return Status::Success;
}

Status WriteComments(const H& header, FieldWriter& writer) {
  const uint32_t count = LengthOf(header.NICOM.text);
  for (uint32_t i = 0; i < count; ++i) {
    const char* text = i < header.comments.size() ? header.comments[i].text : "";
    if (Status s = writer.PutText(text, kCommentWidth, ' '); !Ok(s)) return s;
  }
  return Status::Success;
}

// Lookup tables stand one after the other; fewer than three make a grey palette of the first, more a
// palette of the first three.
Status ReadLookupTables(H& header, const BandFields& band, FieldReader& reader) {
  const uint32_t entries = band.NELUT.value;
  const uint32_t tables = band.NLUTS.value;
  if (Status s = reader.RequireField(reader.Mode() == ReadMode::Normal ? CheckedSize(entries) * tables
                                                                       : entries);
      !Ok(s))
    return s;
  TrackedArray<KernelColour> palette;
  KernelBuffer<uint8_t> values;
  if (Status s = palette.Make(entries, ORB_HERE); !Ok(s)) return s;
  if (Status s = values.Allocate(entries, ORB_HERE); !Ok(s)) return s;
  for (uint32_t table = 0; table < tables; ++table) {
    if (Status s = reader.Take(values.data(), entries); !Ok(s)) return s;
    for (uint32_t i = 0; i < entries; ++i) {
      KernelColour& colour = palette[i];
      if (tables < 3 && table == 0) colour = {values[i], values[i], values[i], 0};
      if (tables >= 3 && table == 0) colour.red = values[i];
      if (tables >= 3 && table == 1) colour.green = values[i];
      if (tables >= 3 && table == 2) colour.blue = values[i];
    }
  }
  header.palette.Swap(palette);
  return Status::Success;
}

Status ReadBands(H& header, uint32_t count, FieldReader& reader) {
  header.bandCount = count;
  if (Status s = reader.Require(CheckedSize(count) * kBandWidth); !Ok(s)) return s;
  if (count != header.bands.size()) {
    if (Status s = header.bands.Make(count, ORB_HERE); !Ok(s)) return s;
  }
  for (BandFields& band : header.bands) {
    if (Status s = ReadRows<BandFields>(BandFields::Table(), band, reader); !Ok(s)) return s;
    if (band.NLUTS.value == 0) continue;
    if (Status s = reader.TakeText(band.NELUT.text, 5, false); !Ok(s)) return s;
    band.NELUT.value = LengthOf(band.NELUT.text);
    if (band.NELUT.value == 0) continue;
    if (Status s = ReadLookupTables(header, band, reader); !Ok(s)) return s;
  }
  return Status::Success;
}

Status ReadOrdinaryBands(H& header, FieldReader& reader) {
  return header.NBANDS.value == 0 ? Status::Success : ReadBands(header, header.NBANDS.value, reader);
}

Status ReadExtendedBands(H& header, FieldReader& reader) {
  return ReadBands(header, LengthOf(header.XBANDS.text), reader);
}

// One table for one or none, three otherwise, all from the display palette.
Status WriteLookupTables(const H& header, const BandFields& band, FieldWriter& writer) {
  const uint32_t entries = band.NELUT.value;
  if (Status s = writer.PutNumber(entries, 5); !Ok(s)) return s;
  KernelBuffer<uint8_t> values;
  if (Status s = values.Allocate(entries, ORB_HERE); !Ok(s)) return s;
  const uint32_t tables = band.NLUTS.value == 1 ? 1 : 3;
  for (uint32_t table = 0; table < tables && entries != 0; ++table) {
    for (uint32_t i = 0; i < entries; ++i) {
      const KernelColour colour = i < header.palette.size() ? header.palette[i] : KernelColour{};
      values[i] = table == 0 ? colour.red : table == 1 ? colour.green : colour.blue;
    }
    if (Status s = writer.PutBytes(values.data(), entries); !Ok(s)) return s;
  }
  return Status::Success;
}

Status WriteBands(const H& header, FieldWriter& writer) {
  for (const BandFields& band : header.bands) {
    if (Status s = WriteRows<BandFields>(BandFields::Table(), band, writer); !Ok(s)) return s;
    if (band.NLUTS.value == 0) continue;
    if (Status s = WriteLookupTables(header, band, writer); !Ok(s)) return s;
  }
  return Status::Success;
}

Status WriteOrdinaryBands(const H& header, FieldWriter& writer) {
  return HasExtendedBands(header) ? Status::Success : WriteBands(header, writer);
}

// ---------------------------------------------------------------- written forms

void FormatCompressionRate(const H& header, char (&text)[16]) {
  std::strncpy(text, kBiLevelOptions.WrittenFor(header.biLevelOption, "00.0"), sizeof text - 1);
}

// The count of the band records that follow, 0 where XBANDS gives it.
void FormatBandCount(const H& header, char (&text)[16]) {
  text[0] = static_cast<char>('0' + (HasExtendedBands(header) ? 0 : header.bandCount));
}

// The magnification as "%f", cut to three characters; done by hand because a host may have set a locale.
void FormatMagnification(const H& header, char (&text)[16]) {
  const auto millionths =
      static_cast<uint64_t>(std::llround(std::clamp(header.magnification, 0.0, 99999.0) * 1000000.0));
  char digits[16];
  uint32_t width = 1;
  for (uint64_t whole = millionths / 1000000; whole >= 10; whole /= 10) ++width;
  (void)FormatNumberField(digits, width, static_cast<int64_t>(millionths / 1000000));
  digits[width] = '.';
  (void)FormatNumberField(digits + width + 1, 6, static_cast<int64_t>(millionths % 1000000));
  std::memcpy(text, digits, 3);
}

// ---------------------------------------------------------------- the table

constexpr auto kTable = JoinRows<H>(
    std::array{
        Field<&H::IM>("IM", 2).Starts("IM").Accept(&AcceptMark),
        Field<&H::IID1>("IID1", 10).Starts("Missing ID"),
        Field<&H::IDATIM>("IDATIM", 14).Fill('0').Blank().Set(SetAs::Date),
        Field<&H::TGTID>("TGTID", 17).Blank(),
        Field<&H::IID2>("IID2", 80).Blank(),
    },
    SecurityRows<H, &H::security>({.prefix = "IS", .classPrefix = "IS", .fill = ' ', .classFill = ' '}),
    std::array{
        Field<&H::ENCRYP>("ENCRYP", 1).Fill('0').SetNumber(),
        Field<&H::ISORCE>("ISORCE", 42).Blank(),
        Field<&H::NROWS>("NROWS", 8).SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::NCOLS>("NCOLS", 8).SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::PVTYPE>("PVTYPE", 3).Blank().Codes(&kPixelTypes).Accept(&AcceptPixelType),
        Field<&H::IREP>("IREP", 8).Blank().Codes(&kRepresentations),
        Field<&H::ICAT>("ICAT", 8).Starts("VIS"),
        Field<&H::ABPP>("ABPP", 2).SetNumber(true).Write(WriteFrom::TextValue),
        Field<&H::PJUST>("PJUST", 1).Blank().Codes(&kJustifications, "R").Accept(&TakeJustification),
        Field<&H::ICORDS>("ICORDS", 1).Blank(),
        Field<&H::IGEOLO>("IGEOLO", 60).Fill('0').Blank().When(&HasCoordinates),
        Field<&H::NICOM>("NICOM", 1).Fill('0').SetNumber().Then(&ReadComments, &WriteComments),
        Field<&H::IC>("IC", 2).Blank().Codes(&kCompressions).Accept(&TakeCompression),
        Field<&H::COMRAT>("COMRAT", 4)
            .Blank()
            .When(&HasCompressionRate)
            .Accept(&TakeCompressionRate)
            .WriteWith(&FormatCompressionRate),
        Field<&H::NBANDS>("NBANDS", 1)
            .SetNumber(true)
            .WriteWith(&FormatBandCount)
            .Then(&ReadOrdinaryBands, &WriteOrdinaryBands),
        Field<&H::XBANDS>("XBANDS", 5)
            .Fill('0')
            .SetNumber()
            .When(&HasExtendedBands)
            .Then(&ReadExtendedBands, &WriteBands),
        Field<&H::ISYNC>("ISYNC", 1).Fill('0').SetNumber(),
        Field<&H::IMODE>("IMODE", 1).Starts("P").Codes(&kImageModes).Accept(&AcceptImageMode),
        Field<&H::NBPR>("NBPR", 4).SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::NBPC>("NBPC", 4).SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::NPPBH>("NPPBH", 4).SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::NPPBV>("NPPBV", 4).SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::NBPP>("NBPP", 2).SetNumber().Write(WriteFrom::TextValue).Accept(&AcceptSampleDepth),
        Field<&H::IDLVL>("IDLVL", 3).SetNumber().Write(WriteFrom::TextValue),
        Field<&H::IALVL>("IALVL", 3).SetNumber().Write(WriteFrom::TextValue),
        Field<&H::ILOC>("ILOC", 10).Fill('0').Set(SetAs::Location),
        Field<&H::IMAG>("IMAG", 4).Blank().Accept(&TakeMagnification).WriteWith(&FormatMagnification),
    },
    ExtendedRows<H, &H::userDefined>("UDIDL", "UDOFL"),
    ExtendedRows<H, &H::extended>("IXSHDL", "IXSOFL"));

constexpr std::array<FieldRow<BandFields>, 5> kBandTable = {
    Field<&BandFields::IREPBAND>("IREPBAND", 2).Codes(&kBandCodes, "  ").Accept(&TakeBandCode),
    Field<&BandFields::ISUBCAT>("ISUBCAT", 6),
    Field<&BandFields::IFC>("IFC", 1).Fill('0'),
    Field<&BandFields::IMFLT>("IMFLT", 3),
    Field<&BandFields::NLUTS>("NLUTS", 1).Write(WriteFrom::Value),
};

uint32_t BigEndian32(uint32_t raw) {
  uint8_t bytes[4];
  std::memcpy(bytes, &raw, 4);
  return static_cast<uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

uint16_t BigEndian16(const uint8_t* bytes) { return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]); }

Status ReadMaskRecords(TrackedArray<uint32_t>& records, FieldReader& reader, CheckedSize count) {
  if (Status s = reader.RequireField(count * 4); !Ok(s)) return s;
  const auto entries = static_cast<uint32_t>(count.Value());
  TrackedArray<uint32_t> fresh;
  if (Status s = fresh.Make(entries + 1, ORB_HERE); !Ok(s)) return s;
  if (Status s = reader.Take(fresh.data(), 4 * entries); !Ok(s)) return s;
  records.Swap(fresh);
  return Status::Success;
}

Status WriteMaskRecords(uint16_t length, const TrackedArray<uint32_t>& records, FieldWriter& writer) {
  const auto entries = static_cast<uint32_t>(records.size());
  return length == 0 || entries == 0 ? Status::Success
                                     : writer.PutBytes(records.data(), 4 * (entries - 1));
}

}  // namespace

FieldTable<ImageSubheader> ImageSubheader::Table() { return kTable; }
FieldTable<BandFields> BandFields::Table() { return kBandTable; }
const CodeTable& ImageSubheader::BandCodes() { return kBandCodes; }

ImageSubheader::ImageSubheader() {
  ApplyDefaults<ImageSubheader>(kTable, *this);
  IREP.code = static_cast<uint32_t>(Representation::Rgb);
  IC.code = static_cast<uint32_t>(Compression::Unknown);
  PJUST.code = 1;
  IMODE.code = static_cast<uint32_t>(ImageMode::P);
  ABPP.value = NBPP.value = IDLVL.value = 1;
}

bool ImageSubheader::HasMaskTable() const {
  switch (CompressionCode()) {
    case Compression::NM:
    case Compression::M0:
    case Compression::M1:
    case Compression::M3:
    case Compression::M4:
    case Compression::M5:
      return true;
    default:
      return false;
  }
}

Status ImageSubheader::ReadSubheader(NitfFile& document, StreamingFileHeader& streaming, ReadMode mode) {
  return document.ParseHeader(*this, Table(), streaming, mode);
}

Status ImageSubheader::ReadTail(FieldReader& reader) {
  if (!HasMaskTable()) return Status::Success;
  return mask.Read(reader, CheckedSize(NBPR.value) * NBPC.value * bandCount);
}

Status MaskTable::Read(FieldReader& reader, CheckedSize records) {
  uint8_t bytes[4];
  if (Status s = reader.Take(bytes, 4); !Ok(s)) return s;
  uint32_t offset;
  std::memcpy(&offset, bytes, 4);
  IMDATOFF = BigEndian32(offset);
  for (uint16_t* length : {&BMRLNTH, &TMRLNTH}) {
    if (Status s = reader.Take(bytes, 2); !Ok(s)) return s;
    *length = BigEndian16(bytes);
  }
  if (Status s = reader.Take(bytes, 2); !Ok(s)) return s;
  if (Status s = ReadPadCode(reader, BigEndian16(bytes)); !Ok(s)) return s;
  if (BMRLNTH == 0) blockRecords.Reset();
  if (TMRLNTH == 0) padRecords.Reset();
  if (BMRLNTH != 0) {
    if (Status s = ReadMaskRecords(blockRecords, reader, records); !Ok(s)) return s;
  }
  return TMRLNTH != 0 ? ReadMaskRecords(padRecords, reader, records) : Status::Success;
}

// The length is stored together with its bytes.
Status MaskTable::ReadPadCode(FieldReader& reader, uint16_t bits) {
  const uint32_t count = (bits + 7u) / 8;
  TrackedArray<uint8_t> fresh;
  if (Status s = reader.RequireField(count); !Ok(s)) return s;
  if (count != 0) {
    if (Status s = fresh.Make(count, ORB_HERE); !Ok(s)) return s;
    if (Status s = reader.Take(fresh.data(), count); !Ok(s)) return s;
  }
  TPXCDLNTH = bits;
  TPXCD.Swap(fresh);
  return Status::Success;
}

Status MaskTable::Write(FieldWriter& writer) const {
  const uint8_t head[10] = {static_cast<uint8_t>(IMDATOFF >> 24), static_cast<uint8_t>(IMDATOFF >> 16),
                            static_cast<uint8_t>(IMDATOFF >> 8),  static_cast<uint8_t>(IMDATOFF),
                            static_cast<uint8_t>(BMRLNTH >> 8),   static_cast<uint8_t>(BMRLNTH),
                            static_cast<uint8_t>(TMRLNTH >> 8),   static_cast<uint8_t>(TMRLNTH),
                            static_cast<uint8_t>(TPXCDLNTH >> 8), static_cast<uint8_t>(TPXCDLNTH)};
  if (Status s = writer.PutBytes(head, sizeof head); !Ok(s)) return s;
  const std::string_view code(reinterpret_cast<const char*>(TPXCD.data()), TPXCD.size());
  if (Status s = writer.PutText(code, PadCodeBytes(), ' '); !Ok(s)) return s;
  if (Status s = WriteMaskRecords(BMRLNTH, blockRecords, writer); !Ok(s)) return s;
  return WriteMaskRecords(TMRLNTH, padRecords, writer);
}

uint32_t MaskTable::BlockRecord(uint64_t n) const {
  return n + 1 < blockRecords.size() ? BigEndian32(blockRecords[static_cast<size_t>(n)]) : kNoBlock;
}

uint32_t MaskTable::PadRecord(uint64_t n) const {
  return n + 1 < padRecords.size() ? BigEndian32(padRecords[static_cast<size_t>(n)]) : kNoBlock;
}

// ---------------------------------------------------------------- setters

Status ImageSubheader::ChangeLength(bool longer, uint32_t bytes) {
  if (owner == nullptr) return Status::Success;
  FileHeader& header = owner->header;
  if (index >= header.images.Count()) return Status::Success;
  uint32_t& subheader = header.images.current[index].subheader;
  if (longer) {
    subheader += bytes;
    return header.SetFileLength(header.fileLength + bytes);
  }
  subheader -= std::min(subheader, bytes);
  return header.SetFileLength(header.fileLength - std::min<uint64_t>(header.fileLength, bytes));
}

Status ImageSubheader::SetCoordinates(const char* text) {
  const bool before = HasCoordinates(*this);
  if (Status s = CopyTextField(ICORDS.text, 1, text); !Ok(s)) return s;
  const bool after = HasCoordinates(*this);
  constexpr uint32_t kCoordinatesWidth = 60;
  return before == after ? Status::Success : ChangeLength(after, kCoordinatesWidth);
}

Status ImageSubheader::SetCompression(const char* text) {
  const bool before = IsCompressed();
  if (Status s = SetCode(*FindRow<ImageSubheader>(kTable, "IC"), *this, text); !Ok(s)) return s;
  constexpr uint32_t kRateWidth = 4;
  return before == IsCompressed() ? Status::Success : ChangeLength(!before, kRateWidth);
}

Status ImageSubheader::SetCompressionRate(const char* text) {
  if (Status s = CopyTextField(COMRAT.text, 4, text); !Ok(s)) return s;
  const CodeRow* row = kBiLevelOptions.Find(COMRAT.text);
  biLevelOption = row != nullptr ? row->code : static_cast<uint32_t>(BiLevelOption::None);
  return Status::Success;
}

// An unchanged count keeps the bands, so that a record given back as it was taken changes nothing.
Status ImageSubheader::MakeBands(uint32_t count) {
  if (count != bands.size()) {
    TrackedArray<BandFields> fresh;
    if (Status s = fresh.Make(count, ORB_HERE); !Ok(s)) return s;
    for (BandFields& band : fresh) band = kFreshBand;
    bands.Swap(fresh);
  }
  bandCount = count;
  return Status::Success;
}

Status ImageSubheader::SetBandCount(int32_t count) {
  Number<1> next;
  if (Status s = FormatNumberField(next.text, 1, count); !Ok(s)) return s;
  next.value = static_cast<uint32_t>(count);
  if (Status s = MakeBands(std::max(next.value, LengthOf(XBANDS.text))); !Ok(s)) return s;
  NBANDS = next;
  return Status::Success;
}

Status ImageSubheader::SetExtendedBandCount(int32_t count) {
  Number<5> next;
  if (Status s = FormatNumberField(next.text, 5, count); !Ok(s)) return s;
  if (Status s = MakeBands(std::max(NBANDS.value, LengthOf(next.text))); !Ok(s)) return s;
  next.value = LengthOf(next.text);
  XBANDS = next;
  return Status::Success;
}

Status ImageSubheader::SetBandCode(uint32_t band, const char* text) {
  const CodeRow* code = text != nullptr ? kBandCodes.Find(text) : nullptr;
  if (band >= bands.size() || code == nullptr) return Status::InvalidParameter;
  bands[band].IREPBAND.code = code->code;
  return CopyTextField(bands[band].IREPBAND.text, 2, code->written);
}

Status ImageSubheader::SetCommentCount(int32_t count) {
  if (count > 0 && static_cast<uint32_t>(count) > comments.size()) return Status::InvalidParameter;
  return FormatNumberField(NICOM.text, 1, count);
}

Status ImageSubheader::SetComment(uint32_t comment, const char* text) {
  if (comment >= LengthOf(NICOM.text) || comment >= comments.size()) return Status::InvalidParameter;
  return CopyTextField(comments[comment].text, kCommentWidth, text);
}

Status ImageSubheader::SetMagnification(const char* text) {
  if (Status s = CopyTextField(IMAG.text, 4, text); !Ok(s)) return s;
  return TakeMagnification(*this);
}

Status ImageSubheader::SetPadCode(const void* bytes) {
  if (bytes == nullptr) return Status::NoData;
  TrackedArray<uint8_t> fresh;
  if (Status s = fresh.Make(mask.PadCodeBytes(), ORB_HERE); !Ok(s)) return s;
  KernelCopyMemory(fresh.data(), bytes, fresh.size());
  mask.TPXCD.Swap(fresh);
  return Status::Success;
}

Status ImageSubheader::SetAppendedImage(const KernelBitmap& bitmap, uint32_t format,
                                        uint32_t bitsPerPixel, int32_t quality, uint32_t& byteCount) {
  HostSaveOptions options = {};
  if (Status s = FromHost(FileFormatDefaultSaveOptions(&options, kSaveOptionsSize)); !Ok(s)) return s;
  options.size = kSaveOptionsSize;
  options.flags |= kSaveToMemory;
  OwnedGlobal encoded;
  if (Status s = FromHost(FileFormatSaveBitmapMemory(&encoded.handle, &bitmap, format, bitsPerPixel,
                                                     quality, &byteCount, &options));
      !Ok(s)) {
    return s;
  }
  if (Status s = encoded.Lock(ORB_HERE); !Ok(s)) return s;
  KernelBuffer<uint8_t> copy;
  if (Status s = copy.Allocate(byteCount, ORB_HERE); !Ok(s)) return s;
  KernelCopyMemory(copy.data(), encoded.Bytes(), byteCount);
  appendedData = std::move(copy);
  hasAppendedData = true;
  return Status::Success;
}
