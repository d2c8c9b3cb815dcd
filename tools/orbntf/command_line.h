// How commands describe what they take, and how words are parsed. The parser itself stays behind this.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace tool {

inline constexpr int kExitOk = 0;
inline constexpr int kExitStatus = 1;
inline constexpr int kExitUsage = 2;

/// A command's work; the result is the exit code.
using Work = std::function<int()>;

/// An option while it is described.
class Option {
 public:
  explicit Option(CLI::Option* option) : option_(option) {}
  Option& Required(bool isRequired = true);
  Option& OneOf(const std::vector<std::string>& words);
  Option& Within(int least, int most);
  /// Its values have commas between them; so many, or any number for 0.
  Option& List(int count = 0);
  /// It may be given several times, with a value each.
  Option& Repeated();

 private:
  CLI::Option* option_;
};

/// What a manual and a shell tell of an option.
struct OptionText {
  std::vector<std::string> names;  ///< "-o", "--output"; empty for a positional one
  std::string shown, description;
};

/// The command line, or one of its commands.
class Command {
 public:
  explicit Command(CLI::App* app) : app_(app) {}
  Command Add(const std::string& name, const std::string& description) const;
  /// Takes a text, a number, or several of either.
  template <class T>
  Option Take(const std::string& names, T& value, const std::string& description) const;
  /// A switch, or how often it is given.
  template <class T>
  Option Flag(const std::string& names, T& value, const std::string& description) const;
  /// An option that was described already.
  Option Described(const std::string& name) const;
  /// Makes `work` the program's where this command is given.
  void Runs(Work& place, Work work) const;

  std::string Name() const;
  std::string Description() const;
  std::vector<Command> Commands() const;
  std::vector<OptionText> Options() const;
  /// The long names of the options that were given, in their order.
  std::vector<std::string> Given() const;

 private:
  CLI::App* app_;
};

/// What a command line asked for.
struct CommandLine {
  uint64_t maxPixels = 0;
  uint32_t seconds = 0;  ///< that the command may take; 0 for any
  std::string memory;    ///< that it may have, "512M"; empty for any
  std::string records;   ///< the folder of record definitions that it names; empty for none
  Work work;
};

/// Parses the words of a command line.
class Parser {
 public:
  /// `describe` adds every command and option; `version` is what --version prints.
  Parser(CommandLine& line, void (*describe)(const Command& top, CommandLine& line),
         std::string (*version)());
  ~Parser();
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;
  /// The exit code where the words themselves end the program: help, the version, or wrong usage.
  std::optional<int> Parse(int count, char** words);
  Command Top() const;
  /// The command whose name is nearest to a word; empty where none is near.
  std::string Nearest(std::string_view word) const;
  /// The command that was given.
  std::string Given() const;

 private:
  std::unique_ptr<CLI::App> app_;
};

/// A whole number of a type's range; false for another text.
template <class T>
bool ParseNumber(const std::string& text, T& value);

}  // namespace tool
