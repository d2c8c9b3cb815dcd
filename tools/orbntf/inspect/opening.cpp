#include "tools/orbntf/inspect/opening.h"

#include "tools/orbntf/inspect/explain.h"
#include "tools/orbntf/tool.h"

namespace tool {

int ReportFile(const std::string& command, const std::string& path, int32_t status) {
  if (status == ORB_SUCCESS) return kExitOk;
  if (const std::string why = WhyUnreadable(path); !why.empty())
    return Report(command, path, status, why);
  // A handle is only given for a file that opens, so the file is read once more.
  NitfFile document;
  (void)document.ReadDocument(Widen(path).c_str());
  return ReportDocument(command, path, document, status);
}

int ReportDocument(const std::string& command, const std::string& path, const NitfFile& document,
                   int32_t status) {
  const std::string words = Explain(path, document, status);
  return Report(command, path, status,
                (words.empty() ? MeaningOf(status) : words) + PlaceOf(document.fault));
}

int OpenDocument(const std::string& command, Document& document, const std::string& path) {
  return ReportFile(command, path, document.Open(path));
}

}  // namespace tool
