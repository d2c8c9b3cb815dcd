// The tagged records of a header, decoded where a definition fits them.
#pragma once

#include "core/format/definitions.h"
#include "core/format/survey.h"

namespace core {

/// A field's text, or the turns of one that repeats.
struct DecodedField {
  const RecordField* field;
  std::string text;
  std::vector<std::vector<DecodedField>> turns;
};

/// A record as it stands, and what it says.
struct TaggedRecord {
  std::string area;  ///< UDHD, IXSHD, …
  std::string tag;
  uint64_t offset;  ///< of the tag in the file
  std::string bytes;
  std::string problem;  ///< why it is not decoded; empty where it is
  const RecordDefinition* definition = nullptr;
  std::vector<DecodedField> fields;
};

/// The tag, and the data's length of five digits, that a record begins with.
inline constexpr size_t kTagWidth = 6, kLengthWidth = 5;
/// The length of the data of the record that some bytes begin with; -1 where they begin with none.
int64_t RecordLengthAt(std::string_view bytes);

/// The records of one area. What follows a record that does not fit into it is one record without a tag.
std::vector<TaggedRecord> RecordsOf(const RecordArea& area, const RecordDefinitions& definitions);
/// Those of all areas of a part.
std::vector<TaggedRecord> RecordsOf(const SurveyedPart& part, const RecordDefinitions& definitions);

/// Takes a record's fields; false when they do not take exactly its bytes.
bool Decode(const RecordDefinition& definition, std::string_view bytes,
            std::vector<DecodedField>& fields);
/// Whether a field says nothing: blank, or dashes in a number.
bool IsAbsent(const DecodedField& field);
/// The number of a field of kind Number or Real; none where it is absent or no number.
std::optional<double> ValueOf(const DecodedField& field);
/// A field's value for people: of bytes the number.
std::string ShownText(const DecodedField& field);
/// The first field of a name outside groups; null when there is none.
const DecodedField* FindField(const std::vector<DecodedField>& fields, std::string_view name);

}  // namespace core
