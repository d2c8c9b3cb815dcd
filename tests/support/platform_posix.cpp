// Message boxes of the stand-in Windows calls.
#include "tests/support/support.h"

// Libraries that keep what they loaded until the process ends.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:libfontconfig\nleak:libcairo\n";
}

namespace test {
namespace {

std::vector<std::string>* caught = nullptr;

void KeepMessage(const char* text, const char* caption) {
  caught->push_back(std::string(caption) + ": " + text);
}

}  // namespace

void CatchMessages(std::vector<std::string>* messages) {
  caught = messages;
  HostkitSetMessageHandler(messages != nullptr ? &KeepMessage : nullptr);
}

}  // namespace test
