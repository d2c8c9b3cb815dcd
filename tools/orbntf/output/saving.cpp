#include "tools/orbntf/output/saving.h"

#include "core/format/words.h"
#include "hostkit/hostkit.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/verdict.h"
#include "tools/orbntf/output/output.h"
#include "tools/orbntf/output/true_lengths.h"
#include "tools/orbntf/output/verify.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

// Saves under a temporary path; returns the exit code. Where only lengths are stale, the true ones are
// set and the document is saved again.
int SaveSoundly(const std::string& command, Document& document, const std::string& path,
                const std::string& output) {
  std::string fault;
  for (const bool again : {false, true}) {
    if (again && !SetTrueLengths(document.get())) break;
    (void)HostkitWriteError();
    const int32_t status = Orb_NITFSaveFileA(document.get(), path.c_str());
    const int32_t error = HostkitWriteError();
    if (status != ORB_SUCCESS)
      return Report(command, output, status, error != 0 ? WordsOfErrno(error) : "");
    fault = FindFault(document.get(), path);
    if (fault.empty()) return kExitOk;
  }
  std::fprintf(stderr, "orbntf: %s: %s: not written: %s\n", command.c_str(), Printable(output).c_str(),
               fault.c_str());
  return kExitStatus;
}

}  // namespace

int SaveAs(const std::string& command, Document& document, const std::string& input,
           const std::string& output) {
  if (!input.empty() && Inputs({input}).Hold(output))
    return Refuse(command, "the output is the input; give another name");
  Output file(output);
  if (file.Path().empty()) return Report(command, output, ORB_SHORT_WRITE, file.Problem());
  if (const int code = SaveSoundly(command, document, file.Path(), output); code != kExitOk) return code;
  // A copy is as good as its original.
  if (command != "copy") WarnOfFaults(command, file.Path(), output);
  return Report(command, output, file.Commit() ? ORB_SUCCESS : ORB_SHORT_WRITE, file.Problem());
}

}  // namespace tool
