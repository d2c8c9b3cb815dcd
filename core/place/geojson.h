// Places as GeoJSON (RFC 7946).
#pragma once

#include <string_view>

#include "core/format/geography.h"
#include "core/format/json_text.h"
#include "core/format/part.h"

namespace core {

/// Writes corners as a GeoJSON polygon, counterclockwise and closed; as two of them where they lie on
/// both sides of the 180th meridian (RFC 7946, 3.1.9).
void WritePolygon(JsonText& json, const GeographicCorners& corners);
/// Writes the corners in decimal degrees and, counterclockwise and closed, as a GeoJSON polygon; null
/// where there are none.
void WriteGeography(JsonText& json, char icords, std::string_view igeolo);
/// Writes an object of the fields of a header that mean more than a text, by mnemonic: what they mean.
void WriteValues(JsonText& json, const SurveyedPart& part);

}  // namespace core
