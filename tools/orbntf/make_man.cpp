// Writes the manual pages: make_man tool prints orbntf(1), make_man commands writes one of each command
// into a folder, both made from the command line's description; make_man header FILE prints orbntf.h(3),
// made from the header's comments.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "core/edit/fields.h"
#include "tools/orbntf/tool.h"

namespace {

// Text as roff takes it.
std::string Roff(const std::string& text) {
  std::string roff;
  for (const char c : text) {
    if (c == '\\' || c == '-') roff += '\\';
    if (c == '\'' && (roff.empty() || roff.back() == '\n')) roff += "\\&";
    if (c == '.' && (roff.empty() || roff.back() == '\n')) roff += "\\&";
    roff += c;
  }
  return roff;
}

void PrintOptions(std::FILE* out, const tool::Command& command) {
  for (const tool::OptionText& option : command.Options())
    std::fprintf(out, ".TP\n\\fB%s\\fR\n%s\n", Roff(option.shown).c_str(),
                 Roff(option.description).c_str());
}

// What set, new and append change.
void PrintFields() {
  std::printf(".SH FIELDS\nset, and \\-\\-field of new and append, take these fields.\n");
  constexpr std::pair<core::PartKind, const char*> kKinds[] = {{core::PartKind::File, "File header"},
                                                               {core::PartKind::Image, "image:N"},
                                                               {core::PartKind::Graphic, "graphic:N"},
                                                               {core::PartKind::Text, "text:N"},
                                                               {core::PartKind::DataExtension, "data:N"}};
  for (const auto& [kind, heading] : kKinds) {
    std::string names;
    for (const std::string& name : core::SettableFields(kind)) names += (names.empty() ? "" : " ") + name;
    std::printf(".TP\n\\fB%s\\fR\n%s\n", Roff(heading).c_str(), Roff(names).c_str());
  }
  std::printf(
      ".PP\nTexts are filled with spaces to the width of their field and numbers with zeros. Dates are "
      "written in full (CCYYMMDDhhmmss), places as ROW,COL, and FBKGC as #RRGGBB. Lengths, counts and "
      "how "
      "pixels are stored follow from what a file holds and are not set.\n");
}

struct Example {
  const char *command, *words, *line;
};
constexpr Example kExamples[] = {
    {"info", "Show what a file holds, its tagged records decoded", "orbntf info --records scene.ntf"},
    {"info", "The same of a folder as a line of JSON a file", "orbntf info --json-lines -r archive"},
    {"check", "Find what does not keep the format's rules in all files of a folder",
     "orbntf check -r archive"},
    {"check", "Tell what a rule is about", "orbntf check --explain block.cover"},
    {"report", "Write a page about a file", "orbntf report scene.ntf -o scene.html"},
    {"render", "Draw it at a quarter of its size", "orbntf render scene.ntf --scale 1/4 -o scene.png"},
    {"render", "Draw a folder of files with four processes",
     "orbntf render -r archive -O pictures --jobs 4"},
    {"render", "A piece as a cloud-optimised GeoTIFF",
     "orbntf render scene.ntf --region 0,0,2048,2048 --cog -o piece.tif"},
    {"text", "Print the first text", "orbntf text scene.ntf 0"},
    {"graphic", "Draw the first graphic", "orbntf graphic scene.ntf 0 -o drawing.svg"},
    {"extract", "Take out an image's samples at their own depth",
     "orbntf extract scene.ntf image:0 -o scene.tif"},
    {"extract", "Everything that a file holds", "orbntf extract scene.ntf --all -O parts"},
    {"diff", "Tell what differs, and draw it", "orbntf diff a.ntf b.ntf --pixels differences.png"},
    {"locate", "Where the first pixel lies", "orbntf locate scene.ntf --pixel 0,0"},
    {"locate", "Which pixel lies there", "orbntf locate scene.ntf --at 48.25,16.37"},
    {"copy", "Copy a file byte by byte", "orbntf copy scene.ntf -o copy.ntf"},
    {"set", "Give a file a title and its first image a name",
     "orbntf set made.ntf -o titled.ntf 'FTITLE=A title' image:0 IID1=First"},
    {"remove", "Take the first text out", "orbntf remove scene.ntf text:0 -o less.ntf"},
    {"merge", "Put two files into one", "orbntf merge a.ntf b.ntf -o both.ntf"},
    {"replace", "Put another text in its place",
     "orbntf replace scene.ntf text:0=@words.txt -o other.ntf"},
    {"recompress", "Store an image as lossless JPEG 2000",
     "orbntf recompress scene.ntf image:0 --jpeg2000 lossless -o smaller.ntf"},
    {"new", "Make a file of two pictures and a text",
     "orbntf new -o made.ntf --station HOME --image a.png --image b.png --at 100,200 --text notes.txt"},
    {"append", "Add a picture", "orbntf append made.ntf -o more.ntf --image c.png --at 0,300"},
    {"completion", "Complete command lines in this shell", "source <(orbntf completion bash)"}};

// Those of one command, or the first one of each.
void PrintExamples(std::FILE* out, const std::string& command) {
  std::fprintf(out, ".SH EXAMPLES\n");
  std::string before;
  for (const Example& example : kExamples) {
    const bool isShown = command.empty() ? before != example.command : command == example.command;
    before = example.command;
    if (isShown)
      std::fprintf(out, ".PP\n%s:\n.PP\n.RS\n.nf\n%s\n.fi\n.RE\n", Roff(example.words).c_str(),
                   Roff(example.line).c_str());
  }
}

constexpr const char kExitStatus[] =
    ".SH EXIT STATUS\n0 for success, 1 for a status other than 1 or an output that was not written, "
    "2 for wrong usage.\n";

// The page of one command. False when it cannot be written.
bool PrintCommand(const tool::Command& command, const tool::Command& top, const std::string& folder) {
  const std::string name = "orbntf-" + command.Name();
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
      std::fopen((folder + "/" + name + ".1").c_str(), "w"), &std::fclose);
  std::FILE* out = file.get();
  if (out == nullptr) return false;
  std::fprintf(out, ".TH %s 1 \"\" \"orbntf\"\n.SH NAME\n%s \\- %s\n", Roff(name).c_str(),
               Roff(name).c_str(), Roff(command.Description()).c_str());
  std::string positional;
  for (const tool::OptionText& option : command.Options()) {
    if (option.names.empty()) positional += " \\fI" + Roff(option.shown) + "\\fR";
  }
  std::fprintf(out, ".SH SYNOPSIS\n\\fBorbntf %s\\fR [options]%s\n.SH OPTIONS\n", command.Name().c_str(),
               positional.c_str());
  PrintOptions(out, command);
  std::fprintf(out, ".PP\nOf every command:\n");
  PrintOptions(out, top);
  PrintExamples(out, command.Name());
  std::fprintf(out, "%s.SH SEE ALSO\n.BR orbntf (1)\n", kExitStatus);
  return std::ferror(out) == 0;
}

