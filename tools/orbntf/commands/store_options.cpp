#include "tools/orbntf/commands/store_options.h"

#include <cstdlib>

namespace tool {
namespace {

constexpr StoreOption kOptions[] = {
    {"--lossless", "store the picture before as it is, uncompressed, at its own depth", false},
    {"--jpeg", "store it as JPEG of a quality from 1 to 100; 8 bits, and 12 of one band", true},
    {"--quality", "the same by a factor from 2 (best) to 255", true},
    {"--jpeg2000", "store it as JPEG 2000: lossless, or so many bits a sample", true},
    {"--as-is", "store a JPEG or JPEG 2000 file's own stream, decoding nothing", false},
    {"--block", "sides of blocks, up to 8192; else 1024 where a side exceeds 8192", true},
    {"--mode", "how bands lie: B, P, R or S", true},
    {"--masked", "leave out blocks whose pixels are all no data", false},
    {"--background", "#RRGGBB: what shines through transparent pixels", true},
    {"--page", "page of a TIFF file, from 0", true},
    {"--icords", "form of the corners of a picture that has a place: G, D, N, S or U", true}};

// A quality factor of 2 keeps the most, 255 the least.
std::string TakeFactor(const std::string& value, StoreOptions& options) {
  int32_t factor = 0;
  if (!ParseNumber(value, factor) || factor < 2 || factor > 255) return "--quality takes 2 to 255";
  options.way = StoreOptions::Way::Jpeg;
  options.quality = 100 - (factor - 2) * 99 / 253;
  return "";
}

std::string TakeJpeg2000(const std::string& value, StoreOptions& options) {
  options.way = StoreOptions::Way::Jpeg2000;
  if (value == "lossless") return "";
  char* end = nullptr;
  options.rate = std::strtod(value.c_str(), &end);
  const bool isRate = !value.empty() && *end == 0 && options.rate >= 0.01 && options.rate <= 38;
  return isRate ? "" : "--jpeg2000 takes lossless, or bits a sample from 0.01 to 38";
}

std::string TakeColour(const std::string& value, StoreOptions& options) {
  if (value.size() != 7 || value[0] != '#' ||
      value.find_first_not_of("0123456789abcdefABCDEF", 1) != std::string::npos)
    return "--background takes #RRGGBB";
  const auto rgb = std::stoul(value.substr(1), nullptr, 16);
  options.background = {static_cast<uint8_t>(rgb >> 16), static_cast<uint8_t>(rgb >> 8),
                        static_cast<uint8_t>(rgb)};
  return "";
}

std::string TakeNumber(const std::string& name, const std::string& value, StoreOptions& options) {
  uint32_t number = 0;
  const bool isNumber = ParseNumber(value, number);
  if (name == "--page") {
    options.page = number;
    return isNumber ? "" : "--page takes a number, from 0";
  }
  if (name == "--block") {
    options.block = number;
    return isNumber && number >= 8 && number <= 8192 ? "" : "--block takes 8 to 8192";
  }
  options.way = StoreOptions::Way::Jpeg;
  options.quality = static_cast<int>(number);
  return isNumber && number >= 1 && number <= 100 ? "" : "--jpeg takes a quality from 1 to 100";
}

}  // namespace

constexpr std::span<const StoreOption> kStoreOptions = kOptions;

std::string TakeStoreOption(const std::string& name, const std::string& value, StoreOptions& options) {
  if (name == "--lossless") options.way = StoreOptions::Way::Plain;
  if (name == "--as-is") options.isAsIs = true;
  if (name == "--masked") options.isMasked = true;
  if (name == "--masked" || name == "--as-is" || name == "--lossless") return "";
  if (name == "--quality") return TakeFactor(value, options);
  if (name == "--jpeg2000") return TakeJpeg2000(value, options);
  if (name == "--background") return TakeColour(value, options);
  if (name == "--icords") {
    const bool isForm =
        value.size() == 1 && std::string_view("GDNSU").find(value[0]) != std::string_view::npos;
    if (isForm) options.icords = value[0];
    return isForm ? "" : "--icords takes G, D, N, S or U";
  }
  if (name != "--mode") return TakeNumber(name, value, options);
  const bool isMode =
      value.size() == 1 && std::string_view("BPRS").find(value[0]) != std::string_view::npos;
  if (isMode) options.mode = value[0];
  return isMode ? "" : "--mode takes B, P, R or S";
}

void AddStoreOptions(const Command& command, StoreWords& words) {
  for (const StoreOption& option : kStoreOptions) {
    if (option.takesValue) {
      command.Take(option.name, words.values[option.name], option.description);
    } else {
      command.Flag(option.name, words.switches[option.name], option.description);
    }
  }
}

std::string StoreOptionsOf(const Command& command, const StoreWords& words, StoreOptions& options) {
  for (const std::string& name : command.Given()) {
    const auto value = words.values.find(name);
    if (value == words.values.end() && words.switches.count(name) == 0) continue;
    std::string problem =
        TakeStoreOption(name, value != words.values.end() ? value->second : "", options);
    if (!problem.empty()) return problem;
  }
  return "";
}

std::string ScratchFolderOf(const std::string& output) {
  const size_t slash = output.rfind('/');
  if (output == "-") return "";
  return slash == std::string::npos ? "." : output.substr(0, slash + 1);
}

}  // namespace tool
