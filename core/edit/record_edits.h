// Changing the tagged records of headers (STDI-0002).
#pragma once

#include "core/edit/draft.h"
#include "core/format/records.h"

namespace core {

/// A record of a header: the file header's, or a segment's.
struct RecordName {
  PartKind kind = PartKind::File;
  size_t index = 0;  ///< of the segment
  std::string tag;
  int64_t number = 1;  ///< among those of its tag, from 1
};

/// Sets a field of a record by its definition; "NAME:2" is the second one of a name. EditError.
void SetRecordField(Draft& draft, const RecordName& name, const RecordDefinitions& definitions,
                    const std::string& field, const std::string& value);
/// Gives a record other data, where it stands; one that is not there goes into the extended area, or into
/// a data extension for what overflows. EditError.
void PutRecord(Draft& draft, const RecordName& name, const std::string& data);
/// Takes a record out. EditError where it is not there.
void RemoveRecord(Draft& draft, const RecordName& name);

}  // namespace core
