#include "tools/orbntf/inspect/verdict.h"

#include <algorithm>

#include "core/format/words.h"
#include "core/view/view.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/drawing.h"
#include "tools/orbntf/inspect/explain.h"

namespace tool {
namespace {

int32_t ORB_CALL DropRow(void*, KernelBitmap*, uint8_t*, uint32_t, int32_t, int32_t, void*) {
  return ORB_SUCCESS;
}

std::string WhyRefused(const std::string& path, int32_t status) {
  if (std::string why = WhyUnreadable(path); !why.empty()) return why;
  NitfFile document;
  (void)document.ReadDocument(Widen(path).c_str());
  const std::string why = Explain(path, document, status);
  return (why.empty() ? MeaningOf(status) : why) + PlaceOf(document.fault);
}

std::string DrawnWords(const Verdict& verdict) {
  return "drawn, " + std::to_string(verdict.width) + " x " + std::to_string(verdict.height);
}

std::string RefusedWords(int32_t status, const std::string& why) {
  return "refused, status " + std::to_string(status) + ": " + (why.empty() ? MeaningOf(status) : why);
}

}  // namespace

Verdict AskModule(const std::string& path) {
  Verdict verdict;
  HostFileInfo info = {};
  const WorkAccount account(path);
  verdict.status = AskFilterSize(path, 0, info);
  verdict.width = info.width;
  verdict.height = info.height;
  if (verdict.status == ORB_SUCCESS) {
    WorkAccount::AllowPixels(uint64_t{verdict.width} * verdict.height);
    verdict.status = LoadThroughFilter(path, 0, &DropRow, nullptr);
  }
  RequireHostReads(path);
  verdict.words = verdict.status == ORB_SUCCESS
                      ? DrawnWords(verdict)
                      : RefusedWords(verdict.status, WhyRefused(path, verdict.status));
  return verdict;
}

Verdict AskCore(const Survey& survey) {
  constexpr uint32_t kSide = 256;
  Verdict verdict;
  ViewRequest request;
  request.size = kSide;
  request.fast = true;
  FileView view(survey, request);
  SampleFault fault = view.Start();
  if (!fault.Met()) {
    WorkAccount::AllowPixels(view.PixelsToMake());
    fault = view.Draw([](uint32_t, const uint8_t*) { return true; });
  }
  verdict.status = view.Missing().empty() ? fault.Code() : ORB_UNSUPPORTED;
  verdict.width = static_cast<uint32_t>(view.FullWidth());
  verdict.height = static_cast<uint32_t>(view.FullHeight());
  verdict.words = DrawnWords(verdict);
  if (fault.Met()) verdict.words = fault.words;
  if (!fault.Met() && !view.Missing().empty())
    verdict.words += ", but " + view.Missing()[0].segment + ": " + view.Missing()[0].words;
  return verdict;
}

void WarnOfFaults(const std::string& command, const std::string& path, const std::string& name) {
  const Survey survey(path);
  const RecordDefinitions definitions;
  if (!survey.file.IsOpen()) return;
  for (const Finding& finding : FindFaults(survey, definitions)) {
    if (finding.rule->severity != Severity::Error) continue;
    std::fprintf(stderr, "orbntf: %s: %s: warning: %s: %s, %s\n", command.c_str(),
                 Printable(name).c_str(), finding.rule->id, finding.part.c_str(),
                 Printable(finding.words).c_str());
  }
}

ModuleAnswer AskToOpen(const std::string& path) {
  NitfFile document;
  ModuleAnswer word;
  word.status = ToCaller(document.ReadDocument(Widen(path).c_str()));
  if (document.fault.offset >= 0) {
    word.field = std::string(document.fault.prefix) + document.fault.name;
    word.offset = document.fault.offset;
  }
  if (word.status == ORB_SUCCESS) return word;
  word.words = WhyUnreadable(path);
  if (!word.words.empty()) return word;
  const std::string why = Explain(path, document, word.status);
  word.words = (why.empty() ? MeaningOf(word.status) : why) + PlaceOf(document.fault);
  return word;
}

}  // namespace tool
