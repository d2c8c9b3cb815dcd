// The library's own surface over the folders of the core.
#include "orbntf/core.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "core/check/check_file.h"
#include "core/core_state.h"
#include "core/samples/samples.h"
#include "core/view/view.h"
#include "media/work.h"

namespace orbntf::core {
namespace {

// A caller's function that throws stops the work as one that answers false.
std::function<bool(double)> Calm(const std::function<bool(double)>& progress) {
  if (!progress) return {};
  return [&progress](double done) {
    try {
      return progress(done);
    } catch (...) {
      return false;
    }
  };
}

FieldText TextOf(const ::core::SurveyedField& field) {
  return {field.name, std::string(field.text), field.meaning != nullptr ? field.meaning : "",
          field.offset};
}

std::vector<RecordFieldText> FieldsOf(const std::vector<::core::DecodedField>& fields) {
  std::vector<RecordFieldText> texts;
  for (const ::core::DecodedField& field : fields) {
    RecordFieldText& text = texts.emplace_back();
    text.name = field.field->name;
    text.unit = field.field->unit;
    text.text = field.text;
    for (const auto& turn : field.turns) text.turns.push_back(FieldsOf(turn));
  }
  return texts;
}

Finding FindingOf(const ::core::Finding& finding) {
  const ::core::Rule& rule = *finding.rule;
  return {static_cast<Severity>(rule.severity),
          rule.id,
          finding.part,
          finding.field,
          finding.offset,
          finding.words,
          rule.sentence,
          rule.standard};
}

}  // namespace

ErrorKind KindOf(media::Outcome outcome) {
  switch (outcome) {
    case media::Outcome::ShortData:
      return ErrorKind::Truncated;
    case media::Outcome::Unsupported:
      return ErrorKind::Unsupported;
    case media::Outcome::Invalid:
      return ErrorKind::Invalid;
    case media::Outcome::Stopped:
      return ErrorKind::Stopped;
    case media::Outcome::NoMemory:
    case media::Outcome::OverBudget:
      return ErrorKind::TooMuch;
    default:
      return ErrorKind::Damaged;
  }
}

Samples SamplesOf(::core::SampleImage&& image) {
  Samples samples;
  samples.width = image.width;
  samples.height = image.height;
  samples.bands = image.bands;
  samples.bits = image.bits;
  samples.significantBits = image.significantBits;
  samples.sampleBytes = image.sampleBytes;
  samples.kind = static_cast<SampleKind>(image.kind);
  samples.data = std::move(image.samples);
  samples.noData = image.noData;
  samples.palette = std::move(image.palette);
  return samples;
}

Error ErrorOf(const ::core::SampleFault& fault, const SegmentInfo& image, const SurveyedPart& part) {
  const auto field = part.Find(fault.field);
  return {KindOf(fault.outcome), fault.words, image.title, field ? field->offset : part.dataOffset,
          fault.field};
}

SegmentInfo InfoOf(const SurveyedPart& part) {
  SegmentInfo info;
  info.kind = static_cast<SegmentKind>(part.kind);
  info.index = part.index;
  info.offset = part.offset;
  info.headerLength = part.headerLength;
  info.dataOffset = part.dataOffset;
  info.dataLength = part.dataLength;
  info.complete = part.complete;
  info.title = part.Title();
  return info;
}

Error::Error(ErrorKind kind, const std::string& words, std::string segment, std::optional<uint64_t> byte,
             std::string field)
    : std::runtime_error(words),
      kind_(kind),
      segment_(std::move(segment)),
      field_(std::move(field)),
      byte_(byte) {}
Error::~Error() = default;

struct Interruption::State {
  explicit State(std::function<bool()> goesOn) : interruption(std::move(goesOn)) {}
  ::core::Interruption interruption;
};
Interruption::Interruption(std::function<bool()> goesOn)
    : state_(Guarded([&] {
        return std::make_unique<State>([goesOn = std::move(goesOn)] {
          try {
            return !goesOn || goesOn();
          } catch (...) {
            return false;
          }
        });
      })) {}
Interruption::~Interruption() = default;

File::File(std::unique_ptr<State> state) : state_(std::move(state)) {
  const SurveyedPart& header = state_->survey.Header();
  const std::string version = std::string(header.Text("FHDR")) + std::string(header.Text("FVER"));
  if (version != "NITF02.10" && version != "NSIF01.00")
    throw Error(ErrorKind::NotNitf, "it is no NITF 2.1 or NSIF 1.0 file");
}
File::File(File&&) noexcept = default;
File& File::operator=(File&&) noexcept = default;
File::~File() = default;

File File::Open(const std::string& path) {
  return Guarded([&] {
    RequirePath(path);
    auto state = std::make_unique<State>(path);
    if (state->survey.file.IsOpen()) return File(std::move(state));
    struct stat status;
    const bool isOther = stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
    throw Error(ErrorKind::Unreadable, isOther ? "is no regular file" : ::core::WordsOfErrno(errno));
  });
}

File File::FromMemory(const void* bytes, size_t count) {
  return Guarded([&] {
    const std::string_view memory(bytes != nullptr ? static_cast<const char*>(bytes) : "",
                                  bytes != nullptr ? count : 0);
    auto state = std::make_unique<State>(memory);
    state->memory = memory;
    return File(std::move(state));
  });
}

uint64_t File::Size() const { return state_->survey.file.Size(); }
const std::vector<SegmentInfo>& File::Segments() const { return state_->segments; }

const SegmentInfo& File::Segment(SegmentKind kind, uint32_t index) const {
  for (const SegmentInfo& segment : state_->segments) {
    if (segment.kind == kind && segment.index == index) return segment;
  }
  throw Error(ErrorKind::Invalid, "there is no such segment");
}

std::vector<FieldText> File::Fields(const SegmentInfo& segment) const {
  return Guarded([&] {
    std::vector<FieldText> fields;
    state_->Part(segment).ForEachField(
        [&](const ::core::SurveyedField& field) { fields.push_back(TextOf(field)); });
    return fields;
  });
}

std::optional<FieldText> File::Field(const SegmentInfo& segment, const std::string& name) const {
  return Guarded([&]() -> std::optional<FieldText> {
    const auto field = state_->Part(segment).Find(name);
    if (!field) return std::nullopt;
    return TextOf(*field);
  });
}

std::vector<Record> File::Records(const SegmentInfo& segment) const {
  return Guarded([&] {
    std::vector<Record> records;
    for (const ::core::TaggedRecord& record :
         ::core::RecordsOf(state_->Part(segment), state_->definitions))
      records.push_back({record.tag, record.area, record.offset, record.bytes, record.problem,
                         FieldsOf(record.fields)});
    return records;
  });
}

std::string File::Data(const SegmentInfo& segment, uint64_t offset, uint64_t count) const {
  return Guarded([&] {
    constexpr uint64_t kMostAtOnce = 1 << 30;
    const SurveyedPart& part = state_->Part(segment);
    const uint64_t there = offset < part.dataLength ? std::min(count, part.dataLength - offset) : 0;
    if (std::min(there, Size()) > kMostAtOnce)
      throw Error(ErrorKind::TooMuch, "more than 1 GiB at once", segment.title, part.dataOffset);
    return state_->survey.file.At(part.dataOffset + offset, there);
  });
}

std::vector<Finding> File::Check(const std::function<bool(double)>& progress,
                                 const std::string& profile) const {
  return Guarded([&] {
    if (!profile.empty() && !::core::IsProfile(profile))
      throw Error(ErrorKind::Invalid, "there is no profile " + profile);
    const media::WorkLimit limit(Size());
    std::vector<::core::Finding> found;
    if (!::core::FindFaults(state_->survey, state_->definitions, Calm(progress), found, profile))
      throw Error(ErrorKind::Stopped, "stopped");
    std::vector<Finding> findings;
    findings.reserve(found.size());
    for (const ::core::Finding& finding : found) findings.push_back(FindingOf(finding));
    return findings;
  });
}

namespace {

::core::ViewRequest ViewOf(const PictureRequest& request) {
  ::core::ViewRequest wanted;
  wanted.row = request.row;
  wanted.column = request.column;
  wanted.rows = request.rows;
  wanted.columns = request.columns;
  wanted.scale = request.scale;
  wanted.size = request.size;
  wanted.fast = request.fast;
  wanted.image = request.image;
  wanted.bands = request.bands;
  wanted.stretch = {static_cast<::core::Stretch::By>(request.stretch), request.low, request.high,
                    request.stretchEach};
  return wanted;
}

PictureInfo InfoOf(const ::core::FileView& view) {
  PictureInfo info = {view.FullWidth(), view.FullHeight(), view.Width(), view.Height(), {}};
  for (const ::core::LeftOut& missing : view.Missing())
    info.missing.push_back({missing.segment, missing.words});
  return info;
}

// Begins a picture and, with somewhere for its rows to go, draws it.
PictureInfo DrawFile(const ::core::Survey& survey, const PictureRequest& request,
                     const ::core::FileView::TakeRow& take) {
  if (request.scale == 0 || !(request.low >= 0 && request.low < request.high && request.high <= 100))
    throw Error(ErrorKind::Invalid, "the scale or the percentages make no sense");
  const media::WorkLimit limit(survey.file.Size());
  const ::core::ViewRequest wanted = ViewOf(request);
  ::core::FileView view(survey, wanted);
  ::core::SampleFault fault = view.Start();
  if (!fault.Met() && take) {
    media::AllowPixels(view.PixelsToMake());
    fault = view.Draw(take);
  }
  if (fault.Met()) throw Error(KindOf(fault.outcome), fault.words);
  return InfoOf(view);
}

}  // namespace

PictureInfo File::DescribePicture(const PictureRequest& request) const {
  return Guarded([&] { return DrawFile(state_->survey, request, {}); });
}

PictureInfo File::Draw(const PictureRequest& request,
                       const std::function<bool(uint32_t, const uint8_t*)>& take) const {
  return Guarded([&] {
    if (!take) throw Error(ErrorKind::Invalid, "there is nothing that takes the rows");
    return DrawFile(state_->survey, request, [&](uint32_t row, const uint8_t* rgb) {
      try {
        return take(row, rgb);
      } catch (...) {
        return false;
      }
    });
  });
}

Samples File::ReadSamples(const SegmentInfo& image, const SampleRequest& request) const {
  return Guarded([&] {
    const SurveyedPart& part = state_->Part(image);
    if (part.kind != ::core::PartKind::Image)
      throw Error(ErrorKind::Invalid, "the segment is no image", image.title);
    const media::WorkLimit limit(Size());
    ::core::SampleRequest wanted;
    wanted.row = request.row;
    wanted.column = request.column;
    wanted.rows = request.rows;
    wanted.columns = request.columns;
    wanted.bands = request.bands;
    wanted.reduce = request.reduce;
    wanted.progress = Calm(request.progress);
    media::AllowPixels(::core::SamplesAskedFor(part, wanted));
    ::core::SampleImage samples;
    // What a reading leaves serves the next one where it ends well.
    ::core::StreamCache streams;
    if (std::exchange(state_->readImage, &part) == &part) streams = std::exchange(state_->reading, {});
    const ::core::SampleFault fault =
        ::core::ReadSamples(state_->survey, part, wanted, samples, &streams);
    if (fault.Met()) throw ErrorOf(fault, image, part);
    state_->reading = std::move(streams);
    return SamplesOf(std::move(samples));
  });
}

const char* Version() { return ORBNTF_VERSION; }

}  // namespace orbntf::core
