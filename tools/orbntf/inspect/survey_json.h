// A file's structure as JSON.
#pragma once

#include <string>

#include "core/format/records.h"
#include "core/format/survey.h"
#include "core/place/geojson.h"
#include "tools/orbntf/inspect/verdict.h"

namespace tool {

/// What there is to say of a file.
struct FileFacts {
  const Survey& survey;
  const RecordDefinitions& definitions;
  ModuleAnswer module;
  uint64_t width = 0, height = 0;  ///< of its picture; 0 for none
};

/// Writes an object; docs/info.schema.json describes it.
void WriteFile(JsonText& json, const std::string& path, const FileFacts& file);

/// What stands for a file that was not worked on, in the same form.
void WriteFailure(JsonText& json, const std::string& path, const std::string& words);

}  // namespace tool
