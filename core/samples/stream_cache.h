// What one reading of an image leaves for the next.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "core/format/jpeg_stream.h"

namespace core {

class JpegRun;
struct FacsimileRun;

/// What was found in an image's data and serves the next reading of it.
struct StreamCache {
  std::optional<std::vector<FoundJpeg>> jpeg;
  /// A stream of which rows were decoded, from its top down, to go on with.
  std::shared_ptr<JpegRun> run;
  std::shared_ptr<FacsimileRun> facsimile;
};

}  // namespace core
