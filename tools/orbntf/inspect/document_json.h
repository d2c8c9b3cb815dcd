// A document as JSON.
#pragma once

#include <string>

#include "Common/NitfFile.h"
#include "core/format/records.h"
#include "core/place/geojson.h"
#include "tools/orbntf/tool.h"

namespace tool {

/// A file as far as it could be read.
struct Inspection {
  NitfFile document;
  int32_t status = 0;  ///< what the module answers
  uint32_t width = 0, height = 0;

  /// Reads what the module reads; what it refuses is read on as far as the structure allows.
  void Read(const std::string& path);
};

/// The tagged records of a file's headers.
class RecordLists {
 public:
  RecordLists(const std::string& path, const RecordDefinitions& definitions)
      : survey_(path), definitions_(definitions) {}
  std::vector<TaggedRecord> Of(PartKind kind, uint32_t index) const;
  /// Writes those of a header as a member, where there are any.
  void Write(JsonText& json, PartKind kind, uint32_t index) const;
  void Write(JsonText& json, SegmentKind kind, uint32_t index) const;

 private:
  Survey survey_;
  const RecordDefinitions& definitions_;
};

/// Writes an object; docs/info.schema.json describes it.
void WriteFile(JsonText& json, const std::string& path, const Inspection& file,
               const RecordLists& records);

/// What stands for a file that was not worked on, in the same form.
void WriteFailure(JsonText& json, const std::string& path, const std::string& words);

}  // namespace tool
