// What the tool tells of a file: its structure, findings, records, samples and page.
#include <cmath>

#include "core/place/extent.h"
#include "core/place/placed.h"
#include "core/report/report.h"
#include "core/samples/samples.h"
#include "core/view/view.h"
#include "fuzz/support.h"

namespace {

// Where an image lies, and back.
void Locate(const core::SurveyedPart& part, const core::SurveyedPart& header,
            const core::RecordDefinitions& definitions) {
  const core::Placed placed = core::PlaceOf(part, header, definitions);
  if (placed.model == nullptr) return;
  core::GroundPoint ground{};
  core::ImagePoint point{};
  if (placed.model->ToGround({1, 2}, placed.model->Height().value_or(0), ground).empty()) {
    fuzz::Require(std::abs(ground.latitude) <= 90 && std::abs(ground.longitude) <= 180,
                  "a place on earth");
    (void)placed.model->ToImage(ground, point);
  }
  (void)core::ExtentOf(*placed.model, 100, 100);
}

}  // namespace

int fuzz::Insight(const uint8_t* data, size_t size) {
  static MemoryFile file;
  static const core::RecordDefinitions definitions;
  Begin(size);
  const uint32_t reduce = Choices(data, size).Byte() % 4;
  file.Fill(data, size);
  core::ReportedFile reported(file.Path(), "f1", definitions);
  Require(!reported.survey.parts.empty(), "a file has a header");
  reported.findings = core::FindFaults(reported.survey, definitions);
  for (const core::Finding& finding : reported.findings)
    Require(!finding.words.empty(), "a finding has words");
  for (const core::SurveyedPart& part : reported.survey.parts) {
    if (part.kind != core::PartKind::Image) continue;
    Locate(part, reported.survey.Header(), definitions);
    core::SampleImage image;
    const core::SampleFault fault = core::ReadSamples(reported.survey, part, reduce, image);
    if (fault.Met()) continue;
    Require(image.samples.size() == image.PixelBytes() * image.width * image.height,
            "every pixel has its samples");
    (void)core::Histograms(image);
  }
  constexpr core::PageDetail kDetail = {2000, 20000, 500, 0, 2000, 1 << 20, 0};
  std::set<std::string> rows;
  const std::string page = core::FieldsSection(reported, kDetail, rows) +
                           core::FindingsSection(reported, kDetail, rows) +
                           core::LocationSection(reported) + core::RecordsSection(reported, kDetail) +
                           core::TextsSection(reported, kDetail) + core::LayoutSection(reported, kDetail);
  Require(page.find('\x1B') == std::string::npos, "no control characters on a page");
  core::ViewRequest request;
  request.size = 100;
  request.fast = reduce != 0;
  core::FileView view(reported.survey, request);
  if (!view.Start().Met()) (void)view.Draw([](uint32_t, const uint8_t*) { return true; });
  return 0;
}
