// What the tool's commands share.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <CLI/CLI.hpp>

namespace tool {

inline constexpr int kExitOk = 0;
inline constexpr int kExitStatus = 1;
inline constexpr int kExitUsage = 2;

/// What a status means, in words.
const char* MeaningOf(int32_t status);

/// Prints `orbntf: <command>: <file>: status <code>: <meaning>` unless the status is 1; returns the exit
/// code.
/// `place` goes behind the meaning.
int Report(const std::string& command, const std::string& file, int32_t status,
           const std::string& place = "");
/// Prints `orbntf: <command>: <message>` and returns the exit code of wrong usage.
int Refuse(const std::string& command, const std::string& message);

/// A narrow path as the exports take it; empty when it is not UTF-8.
std::u16string Widen(const std::string& path);

/// An output file that appears under its name only when it is complete: written beside it and renamed.
class OutputFile {
 public:
  explicit OutputFile(std::string path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// Where to write; empty when no file can be made there.
  const std::string& TemporaryPath() const { return temporary_; }
  /// Gives the file its name; false when that fails.
  bool Commit();

 private:
  std::string path_;
  std::string temporary_;
};

/// Bounds what reading and drawing a file may take from here on by its bytes and the pixels that it
/// makes.
void LimitWork(const std::string& path, uint64_t pixels);

/// Whether two paths name one existing file.
bool IsSameFile(const std::string& a, const std::string& b);

/// A command's work; the result is the exit code.
using Work = std::function<int()>;

void AddInfo(CLI::App& app, Work& work);
void AddRender(CLI::App& app, Work& work);
void AddEdit(CLI::App& app, Work& work);
void AddComposing(CLI::App& app, Work& work);
void AddContent(CLI::App& app, Work& work);

}  // namespace tool
