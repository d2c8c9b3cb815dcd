#include "tools/orbntf/tool.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "hostkit/hostkit.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/inspect/words.h"

namespace tool {
namespace {

struct Meaning {
  int32_t status;
  const char* text;
};
constexpr Meaning kMeanings[] = {
    {ORB_SUCCESS, "success"},
    {ORB_LIMIT_REACHED, "limit of 999 segments of one kind reached"},
    {ORB_NO_SUCH_RECORD, "no such segment"},
    {ORB_OUT_OF_MEMORY, "more memory than there is, or a picture too large"},
    {ORB_NO_BITMAP, "no usable bitmap"},
    {ORB_SHORT_WRITE, "the output could not be written"},
    {ORB_SHORT_READ, "the file ends too early, or cannot be read"},
    {ORB_BAD_STRUCTURE, "not the expected NITF structure"},
    {ORB_FILE_NOT_FOUND, "no such file"},
    {ORB_INVALID_PARAMETER, "invalid value"},
    {ORB_TEXT_NOT_OPENED, "the text file cannot be opened"},
    {ORB_UNSUPPORTED, "not supported"},
    {kHostNotRecognised, "not a known image format"},
    {kHostOverBudget, "more work than the file and its picture are worth"},
    {ORB_BAD_QUALITY, "quality factor out of range"},
    {ORB_BAD_BITMAP_DEPTH, "bits per pixel neither 24 nor 8"},
    {ORB_BAD_VERSION, "version is not 02.10"},
    {ORB_NULL_HANDLE, "no document"},
    {ORB_EMPTY_DRAWING, "empty drawing"},
    {ORB_NO_DATA, "no data"},
    {ORB_BAD_PIXEL_TYPE, "unsupported pixel value type"},
    {ORB_BAD_COMPLEXITY, "unsupported complexity level"},
    {ORB_BAD_SAMPLE_DEPTH, "more than one band of 16 bits"},
};

}  // namespace

const char* MeaningOf(int32_t status) {
  for (const Meaning& meaning : kMeanings) {
    if (meaning.status == status) return meaning.text;
  }
  return "failure of a host library";
}

namespace {

// Texts of message boxes that no line has told yet, each once.
std::vector<std::string>& Messages() {
  static std::vector<std::string> messages;
  return messages;
}

}  // namespace

void CollectMessages() {
  HostkitSetMessageHandler([](const char* text, const char*) {
    auto& messages = Messages();
    if (std::find(messages.begin(), messages.end(), text) == messages.end()) messages.push_back(text);
  });
}

int Report(const std::string& command, const std::string& file, int32_t status,
           const std::string& words) {
  if (status == ORB_SUCCESS) return kExitOk;
  std::string line = "orbntf: " + command + ": " + Printable(file) + ": status " +
                     std::to_string(status) + ": " + (words.empty() ? MeaningOf(status) : words);
  for (const std::string& message : Messages()) line += " (" + Printable(message) + ")";
  Messages().clear();
  std::fprintf(stderr, "%s\n", line.c_str());
  return kExitStatus;
}

int Refuse(const std::string& command, const std::string& message) {
  std::fprintf(stderr, "orbntf: %s: %s\n", command.c_str(), Printable(message).c_str());
  return kExitUsage;
}

std::u16string Widen(const std::string& path) {
  Orb_A2W wide;
  return wide.Convert(path.c_str()) != 0 ? std::u16string(wide.Value()) : std::u16string();
}

void DescribeCommandLine(CLI::App& app, CommandLine& line) {
  app.name("orbntf");
  app.description("Shows, renders and edits NITF 2.1 files");
  app.require_subcommand(1);
  app.set_version_flag("--version", &VersionText, "print versions and exit");
  app.add_option("--max-pixels", line.maxPixels, "refuse bitmaps of more pixels than this");
  for (const auto add :
       {&AddInfo, &AddRender, &AddText, &AddGraphic, &AddCopy, &AddSet, &AddComposing, &AddCompletion}) {
    add(app, line.work);
  }
}

void LimitWork(const std::string& path, uint64_t pixels) {
  std::error_code error;
  const uint64_t bytes = std::filesystem::file_size(path, error);
  HostkitLimitWork(error ? 0 : bytes, pixels, 100);
}

bool IsSameFile(const std::string& a, const std::string& b) {
  struct stat first, second;
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

}  // namespace tool
