// Adding segments to a document: what new and append share.
#pragma once

#include "tools/orbntf/document.h"
#include "tools/orbntf/inspect/load.h"

namespace tool {

/// One segment to add, in the order of the command line.
struct Item {
  std::string option;  // --image, --graphic or --text
  std::string path;
  int32_t quality = 40;
  bool lossless = false;
  bool placed = false;
  int32_t row = 0, column = 0;
};

/// Adds a segment and gives it its place; 1, or a status with what to say of it in `words`. What was lost
/// of a picture is told in `warning`.
int32_t AppendItem(Document& document, const Item& item, std::string& words, std::string& warning);

/// Adds an image that is stored as it is, uncompressed, in blocks of 1024 where a side exceeds 8192. A
/// status of the module.
int32_t AppendUncompressed(NitfHandle document, const Picture& picture);

/// Now in UTC, or SOURCE_DATE_EPOCH, as CCYYMMDDhhmmss.
std::string DateNow();

}  // namespace tool
