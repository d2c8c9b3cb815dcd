#include "tools/orbntf/inspect/explain.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Common/ImCodes.h"
#include "Common/ImgModes.h"
#include "core/format/bytes.h"
#include "core/format/part.h"
#include "core/format/words.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

std::string Quoted(const char* field) { return '"' + Printable(ToUtf8(field)) + '"'; }
std::string Named(const char* kind, uint32_t index) {
  return std::string(kind) + ' ' + std::to_string(index);
}

// The first image that a test holds for, described; images that did not parse are told by their fields
// as far as they were read.
template <class Test, class Words>
std::string OfImage(const NitfFile& document, Test test, Words words) {
  for (const ImageSubheader& image : document.images) {
    if (test(image)) return Named("image", image.index) + words(image);
  }
  return "";
}

std::string ExplainMark(const NitfFile& document) {
  const std::string_view mark(document.header.FHDR.text);
  if (mark == "NITF" || mark == "NSIF") return "";
  return "it begins with " + Quoted(document.header.FHDR.text) + ", not with NITF or NSIF";
}

// Where the file says that its segments end, and where it ends.
std::string ExplainShortFile(const std::string& path, const NitfFile& document) {
  struct stat file;
  if (stat(path.c_str(), &file) != 0 || !document.headerPresent) return "";
  const auto size = static_cast<uint64_t>(file.st_size);
  const auto there = ", the file has " + std::to_string(size);
  if (document.header.headerLength > size)
    return "HL claims " + std::to_string(document.header.headerLength) + " bytes" + there;
  for (const SegmentLengthFields& fields : kSegmentLengths) {
    const LengthTable& table = document.header.*fields.table;
    for (uint32_t i = 0; i < table.inFile.size(); ++i) {
      const SegmentLengths lengths = table.InFile(i);
      const uint64_t end =
          static_cast<uint64_t>(document.StartOf(fields.kind, i)) + lengths.subheader + lengths.data;
      if (end <= size) continue;
      return "segment " + std::to_string(i) + " of " + fields.countName + " ends at byte " +
             std::to_string(end) + there;
    }
  }
  for (const ImageSubheader& image : document.images) {
    const CheckedSize least = LeastDataBytes(image);
    const uint32_t stored = document.DataLength(SegmentKind::Image, image.index);
    if (least.Within(INT64_MAX) && least.Value() <= stored) continue;
    return Named("image", image.index) + "'s pixels take " +
           (least.Within(INT64_MAX) ? std::to_string(least.Value()) : "too many") +
           " bytes, its segment has " + std::to_string(stored);
  }
  return "";
}

std::string ExplainSize(const NitfFile& document) {
  const auto isEmpty = [](const ImageSubheader& image) {
    return image.FullWidth().Value() == 0 || image.FullHeight().Value() == 0;
  };
  const auto size = [](const ImageSubheader& image) {
    return std::to_string(image.NPPBH.value) + " x " + std::to_string(image.NPPBV.value) + " in " +
           std::to_string(image.NBPR.value) + " x " + std::to_string(image.NBPC.value) + " blocks";
  };
  std::string words =
      OfImage(document, isEmpty, [&](const auto& image) { return " has no pixels: " + size(image); });
  if (!words.empty()) return words;
  constexpr uint64_t kLarge = 1 << 28;
  const auto isLarge = [](const ImageSubheader& image) {
    const CheckedSize pixels = image.FullWidth() * image.FullHeight().Value();
    return !pixels.Within(kLarge);
  };
  return OfImage(document, isLarge, [&](const auto& image) { return " is large: " + size(image); });
}

}  // namespace

std::string WhyUnreadable(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return errno == ENOENT ? "no such file" : WordsOfErrno(errno);
  if (S_ISDIR(status.st_mode)) return "is a folder";
  if (!S_ISREG(status.st_mode)) return "is no regular file";
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return WordsOfErrno(errno);
  close(fd);
  return "";
}

std::string Explain(const std::string& path, const NitfFile& document, int32_t status) {
  const FileHeader& header = document.header;
  switch (status) {
    case ORB_BAD_VERSION:
      return "version " + Quoted(header.FVER.text) + "; this reader takes 02.10";
    case ORB_BAD_COMPLEXITY:
      return "complexity level " + Quoted(header.CLEVEL.text) + "; this reader takes 03";
    case ORB_BAD_STRUCTURE:
      return ExplainMark(document);
    case ORB_SHORT_READ:
      return ExplainShortFile(path, document);
    case ORB_OUT_OF_MEMORY:
      return ExplainSize(document);
    case ORB_BAD_PIXEL_TYPE:
      return OfImage(
          document, [](const auto& image) { return !IsOneOf(TrimmedText(image.PVTYPE.text), "INT|B"); },
          [](const auto& image) { return " has PVTYPE " + Quoted(image.PVTYPE.text); });
    case ORB_UNSUPPORTED:
      return OfImage(
          document, [](const auto& image) { return image.Family() == ReaderFamily::None; },
          [](const auto& image) { return " has IC " + Quoted(image.IC.text); });
    case ORB_BAD_SAMPLE_DEPTH:
      return OfImage(
          document, [](const auto& image) { return image.BandCount() > 1 && image.NBPP.value == 16; },
          [](const auto& image) {
            return " has " + std::to_string(image.BandCount()) + " bands of NBPP " +
                   std::to_string(image.NBPP.value);
          });
    default:
      return "";
  }
}

std::string PlaceOf(const ParseFault& fault) {
  if (fault.offset < 0) return "";
  return std::string(", at ") + fault.prefix + fault.name + ", byte " + std::to_string(fault.offset);
}

}  // namespace tool
