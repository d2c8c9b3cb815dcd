// Tagged records for people and as JSON.
#pragma once

#include "core/format/json_text.h"
#include "core/format/records.h"
#include "tools/orbntf/tool.h"

namespace tool {

/// Writes an array of objects.
void WriteRecords(JsonText& json, const std::vector<TaggedRecord>& records);
/// A line a field, for people.
std::string DescribeRecord(const TaggedRecord& record, const std::string& indent);

}  // namespace tool
