#include "Common/ImSubHdr.h"

#include <algorithm>
#include <cmath>

#include "Common/ImCodes.h"
#include "Common/NtfHdr.h"
#include "host/windows.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImSubHdr";

using H = ImageSubheader;

constexpr uint32_t kCommentWidth = 80;

// ---------------------------------------------------------------- checks and conditions

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

bool HasCoordinates(const H& header) { return header.HasCoordinates(); }
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
    if (Status s = reader.TakeText(comment.text, kCommentWidth); !Ok(s)) return s;
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
  if (Status s = reader.Require(CheckedSize(count) * BandFields::Bytes()); !Ok(s)) return s;
  if (count != header.bands.size()) {
    if (Status s = header.bands.Make(count, ORB_HERE); !Ok(s)) return s;
  }
  for (BandFields& band : header.bands) {
    if (Status s = ReadRows<BandFields>(BandFields::Table(), band, reader); !Ok(s)) return s;
    if (band.NLUTS.value == 0) continue;
    if (Status s = reader.TakeText(band.NELUT.text, sizeof band.NELUT.text - 1); !Ok(s)) return s;
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
  if (Status s = writer.PutNumber(entries, sizeof band.NELUT.text - 1); !Ok(s)) return s;
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

constexpr auto kTable = MakeTable<H>(
    ' ',
    std::array{
        Field<&H::IM>("IM").Starts("IM").Mark("IM"),
        Field<&H::IID1>("IID1").Starts("Missing ID"),
        Field<&H::IDATIM>("IDATIM").Fill('0').Blank().Set(SetAs::Date),
        Field<&H::TGTID>("TGTID").Blank(),
        Field<&H::IID2>("IID2").Blank(),
    },
    SecurityRows<H, &H::security>({.prefix = "IS", .classPrefix = "IS"}),
    std::array{
        Field<&H::ENCRYP>("ENCRYP").Fill('0').SetNumber(),
        Field<&H::ISORCE>("ISORCE").Blank(),
        Field<&H::NROWS>("NROWS").SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::NCOLS>("NCOLS").SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::PVTYPE>("PVTYPE").Blank().Codes(&kPixelTypes).Accept(&AcceptPixelType),
        Field<&H::IREP>("IREP").Blank().Codes(&kRepresentations),
        Field<&H::ICAT>("ICAT").Starts("VIS"),
        Field<&H::ABPP>("ABPP").SetNumber(true).Write(WriteFrom::TextValue),
        Field<&H::PJUST>("PJUST").Blank().Codes(&kJustifications, "R").Accept(&TakeJustification),
        Field<&H::ICORDS>("ICORDS").Blank(),
        Field<&H::IGEOLO>("IGEOLO").Fill('0').Blank().When(&HasCoordinates),
        Field<&H::NICOM>("NICOM").Fill('0').SetNumber().Then(&ReadComments, &WriteComments),
        Field<&H::IC>("IC").Blank().Codes(&kCompressions).Accept(&TakeCompression),
        Field<&H::COMRAT>("COMRAT")
            .Blank()
            .When(&HasCompressionRate)
            .Accept(&TakeCompressionRate)
            .WriteWith(&FormatCompressionRate),
        Field<&H::NBANDS>("NBANDS")
            .SetNumber(true)
            .WriteWith(&FormatBandCount)
            .Then(&ReadOrdinaryBands, &WriteOrdinaryBands),
        Field<&H::XBANDS>("XBANDS")
            .Fill('0')
            .SetNumber()
            .When(&HasExtendedBands)
            .Then(&ReadExtendedBands, &WriteBands),
        Field<&H::ISYNC>("ISYNC").Fill('0').SetNumber(),
        Field<&H::IMODE>("IMODE").Starts("P").Codes(&kImageModes).Accept(&AcceptImageMode),
        Field<&H::NBPR>("NBPR").SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::NBPC>("NBPC").SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::NPPBH>("NPPBH").SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::NPPBV>("NPPBV").SetNumber().Placeholder().Write(WriteFrom::TextValue),
        Field<&H::NBPP>("NBPP").SetNumber().Write(WriteFrom::TextValue).Accept(&AcceptSampleDepth),
        Field<&H::IDLVL>("IDLVL").SetNumber().Write(WriteFrom::TextValue),
        Field<&H::IALVL>("IALVL").SetNumber().Write(WriteFrom::TextValue),
        Field<&H::ILOC>("ILOC").Fill('0').Set(SetAs::SignedLocation),
        Field<&H::IMAG>("IMAG")
            .Blank()
            .Accept([](H& header) {
              header.TakeMagnification();
              return Status::Success;
            })
            .WriteWith(&FormatMagnification),
    },
    ExtendedRows<H, &H::userDefined>("UDIDL", "UDOFL"),
    ExtendedRows<H, &H::extended>("IXSHDL", "IXSOFL"));

constexpr auto kBandTable = MakeTable<BandFields>(
    ' ', std::array{
             Field<&BandFields::IREPBAND>("IREPBAND").Codes(&kBandCodes, "  ").Accept(&TakeBandCode),
             Field<&BandFields::ISUBCAT>("ISUBCAT"),
             Field<&BandFields::IFC>("IFC").Fill('0'),
             Field<&BandFields::IMFLT>("IMFLT"),
             Field<&BandFields::NLUTS>("NLUTS").Write(WriteFrom::Value),
         });

}  // namespace

FieldTable<ImageSubheader> ImageSubheader::Table() { return kTable; }
FieldTable<BandFields> BandFields::Table() { return kBandTable; }

uint32_t BandFields::Bytes() {
  uint32_t bytes = 0;
  for (const FieldTraits& field : kBandTable) bytes += field.width;
  return bytes;
}

void ImageSubheader::TakeMagnification() {
  const std::string_view text(IMAG.text);
  if (text.substr(0, 1) != "/") {
    const bool blank = text.find_first_not_of(' ') == std::string_view::npos;
    magnification = blank ? 1.0 : RealOf(text);
    return;
  }
  const double divisor = RealOf(text.substr(1));
  magnification = divisor != 0 ? 1.0 / divisor : 1.0;
}

ImageSubheader::ImageSubheader() {
  ApplyDefaults<ImageSubheader>(kTable, *this);
  IREP.code = static_cast<uint32_t>(Representation::Rgb);
  IC.code = static_cast<uint32_t>(Compression::Unknown);
  PJUST.code = 1;
  IMODE.code = static_cast<uint32_t>(ImageMode::P);
  ABPP.value = NBPP.value = IDLVL.value = 1;
}

ReaderFamily ImageSubheader::Family() const {
  return IC.code < std::size(kCompressionTable) ? kCompressionTable[IC.code].family : ReaderFamily::None;
}

bool ImageSubheader::HasMaskTable() const {
  return IC.code < std::size(kCompressionTable) && kCompressionTable[IC.code].hasMaskTable;
}

Status ImageSubheader::ReadTail(FieldReader& reader) {
  if (!HasMaskTable()) return Status::Success;
  return mask.Read(reader, MaskRecords());
}

CheckedSize ImageSubheader::MaskRecords() const {
  return CheckedSize(NBPR.value) * NBPC.value * bandCount;
}
