#include "core/check/rule.h"

#include "core/format/allowed.h"
#include "core/format/interruption.h"
#include "core/format/words.h"

namespace core {
namespace {

bool IsAbout(On on, PartKind kind) {
  switch (on) {
    case On::File:
      return kind == PartKind::File;
    case On::Image:
      return kind == PartKind::Image;
    case On::Graphic:
      return kind == PartKind::Graphic;
    case On::Text:
      return kind == PartKind::Text;
    case On::Extension:
      return kind == PartKind::DataExtension;
    case On::Header:
      return true;
  }
  return false;
}

}  // namespace

const char* NameOf(Severity severity) {
  constexpr const char* kNames[] = {"note", "warning", "error"};
  return kNames[static_cast<size_t>(severity)];
}

std::vector<const Rule*> AllRules() {
  std::vector<const Rule*> all;
  for (const Rules rules : {kFileRules, kLengthRules, kLevelRules, kSecurityRules, kRecordRules,
                            kImageRules, kPixelRules, kBlockRules, kPlaceRules, kMaskRules, kJpegRules,
                            kStreamRules, kGraphicRules, kTextRules, kExtensionRules, kProfileRules}) {
    for (const Rule& rule : rules) all.push_back(&rule);
  }
  return all;
}

void Checking::Ask(const Rule& rule, const SurveyedPart& part) {
  asked_ = &rule;
  rule.ask(*this, part);
}

const std::vector<FoundJpeg>& Checking::JpegStreams(const SurveyedPart& part) const {
  return survey.JpegStreams(part);
}

const Metafile& Checking::MetafileOf(const SurveyedPart& part) const {
  const auto [found, isNew] = metafiles_.try_emplace(&part);
  Metafile& metafile = found->second;
  if (isNew && part.complete && part.Text("SFMT") == "C")
    metafile.elements =
        WalkMetafile(PartBytes(survey.file, part.dataOffset, part.dataLength), metafile.whole);
  return metafile;
}

const Codestream& Checking::CodestreamOf(const SurveyedPart& part) const {
  const auto [found, isNew] = codestreams_.try_emplace(&part);
  if (isNew) found->second = ReadCodestream(survey.file, part);
  return found->second;
}

const std::vector<TaggedRecord>& Checking::Records(const SurveyedPart& part) const {
  const auto found = records_.find(&part);
  if (found != records_.end()) return found->second;
  return records_[&part] = RecordsOf(part, definitions);
}

bool Checking::Run(const std::function<bool(double)>& progress) {
  const std::vector<const Rule*> rules = AllRules();
  const double all = static_cast<double>(survey.parts.size());
  // A file of another version is read by no table of this one: its mark is all that is told.
  const std::string mark =
      std::string(survey.Header().Text("FHDR")) + std::string(survey.Header().Text("FVER"));
  const bool isOther = mark.size() == 9 && mark != "NITF02.10" && mark != "NSIF01.00" &&
                       (mark.substr(0, 4) == "NITF" || mark.substr(0, 4) == "NSIF");
  for (size_t i = 0; i < survey.parts.size(); ++i) {
    const SurveyedPart& part = survey.parts[i];
    for (size_t n = 0; n < rules.size(); ++n) {
      if (!IsAbout(rules[n]->on, part.kind) || (isOther && rules[n] != rules[0])) continue;
      const double done =
          static_cast<double>(i) + static_cast<double>(n) / static_cast<double>(rules.size());
      if (progress && !progress(done / all)) return false;
      Interruption::Ask();
      Ask(*rules[n], part);
    }
  }
  return true;
}

void Checking::Fail(const SurveyedPart& part, const std::string& field, const std::string& words) {
  const std::optional<SurveyedField> found = part.Find(field);
  findings.push_back({asked_, part.Title(), field, found ? found->offset : part.offset, words});
}

void Checking::FailUnlessAllowed(const SurveyedPart& part, const std::string& field) {
  if (part.Has(field) && !IsAllowed(field, part.Text(field))) FailAt(part, field);
}

void Checking::FailAt(const SurveyedPart& part, const std::string& field) {
  Fail(part, field, field + " is " + Quoted(part.Text(field)));
}

void Checking::FailAt(const SurveyedPart& part, const std::string& field, uint64_t offset,
                      const std::string& words) {
  findings.push_back({asked_, part.Title(), field, offset, words});
}

void Checking::FailAtLength(const SurveyedPart& part, bool isData, const std::string& words) {
  const ListLayout& list = kListLayouts[static_cast<size_t>(part.kind) - 1];
  const std::string name = (isData ? list.data : list.subheader).name + std::to_string(part.index + 1);
  const std::optional<SurveyedField> field = survey.Header().Find(name);
  FailAt(part, name, field ? field->offset : part.offset, words);
}

std::string Count(uint64_t number, const std::string& one) {
  return std::to_string(number) + " " + one + (number == 1 ? "" : "s");
}

void Checking::FailAtByte(const SurveyedPart& part, uint64_t offset, const std::string& words) {
  findings.push_back({asked_, part.Title(), asked_->field, offset, words});
}

}  // namespace core
