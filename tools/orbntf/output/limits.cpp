#include "tools/orbntf/output/limits.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <limits>

#include "core/format/bytes.h"

namespace tool {
namespace {

// "512M" as bytes; 0 for another text.
uint64_t BytesOf(const std::string& text) {
  constexpr std::string_view kUnits = "KMG";
  const size_t unit = text.empty() ? std::string_view::npos : kUnits.find(text.back());
  const size_t digits = text.size() - (unit == std::string_view::npos ? 0 : 1);
  const int shift = unit == std::string_view::npos ? 0 : 10 * static_cast<int>(unit + 1);
  uint64_t number = 0;
  const std::from_chars_result parsed = std::from_chars(text.data(), text.data() + digits, number);
  const bool isNumber = parsed.ec == std::errc() && parsed.ptr == text.data() + digits;
  return isNumber && number <= uint64_t{std::numeric_limits<int64_t>::max()} >> shift ? number << shift
                                                                                      : 0;
}

}  // namespace

std::string TakeLimits(uint32_t seconds, const std::string& memory) {
  if (!memory.empty()) {
    const uint64_t bytes = BytesOf(memory);
    if (bytes == 0) return "--memory-limit takes bytes, or a number with K, M or G: 512M";
    rlimit limit{};
    if (getrlimit(RLIMIT_AS, &limit) != 0) return "--memory-limit: " + core::WordsOfErrno(errno);
    limit.rlim_cur = std::min<rlim_t>(bytes, limit.rlim_max);
    if (setrlimit(RLIMIT_AS, &limit) != 0) return "--memory-limit: " + core::WordsOfErrno(errno);
  }
  if (seconds != 0) (void)alarm(seconds);
  return "";
}

}  // namespace tool
