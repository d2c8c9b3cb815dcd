// Each image and graphic by itself.
#include <algorithm>

#include "core/report/html.h"
#include "core/report/report.h"
#include "media/work.h"

namespace core {
namespace {

// Of a page that stays small.
constexpr size_t kMostPng = 24 << 10;

std::string Image(const std::string& uri, const std::string& words) {
  return uri.empty() ? "" : "<img alt=\"" + Escaped(words) + "\" src=\"" + uri + "\">";
}

std::string Place(const SurveyedPart& part, const char* field) {
  int64_t row = 0, column = 0;
  if (!PlaceOfText(part.Text(field), row, column)) return EscapedField(part.Text(field));
  return "row " + std::to_string(row) + ", column " + std::to_string(column);
}

std::string PictureOfImage(const ReportedFile& file, const SurveyedPart& part) {
  constexpr uint32_t kSide = 320, kCounted = 1024;
  constexpr uint64_t kSampleCost = 20;  // nanoseconds, to count it
  const Composite picture = DrawImage(file.survey, part.index, kSide);
  if (!picture.problem.empty()) return Tag("p", "No picture: " + Escaped(picture.problem) + ".");
  if (!picture.missing.empty()) return Tag("p", "No picture: " + Escaped(picture.missing[0]) + ".");
  SampleImage image;
  SampleFault fault;
  // Samples at a distance from each other, as small as its codec makes it.
  for (uint32_t reduce = ReduceFor(part, kCounted);; --reduce) {
    image = {};
    fault = ReadSamples(file.survey, part, reduce, image);
    if (!fault.Met() || reduce == 0) break;
  }
  if (!fault.Met() && !media::Spend(kSampleCost * image.width * image.height * image.bands))
    fault = FaultOf(media::Outcome::OverBudget, "");
  return Image(DataUri(picture.pixels, kMostPng), part.Title() + " by itself") +
         (fault.Met() ? "" : Histograms(image));
}

std::string PictureOfGraphic(const ReportedFile& file, const SurveyedPart& part) {
  const std::string uri = DrawingUri(file.survey, part);
  return uri.empty() ? Tag("p", "No picture: there is no drawing in it.")
                     : Image(uri, part.Title() + " by itself");
}

std::string ImageFacts(const SurveyedPart& part) {
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
  return facts + Term("Data", Grouped(part.dataLength) + " bytes");
}

std::string GraphicFacts(const SurveyedPart& part) {
  std::string facts = Term("Form", EscapedField(part.Text("SFMT")));
  facts += Term("Level", EscapedField(part.Text("SDLVL")) + " on " + EscapedField(part.Text("SALVL")));
  facts += Term("Place", Place(part, "SLOC"));
  facts += Term("Bounds", Place(part, "SBND1") + " to " + Place(part, "SBND2"));
  return facts + Term("Data", Grouped(part.dataLength) + " bytes");
}

bool IsShown(const SurveyedPart& part) {
  return part.kind == PartKind::Image || part.kind == PartKind::Graphic;
}

}  // namespace

void DrawSegments(ReportedFile& file, size_t most) {
  for (const SurveyedPart& part : file.survey.parts) {
    if (!IsShown(part)) continue;
    if (file.segmentPictures.size() == most) break;
    file.segmentPictures.push_back(part.kind == PartKind::Image ? PictureOfImage(file, part)
                                                                : PictureOfGraphic(file, part));
  }
}

std::string SegmentsSection(const ReportedFile& file, const PageDetail& detail) {
  std::string cards;
  size_t count = 0;
  const size_t pictures = std::min(detail.segmentPictures, file.segmentPictures.size());
  for (const SurveyedPart& part : file.survey.parts) {
    if (!IsShown(part)) continue;
    const bool isImage = part.kind == PartKind::Image;
    if (++count > detail.records) continue;
    const std::string picture = count <= pictures ? file.segmentPictures[count - 1] : "";
    const std::string name = EscapedField(part.Text(isImage ? "IID1" : "SNAME"));
    const std::string heading = part.Title() + (name.empty() ? "" : ": " + name);
    cards +=
        Tag("div",
            Tag("h3", heading) + picture + Tag("dl", isImage ? ImageFacts(part) : GraphicFacts(part)),
            "class=\"card\"") +
        "\n";
  }
  if (cards.empty()) return "";
  std::string more;
  if (count > pictures)
    more = Tag("p", "The first " + std::to_string(pictures) + " are shown with their pictures.",
               "class=\"soft\"");
  if (count > detail.records)
    more += Tag("p",
                Counted(count - detail.records, "segment") + " more " +
                    (count - detail.records == 1 ? "is" : "are") + " not shown here.",
                "class=\"soft\"");
  return Section(file.id + "-segments", "Images and graphics",
                 more + Tag("div", cards, "class=\"cards\""));
}

}  // namespace core
