#include "tools/orbntf/tool.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "core/format/words.h"
#include "hostkit/hostkit.h"
#include "orbntf/orbntf.hpp"
#include "tools/orbntf/inputs.h"

namespace tool {

const char* MeaningOf(int32_t status) {
  if (status == kHostNotRecognised) return "not a known image format";
  if (status == kHostOverBudget) return "more work than the file and its picture are worth";
  return orbntf::TextOf(static_cast<orbntf::Status>(status));
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
  std::string line = "orbntf: " + command + ": " + Printable(InputName(file)) + ": status " +
                     std::to_string(status) + ": " + (words.empty() ? MeaningOf(status) : words);
  for (const std::string& message : Messages()) line += " (" + Printable(message) + ")";
  Messages().clear();
  std::fprintf(stderr, "%s\n", line.c_str());
  return kExitStatus;
}

int ReportUnread(const std::string& command, const ReadError& error) {
  std::fprintf(stderr, "orbntf: %s: %s: %s\n", command.c_str(),
               Printable(InputName(error.Path())).c_str(), error.what());
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

void DescribeCommandLine(const Command& top, CommandLine& line) {
  top.Take("--max-pixels", line.maxPixels, "refuse bitmaps of more pixels than this");
  top.Take("--time-limit", line.seconds, "seconds that the command may take");
  top.Take("--memory-limit", line.memory, "memory that it may have: 512M");
  top.Take("--records", line.records,
           "a folder of definitions of tagged records, beside those that come along");
  for (const auto add :
       {&AddInfo, &AddCheck, &AddReport, &AddRender, &AddText, &AddGraphic, &AddExtract, &AddDiff,
        &AddLocate, &AddCopy, &AddSet, &AddRemoving, &AddReplacing, &AddComposing, &AddCompletion}) {
    add(top, line);
  }
}

namespace {

uint64_t BytesOf(const std::string& path) {
  std::error_code error;
  const uint64_t bytes = std::filesystem::file_size(path, error);
  return error ? 0 : bytes;
}

}  // namespace

WorkAccount::WorkAccount(const std::string& path) : limit_(BytesOf(path)) {}

HostWork::HostWork() : limited_(media::CurrentWork().limited) {
  const media::WorkLeft& work = media::CurrentWork();
  if (limited_) HostkitGiveWork(work.nanoseconds, work.samples);
}

HostWork::~HostWork() {
  media::WorkLeft& work = media::CurrentWork();
  if (limited_) HostkitWorkLeft(&work.nanoseconds, &work.samples);
  HostkitLiftWorkLimit();
}

bool IsSameFile(const std::string& a, const std::string& b) {
  const auto first = core::IdentityOf(a);
  return first && first == core::IdentityOf(b);
}

}  // namespace tool
