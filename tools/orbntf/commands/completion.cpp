// orbntf completion: what a shell takes to complete the tool's command lines. Made from the command
// line's own description, so that it cannot fall behind.
#include <cstdio>
#include <set>

#include "core/check/rule.h"
#include "core/edit/fields.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct CommandWords {
  std::string name, description;
  std::vector<std::string> options;
  std::vector<std::string> parts;  ///< parts and fields that it takes beside files
};

// Parts, and where fields are set their names.
std::vector<std::string> PartsOf(const std::string& command) {
  if (!IsOneOf(command, "extract|set|remove|replace|recompress")) return {};
  std::vector<std::string> words = {"image:0", "graphic:0", "text:0", "data:0"};
  if (command == "recompress") words.resize(1);
  if (command == "extract") words.emplace_back("record:");
  if (command != "set") return words;
  std::set<std::string> fields;
  for (const PartKind kind :
       {PartKind::File, PartKind::Image, PartKind::Graphic, PartKind::Text, PartKind::DataExtension}) {
    for (const std::string& name : SettableFields(kind)) fields.insert(name + "=");
  }
  words.insert(words.end(), {"file", "all:", "record:"});
  words.insert(words.end(), fields.begin(), fields.end());
  return words;
}

std::vector<CommandWords> CommandsOf(const Command& top) {
  std::vector<CommandWords> commands;
  for (const Command& sub : top.Commands()) {
    CommandWords command = {sub.Name(), sub.Description(), {}, PartsOf(sub.Name())};
    for (const OptionText& option : sub.Options())
      command.options.insert(command.options.end(), option.names.begin(), option.names.end());
    commands.push_back(std::move(command));
  }
  return commands;
}

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

void PrintBash(const std::vector<CommandWords>& commands) {
  std::vector<std::string> names(commands.size());
  for (size_t i = 0; i < names.size(); ++i) names[i] = commands[i].name;
  std::printf("_orbntf() {\n  local word=${COMP_WORDS[COMP_CWORD]} words= parts=\n");
  std::printf("  if [ \"$COMP_CWORD\" -eq 1 ]; then words='%s'; else\n    case ${COMP_WORDS[1]} in\n",
              Joined(names).c_str());
  for (const CommandWords& command : commands)
    std::printf("      %s) words='%s' parts='%s' ;;\n", command.name.c_str(),
                Joined(command.options).c_str(), Joined(command.parts).c_str());
  std::printf("    esac\n  fi\n");
  std::printf(
      "  case $COMP_CWORD$word in\n    1* | *-*) mapfile -t COMPREPLY < <(compgen -W \"$words\" -- "
      "\"$word\") ;;\n");
  std::printf(
      "    *) mapfile -t COMPREPLY < <(compgen -W \"$parts\" -- \"$word\"; compgen -f -- \"$word\") ;;\n"
      "  esac\n  [[ ${COMPREPLY[0]} == *[=:] ]] && compopt -o nospace\n  return 0\n}\n");
  std::printf("complete -o filenames -F _orbntf orbntf\n");
}

// A description in single quotes.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

void PrintZsh(const std::vector<CommandWords>& commands) {
  std::printf("#compdef orbntf\n_orbntf() {\n  if (( CURRENT == 2 )); then\n    local -a commands=(\n");
  for (const CommandWords& command : commands)
    std::printf("      %s\n", Quoted(command.name + ":" + command.description).c_str());
  std::printf("    )\n    _describe command commands\n    return\n  fi\n  case $words[2] in\n");
  for (const CommandWords& command : commands) {
    const std::string parts =
        command.parts.empty() ? "" : " || compadd -S '' -- " + Joined(command.parts);
    std::printf("    %s) [[ $PREFIX == -* ]] && compadd -- %s%s ;;\n", command.name.c_str(),
                Joined(command.options).c_str(), parts.c_str());
  }
  std::printf("  esac\n  [[ $PREFIX == -* ]] || _files\n}\n");
  std::printf(
      "if [[ $funcstack[1] == _orbntf ]]; then _orbntf \"$@\"; else compdef _orbntf orbntf; fi\n");
}

void PrintFish(const std::vector<CommandWords>& commands) {
  for (const CommandWords& command : commands) {
    std::printf("complete -c orbntf -n __fish_use_subcommand -f -a %s -d %s\n", command.name.c_str(),
                Quoted(command.description).c_str());
    for (const std::string& option : command.options) {
      const bool isLong = option.rfind("--", 0) == 0;
      std::printf("complete -c orbntf -n '__fish_seen_subcommand_from %s' %s %s\n", command.name.c_str(),
                  isLong ? "-l" : "-s", option.substr(isLong ? 2 : 1).c_str());
    }
    if (!command.parts.empty())
      std::printf("complete -c orbntf -n '__fish_seen_subcommand_from %s' -a %s\n", command.name.c_str(),
                  Quoted(Joined(command.parts)).c_str());
  }
}

}  // namespace

void AddCompletion(const Command& top, CommandLine& line) {
  auto shell = std::make_shared<std::string>();
  const Command command = top.Add("completion", "Print what a shell completes commands by");
  command.Take("SHELL", *shell, "bash, zsh or fish").Required().OneOf({"bash", "zsh", "fish"});
  command.Runs(line.work, [top, shell] {
    const std::vector<CommandWords> commands = CommandsOf(top);
    *shell == "bash" ? PrintBash(commands) : *shell == "zsh" ? PrintZsh(commands) : PrintFish(commands);
    return kExitOk;
  });
}

}  // namespace tool
