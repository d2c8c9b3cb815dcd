// What a file is, first of all: product, place, time, and what it holds.
#include "core/format/numbers.h"
#include "core/format/products.h"
#include "core/place/extent.h"
#include "core/place/placed.h"
#include "core/report/html.h"
#include "core/report/report.h"

namespace core {
namespace {

// "2005-03-12 10:22:33 UTC", or the field as it is.
std::string TimeOf(std::string_view field) {
  std::string time = IsoDate(field);
  if (time.empty()) return EscapedField(field);
  if (const size_t mark = time.find('T'); mark != std::string::npos) time[mark] = ' ';
  if (time.back() == 'Z') time.replace(time.size() - 1, 1, " UTC");
  return Escaped(time);
}

// The place and the time of the first image, as far as they are known.
std::string WhatWhereAndWhen(const ReportedFile& file) {
  std::string facts;
  const SurveyedPart* image = file.survey.Find(PartKind::Image, 0);
  const Placed placed =
      image == nullptr ? Placed() : PlaceOf(*image, file.survey.Header(), file.definitions);
  const auto extent = placed.model == nullptr ? std::nullopt : ExtentOf(*placed.model, *image);
  if (extent)
    facts += Term("Place",
                  PlaceText(extent->middle) + ", by " + placed.model->Name() + "; " + SizeText(*extent));
  const std::string time = image == nullptr ? "" : TimeOf(image->Text("IDATIM"));
  if (!time.empty()) facts += Term("Image taken", time);
  return facts;
}

}  // namespace

std::string SummarySection(const ReportedFile& file) {
  const SurveyedPart& header = file.survey.Header();
  const bool good = file.readerDraws;
  std::string counts;
  for (const PartKind kind : {PartKind::Image, PartKind::Graphic, PartKind::Text, PartKind::DataExtension,
                              PartKind::Reserved}) {
    if (const uint32_t count = file.survey.Count(kind); count != 0)
      counts += (counts.empty() ? "" : ", ") + Counted(count, NameOf(kind));
  }
  std::string facts = WhatWhereAndWhen(file);
  if (!file.readerWords.empty())
    facts += Term("The module", Tag("span", Escaped(file.readerWords),
                                    std::string("class=\"verdict ") + (good ? "good\"" : "bad\"")));
  facts += Term("Format",
                EscapedField(std::string(header.Text("FHDR")) + " " + std::string(header.Text("FVER"))) +
                    ", complexity level " + EscapedField(header.Text("CLEVEL")));
  const std::string title = EscapedField(header.Text("FTITLE"));
  if (!title.empty()) facts += Term("Title", title);
  facts += Term("File made", TimeOf(header.Text("FDT")) + ", " + EscapedField(header.Text("OSTAID")));
  facts += Term("Classification", EscapedField(header.Text("FSCLAS")));
  facts += Term("Holds", counts.empty() ? "nothing" : counts);
  facts += Term("Size", Grouped(file.survey.file.Size()) + " bytes");
  std::string products;
  for (const std::string& words : ProductsOf(file.survey))
    products += Tag("p", Escaped(words), "class=\"lead\"");
  return Section(file.id + "-summary", "Summary", products + Tag("dl", facts, "class=\"facts\""));
}

}  // namespace core
