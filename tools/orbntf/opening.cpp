// Opening a document, and telling where a file is at fault.
#include "tools/orbntf/document.h"
#include "tools/orbntf/tool.h"
#include "tools/orbntf/verify.h"

namespace tool {

std::string PlaceOf(const ParseFault& fault) {
  if (fault.offset < 0) return "";
  return std::string(", at ") + fault.prefix + fault.name + ", byte " + std::to_string(fault.offset);
}

int ReportFile(const std::string& command, const std::string& path, int32_t status) {
  if (status == ORB_SUCCESS) return kExitOk;
  // A handle is only given for a file that opens, so the file is read once more.
  NitfFile document;
  (void)document.ReadDocument(Widen(path).c_str());
  return Report(command, path, status, PlaceOf(document.fault));
}

int OpenDocument(const std::string& command, Document& document, const std::string& path) {
  return ReportFile(command, path, document.Open(path));
}

}  // namespace tool
