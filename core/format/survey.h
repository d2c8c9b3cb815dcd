// A file's structure, field by field, as far as its lengths lead.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "core/format/bytes.h"
#include "core/format/jpeg_stream.h"
#include "core/format/part.h"

namespace core {

/// The fields of a file header that begins with some bytes.
SurveyedPart SurveyFileHeader(std::string bytes);

class Survey {
 public:
  explicit Survey(const std::string& path);
  /// Of bytes that the caller keeps where they are.
  explicit Survey(std::string_view memory);
  /// Of an open file of a size, which is closed with this.
  Survey(int descriptor, uint64_t size);
  /// Of a file whose first bytes are read as others.
  Survey(const std::string& path, std::string front);

  const std::string path;
  FileBytes file;
  bool streamed = false;       ///< the front is that of a streaming file header's replacement data
  uint64_t replacementAt = 0;  ///< where that data is, which begins as the file does
  uint64_t replacementBytes = 0;
  bool waits = false;               ///< lengths of its header are placeholders
  std::vector<SurveyedPart> parts;  ///< the file header and the segments in file order
  uint64_t segmentsEnd = 0;         ///< where the lengths say that the last one ends

  const SurveyedPart& Header() const { return parts.front(); }
  const SurveyedPart* Find(PartKind kind, uint32_t index) const;
  uint32_t Count(PartKind kind) const;
  /// What there is of a segment's data; at most `limit` bytes.
  std::string Data(const SurveyedPart& part, uint64_t limit = UINT64_MAX) const;
  /// Whether all of a segment's data is there.
  bool HoldsData(const SurveyedPart& part) const;
  /// The JPEG streams of an image's data, which is walked once; from any thread.
  const std::vector<FoundJpeg>& JpegStreams(const SurveyedPart& image) const;

 private:
  void Take();

  mutable std::mutex finding_;
  mutable std::map<const SurveyedPart*, std::vector<FoundJpeg>> streams_;
};

}  // namespace core
