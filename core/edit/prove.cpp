#include "core/edit/prove.h"

#include <algorithm>

#include "core/format/words.h"

namespace core {
namespace {

// Fields that follow from what is there.
bool Follows(const std::string& name) {
  if (name == "FL" || name == "HL" || name == "NUMX") return true;
  for (const ListLayout& list : kListLayouts) {
    const std::string stem = name.substr(0, name.find_first_of("0123456789"));
    if (stem == list.count.name || stem == list.subheader.name || stem == list.data.name) return true;
  }
  return false;
}

// A field of a header that was not asked to change, and did.
std::string OtherField(const DraftPart& part, const SurveyedPart& written) {
  if (part.Origin() == nullptr) return "";
  std::string other;
  part.Origin()->ForEachField([&](const SurveyedField& field) {
    const bool mayChange =
        part.named.count(field.name) != 0 || (part.kind == PartKind::File && Follows(field.name));
    if (!other.empty() || mayChange) return;
    const std::string stem = field.name.substr(0, field.name.find_first_of("0123456789"));
    const bool ofBands = stem == "IREPBAND" || stem == "ISUBCAT" || stem == "IFC" || stem == "IMFLT" ||
                         stem == "NLUTS" || stem == "NELUT" || stem == "LUTD";
    if (ofBands && part.named.count("NBANDS") != 0) return;
    if (written.Text(field.name) != field.text || !written.Has(field.name)) other = field.name;
  });
  return other;
}

std::string FaultOfSegment(const DraftPart& part, const ContentHash& hash, const Survey& written,
                           const SurveyedPart& now) {
  if (now.kind != part.kind) return "is another kind of segment";
  if (written.file.At(now.offset, now.headerLength) != part.Header()) return "has another subheader";
  if (const std::string other = OtherField(part, now); !other.empty()) return "has another " + other;
  const uint64_t there =
      std::min(now.dataLength, written.file.Size() - std::min(written.file.Size(), now.dataOffset));
  if (there != part.DataLength()) return "has another length";
  if (part.Origin() != nullptr && !part.otherData && now.dataLength != part.Origin()->dataLength)
    return "has another length than before";
  return HashOf(written.file, now.dataOffset, there) == hash ? "" : "has other data";
}

std::string FaultOf(const Draft& draft, const std::vector<ContentHash>& hashes, const Survey& written) {
  if (written.file.Size() != draft.Size()) return "the file has another size";
  if (const std::string other = OtherField(draft.file, written.Header()); !other.empty())
    return "the file header has another " + other;
  if (draft.segments.empty() && draft.Source() != nullptr && draft.Source()->parts.size() > 1) return "";
  if (written.parts.size() != draft.segments.size() + 1) return "it has another number of segments";
  for (size_t i = 0; i < draft.segments.size(); ++i) {
    const std::string fault = FaultOfSegment(draft.segments[i], hashes[i], written, written.parts[i + 1]);
    if (!fault.empty()) return written.parts[i + 1].Title() + " " + fault;
  }
  if (draft.Source() != nullptr &&
      draft.Source()->Header().Number("FL") == static_cast<int64_t>(draft.Source()->file.Size()) &&
      written.Header().Number("FL") != static_cast<int64_t>(written.file.Size()))
    return "FL is not the size of the file";
  return "";
}

// ---------------------------------------------------------------- rules

using Broken = std::multiset<std::string>;

// The errors of a file by rule, field and the part that it was before.
std::vector<Finding> ErrorsOf(const Survey& survey, const RecordDefinitions& definitions) {
  std::vector<Finding> errors;
  for (Finding& finding : FindFaults(survey, definitions)) {
    if (finding.rule->severity == Severity::Error) errors.push_back(std::move(finding));
  }
  return errors;
}

std::string KeyOf(const Finding& finding, const std::string& part) {
  return std::string(finding.rule->id) + '\n' + finding.field + '\n' + part;
}

// The part as it is called in the file that it comes from; what is new has no name there.
std::string NameBefore(const Draft& draft, const Survey& written, const std::string& title,
                       const Survey*& source) {
  source = draft.Source();
  if (title == written.Header().Title()) return title;
  for (size_t i = 0; i < draft.segments.size() && i + 1 < written.parts.size(); ++i) {
    if (written.parts[i + 1].Title() != title) continue;
    const DraftPart& part = draft.segments[i];
    source = part.Source();
    return part.Origin() != nullptr ? part.Origin()->Title() : "";
  }
  return title;
}

std::vector<std::string> NewErrors(const Draft& draft, const Survey& written,
                                   const RecordDefinitions& definitions) {
  std::vector<std::string> words;
  std::map<const Survey*, Broken> before;
  for (const Finding& finding : ErrorsOf(written, definitions)) {
    const Survey* source = nullptr;
    const std::string part = NameBefore(draft, written, finding.part, source);
    if (source != nullptr && before.count(source) == 0) {
      for (const Finding& old : ErrorsOf(*source, definitions))
        before[source].insert(KeyOf(old, old.part));
    }
    const auto known = source != nullptr ? before[source].find(KeyOf(finding, part)) : Broken::iterator();
    if (source != nullptr && known != before[source].end()) {
      before[source].erase(known);
    } else {
      words.push_back(std::string(finding.rule->id) + ": " + finding.part + ", " +
                      Printable(finding.words));
    }
  }
  return words;
}

}  // namespace

Proof Prove(const Draft& draft, const std::vector<ContentHash>& hashes, const std::string& path,
            const RecordDefinitions& definitions) {
  const Survey written(path);
  Proof proof;
  if (!written.file.IsOpen()) throw ReadError(path, "what was written cannot be read again");
  proof.fault = FaultOf(draft, hashes, written);
  if (proof.fault.empty()) proof.errors = NewErrors(draft, written, definitions);
  return proof;
}

Proof WriteProven(Draft& draft, int descriptor, const std::string& path,
                  const RecordDefinitions& definitions) {
  draft.Finish();
  PieceWriter writer(descriptor);
  std::vector<ContentHash> hashes;
  draft.Write(writer, hashes);
  return Prove(draft, hashes, path, definitions);
}

}  // namespace core
