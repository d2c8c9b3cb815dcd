// The core as programs use it: header, records, findings, windows of samples.
#include "orbntf/core.hpp"

#include "fuzz/support.h"
#include "fuzz/targets.h"

namespace {

using orbntf::core::File;

orbntf::core::SampleRequest TakeRequest(fuzz::Choices choices) {
  orbntf::core::SampleRequest request;
  request.reduce = choices.Byte() % 4u;
  request.row = choices.Byte();
  request.column = choices.Byte();
  request.rows = request.columns = choices.Byte();
  if (choices.Byte() % 2 == 0) request.bands = {0};
  return request;
}

void ReadImage(const File& file, const orbntf::core::SegmentInfo& image,
               const orbntf::core::SampleRequest& request) {
  try {
    const orbntf::core::Samples samples = file.ReadSamples(image, request);
    fuzz::Require(samples.data.size() ==
                      size_t{samples.width} * samples.height * samples.bands * samples.sampleBytes,
                  "samples fill their rows");
    const size_t pixels = size_t{samples.width} * samples.height;
    if (request.reduce == 0)
      fuzz::Require(file.ReadMask(image, request).size() == pixels, "a mask has its pixels");
  } catch (const orbntf::core::Error&) {
  }
}

// The file against what is left of it without its end.
void CompareWithFront(const File& file, const uint8_t* data, size_t size) {
  try {
    const File front = File::FromMemory(data, size - size / 4);
    for (const orbntf::core::Difference& one : Compare(file, front))
      fuzz::Require(!one.words.empty() || one.a != one.b, "a difference is one");
  } catch (const orbntf::core::Error&) {
  }
}

void DrawFile(const File& file, const orbntf::core::SampleRequest& like) {
  orbntf::core::PictureRequest request;
  request.row = like.row;
  request.column = like.column;
  request.rows = like.rows;
  request.size = 1 + static_cast<uint32_t>(like.columns);
  request.fast = like.reduce % 2 == 0;
  request.stretch = static_cast<orbntf::core::StretchBy>(like.reduce % 3);
  if (!like.bands.empty()) request.image = 0;
  try {
    uint32_t rows = 0;
    const auto info = file.Draw(request, [&](uint32_t row, const uint8_t*) { return row == rows++; });
    fuzz::Require(rows == info.height, "every row comes, in order");
  } catch (const orbntf::core::Error&) {
  }
}

}  // namespace

int fuzz::Core(const uint8_t* data, size_t size) {
  Begin(size);
  const orbntf::core::SampleRequest request = TakeRequest(Choices(data, size));
  try {
    const File file = File::FromMemory(data, size);
    for (const orbntf::core::SegmentInfo& segment : file.Segments()) {
      for (const orbntf::core::FieldText& field : file.Fields(segment))
        Require(file.Field(segment, field.name).has_value(), "a field is found by its name");
      for (const orbntf::core::Record& record : file.Records(segment))
        Require(!record.tag.empty() || !record.problem.empty(), "bytes without a tag have a problem");
      (void)file.Data(segment, 0, 100);
      Require(!file.ValuesJson(segment).empty(), "values are a text of JSON");
      if (segment.kind == orbntf::core::SegmentKind::Image) ReadImage(file, segment, request);
    }
    DrawFile(file, request);
    CompareWithFront(file, data, size);
    for (const orbntf::core::Finding& finding : file.Check())
      Require(!finding.words.empty(), "a finding has words");
  } catch (const orbntf::core::Error&) {
  }
  return 0;
}
