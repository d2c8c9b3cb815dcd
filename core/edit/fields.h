// Setting the fields of headers.
#pragma once

#include "core/edit/draft.h"

namespace core {

/// How a field is set.
struct FieldChange {
  std::string name;    ///< a mnemonic; under "all" one of classification without its header's prefix
  std::string value;   ///< UTF-8; bytes that are none are taken as they are
  bool force = false;  ///< take what the format does not allow
};

/// Sets a field of one part. ICORDS, NICOM and ICOMn move what follows. EditError.
void SetField(DraftPart& part, const FieldChange& change);
/// Sets a field of every part that has it. EditError where none has.
void SetEverywhere(Draft& draft, const FieldChange& change);

/// A value as a field of a width stores it. EditError names the character that does not fit.
std::string StoredText(const std::string& field, FieldForm form, size_t width, const std::string& value,
                       bool force);
/// The fields of a kind of header that can be set.
std::vector<std::string> SettableFields(PartKind kind);

}  // namespace core
