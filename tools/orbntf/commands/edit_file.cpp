#include "tools/orbntf/commands/edit_file.h"

#include <fcntl.h>

#include "core/edit/mend.h"
#include "core/edit/prove.h"
#include "core/edit/segments.h"
#include "core/format/words.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/output/output.h"

namespace tool {
namespace {

void Say(const std::string& command, const std::string& file, const std::string& words) {
  std::fprintf(stderr, "orbntf: %s: %s: %s\n", command.c_str(), Printable(InputName(file)).c_str(),
               Printable(words).c_str());
}

void RequireFormat(const Survey& survey) {
  const SurveyedPart& header = survey.Header();
  const std::string version = std::string(header.Text("FHDR")) + std::string(header.Text("FVER"));
  if (version == "NITF02.10" || version == "NSIF01.00") return;
  const std::string begins = survey.file.At(0, 9);
  if (begins.substr(0, 4) != "NITF" && begins.substr(0, 4) != "NSIF")
    RefuseFile("begins with neither NITF nor NSIF");
  RefuseFile("is " + begins.substr(0, 4) + ", version " + Quoted(begins.substr(4)) +
             "; NITF 02.10 and NSIF 01.00 are changed");
}

int Written(const std::string& command, const std::string& output, Output& file) {
  return Report(command, output, file.Commit() ? ORB_SUCCESS : ORB_SHORT_WRITE, file.Problem());
}

}  // namespace

void AddForce(const Command& command, EditOptions& options) {
  command.Flag("--force", options.force, "take values and write files that break the format's rules");
}

void AddEditOptions(const Command& command, EditOptions& options) {
  AddForce(command, options);
  command.Flag("--mend", options.mend, "set lengths of the file header that are wrong, and say which");
}

std::unique_ptr<Survey> OpenToEdit(const std::string& command, const std::string& path, bool mend) {
  errno = 0;
  auto survey = std::make_unique<Survey>(path);
  if (!survey->file.IsOpen()) {
    (void)ReadWhole(path);  // says why
    throw ReadError(path, "is no regular file");
  }
  RequireFormat(*survey);
  if (!mend) return survey;
  std::vector<MendedLength> mended;
  const bool streamed = survey->streamed;
  survey = std::make_unique<Survey>(path, MendedFront(*survey, mended));
  if (streamed) Say(command, path, "mended: the header has the lengths that stand at the file's end");
  for (const MendedLength& length : mended)
    Say(command, path,
        "mended: " + length.field + " was " + Quoted(length.was) + ", is " + Quoted(length.is));
  return survey;
}

Draft DraftOf(const Survey& survey, bool mended) {
  Draft draft(survey);
  draft.mended = mended;
  return draft;
}

bool ParsePart(const std::string& text, PartKind& kind, size_t& index) {
  if (text == "file") {
    kind = PartKind::File;
    return true;
  }
  const size_t colon = text.find(':');
  const int64_t number = colon == std::string::npos ? -1 : DigitsOf(text.substr(colon + 1));
  const std::string word = text.substr(0, colon);
  constexpr std::pair<const char*, PartKind> kWords[] = {{"image", PartKind::Image},
                                                         {"graphic", PartKind::Graphic},
                                                         {"text", PartKind::Text},
                                                         {"data", PartKind::DataExtension},
                                                         {"reserved", PartKind::Reserved}};
  for (const auto& [name, ofKind] : kWords) {
    if (word != name || number < 0) continue;
    kind = ofKind;
    index = static_cast<size_t>(number);
    return true;
  }
  return false;
}

DraftPart& NamedPart(Draft& draft, const std::string& text) {
  PartKind kind = PartKind::File;
  size_t index = 0;
  if (!ParsePart(text, kind, index)) RefuseArgument(text + ": not image:N, graphic:N, text:N or data:N");
  DraftPart* part = draft.Find(kind, index);
  if (part == nullptr) RefuseArgument(text + ": there is no such segment; info lists them");
  return *part;
}

void AddLevelOption(const Command& command, std::string& level) {
  command.Take("--level", level, "complexity level: lowest that the file fits, or a number");
}

void ApplyLevel(const std::string& command, Draft& draft, const std::string& level, bool raise) {
  const int64_t number = level == "lowest" ? 0 : DigitsOf(level);
  if (!level.empty() && (number < 0 || number > 99)) RefuseArgument("--level takes lowest or a number");
  const std::string was(draft.file.Fields().Text("CLEVEL"));
  if (!level.empty()) return (void)SetLevel(draft, number, true);
  if (raise && SetLevel(draft, 0, false))
    std::fprintf(stderr, "orbntf: %s: CLEVEL is %s now, it was %s\n", command.c_str(),
                 std::string(draft.file.Fields().Text("CLEVEL")).c_str(), Printable(was).c_str());
}

int SaveDraft(const std::string& command, Draft& draft, const std::string& output,
              const EditOptions& options,
              const std::function<std::string(const std::string& path)>& tell) {
  Output file(output);
  if (file.Path().empty()) return Report(command, output, ORB_SHORT_WRITE, file.Problem());
  const Descriptor descriptor(open(file.Path().c_str(), O_WRONLY | O_CLOEXEC));
  Proof proof;
  try {
    const WorkAccount account(file.Path());
    proof = WriteProven(draft, descriptor.Get(), file.Path(), RecordDefinitions());
  } catch (const WriteError& error) {
    return Report(command, output, ORB_SHORT_WRITE, error.what());
  }
  if (!proof.fault.empty()) {
    Say(command, output, "not written: " + proof.fault);
    return kExitStatus;
  }
  for (const std::string& words : proof.errors)
    Say(command, output, (options.force ? "warning: " : "not written: it would break a rule: ") + words);
  if (!proof.errors.empty() && !options.force) {
    Say(command, output, "--force writes it all the same");
    return kExitStatus;
  }
  if (const std::string words = tell ? tell(file.Path()) : ""; !words.empty())
    Say(command, output, words);
  return Written(command, output, file);
}

int Edited(const std::string& command, const std::string& file, const std::function<int()>& work) {
  try {
    return work();
  } catch (const EditError& error) {
    if (error.What() == EditError::Of::Argument) return Refuse(command, error.what());
    Say(command, file, error.what());
    return kExitStatus;
  }
}

}  // namespace tool
