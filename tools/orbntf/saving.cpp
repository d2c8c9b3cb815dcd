// Saving a document so that what appears under the output's name is a file that opens with everything in
// it.
#include <filesystem>
#include <fstream>
#include <iostream>

#include "tools/orbntf/document.h"
#include "tools/orbntf/tool.h"
#include "tools/orbntf/verify.h"

namespace tool {
namespace {

// Saves under a temporary path; returns the exit code. Where only lengths are stale, the true ones are
// set and the document is saved again.
int SaveSoundly(const std::string& command, Document& document, const std::string& path,
                const std::string& output) {
  std::string fault;
  for (const bool again : {false, true}) {
    if (again && !SetTrueLengths(document.get())) break;
    const int32_t status = Orb_NITFSaveFileA(document.get(), path.c_str());
    if (status != ORB_SUCCESS) return Report(command, output, status);
    fault = FindFault(document.get(), path);
    if (fault.empty()) return kExitOk;
  }
  std::fprintf(stderr, "orbntf: %s: %s: not written: %s\n", command.c_str(), output.c_str(),
               fault.c_str());
  return kExitStatus;
}

// Through a file of its own, since saving goes back to patch lengths.
int SaveToStandardOutput(const std::string& command, Document& document) {
  OutputFile file((std::filesystem::temp_directory_path() / "orbntf").string());
  if (file.TemporaryPath().empty()) return Report(command, "-", ORB_SHORT_WRITE);
  if (const int code = SaveSoundly(command, document, file.TemporaryPath(), "-"); code != kExitOk)
    return code;
  std::cout << std::ifstream(file.TemporaryPath(), std::ios::binary).rdbuf() << std::flush;
  return Report(command, "-", std::cout ? ORB_SUCCESS : ORB_SHORT_WRITE);
}

}  // namespace

int SaveAs(const std::string& command, Document& document, const std::string& input,
           const std::string& output) {
  if (!input.empty() && IsSameFile(input, output)) return Refuse(command, "the output is the input");
  if (output == "-") return SaveToStandardOutput(command, document);
  OutputFile file(output);
  if (file.TemporaryPath().empty()) return Report(command, output, ORB_SHORT_WRITE);
  if (const int code = SaveSoundly(command, document, file.TemporaryPath(), output); code != kExitOk)
    return code;
  return Report(command, output, file.Commit() ? ORB_SUCCESS : ORB_SHORT_WRITE);
}

}  // namespace tool