// A page of each command in a folder.
int PrintCommands(const std::string& folder) {
  tool::CommandLine line;
  const tool::Parser parser(line, &tool::DescribeCommandLine, &tool::VersionText);
  const tool::Command top = parser.Top();
  for (const tool::Command& command : top.Commands()) {
    const bool hasExample = std::any_of(std::begin(kExamples), std::end(kExamples),
                                        [&](const Example& e) { return command.Name() == e.command; });
    if (!hasExample || !PrintCommand(command, top, folder)) {
      std::cerr << "make_man: no page of " << command.Name() << "\n";
      return 1;
    }
  }
  return 0;
}

void PrintTool() {
  tool::CommandLine line;
  const tool::Parser parser(line, &tool::DescribeCommandLine, &tool::VersionText);
  const tool::Command top = parser.Top();
  const std::string version = tool::VersionText();
  std::printf(".TH ORBNTF 1 \"\" \"%s\"\n", Roff(version.substr(0, version.find(" ("))).c_str());
  std::printf(".SH NAME\norbntf \\- %s\n", Roff(top.Description()).c_str());
  std::printf(".SH SYNOPSIS\n\\fBorbntf\\fR [\\-\\-max\\-pixels N] \\fICOMMAND\\fR [options] FILE...\n");
  std::printf(".SH OPTIONS\n");
  PrintOptions(stdout, top);
  std::printf(".SH COMMANDS\n");
  for (const tool::Command& command : top.Commands()) {
    std::printf(".SS %s\n%s.\n", Roff(command.Name()).c_str(), Roff(command.Description()).c_str());
    PrintOptions(stdout, command);
  }
  PrintFields();
  PrintExamples(stdout, "");
  std::printf("%s", kExitStatus);
  std::printf(
      ".SH ENVIRONMENT\nSOURCE_DATE_EPOCH dates what new and append make; TMPDIR "
      "is where files lie that are sent on in order.\n.SH SEE ALSO\n.BR orbntf.h (3)");
  for (const tool::Command& command : top.Commands())
    std::printf(",\n.BR orbntf\\-%s (1)", command.Name().c_str());
  std::printf("\n");
}

// The lines of a comment without its marks.
std::string CommentText(const std::string& comment) {
  std::istringstream lines(comment);
  std::string text;
  for (std::string line; std::getline(lines, line);) {
    const size_t first = line.find_first_not_of(" */");
    if (first == std::string::npos) continue;
    std::string words = line.substr(first);
    words.erase(words.find_last_not_of(" */") + 1);
    if (words[0] == '@') text += "\n.br\n";
    text += (text.empty() || text.back() == '\n' ? "" : " ") + Roff(words);
  }
  return text;
}

void PrintHeader(const std::string& header) {
  std::printf(
      ".TH ORBNTF.H 3 \"\" orbntf\n.SH NAME\norbntf.h \\- NITF files as composite images and as "
      "documents\n");
  std::printf(
      ".SH SYNOPSIS\n.nf\n#include <orbntf/orbntf.h>\n\ncc $(pkg\\-config \\-\\-cflags \\-\\-libs "
      "orbntf)\n.fi\n.SH FUNCTIONS\n");
  for (size_t at = header.find("/**"); at != std::string::npos; at = header.find("/**", at + 3)) {
    const size_t end = header.find("*/", at);
    const size_t next = header.find_first_not_of(" \n", end + 2);
    if (next == std::string::npos || header.compare(next, 7, "ORB_API") != 0) continue;
    const std::string declaration = header.substr(next, header.find(';', next) + 1 - next);
    std::printf(".PP\n.nf\n\\fB%s\\fR\n.fi\n.RS\n%s\n.RE\n", Roff(declaration).c_str(),
                CommentText(header.substr(at, end - at)).c_str());
  }
  std::printf(".SH SEE ALSO\n.BR orbntf (1)\n");
}

}  // namespace

int main(int count, char** words) {
  if (count == 2 && std::string(words[1]) == "tool") {
    PrintTool();
  } else if (count == 3 && std::string(words[1]) == "commands") {
    return PrintCommands(words[2]);
  } else if (count == 3 && std::string(words[1]) == "header") {
    std::ostringstream text;
    text << std::ifstream(words[2]).rdbuf();
    PrintHeader(text.str());
  } else {
    std::cerr << "usage: make_man tool | commands FOLDER | header FILE\n";
    return 2;
  }
  return 0;
}
