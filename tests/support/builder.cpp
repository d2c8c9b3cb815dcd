#include "tests/support/builder.h"

#include <algorithm>
#include <stdexcept>

namespace test {
namespace {

using Fields = std::vector<Record::Field>;

void Append(Fields& to, const Fields& from) { to.insert(to.end(), from.begin(), from.end()); }

Fields SecurityFields(const std::string& prefix) {
  const std::pair<const char*, size_t> widths[] = {{"CLAS", 1},  {"CLSY", 2}, {"CODE", 11}, {"CTLH", 2},
                                                   {"REL", 20},  {"DCTP", 2}, {"DCDT", 8},  {"DCXM", 4},
                                                   {"DG", 1},    {"DGDT", 8}, {"CLTX", 43}, {"CATP", 1},
                                                   {"CAUT", 40}, {"CRSN", 1}, {"SRDT", 8},  {"CTLN", 15}};
  Fields fields;
  for (const auto& [name, width] : widths)
    fields.push_back({prefix + name, width, std::string(width, ' ')});
  fields[0].text = "U";
  return fields;
}

Record::Field Blank(const std::string& name, size_t width) {
  return {name, width, std::string(width, ' ')};
}
Record::Field Given(const std::string& name, std::string text) {
  const size_t width = text.size();
  return {name, width, std::move(text)};
}

std::string Padded(std::string text, size_t width) {
  if (text.size() < width) text.resize(width, ' ');
  return text;
}

}  // namespace

std::string Digits(int64_t number, size_t width) {
  std::string text = std::to_string(number);
  return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

std::string Big(uint64_t number, size_t bytes) {
  std::string text;
  for (size_t i = bytes; i-- > 0;) text += static_cast<char>(number >> (8 * i));
  return text;
}

std::string StreamingData(const std::string& replacement, int64_t secondLength) {
  const auto length = static_cast<int64_t>(replacement.size());
  return Digits(length, 7) + "\x0A\x6E\x1D\x97" + replacement + "\x0E\xCA\x14\xBF" +
         Digits(secondLength < 0 ? length : secondLength, 7);
}

Record::Field& Record::Find(const std::string& name) {
  const auto found = std::find_if(fields_.begin(), fields_.end(),
                                  [&](const Field& field) { return field.name == name; });
  if (found == fields_.end()) throw std::logic_error("no field " + name);
  return *found;
}

Record& Record::Set(const std::string& name, const std::string& text) {
  Field& field = Find(name);
  field.text = Padded(text, field.width);
  return *this;
}

Record& Record::Set(const std::string& name, int64_t number) {
  Field& field = Find(name);
  field.text = Digits(number, field.width);
  return *this;
}

Record& Record::SetRaw(const std::string& name, const std::string& bytes) {
  Find(name).text = bytes;
  return *this;
}

Record& Record::InsertAfter(const std::string& name, const std::string& added, const std::string& text) {
  const size_t at = static_cast<size_t>(&Find(name) - fields_.data()) + 1;
  fields_.insert(fields_.begin() + static_cast<ptrdiff_t>(at), Field{added, text.size(), text});
  return *this;
}

Record& Record::Remove(const std::string& name) {
  fields_.erase(fields_.begin() + (&Find(name) - fields_.data()));
  return *this;
}

const std::string& Record::Get(const std::string& name) const {
  return const_cast<Record*>(this)->Find(name).text;
}

std::string Record::Bytes() const {
  std::string bytes;
  for (const Field& field : fields_) bytes += field.text;
  return bytes;
}

size_t Record::OffsetOf(const std::string& name) const {
  size_t offset = 0;
  for (const Field& field : fields_) {
    if (field.name == name) break;
    offset += field.text.size();
  }
  return offset;
}

Record ImageRecord(const ImageForm& form) {
  Fields fields = {Given("IM", "IM"), Given("IID1", "Test image"), Given("IDATIM", "20261124120000"),
                   Blank("TGTID", 17), Blank("IID2", 80)};
  Append(fields, SecurityFields("IS"));
  const int rows = form.height * form.blocksDown, columns = form.width * form.blocksAcross;
  Append(fields,
         {Given("ENCRYP", "0"), Blank("ISORCE", 42), Given("NROWS", Digits(rows, 8)),
          Given("NCOLS", Digits(columns, 8)), Given("PVTYPE", Padded(form.pixelType, 3)),
          Given("IREP", Padded(form.representation, 8)), Given("ICAT", "VIS     "),
          Given("ABPP", Digits(form.significantBits != 0 ? form.significantBits : form.bits, 2)),
          Given("PJUST", "R"), Given("ICORDS", " "), Given("NICOM", "0"), Given("IC", form.compression)});
  if (form.compression != "NC" && form.compression != "NM")
    fields.push_back(Given("COMRAT", Padded(form.rate, 4)));
  fields.push_back(Given("NBANDS", form.bands > 9 ? "0" : Digits(form.bands, 1)));
  if (form.bands > 9) fields.push_back(Given("XBANDS", Digits(form.bands, 5)));
  for (int band = 0; band < form.bands; ++band) {
    const auto n = static_cast<size_t>(band);
    const std::string suffix = std::to_string(band);
    const std::string code = n < form.bandCodes.size() ? form.bandCodes[n] : "";
    Append(fields, {Given("IREPBAND" + suffix, Padded(code, 2)), Blank("ISUBCAT" + suffix, 6),
                    Given("IFC" + suffix, "N"), Blank("IMFLT" + suffix, 3),
                    Given("NLUTS" + suffix, Digits(band == 0 ? form.lookupTables : 0, 1))});
    if (band == 0 && form.lookupTables != 0) {
      const auto entries = static_cast<int64_t>(form.lookup.size()) / form.lookupTables;
      fields.push_back(Given("NELUT0", Digits(entries, 5)));
      fields.push_back(Given("LUTD0", form.lookup));
    }
  }
  Append(fields, {Given("ISYNC", "0"), Given("IMODE", form.mode),
                  Given("NBPR", Digits(form.blocksAcross, 4)), Given("NBPC", Digits(form.blocksDown, 4)),
                  Given("NPPBH", Digits(form.width, 4)), Given("NPPBV", Digits(form.height, 4)),
                  Given("NBPP", Digits(form.bits, 2)), Given("IDLVL", Digits(form.level, 3)),
                  Given("IALVL", Digits(form.attachment, 3)), Given("ILOC", form.location),
                  Given("IMAG", "1.0 "), Given("UDIDL", "00000"), Given("IXSHDL", "00000")});
  return Record(fields);
}

Record GraphicRecord() {
  Fields fields = {Given("SY", "SY"), Given("SID", "ID        "), Blank("SNAME", 20)};
  Append(fields, SecurityFields("SS"));
  Append(fields, {Given("ENCRYP", "0"), Given("SFMT", "C"), Given("SSTRUCT", "0000000000000"),
                  Given("SDLVL", "001"), Given("SALVL", "000"), Given("SLOC", "0000000000"),
                  Given("SBND1", "0000000000"), Given("SCOLOR", "C"), Given("SBND2", "0000000000"),
                  Given("SRES1", "00"), Given("SXSHDL", "00000")});
  return Record(fields);
}

Record TextRecord() {
  Fields fields = {Given("TE", "TE"), Given("TEXTID", "Text  1"), Given("TXTALVL", "000"),
                   Given("TXTDT", "20261124120000"), Blank("TXTITL", 80)};
  Append(fields, SecurityFields("TS"));
  Append(fields, {Given("ENCRYP", "0"), Given("TXTFMT", "STA"), Given("TXSHDL", "00000")});
  return Record(fields);
}

Record DataExtensionRecord(const std::string& id) {
  Fields fields = {Given("DE", "DE"), Given("DESID", Padded(id, 25)), Given("DESVER", "01")};
  Fields security = SecurityFields("DES");
  security[0].name = "DECLAS";
  Append(fields, security);
  if (id == "TRE_OVERFLOW") Append(fields, {Given("DESOFLW", "UDHD  "), Given("DESITEM", "000")});
  fields.push_back(Given("DESSHL", "0000"));
  return Record(fields);
}

std::string MaskBytes(const MaskForm& mask) {
  std::string code = mask.padCode < 0 ? "" : std::string(1, static_cast<char>(mask.padCode));
  const size_t size = 10 + code.size() + 4 * (mask.blocks.size() + mask.pads.size());
  std::string bytes = Big(size, 4) + Big(mask.blocks.empty() ? 0 : 4, 2) +
                      Big(mask.pads.empty() ? 0 : 4, 2) + Big(8 * code.size(), 2) + code;
  for (uint32_t record : mask.blocks) bytes += Big(record, 4);
  for (uint32_t record : mask.pads) bytes += Big(record, 4);
  return bytes;
}

NitfBuilder::NitfBuilder()
    : header([] {
        Fields fields = {
            Given("FHDR", "NITF"),  Given("FVER", "02.10"),        Given("CLEVEL", "03"),
            Given("STYPE", "BF01"), Given("OSTAID", "Station   "), Given("FDT", "20261124123456"),
            Blank("FTITLE", 80)};
        Append(fields, SecurityFields("FS"));
        Append(fields, {Given("FSCOP", "00000"), Given("FSCPYS", "00000"), Given("ENCRYP", "0"),
                        Given("FBKGC", "\xFF\xFF\xFF"), Blank("ONAME", 24), Blank("OPHONE", 18),
                        Given("NUMX", "000"), Given("NUMRES", "000"), Given("UDHDL", "00000"),
                        Given("XHDL", "00000")});
        return fields;
      }()) {}

NitfBuilder& NitfBuilder::Image(const ImageForm& form, std::string data) {
  return Image(ImageRecord(form), std::move(data));
}
NitfBuilder& NitfBuilder::Image(Record subheader, std::string data) {
  images.push_back({std::move(subheader), std::move(data)});
  return *this;
}
NitfBuilder& NitfBuilder::Graphic(Record subheader, std::string data) {
  graphics.push_back({std::move(subheader), std::move(data)});
  return *this;
}
NitfBuilder& NitfBuilder::Text(std::string data) {
  texts.push_back({TextRecord(), std::move(data)});
  return *this;
}
NitfBuilder& NitfBuilder::Patch(const std::string& name, const std::string& text) {
  patches_.emplace_back(name, text);
  return *this;
}

std::string NitfBuilder::Patched(const std::string& name, std::string text) const {
  for (const auto& [patched, replacement] : patches_) {
    if (patched == name) text = replacement;
  }
  return text;
}

std::string NitfBuilder::Lengths(const std::vector<Segment>& segments, const char* subheader,
                                 size_t subheaderWidth, const char* data, size_t dataWidth) const {
  std::string bytes;
  for (size_t i = 0; i < segments.size(); ++i) {
    const std::string suffix = std::to_string(i);
    const auto length = static_cast<int64_t>(segments[i].subheader.Bytes().size());
    bytes += Patched(subheader + suffix, Digits(length, subheaderWidth));
    bytes += Patched(data + suffix, Digits(static_cast<int64_t>(segments[i].data.size()), dataWidth));
  }
  return bytes;
}

std::string NitfBuilder::Bytes() const {
  const auto count = [this](const char* name, const std::vector<Segment>& segments) {
    return Patched(name, Digits(static_cast<int64_t>(segments.size()), 3));
  };
  // The header record holds what stands before FL, NUMX, and what stands behind the length lists.
  const std::string all = header.Bytes();
  const size_t before = header.OffsetOf("NUMX");
  const std::string front = all.substr(0, before);
  const std::string behind = all.substr(before + header.Get("NUMX").size());
  std::string lists = count("NUMI", images) + Lengths(images, "LISH", 6, "LI", 10) +
                      count("NUMS", graphics) + Lengths(graphics, "LSSH", 4, "LS", 6) +
                      header.Get("NUMX") + count("NUMT", texts) + Lengths(texts, "LTSH", 4, "LT", 5) +
                      count("NUMDES", extensions) + Lengths(extensions, "LDSH", 4, "LD", 9) + behind;
  std::string body;
  for (const auto* segments : {&images, &graphics, &texts, &extensions}) {
    for (const Segment& segment : *segments) body += segment.subheader.Bytes() + segment.data;
  }
  const size_t headerLength = front.size() + 18 + lists.size();
  return front + Patched("FL", Digits(static_cast<int64_t>(headerLength + body.size()), 12)) +
         Patched("HL", Digits(static_cast<int64_t>(headerLength), 6)) + lists + body;
}

NitfBuilder FullFile() {
  NitfBuilder file;
  file.header.Set("XHDL", 14).InsertAfter("XHDL", "XH", "000TAGONE00000");
  Record image = ImageRecord({});
  image.Set("NICOM", 2).InsertAfter("NICOM", "ICOM", std::string(80, 'a') + std::string(80, 'b'));
  image.Set("UDIDL", 15).InsertAfter("UDIDL", "UDI", "000TAGTWO00001x");
  image.Set("IXSHDL", 14).InsertAfter("IXSHDL", "IXS", "000TAGONE00000").Set("ILOC", "00123-0456");
  Record second = ImageRecord({});
  second.Set("IXSHDL", 3).InsertAfter("IXSHDL", "IXS", "001");
  Record graphic = GraphicRecord();
  graphic.Set("SFMT", "B").Set("SXSHDL", 14).InsertAfter("SXSHDL", "SXS", "000TAGSYM00000");
  graphic.Set("SLOC", "-012300045").Set("SBND1", "0000100002").Set("SBND2", "0000300004");
  file.Image(image, std::string(64, 'i')).Image(second, std::string(64, 'j')).Graphic(graphic, "symbol");
  file.Text("some text").Text("");
  file.texts[0].subheader.Set("TXSHDL", 14).InsertAfter("TXSHDL", "TXS", "000TAGTXT00000");
  file.extensions.push_back({DataExtensionRecord("TRE_OVERFLOW"), "overflow"});
  Record extension = DataExtensionRecord("OTHER");
  extension.Set("DESSHL", 5).InsertAfter("DESSHL", "DESSHF", "abcde");
  file.extensions.push_back({extension, ""});
  return file;
}

NitfBuilder Streamed(NitfBuilder file, const std::string& replacement) {
  file.extensions.push_back({DataExtensionRecord("STREAMING_FILE_HEADER"), StreamingData(replacement)});
  return file.Patch("FL", "999999999999");
}

}  // namespace test
