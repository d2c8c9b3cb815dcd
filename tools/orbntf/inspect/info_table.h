// What files hold, in tables and on maps.
#pragma once

#include "core/place/geojson.h"
#include "tools/orbntf/inspect/survey_json.h"

namespace tool {

/// The names of columns, a line.
std::string CsvHead(bool ofRecords);
/// A line of a file.
std::string CsvLine(const std::string& path, const FileFacts& file);
/// A line of a file that could not be worked on.
std::string CsvFailure(const std::string& path, const std::string& words, bool ofRecords);
/// A line for each field of each tagged record.
std::string CsvRecords(const std::string& path, const FileFacts& file);
/// A GeoJSON feature of the footprints of a file's images by their best models; its geometry is null
/// where there are none.
void WriteFeature(JsonText& json, const std::string& path, const Survey& survey,
                  const RecordDefinitions& definitions);

}  // namespace tool
