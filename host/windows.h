// The few Windows calls and types that the module uses. On Windows this is the real header; elsewhere
// hostkit supplies calls of the same names and meanings.
#pragma once

#include <cstdint>

#include "orbntf/host.h"

/// What tells one file from every other while it is open, whatever its names.
struct WideFileIdentity {
  uint64_t volume, index;
  bool operator==(const WideFileIdentity&) const = default;
};

#if defined(_WIN32)

#include <io.h>

static_assert(sizeof(wchar_t) == sizeof(char16_t) && alignof(wchar_t) == alignof(char16_t) &&
                  static_cast<wchar_t>(-1) == static_cast<char16_t>(-1),
              "wide text of Windows and of the module is the same");
inline const wchar_t* WindowsText(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }

/// Tests a wide path as `_waccess` does: 0 when the file grants `mode` (0 tests existence), else -1.
inline int WideAccess(const char16_t* path, int mode) { return _waccess(WindowsText(path), mode); }

/// Finds the identity of the file that a wide path names, links followed; false when there is none.
inline bool WideIdentify(const char16_t* path, WideFileIdentity* identity) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE file = CreateFileW(WindowsText(path), 0, kShareAll, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  BY_HANDLE_FILE_INFORMATION information;
  const bool known = GetFileInformationByHandle(file, &information) != 0;
  CloseHandle(file);
  if (known) {
    *identity = {information.dwVolumeSerialNumber,
                 uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
  }
  return known;
}

#else

using HWND = struct HWND__*;
using HGLOBAL = void*;
using LONG = int32_t;
using UINT = uint32_t;

inline constexpr UINT MB_OK = 0;
inline constexpr uint32_t SRCCOPY = 0x00CC0020;

/// Selects `palette` into a device context and returns the one selected before (null for none).
ORB_HOST_API HPALETTE ORB_CALL SelectPalette(HDC dc, HPALETTE palette, int forceBackground);
/// Maps the selected palette; returns how many of its entries changed.
ORB_HOST_API UINT ORB_CALL RealizePalette(HDC dc);
/// Fills a rectangle; returns non-zero.
ORB_HOST_API int ORB_CALL SetRect(RECT* rect, int left, int top, int right, int bottom);
/// Shows a modal message; returns the button pressed (1 for OK).
ORB_HOST_API int ORB_CALL MessageBoxA(HWND owner, const char* text, const char* caption, UINT type);
/// Sends text to a debugger.
ORB_HOST_API void ORB_CALL OutputDebugStringA(const char* text);
/// Gives the bytes of a global memory handle, null for a handle that is none.
ORB_HOST_API void* ORB_CALL GlobalLock(HGLOBAL memory);
/// Ends a GlobalLock.
ORB_HOST_API int ORB_CALL GlobalUnlock(HGLOBAL memory);
/// Finds the identity of the file that a wide path names, links followed; false when there is none.
ORB_HOST_API bool ORB_CALL WideIdentify(const char16_t* path, WideFileIdentity* identity);
/// Tests a wide path: 0 when the file grants `mode` (0 tests existence), else -1.
ORB_HOST_API int ORB_CALL WideAccess(const char16_t* path, int mode);

#endif
