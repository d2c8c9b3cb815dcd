#include "core/edit/new_headers.h"

#include <algorithm>

namespace core {
namespace {

// What a field of a new header has where it is neither blank nor 0.
struct Default {
  std::string_view field, text;
};
constexpr Default kDefaults[] = {
    {"FHDR", "NITF"},     {"FVER", "02.10"}, {"CLEVEL", "03"}, {"STYPE", "BF01"}, {"CLAS", "U"},
    {"OSTAID", "orbntf"}, {"IM", "IM"},      {"SY", "SY"},     {"TE", "TE"},      {"DE", "DE"},
    {"PJUST", "R"},       {"IFC", "N"},      {"IMAG", "1.0"},  {"SFMT", "C"},     {"SCOLOR", "C"},
    {"TXTFMT", "STA"},    {"DESVER", "01"},  {"NICOM", "0"},   {"NBANDS", "0"},   {"IC", "NC"}};

// The fields of a new header, one after the other.
class HeaderMaker {
 public:
  HeaderMaker& Add(const LayoutRow& row) {
    const auto* found = std::find_if(std::begin(kDefaults), std::end(kDefaults),
                                     [&](const Default& known) { return known.field == row.name; });
    std::string text(found != std::end(kDefaults) ? found->text : "");
    const char fill = row.form == FieldForm::Number || row.form == FieldForm::Place ? '0'
                      : row.form == FieldForm::Bytes                                ? '\0'
                                                                                    : ' ';
    text.resize(row.width, fill);
    header_ += text;
    return *this;
  }
  HeaderMaker& Add(Layout rows) {
    for (const LayoutRow& row : rows) Add(row);
    return *this;
  }
  std::string Take() { return std::move(header_); }

