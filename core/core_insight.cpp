// What the library's surface tells beyond fields and samples: places, masks, pages, differences.
#include <algorithm>
#include <cerrno>
#include <cmath>

#include "core/compare/compare.h"
#include "core/core_state.h"
#include "core/format/jpeg_stream.h"
#include "core/place/geojson.h"
#include "core/report/report.h"
#include "core/samples/samples.h"
#include "core/view/mask_rows.h"
#include "media/work.h"

namespace orbntf::core {
namespace {

const SurveyedPart& ImageOf(const SurveyedPart& part) {
  if (part.kind != ::core::PartKind::Image)
    throw Error(ErrorKind::Invalid, "the segment is no image", part.Title());
  return part;
}

std::vector<Difference> DifferencesOf(const ::core::Comparison& comparison) {
  std::vector<Difference> all;
  const auto take = [&](Difference::Kind kind, const std::vector<::core::TextDifference>& texts) {
    for (const ::core::TextDifference& text : texts)
      all.push_back({kind, text.part, text.name, text.field, text.a, text.b, ""});
  };
  const auto length = [](const std::optional<uint64_t>& bytes) {
    return bytes ? std::optional(std::to_string(*bytes)) : std::nullopt;
  };
  take(Difference::Kind::Field, comparison.fields);
  take(Difference::Kind::Record, comparison.records);
  for (const ::core::DataDifference& data : comparison.segments)
    all.push_back({Difference::Kind::Data, data.part, "", "", length(data.a), length(data.b),
                   data.firstOffset ? "from byte " + std::to_string(*data.firstOffset) : ""});
  for (const ::core::SampleDifference& samples : comparison.samples)
    all.push_back({Difference::Kind::Samples, samples.part, "", "", {}, {}, WordsOf(samples)});
  return all;
}

// Notes which pixels of some samples a mask leaves out.
void MaskOf(const SurveyedPart& part, const Samples& samples, const SampleRequest& request,
            std::vector<uint8_t>& there) {
  ::core::SampleImage form;
  (void)::core::DescribeSamples(part, form);
  ::core::ShownBands shown;
  shown.bands = request.bands;
  form.bands = samples.bands;
  form.kind = ::core::SampleKind::Unsigned;  // what is no number is there
  for (uint32_t band = 0; request.bands.empty() && band < samples.bands; ++band)
    shown.bands.push_back(band);
  const ::core::MaskRows mask(part, form, shown);
  std::vector<uint8_t> row(samples.width);
  const size_t stride = size_t{samples.width} * samples.bands * samples.sampleBytes;
  for (uint32_t y = 0; mask.LeavesOut() && y < samples.height; ++y) {
    mask.Look(request.row + y, request.column, &samples.data[y * stride], row);
    std::copy(row.begin(), row.end(), there.begin() + static_cast<ptrdiff_t>(y * row.size()));
  }
}

}  // namespace

const ::core::PlaceModel& File::State::Model(const SurveyedPart& image) const {
  const auto [found, isNew] = placed.try_emplace(image.index);
  if (isNew) found->second = ::core::PlaceOf(image, survey.Header(), definitions);
  if (found->second.model == nullptr)
    throw Error(ErrorKind::Invalid, "nothing that is used tells where it lies", image.Title());
  return *found->second.model;
}

std::string File::ValuesJson(const SegmentInfo& segment) const {
  return Guarded([&] {
    ::core::JsonText json(false);
    ::core::WriteValues(json, state_->Part(segment));
    return json.Text();
  });
}

GroundPlace File::ToGround(const SegmentInfo& image, double row, double column,
                           std::optional<double> height) const {
  return Guarded([&] {
    const SurveyedPart& part = ImageOf(state_->Part(image));
    const ::core::PlaceModel& model = state_->Model(part);
    ::core::GroundPoint ground{};
    const std::string words =
        model.ToGround({row, column}, height.value_or(model.Height().value_or(0)), ground);
    if (!words.empty()) throw Error(ErrorKind::Invalid, words, image.title);
    return GroundPlace{ground.latitude, ground.longitude,
                       model.Height() ? std::optional(ground.height) : std::nullopt, model.Name(),
                       model.Error()};
  });
}

ImagePlace File::ToImage(const SegmentInfo& image, double latitude, double longitude,
                         std::optional<double> height) const {
  return Guarded([&] {
    const SurveyedPart& part = ImageOf(state_->Part(image));
    if (!(std::abs(latitude) <= 90) || !(std::abs(longitude) <= 360))
      throw Error(ErrorKind::Invalid, "a latitude is -90 to 90, a longitude -360 to 360", image.title);
    const ::core::PlaceModel& model = state_->Model(part);
    ::core::ImagePoint point{};
    const std::string words =
        model.ToImage({latitude, longitude, height.value_or(model.Height().value_or(0))}, point);
    if (!words.empty()) throw Error(ErrorKind::Invalid, words, image.title);
    return ImagePlace{point.row, point.column, model.Name(), model.Error()};
  });
}

std::string File::Report(const std::string& title) const {
  return Guarded([&] {
    const media::WorkLimit limit(Size());
    const std::string& path = state_->survey.path;
    const std::string name = !title.empty() ? title : path.substr(path.rfind('/') + 1);
    const auto page = [&](::core::ReportedFile& file) {
      return ::core::PageOf(Version(), name, {::core::ReportOf(file)}, {name});
    };
    if (state_->memory.data() != nullptr) {
      ::core::ReportedFile file(state_->memory, name, "f1", state_->definitions);
      return page(file);
    }
    // The file that is open, whatever has its name by now.
    const int again = state_->survey.file.Again();
    if (again < 0) throw Error(ErrorKind::Unreadable, ::core::WordsOfErrno(errno));
    ::core::ReportedFile file(again, Size(), name, "f1", state_->definitions);
    return page(file);
  });
}

Samples File::DescribeSamples(const SegmentInfo& image) const {
  return Guarded([&] {
    const SurveyedPart& part = ImageOf(state_->Part(image));
    ::core::SampleImage form;
    const ::core::SampleFault fault = ::core::DescribeSamples(part, form);
    if (fault.Met()) throw ErrorOf(fault, image, part);
    form.width = static_cast<uint32_t>(std::max<int64_t>(0, part.Number("NCOLS")));
    form.height = static_cast<uint32_t>(std::max<int64_t>(0, part.Number("NROWS")));
    if (part.Text("IC") != "I1") return SamplesOf(std::move(form));
    // A downsampled image has the size of its stream.
    const auto& streams = state_->survey.JpegStreams(part);
    if (streams.empty())
      throw Error(ErrorKind::Damaged, "no stream was found", image.title, part.dataOffset);
    form.width = std::min(form.width, streams[0].stream.width);
    form.height = std::min(form.height, streams[0].stream.height);
    return SamplesOf(std::move(form));
  });
}

std::vector<uint8_t> File::ReadMask(const SegmentInfo& image, const SampleRequest& request) const {
  if (request.reduce != 0) throw Error(ErrorKind::Invalid, "a mask is not reduced", image.title);
  return Guarded([&] {
    const SurveyedPart& part = ImageOf(state_->Part(image));
    const Samples form = DescribeSamples(image);
    const bool isThere = request.row < form.height && request.column < form.width &&
                         std::all_of(request.bands.begin(), request.bands.end(),
                                     [&](uint32_t band) { return band < form.bands; });
    if (!isThere)
      throw Error(ErrorKind::Invalid, "the window or a band is not of the image", image.title);
    const auto side = [](uint64_t begin, uint64_t count, uint64_t all) {
      return static_cast<size_t>(count == 0 ? all - begin : std::min(count, all - begin));
    };
    const size_t width = side(request.column, request.columns, form.width),
                 height = side(request.row, request.rows, form.height);
    std::vector<uint8_t> there(width * height, 1);
    if (part.IsMasked()) MaskOf(part, ReadSamples(image, request), request, there);
    return there;
  });
}

std::vector<Difference> Compare(const File& a, const File& b) {
  return Guarded([&] {
    const media::WorkLimit limit(std::max(a.Size(), b.Size()));
    return DifferencesOf(::core::Compare(a.state_->survey, b.state_->survey, a.state_->definitions));
  });
}

}  // namespace orbntf::core
