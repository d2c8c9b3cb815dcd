// orbntf check: what the module does with files, and whether they keep the format's rules.
#include <algorithm>

#include "core/check/examples.h"
#include "core/format/json_text.h"
#include "core/format/levels.h"
#include "core/format/words.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/commands/batch.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/sarif.h"
#include "tools/orbntf/inspect/verdict.h"

namespace tool {
namespace {

struct CheckOptions {
  BatchOptions batch;
  bool json = false, strict = false, list = false, sarif = false;
  std::string explained, profile;
  std::unique_ptr<RecordDefinitions> definitions;  // made when the command runs
};

void Put(std::FILE* out, const std::string& text) { std::fwrite(text.data(), 1, text.size(), out); }

void Print(std::FILE* out, const std::string& path, const Verdict& verdict, const Verdict* standard,
           const std::vector<Finding>& findings) {
  size_t counts[3] = {};
  Put(out, Printable(InputName(path)) + ": " + Printable(verdict.words) + '\n');
  if (standard != nullptr) Put(out, "  by the published standard: " + Printable(standard->words) + '\n');
  for (const Finding& finding : findings) {
    ++counts[static_cast<size_t>(finding.rule->severity)];
    Put(out, "  " + Describe(finding) + "\n      " + finding.rule->sentence + " (" +
                 finding.rule->standard + ")\n");
  }
  const auto count = [&](Severity severity) {
    const size_t n = counts[static_cast<size_t>(severity)];
    return std::to_string(n) + " " + NameOf(severity) + (n == 1 ? "" : "s");
  };
  Put(out, "  " + count(Severity::Error) + ", " + count(Severity::Warning) + ", " +
               count(Severity::Note) + '\n');
}

void WriteMember(JsonText& json, const char* key, const std::string& text) {
  json.Key(key);
  json.String(text);
}

void WriteFinding(JsonText& json, const Finding& finding) {
  json.BeginObject();
  WriteMember(json, "rule", finding.rule->id);
  WriteMember(json, "severity", NameOf(finding.rule->severity));
  WriteMember(json, "part", finding.part);
  WriteMember(json, "field", finding.field);
  json.Key("offset");
  json.Number(static_cast<int64_t>(finding.offset));
  WriteMember(json, "found", finding.words);
  WriteMember(json, "wanted", finding.rule->sentence);
  WriteMember(json, "standard", finding.rule->standard);
  json.EndObject();
}

std::string JsonOf(const std::string& path, const Verdict& verdict, const Verdict* standard,
                   const std::vector<Finding>& findings, bool inArray) {
  JsonText json(true, inArray ? 1 : 0);
  json.BeginObject();
  WriteMember(json, "file", InputName(path));
  json.Key("status");
  json.Number(verdict.status);
  WriteMember(json, "module", verdict.words);
  if (standard != nullptr) WriteMember(json, "standard", standard->words);
  json.Key("findings");
  json.BeginArray();
  for (const Finding& finding : findings) WriteFinding(json, finding);
  json.EndArray();
  json.EndObject();
  return (inArray ? "  " : "") + json.Text() + (inArray ? "" : "\n");
}

// What the module refuses need not be at fault: the findings alone decide, but for a file that cannot be
// read.
int CheckFile(const CheckOptions& options, const std::string& path, bool inArray, std::FILE* out) {
  const WorkAccount account(path);
  const Survey survey(path);
  const Verdict verdict = AskModule(path);
  std::vector<Finding> findings;
  if (survey.file.IsOpen()) (void)FindFaults(survey, *options.definitions, {}, findings, options.profile);
  const bool asks = survey.file.IsOpen() && verdict.status != ORB_SUCCESS;
  const Verdict answer = asks ? AskCore(survey) : Verdict();
  const Verdict* standard = asks ? &answer : nullptr;
  if (!options.json && !options.sarif && !survey.file.IsOpen())
    return Report("check", path, verdict.status, verdict.words);
  if (options.sarif) {
    Put(out, survey.file.IsOpen() ? SarifRun(path, findings) : SarifFailure(path, verdict.words));
  } else if (options.json) {
    Put(out, JsonOf(path, verdict, standard, findings, inArray));
  } else {
    Print(out, path, verdict, standard, findings);
  }
  if (!survey.file.IsOpen()) return Report("check", path, verdict.status, verdict.words);
  const Severity least = options.strict ? Severity::Warning : Severity::Error;
  return std::any_of(findings.begin(), findings.end(),
                     [&](const Finding& finding) { return finding.rule->severity >= least; })
             ? kExitStatus
             : kExitOk;
}

int ListRules() {
  for (const Rule* rule : AllRules())
    std::printf("%s\t%s\t%s\t%s\t%s\n", rule->id, NameOf(rule->severity), rule->field, rule->standard,
                rule->sentence);
  return kExitOk;
}

// A rule with its standard, and examples of breaking and of keeping it.
int ExplainRule(const std::string& id) {
  for (const Rule* rule : AllRules()) {
    if (id != rule->id) continue;
    std::printf("%s (%s, %s)\n%s\n%s\n", rule->id, NameOf(rule->severity), rule->field, rule->sentence,
                rule->standard);
    if (const RuleExample* example = ExampleOf(id))
      std::printf("breaks it: %s\nkeeps it:  %s\n", example->breaks, example->keeps);
    return kExitOk;
  }
  return Refuse("check", id + ": no such rule; --rules lists them");
}

int RunCheck(CheckOptions& options, const std::string& folder) {
  if (options.list) return ListRules();
  if (!options.explained.empty()) return ExplainRule(options.explained);
  if (!IsProfile(options.profile))
    return Refuse("check", "--profile takes npje, epje, tpje or level:03, 05, 06, 07");
  if (options.json && options.sarif) return Refuse("check", "--json and --sarif are two forms: give one");
  if (const std::string problem = TakeDefinitions(folder, options.definitions); !problem.empty())
    return Refuse("check", problem);
  if (options.batch.paths.empty()) return Refuse("check", "FILE is required");
  const std::vector<BatchFile> files = FilesOf(options.batch);
  const bool inArray = options.json && files.size() != 1;
  BatchFrame frame;
  if (inArray) frame = {files.empty() ? "[" : "[\n", ",\n", files.empty() ? "]\n" : "\n]\n"};
  if (options.sarif) {
    frame = {SarifBegin(), ",\n", SarifEnd()};
    frame.failure = [](const BatchFile& file, const std::string& words) {
      return SarifFailure(file.path, words);
    };
  }
  if (options.json)
    frame.failure = [inArray](const BatchFile& file, const std::string& words) {
      Verdict verdict;
      verdict.status = ORB_SHORT_READ;
      verdict.words = words;
      return JsonOf(file.path, verdict, nullptr, {}, inArray);
    };
  return RunBatch("check", options.batch, files, frame, [&](const BatchFile& file, std::FILE* out) {
    return CheckFile(options, file.path, inArray, out);
  });
}

}  // namespace

void AddCheck(const Command& top, CommandLine& line) {
  auto options = std::make_shared<CheckOptions>();
  const Command command =
      top.Add("check", "Tell what the module does with files and what is wrong with them");
  AddBatchOptions(command, options->batch);
  command.Described("FILE").Required(false);
  command.Flag("--json", options->json, "print JSON, an array for several files");
  command.Flag("--sarif", options->sarif, "print SARIF 2.1.0, as review systems take it");
  command.Take("--profile", options->profile,
               "npje, epje, tpje, or level:NN: what a profile asks as well");
  command.Take("--explain", options->explained,
               "tell a rule, its standard, and what breaks and keeps it");
  command.Flag("--strict", options->strict, "warnings end in exit code 1 as well");
  command.Flag("--rules", options->list, "list the rules: id, severity, field, standard, sentence");
  command.Runs(line.work, [options, &line] { return RunCheck(*options, line.records); });
}

}  // namespace tool