 private:
  std::string header_;
};

std::string Blank(std::string text, size_t width) {
  text.resize(width, ' ');
  return text;
}

// NBANDS to the last band's tables.
std::string BandFields(const ImageForm& form) {
  std::string fields = form.bands.size() <= 9
                           ? std::to_string(form.bands.size())
                           : "0" + NumberDigits(form.bands.size(), kManyBandsLayout.width, "XBANDS");
  for (const BandForm& band : form.bands) {
    fields += Blank(band.representation, 2) + Blank(band.subcategory, 6) + "N   " +
              std::to_string(band.tables.size());
    if (!band.tables.empty())
      fields += NumberDigits(band.tables[0].size(), kTableEntriesLayout.width, "NELUT");
    for (const std::string& table : band.tables) fields += table;
  }
  return fields;
}

size_t PlaceOf(const DraftPart& image, const std::string& field) {
  const std::optional<SurveyedField> found = image.Fields().Find(field);
  if (!found || !image.Fields().complete)
    RefuseFile(image.Title() + ": its header does not hold all its fields");
  return image.At(*found);
}

// Bands keep what they show where there are as many of them as before.
ImageForm WithOwnBands(const DraftPart& image, ImageForm form) {
  const SurveyedPart& fields = image.Fields();
  if (fields.Bands() != static_cast<int64_t>(form.bands.size())) return form;
  for (size_t i = 0; i < form.bands.size(); ++i) {
    const std::string number = std::to_string(i + 1);
    form.bands[i].representation = fields.Trimmed("IREPBAND" + number);
    form.bands[i].subcategory = fields.Trimmed("ISUBCAT" + number);
  }
  return form;
}

}  // namespace

std::string NewFileHeader() {
  HeaderMaker maker;
  maker.Add(kFileFrontLayout).Add(kSecurityLayout).Add(kFileMiddleLayout);
  for (const ListLayout& list : kListLayouts) {
    if (&list == &kListLayouts[2]) maker.Add(kReservedCountLayout);
    maker.Add(list.count);
  }
  return maker.Add(kFileUserArea.length).Add(kFileArea.length).Take();
}

std::string NewImageHeader(const ImageForm& form) {
  HeaderMaker maker;
  maker.Add(kImageFrontLayout).Add(kSecurityLayout).Add(kImageSizeLayout).Add(kCommentCountLayout);
  maker.Add(kCompressionLayout).Add(kBandCountLayout).Add(kManyBandsLayout).Add(kImageBlocksLayout);
  DraftPart image(PartKind::Image, maker.Add(kImageUserArea.length).Add(kImageArea.length).Take(), {});
  DescribePixels(image, form, true);
  return image.Header();
}

std::string NewGraphicHeader() {
  HeaderMaker maker;
  maker.Add(kGraphicFrontLayout).Add(kSecurityLayout).Add(kGraphicBodyLayout);
  return maker.Add(kGraphicArea.length).Take();
}

std::string NewTextHeader() {
  HeaderMaker maker;
  maker.Add(kTextFrontLayout).Add(kSecurityLayout).Add(kTextBodyLayout);
  return maker.Add(kTextArea.length).Take();
}

std::string NewExtensionHeader(const std::string& name, uint32_t version) {
  HeaderMaker maker;
  maker.Add(kExtensionFrontLayout).Add(kSecurityLayout).Add(kExtensionLengthLayout);
  DraftPart part(PartKind::DataExtension, maker.Take(), {});
  if (name.empty() || name.size() > 25) RefuseArgument("a data extension's name has 1 to 25 characters");
  part.Put("DESID", Blank(name, 25));
  part.PutNumber("DESVER", version);
  return part.Header();
}

std::string OverflowHeader(const DraftPart& part, const std::string& area, size_t item) {
  HeaderMaker maker;
  maker.Add(kExtensionFrontLayout).Add(kSecurityLayout).Add(kExtensionLengthLayout);
  std::string header = maker.Take();
  size_t front = 0, security = 0;
  for (const LayoutRow& row : kExtensionFrontLayout) front += row.width;
  for (const LayoutRow& row : kSecurityLayout) security += row.width;
  const std::optional<SurveyedField> first =
      part.Fields().Find(part.Fields().SecurityPrefix() + std::string("CLAS"));
  if (first) header.replace(front, security, part.Header().substr(part.At(*first), security));
  header.replace(2, 25, Blank("TRE_OVERFLOW", 25));
  return header.insert(front + security, Blank(area, 6) + NumberDigits(item, 3, "DESITEM"));
}

void DescribePixels(DraftPart& image, const ImageForm& asked, bool isAnother) {
  const bool isYcc = asked.representation == "YCbCr601";
  const ImageForm form = isAnother || isYcc ? asked : WithOwnBands(image, asked);
  image.PutNumber("NROWS", form.rows);
  image.PutNumber("NCOLS", form.columns);
  image.Put("PVTYPE", Blank(form.pixelType, 3));
  if (isAnother || isYcc) image.Put("IREP", Blank(form.representation, 8));
  if (isAnother) image.Put("ICAT", Blank(form.category, 8));
  image.PutNumber("ABPP", form.significantBits);
  image.Put("PJUST", "R");
  const size_t first = PlaceOf(image, "IC"), last = PlaceOf(image, "ISYNC");
  const bool isPlain = form.compression == "NC" || form.compression == "NM";
  image.Replace(first, last - first,
                form.compression + (isPlain ? "" : Blank(form.rate, 4)) + BandFields(form));
  image.Put("IMODE", std::string(1, form.mode));
  image.PutNumber("NBPR", form.blocksAcross);
  image.PutNumber("NBPC", form.blocksDown);
  image.PutNumber("NPPBH", form.blockWidth);
  image.PutNumber("NPPBV", form.blockHeight);
  image.PutNumber("NBPP", form.bits);
  image.named.insert({"NROWS", "NCOLS", "PVTYPE", "IREP", "ICAT", "ABPP", "PJUST", "IC", "COMRAT",
                      "NBANDS", "XBANDS", "IMODE", "NBPR", "NBPC", "NPPBH", "NPPBV", "NBPP"});
}

}  // namespace core
