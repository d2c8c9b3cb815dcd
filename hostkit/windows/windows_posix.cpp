// The Windows calls of host/windows.h where there is no Windows.
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <new>

#include "hostkit/kernel/gdi.h"

namespace {

std::atomic<HostkitMessageHandler> messageHandler{nullptr};
std::atomic<HostkitDebugHandler> debugHandler{nullptr};

}  // namespace

void ORB_CALL HostkitSetMessageHandler(HostkitMessageHandler handler) { messageHandler = handler; }
void ORB_CALL HostkitSetDebugHandler(HostkitDebugHandler handler) { debugHandler = handler; }

HPALETTE ORB_CALL SelectPalette(HDC dc, HPALETTE palette, int) {
  const HPALETTE previous = hostkit::Context(dc)->palette;
  hostkit::Context(dc)->palette = palette;
  return previous;
}

UINT ORB_CALL RealizePalette(HDC) { return 0; }

int ORB_CALL SetRect(RECT* rect, int left, int top, int right, int bottom) {
  *rect = {left, top, right, bottom};
  return 1;
}

int ORB_CALL MessageBoxA(HWND, const char* text, const char* caption, UINT) {
  if (const HostkitMessageHandler handler = messageHandler) {
    handler(text, caption);
  } else {
    std::fprintf(stderr, "%s: %s\n", caption, text);
  }
  return 1;
}

void ORB_CALL OutputDebugStringA(const char* text) {
  if (const HostkitDebugHandler handler = debugHandler) handler(text);
}

void* ORB_CALL GlobalLock(HGLOBAL memory) {
  return memory == nullptr || HostkitShouldFail(kFaultAllocation) ? nullptr
                                                                  : static_cast<size_t*>(memory) + 1;
}

int ORB_CALL GlobalUnlock(HGLOBAL) { return 0; }

bool ORB_CALL WideIdentify(const char16_t* path, WideFileIdentity* identity) {
  try {
    struct stat status;
    if (stat(hostkit::ToUtf8(path).c_str(), &status) != 0) return false;
    *identity = {status.st_dev, status.st_ino};
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

int ORB_CALL WideAccess(const char16_t* path, int mode) {
  try {
    return access(hostkit::ToUtf8(path).c_str(), mode);
  } catch (const std::bad_alloc&) {
    return -1;
  }
}
