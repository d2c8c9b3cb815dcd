#include "tests/support/layout.h"

#include <stdexcept>
#include <vector>

namespace test {
namespace {

class Cursor {
 public:
  explicit Cursor(const std::string& bytes) : bytes_(bytes) {}
  std::string Take(size_t count) {
    if (count > bytes_.size() - at_) throw std::runtime_error("the file ends in its header");
    at_ += count;
    return bytes_.substr(at_ - count, count);
  }
  size_t Number(size_t width) {
    const std::string digits = Take(width);
    if (digits.find_first_not_of("0123456789") != std::string::npos)
      throw std::runtime_error("no number: " + digits);
    return std::stoull(digits);
  }
  size_t At() const { return at_; }

 private:
  const std::string& bytes_;
  size_t at_ = 0;
};

struct SegmentPlace {
  std::string mark;
  size_t subheader, data;
};

void TakeSegments(Cursor& header, std::vector<SegmentPlace>& segments, const char* mark,
                  size_t subheaderWidth, size_t dataWidth) {
  const size_t count = header.Number(3);
  for (size_t i = 0; i < count; ++i) {
    const size_t subheader = header.Number(subheaderWidth);
    segments.push_back({mark, subheader, header.Number(dataWidth)});
  }
}

std::string Check(const std::string& file) {
  Cursor header(file);
  if (header.Take(9) != "NITF02.10") return "not NITF 2.1";
  header.Take(333);
  const size_t fileLength = header.Number(12), headerLength = header.Number(6);
  std::vector<SegmentPlace> segments;
  TakeSegments(header, segments, "IM", 6, 10);
  TakeSegments(header, segments, "SY", 4, 6);
  if (header.Take(3) != "000") return "NUMX";
  TakeSegments(header, segments, "TE", 4, 5);
  TakeSegments(header, segments, "DE", 4, 9);
  if (header.Take(3) != "000") return "NUMRES";
  for (int i = 0; i < 2; ++i) header.Take(header.Number(5));
  if (header.At() != headerLength) return "HL";
  size_t at = headerLength;
  for (const SegmentPlace& segment : segments) {
    if (file.compare(at, 2, segment.mark) != 0) return "no " + segment.mark + " at " + std::to_string(at);
    at += segment.subheader + segment.data;
  }
  if (at != file.size())
    return "segments end at " + std::to_string(at) + " of " + std::to_string(file.size());
  return fileLength == file.size() ? "" : "FL";
}

// Where COMRAT of the first image stands: its fixed fields, IGEOLO and the comments lie in front.
size_t CompressionRateAt(const std::string& file) {
  constexpr size_t kHeaderLengthAt = 354, kCountAt = 360, kCoordinatesAt = 371;
  if (std::stoul(file.substr(kCountAt, 3)) == 0) return std::string::npos;
  size_t at = std::stoul(file.substr(kHeaderLengthAt, 6)) + kCoordinatesAt;
  at += file[at] == ' ' ? 1 : 61;
  at += 1 + 80 * static_cast<size_t>(file[at] - '0');
  const std::string code = file.substr(at, 2);
  return code == "NC" || code == "NM" ? std::string::npos : at + 2;
}

}  // namespace

std::string CheckLayout(const std::string& file) {
  try {
    return Check(file);
  } catch (const std::exception& error) {
    return error.what();
  }
}

std::string FirstCompressionRate(const std::string& file) {
  const size_t at = CompressionRateAt(file);
  return at == std::string::npos ? "" : file.substr(at, 4);
}

std::string WithCompressionRate(const std::string& file, const std::string& rate) {
  std::string changed = file;
  changed.replace(CompressionRateAt(file), 4, rate);
  return changed;
}

}  // namespace test
