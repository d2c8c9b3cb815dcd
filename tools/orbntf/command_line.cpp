#include "tools/orbntf/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "core/format/words.h"

namespace tool {

Option& Option::Required(bool isRequired) {
  option_->required(isRequired);
  return *this;
}

Option& Option::OneOf(const std::vector<std::string>& words) {
  option_->check(CLI::IsMember(words));
  return *this;
}

Option& Option::Within(int least, int most) {
  option_->check(CLI::Range(least, most));
  return *this;
}

Option& Option::List(int count) {
  option_->delimiter(',');
  if (count != 0) option_->expected(count);
  return *this;
}

Option& Option::Repeated() {
  option_->expected(1)->take_all();
  return *this;
}

Command Command::Add(const std::string& name, const std::string& description) const {
  return Command(app_->add_subcommand(name, description));
}

template <class T>
Option Command::Take(const std::string& names, T& value, const std::string& description) const {
  return Option(app_->add_option(names, value, description));
}
template Option Command::Take(const std::string&, std::string&, const std::string&) const;
template Option Command::Take(const std::string&, int32_t&, const std::string&) const;
template Option Command::Take(const std::string&, uint32_t&, const std::string&) const;
template Option Command::Take(const std::string&, uint64_t&, const std::string&) const;
template Option Command::Take(const std::string&, std::vector<std::string>&, const std::string&) const;
template Option Command::Take(const std::string&, std::vector<int32_t>&, const std::string&) const;
template Option Command::Take(const std::string&, std::vector<uint32_t>&, const std::string&) const;
template Option Command::Take(const std::string&, std::vector<uint64_t>&, const std::string&) const;

template <class T>
Option Command::Flag(const std::string& names, T& value, const std::string& description) const {
  return Option(app_->add_flag(names, value, description));
}
template Option Command::Flag(const std::string&, bool&, const std::string&) const;
template Option Command::Flag(const std::string&, int64_t&, const std::string&) const;

Option Command::Described(const std::string& name) const { return Option(app_->get_option(name)); }

void Command::Runs(Work& place, Work work) const {
  app_->callback([&place, work = std::move(work)] { place = work; });
}

std::string Command::Name() const { return app_->get_name(); }
std::string Command::Description() const { return app_->get_description(); }

std::vector<Command> Command::Commands() const {
  std::vector<Command> commands;
  for (CLI::App* command : app_->get_subcommands({})) commands.emplace_back(command);
  return commands;
}

std::vector<OptionText> Command::Options() const {
  std::vector<OptionText> texts;
  for (const CLI::Option* option : std::as_const(*app_).get_options()) {
    OptionText text;
    for (const std::string& name : option->get_snames()) text.names.push_back("-" + name);
    for (const std::string& name : option->get_lnames()) text.names.push_back("--" + name);
    text.shown = option->get_positional() ? option->get_name(true) : option->get_name(false, true);
    text.description = option->get_description();
    texts.push_back(std::move(text));
  }
  return texts;
}

std::vector<std::string> Command::Given() const {
  std::vector<std::string> names;
  for (const CLI::Option* option : app_->parse_order()) names.push_back(option->get_name());
  return names;
}

namespace {

// The first word that stands where a command's name does and is none.
std::optional<std::string> UnknownCommand(const Command& top, int count, char** words) {
  for (int i = 1; i < count; ++i) {
    const std::string word = words[i];
    if (!word.empty() && word[0] == '-') {
      const bool isAlone = word == "--help" || word == "-h" || word == "--version";
      if (!isAlone && word.find('=') == std::string::npos) ++i;  // its value
      continue;
    }
    for (const Command& command : top.Commands()) {
      if (command.Name() == word) return std::nullopt;
    }
    return word;
  }
  return std::nullopt;
}

// Letters that are put in, taken out or changed to make one word of another.
size_t StepsBetween(std::string_view a, std::string_view b) {
  std::vector<size_t> steps(b.size() + 1);
  for (size_t j = 0; j < steps.size(); ++j) steps[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = steps[0];
    steps[0] = i;
    for (size_t j = 1; j < steps.size(); ++j) {
      const size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = steps[j];
      steps[j] = std::min({steps[j] + 1, steps[j - 1] + 1, changed});
    }
  }
  return steps.back();
}

}  // namespace

std::string Parser::Nearest(std::string_view word) const {
  constexpr size_t kMost = 2, kLongest = 64;
  std::string nearest;
  size_t least = kMost + 1;
  for (const Command& command : Top().Commands()) {
    const std::string name = command.Name();
    const bool begins = word.size() > 2 && name.rfind(word, 0) == 0;
    const size_t steps = word.size() > kLongest ? kMost + 1 : begins ? 1 : StepsBetween(word, name);
    if (steps >= least) continue;
    nearest = name;
    least = steps;
  }
  return nearest;
}

Parser::Parser(CommandLine& line, void (*describe)(const Command&, CommandLine&),
               std::string (*version)())
    : app_(std::make_unique<CLI::App>()) {
  app_->name("orbntf");
  app_->description("Shows, renders and edits NITF 2.1 files");
  app_->require_subcommand(1);
  app_->fallthrough();
  app_->set_version_flag("--version", version, "print versions and exit");
  describe(Top(), line);
}

Parser::~Parser() = default;

std::optional<int> Parser::Parse(int count, char** words) {
  try {
    app_->parse(count, words);
  } catch (const CLI::ParseError& error) {
    if (const std::optional<std::string> unknown = UnknownCommand(Top(), count, words)) {
      const std::string nearest = Nearest(*unknown);
      std::fprintf(stderr, "orbntf: there is no command \"%s\"%s\n", core::Printable(*unknown).c_str(),
                   nearest.empty() ? "; --help lists them" : ("; did you mean " + nearest + "?").c_str());
      return kExitUsage;
    }
    return app_->exit(error) == 0 ? kExitOk : kExitUsage;
  }
  return std::nullopt;
}

Command Parser::Top() const { return Command(app_.get()); }

std::string Parser::Given() const { return app_->get_subcommands().front()->get_name(); }

template <class T>
bool ParseNumber(const std::string& text, T& value) {
  const char* end = text.data() + text.size();
  const std::from_chars_result parsed = std::from_chars(text.data(), end, value);
  return parsed.ec == std::errc() && parsed.ptr == end;
}
template bool ParseNumber(const std::string&, int32_t&);
template bool ParseNumber(const std::string&, uint32_t&);

}  // namespace tool
