// Message boxes of Windows are modal: the tests' own function stands where the module would import one.
#include "tests/support/support.h"

namespace test {
namespace {

std::vector<std::string>* caught = nullptr;

int WINAPI KeepMessage(HWND owner, const char* text, const char* caption, UINT type) {
  EXPECT_EQ(owner, nullptr);
  EXPECT_EQ(type, static_cast<UINT>(MB_OK));
  if (caught != nullptr) caught->push_back(std::string(caption) + ": " + text);
  return IDOK;
}

}  // namespace

extern "C" {
extern int(WINAPI* const kMessageBoxImport)(HWND, const char*, const char*,
                                            UINT) __asm__("__imp__MessageBoxA@16");
int(WINAPI* const kMessageBoxImport)(HWND, const char*, const char*, UINT) = &KeepMessage;
}

void CatchMessages(std::vector<std::string>* messages) { caught = messages; }

}  // namespace test
