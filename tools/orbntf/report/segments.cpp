// Each image and graphic by itself.
#include "orbntf/orbntf.h"
#include "tools/orbntf/report/html.h"
#include "tools/orbntf/report/report.h"

namespace tool {
namespace {

// Of a page that stays small.
constexpr size_t kMostPictures = 40, kMostPng = 24 << 10;

std::string Image(const std::string& uri, const std::string& words) {
  return uri.empty() ? "" : "<img alt=\"" + Escaped(words) + "\" src=\"" + uri + "\">";
}

std::string Place(const SurveyedPart& part, const char* field) {
  int64_t row = 0, column = 0;
  if (!PlaceOfText(part.Text(field), row, column)) return EscapedField(part.Text(field));
  return "row " + std::to_string(row) + ", column " + std::to_string(column);
}

std::string ImageCard(const ReportedFile& file, const SurveyedPart& part, bool withPicture) {
  constexpr uint32_t kSide = 320;
  SampleImage image;
  ExtractFault fault;
  // As small as its codec makes it.
  for (uint32_t reduce = ReduceFor(part, kSide); withPicture; --reduce) {
    image = {};
    fault = ReadSamples(file.survey, part, reduce, image);
    if (!fault.Met() || reduce == 0) break;
  }
  std::string picture;
  if (fault.Met()) {
    picture = Tag("p", "No picture: " + Escaped(fault.words) + ".");
  } else if (withPicture) {
    picture = Image(DataUri(PictureOf(image, kSide), kMostPng), part.Title() + " by itself") +
              Histograms(image);
  }
  std::string facts = Term("Size", EscapedField(std::to_string(part.Number("NCOLS")) + " x " +
                                                std::to_string(part.Number("NROWS"))));
  facts +=
      Term("Samples", Counted(static_cast<uint64_t>(part.Bands()), "band") + " of " +
                          EscapedField(part.Text("NBPP")) + " bits, " +
                          EscapedField(part.Text("PVTYPE")) + ", " + EscapedField(part.Text("IREP")));
  facts += Term("Stored", EscapedField(part.Text("IC")) + ", IMODE " + EscapedField(part.Text("IMODE")) +
                              ", " + std::to_string(part.Number("NBPR")) + " x " +
                              std::to_string(part.Number("NBPC")) + " blocks");
  facts += Term("Level", EscapedField(part.Text("IDLVL")) + " on " + EscapedField(part.Text("IALVL")));
  facts += Term("Place", Place(part, "ILOC"));
  facts += Term("Data", Grouped(part.dataLength) + " bytes");
  return picture + Tag("dl", facts);
}

std::string GraphicCard(const ReportedFile& file, const SurveyedPart& part, bool withPicture) {
  const std::string uri = withPicture ? DrawingUri(file.path, part.index) : "";
  std::string facts = Term("Form", EscapedField(part.Text("SFMT")));
  facts += Term("Level", EscapedField(part.Text("SDLVL")) + " on " + EscapedField(part.Text("SALVL")));
  facts += Term("Place", Place(part, "SLOC"));
  facts += Term("Bounds", Place(part, "SBND1") + " to " + Place(part, "SBND2"));
  facts += Term("Data", Grouped(part.dataLength) + " bytes");
  const std::string none =
      withPicture && uri.empty() ? Tag("p", "No picture: there is no drawing in it.") : "";
  return Image(uri, part.Title() + " by itself") + none + Tag("dl", facts);
}

}  // namespace

std::string SegmentsSection(const ReportedFile& file) {
  std::string cards;
  size_t count = 0;
  for (const SurveyedPart& part : file.survey.parts) {
    const bool isImage = part.kind == PartKind::Image;
    if (!isImage && part.kind != PartKind::Graphic) continue;
    const bool withPicture = ++count <= kMostPictures;
    const std::string name = EscapedField(part.Text(isImage ? "IID1" : "SNAME"));
    const std::string heading = part.Title() + (name.empty() ? "" : ": " + name);
    cards += Tag("div",
                 Tag("h3", heading) + (isImage ? ImageCard(file, part, withPicture)
                                               : GraphicCard(file, part, withPicture)),
                 "class=\"card\"") +
             "\n";
  }
  if (cards.empty()) return "";
  const std::string more =
      count > kMostPictures
          ? Tag("p", "The first " + std::to_string(kMostPictures) + " are shown with their pictures.",
                "class=\"soft\"")
          : "";
  return Section(file.id + "-segments", "Images and graphics",
                 more + Tag("div", cards, "class=\"cards\""));
}

}  // namespace tool
