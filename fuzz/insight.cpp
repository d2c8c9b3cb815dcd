// What the tool tells of a file: its structure, findings, records, samples and page.
#include "Common/NitfFile.h"
#include "fuzz/support.h"
#include "tools/orbntf/extract/samples.h"
#include "tools/orbntf/report/report.h"

int fuzz::Insight(const uint8_t* data, size_t size) {
  static MemoryFile file;
  static const tool::RecordDefinitions definitions;
  Begin(size);
  const uint32_t reduce = Choices(data, size).Byte() % 4;
  file.Fill(data, size);
  tool::ReportedFile reported(file.Path(), "f1", definitions);
  Require(!reported.survey.parts.empty(), "a file has a header");
  reported.findings = tool::FindFaults(reported.survey, definitions);
  for (const tool::Finding& finding : reported.findings)
    Require(!finding.words.empty(), "a finding has words");
  for (const tool::SurveyedPart& part : reported.survey.parts) {
    if (part.kind != tool::PartKind::Image) continue;
    tool::SampleImage image;
    const tool::ExtractFault fault = tool::ReadSamples(reported.survey, part, reduce, image);
    if (fault.Met()) continue;
    Require(image.samples.size() == image.PixelBytes() * image.width * image.height,
            "every pixel has its samples");
    const tool::Pixels pixels = tool::PictureOf(image, 64);
    Require(pixels.rgb.size() == size_t{3} * pixels.width * pixels.height, "a picture is whole");
    (void)tool::Histograms(image);
  }
  constexpr tool::PageDetail kDetail = {2000, 20000, 500, 0, 2000, 1 << 20, 0};
  const std::string page = tool::FindingsSection(reported, kDetail) + tool::LocationSection(reported) +
                           tool::FieldsSection(reported, kDetail) +
                           tool::RecordsSection(reported, kDetail) +
                           tool::TextsSection(reported, kDetail) + tool::LayoutSection(reported, kDetail);
  Require(page.find('\x1B') == std::string::npos, "no control characters on a page");
  Begin(size);
  NitfFile document;
  document.header.rules = DisplayRules::Standard();
  if (ToCaller(document.ReadDocument(file.Wide())) == 1) (void)Draw(&document);
  document.FreeObjects();
  RequireNothingHeld();
  return 0;
}
