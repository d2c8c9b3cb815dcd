// What the tool's commands share.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "media/work.h"
#include "tools/orbntf/core_names.h"

/// The command-line parser; what registers options includes it.
namespace CLI {
class App;
}

namespace core {
class ReadError;
}

namespace tool {

inline constexpr int kExitOk = 0;
inline constexpr int kExitStatus = 1;
inline constexpr int kExitUsage = 2;

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

/// A command's work; the result is the exit code.
using Work = std::function<int()>;

/// The folder of record definitions that the command line names; empty for none.
std::string RecordFolder(const CLI::App& app);

void AddInfo(CLI::App& app, Work& work);
void AddCheck(CLI::App& app, Work& work);
void AddRender(CLI::App& app, Work& work);
void AddReport(CLI::App& app, Work& work);
void AddText(CLI::App& app, Work& work);
void AddDiff(CLI::App& app, Work& work);
void AddExtract(CLI::App& app, Work& work);
void AddGraphic(CLI::App& app, Work& work);
void AddCopy(CLI::App& app, Work& work);
void AddComposing(CLI::App& app, Work& work);
void AddSet(CLI::App& app, Work& work);
void AddCompletion(CLI::App& app, Work& work);
/// What a command line asked for.
struct CommandLine {
  uint64_t maxPixels = 0;
  Work work;
};
/// Describes every command and option; parsing then fills the result.
void DescribeCommandLine(CLI::App& app, CommandLine& line);
/// Name, version, commit, codecs and their versions, a line each.
std::string VersionText();

}  // namespace tool
