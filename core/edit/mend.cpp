#include "core/edit/mend.h"

#include <algorithm>

#include "core/format/blocks.h"
#include "core/format/survey_fields.h"

namespace core {
namespace {

const char* MarkOf(PartKind kind) {
  constexpr const char* kMarks[] = {"", "IM", "SY", "TE", "DE", "RE"};
  return kMarks[static_cast<size_t>(kind)];
}

// A segment's two lengths, as one may be meant.
struct Lengths {
  uint64_t subheader, data;
};

// Goes through the segments one after the other, and sets lengths by which the next one is found.
class Mending {
 public:
  Mending(const Survey& survey, std::vector<MendedLength>& mended)
      : survey_(survey), mended_(mended), header_(PartKind::File, FrontOf(survey), {}) {}

  std::string Run() {
    if (!header_.Fields().complete) return header_.Header();
    const uint64_t size = survey_.file.Size();
    uint64_t at = BeginOfSegments();
    Set("HL", at);
    for (size_t i = 1; i < survey_.parts.size(); ++i) {
      if (!BeginsAt(i, at)) break;
      const Lengths found = LengthsOf(i, at);
      const ListLayout& list = kListLayouts[static_cast<size_t>(survey_.parts[i].kind) - 1];
      const std::string number = std::to_string(survey_.parts[i].index + 1);
      Set(list.subheader.name + number, found.subheader);
      Set(list.data.name + number, found.data);
      at += found.subheader + found.data;
    }
    Set("FL", size);
    return header_.Header();
  }

 private:
  static std::string FrontOf(const Survey& survey) {
    return survey.file.At(0, survey.Header().fieldsEnd);
  }

  void Set(const std::string& field, uint64_t value) {
    const std::string was(header_.Fields().Text(field));
    const std::string is = NumberDigits(value, was.size(), field);
    if (was == is) return;
    mended_.push_back({field, was, is});
    header_.Put(field, is);
  }

  // Whether the mark of a segment stands at a place; behind the last segment the end of the file.
  bool BeginsAt(size_t part, uint64_t at) const {
    if (part >= survey_.parts.size()) return at == survey_.file.Size();
    return survey_.file.At(at, 2) == MarkOf(survey_.parts[part].kind);
  }

  uint64_t BeginOfSegments() const {
    const SurveyedPart& header = survey_.Header();
    const bool isFound = header.headerLength >= header.fieldsEnd && BeginsAt(1, header.headerLength);
    return isFound || !BeginsAt(1, header.fieldsEnd) ? std::max(header.headerLength, header.fieldsEnd)
                                                     : header.fieldsEnd;
  }

  // What the subheader itself says of both lengths; of data that is compressed nothing.
  Lengths OwnLengths(size_t part, uint64_t at) const {
    constexpr uint64_t kMost = 999999;
    SurveyedPart own;
    own.kind = survey_.parts[part].kind;
    own.offset = at;
    own.headerLength = kMost;
    own.dataLength = 0;
    KeptData none = {0, 0};
    SurveySegment(survey_.file, own, none);
    if (!own.complete) return {survey_.parts[part].headerLength, UINT64_MAX};
    Lengths lengths = {own.fieldsEnd - at, UINT64_MAX};
    const Blocks blocks(own);
    if (own.kind == PartKind::Image && own.Text("IC") == "NC" && blocks.Known())
      lengths.data = blocks.Bytes();
    return lengths;
  }

  Lengths LengthsOf(size_t part, uint64_t at) const {
    const SurveyedPart& declared = survey_.parts[part];
    const Lengths stored = {declared.headerLength, declared.dataLength}, own = OwnLengths(part, at);
    const uint64_t size = survey_.file.Size();
    for (const uint64_t data : {stored.data, own.data}) {
      for (const uint64_t subheader : {stored.subheader, own.subheader}) {
        if (data <= size && subheader >= own.subheader && BeginsAt(part + 1, at + subheader + data))
          return {subheader, data};
      }
    }
    const uint64_t subheader =
        std::max(stored.subheader, own.subheader) == stored.subheader && at + stored.subheader <= size
            ? stored.subheader
            : own.subheader;
    if (part + 1 < survey_.parts.size()) return {subheader, stored.data};
    // The last one: what its pixels take, else what there is of it.
    const uint64_t left = size - std::min(size, at + subheader);
    if (own.data <= left) return {subheader, own.data};
    return {subheader, stored.data != 0 && stored.data <= left ? stored.data : left};
  }

  const Survey& survey_;
  std::vector<MendedLength>& mended_;
  DraftPart header_;
};

}  // namespace

std::string MendedFront(const Survey& survey, std::vector<MendedLength>& mended) {
  return Mending(survey, mended).Run();
}

}  // namespace core
