#include "core/format/streaming.h"

#include "core/format/words.h"

namespace core {
namespace {

constexpr uint64_t kMark = 4, kLength = 7;
static_assert(kMark + kLength == kStreamingMargin);
constexpr std::string_view kFirst = "\x0A\x6E\x1D\x97", kSecond = "\x0E\xCA\x14\xBF";

}  // namespace

std::string FindReplacement(const FileBytes& file) {
  if (file.Size() < 2 * kStreamingMargin) return "";
  const std::string tail = file.At(file.Size() - kStreamingMargin, kStreamingMargin);
  const int64_t length = DigitsOf(tail.substr(kMark));
  if (tail.compare(0, kMark, kSecond) != 0 || length < 0) return "";
  const auto bytes = static_cast<uint64_t>(length);
  if (bytes > file.Size() - 2 * kStreamingMargin) return "";
  const std::string all = file.At(file.Size() - 2 * kStreamingMargin - bytes, kStreamingMargin + bytes);
  if (all.compare(kLength, kMark, kFirst) != 0) return "";
  return all.substr(kStreamingMargin);
}

std::vector<DataField> StreamingFields(const FileBytes& file, const SurveyedPart& part) {
  if (part.kind != PartKind::DataExtension || part.Trimmed("DESID") != "STREAMING_FILE_HEADER" ||
      part.dataLength < 2 * kStreamingMargin || part.dataOffset > file.Size() ||
      part.dataLength > file.Size() - part.dataOffset)
    return {};
  const uint64_t begin = part.dataOffset, room = part.dataLength - 2 * kStreamingMargin;
  const std::string front = file.At(begin, kStreamingMargin);
  const int64_t length = DigitsOf(front.substr(0, kLength));
  if (front.compare(kLength, kMark, kFirst) != 0 || length < 0 || static_cast<uint64_t>(length) > room)
    return {};
  const uint64_t data = begin + kStreamingMargin, bytes = static_cast<uint64_t>(length);
  const std::string behind = file.At(data + bytes, kStreamingMargin);
  if (behind.compare(0, kMark, kSecond) != 0) return {};
  return {{"SFH_L1", begin, kLength, front.substr(0, kLength), "Bytes of the replacement data"},
          {"SFH_DELIM1", begin + kLength, kMark, HexOf(kFirst), "Mark in front of it"},
          {"SFH_DR", data, bytes, "", "Replacement data: the file's true first bytes"},
          {"SFH_DELIM2", data + bytes, kMark, HexOf(kSecond), "Mark behind it"},
          {"SFH_L2", data + bytes + kMark, kLength, behind.substr(kMark),
           "Bytes of the replacement data again"}};
}

}  // namespace core
