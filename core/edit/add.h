// New segments: pictures, metafiles, texts and data.
#pragma once

#include "core/edit/segments.h"
#include "core/edit/store.h"

namespace core {

/// What the headers of new segments have in common.
struct Labels {
  std::string date;            ///< CCYYMMDDhhmmss
  std::string classification;  ///< T, S, C, R or U; empty for U
};

/// Now in UTC, or the time that SOURCE_DATE_EPOCH names, as CCYYMMDDhhmmss.
std::string DateNow();

/// Adds stored images, each below the one before. The first one.
DraftPart& AddImages(Draft& draft, std::vector<StoredImage> images, const Placing& placing,
                     const Labels& labels);
/// Adds a metafile as it is, its upper left corner at a place. EditError for bytes that are none.
DraftPart& AddGraphic(Draft& draft, const std::string& metafile, const Placing& placing,
                      const Labels& labels);
/// Adds a text as it is, in the first of the forms STA, UT1 and U8S that has its characters.
DraftPart& AddText(Draft& draft, const std::string& text, const Labels& labels);
/// Adds a data extension of a registered name.
DraftPart& AddData(Draft& draft, const std::string& name, uint32_t version, std::string data,
                   const Labels& labels);

/// Puts another picture in place of an image's: what its fields say of pixels follows, all others stay.
void ReplaceImage(Draft& draft, size_t index, StoredImage image, bool isAnother);
/// Puts other data in place of a segment's. EditError where it does not fit its length.
void ReplaceData(DraftPart& part, const std::string& data);

/// A file header without segments, of a date.
Draft NewFile(const Labels& labels);

}  // namespace core
