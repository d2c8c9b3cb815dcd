// What the tool's commands share.
#pragma once

#include <cstdint>
#include <string>

#include "media/work.h"
#include "tools/orbntf/command_line.h"
#include "tools/orbntf/core_names.h"

namespace core {
class ReadError;
}

namespace tool {

/// What a status means, in words.
const char* MeaningOf(int32_t status);

/// Prints `orbntf: <command>: <file>: status <code>: <words>` unless the status is 1, the status's
/// meaning where there are no other words; returns the exit code. What message boxes said stands behind
/// them.
int Report(const std::string& command, const std::string& file, int32_t status,
           const std::string& words = "");
/// Prints which input of a command cannot be read and why; returns the exit code.
int ReportUnread(const std::string& command, const ReadError& error);
/// From here on message boxes are kept for the next report.
void CollectMessages();
/// Prints `orbntf: <command>: <message>` and returns the exit code of wrong usage.
int Refuse(const std::string& command, const std::string& message);

/// A path as the exports take it: names are bytes, whatever they are.
std::u16string Widen(const std::string& path);

/// What a command may do with a file: one limit for all that the core reads and decodes and the module
/// draws, which begins with what the file's bytes are worth. Within another one it is a part of that one.
class WorkAccount {
 public:
  explicit WorkAccount(const std::string& path);
  /// Adds what a picture of so many pixels is worth.
  static void AllowPixels(uint64_t pixels) { media::AllowPixels(pixels); }

 private:
  media::WorkLimit limit_;
};

/// While there is one, the host works on what is left of this thread's limit.
class HostWork {
 public:
  HostWork();
  ~HostWork();
  HostWork(const HostWork&) = delete;
  HostWork& operator=(const HostWork&) = delete;

 private:
  bool limited_;
};

/// Whether two paths name one existing file.
bool IsSameFile(const std::string& a, const std::string& b);

void AddInfo(const Command& top, CommandLine& line);
void AddCheck(const Command& top, CommandLine& line);
void AddRender(const Command& top, CommandLine& line);
void AddReport(const Command& top, CommandLine& line);
void AddText(const Command& top, CommandLine& line);
void AddDiff(const Command& top, CommandLine& line);
void AddLocate(const Command& top, CommandLine& line);
void AddExtract(const Command& top, CommandLine& line);
void AddGraphic(const Command& top, CommandLine& line);
void AddCopy(const Command& top, CommandLine& line);
void AddComposing(const Command& top, CommandLine& line);
void AddRemoving(const Command& top, CommandLine& line);
void AddReplacing(const Command& top, CommandLine& line);
void AddSet(const Command& top, CommandLine& line);
void AddCompletion(const Command& top, CommandLine& line);
/// Describes every command and option; parsing then fills the result.
void DescribeCommandLine(const Command& top, CommandLine& line);
/// Name, version, commit, codecs and their versions, a line each.
std::string VersionText();

}  // namespace tool
