#include "core/format/survey.h"

#include <algorithm>

#include "core/format/streaming.h"
#include "core/format/survey_fields.h"

namespace core {
namespace {

// The file header's list of segments, as parts without their fields.
void TakeLists(FieldTaker& taker, SurveyedPart& header, std::vector<SurveyedPart>& segments) {
  constexpr PartKind kKinds[] = {PartKind::Image, PartKind::Graphic, PartKind::Text,
                                 PartKind::DataExtension, PartKind::Reserved};
  for (size_t kind = 0; kind < kListLayouts.size(); ++kind) {
    const ListLayout& list = kListLayouts[kind];
    if (kKinds[kind] == PartKind::Text) taker.Take(kReservedCountLayout);
    taker.Take(list.count);
    const int64_t count = header.Number(list.count.name);
    for (int64_t i = 0; i < count && !taker.Ended(); ++i) {
      const std::string number = std::to_string(i + 1);
      taker.Take(list.subheader, "", number);
      taker.Take(list.data, "", number);
      if (taker.Ended()) break;
      SurveyedPart part;
      part.kind = kKinds[kind];
      part.index = static_cast<uint32_t>(i);
      part.headerLength =
          static_cast<uint64_t>(std::max<int64_t>(0, header.Number(list.subheader.name + number)));
      part.dataLength =
          static_cast<uint64_t>(std::max<int64_t>(0, header.Number(list.data.name + number)));
      segments.push_back(std::move(part));
    }
  }
}

constexpr uint64_t kLongestHeader = 999999 + 999 * 60;

void SurveyHeader(std::string bytes, std::vector<SurveyedPart>& parts) {
  std::vector<SurveyedPart> segments;
  SurveyedPart& header = parts.emplace_back();
  FieldTaker taker(std::move(bytes), header);
  taker.Take(kFileFrontLayout);
  taker.Take(kSecurityLayout, "FS");
  taker.Take(kFileMiddleLayout);
  TakeLists(taker, header, segments);
  taker.TakeArea(kFileUserArea);
  taker.TakeArea(kFileArea);
  taker.Finish();
  // Segments stand where HL says that they begin, which may be behind the last field.
  header.headerLength = static_cast<uint64_t>(std::max<int64_t>(0, header.Number("HL")));
  parts.insert(parts.end(), std::make_move_iterator(segments.begin()),
               std::make_move_iterator(segments.end()));
}

}  // namespace

SurveyedPart SurveyFileHeader(std::string bytes) {
  std::vector<SurveyedPart> parts;
  SurveyHeader(std::move(bytes), parts);
  return std::move(parts.front());
}

bool WaitsForLengths(const FileBytes& file, const std::vector<SurveyedPart>& parts) {
  const SurveyedPart& header = parts.front();
  if (IsPlaceholder(header.Text("FL")) || IsPlaceholder(header.Text("HL"))) return true;
  // A length may really be all nines.
  uint64_t end = header.headerLength;
  for (size_t i = 1; i < parts.size(); ++i) end += parts[i].headerLength + parts[i].dataLength;
  bool any = false;
  header.ForEachField([&](const SurveyedField& field) {
    any = any || (field.name[0] == 'L' && IsPlaceholder(field.text));
  });
  return any && end > file.Size();
}

Survey::Survey(const std::string& from) : path(from), file(from) { Take(); }
Survey::Survey(std::string_view memory) : file(memory) { Take(); }
Survey::Survey(int descriptor, uint64_t size) : file(descriptor, size) { Take(); }
Survey::Survey(const std::string& from, std::string front) : path(from), file(from) {
  file.Replace(std::move(front));
  Take();
}

void Survey::Take() {
  if (!file.IsOpen()) {
    parts.emplace_back();
    return;
  }
  SurveyHeader(file.At(0, kLongestHeader), parts);
  if (WaitsForLengths(file, parts)) {
    if (std::string front = FindReplacement(file); !front.empty()) {
      replacementBytes = front.size();
      replacementAt = file.Size() - kStreamingMargin - replacementBytes;
      file.Replace(std::move(front));
      streamed = true;
      parts.clear();
      SurveyHeader(file.At(0, kLongestHeader), parts);
    }
  }
  waits = WaitsForLengths(file, parts);
  segmentsEnd = parts[0].headerLength;
  KeptData left;
  for (size_t i = 1; i < parts.size(); ++i) {
    SurveyedPart& part = parts[i];
    part.offset = segmentsEnd;
    part.dataOffset = part.offset + part.headerLength;
    segmentsEnd = part.dataOffset + part.dataLength;
    SurveySegment(file, part, left);
  }
}

const std::vector<FoundJpeg>& Survey::JpegStreams(const SurveyedPart& image) const {
  const std::lock_guard lock(finding_);
  const auto found = streams_.find(&image);
  if (found != streams_.end()) return found->second;
  return streams_[&image] = FindJpegStreams(file, image);
}

const SurveyedPart* Survey::Find(PartKind kind, uint32_t index) const {
  const auto found = std::find_if(parts.begin(), parts.end(), [&](const SurveyedPart& part) {
    return part.kind == kind && part.index == index;
  });
  return found != parts.end() ? &*found : nullptr;
}

uint32_t Survey::Count(PartKind kind) const {
  return static_cast<uint32_t>(std::count_if(
      parts.begin(), parts.end(), [&](const SurveyedPart& part) { return part.kind == kind; }));
}

std::string Survey::Data(const SurveyedPart& part, uint64_t limit) const {
  return file.At(part.dataOffset, std::min(part.dataLength, limit));
}

bool Survey::HoldsData(const SurveyedPart& part) const {
  return part.dataOffset <= file.Size() && part.dataLength <= file.Size() - part.dataOffset;
}

}  // namespace core
