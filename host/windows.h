// The few Windows calls and types that the module uses. On Windows this is the real header; elsewhere
// hostkit supplies calls of the same names and meanings.
#pragma once

#include "orbntf/platform.h"

#if defined(_WIN32)

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <io.h>
#include <windows.h>

/// Tests a wide path as `_waccess` does: 0 when the file grants `mode` (0 tests existence), else -1.
inline int WideAccess(const char16_t* path, int mode) {
  return _waccess(reinterpret_cast<const wchar_t*>(path), mode);
}

/// Whether two wide paths name one existing file, links followed.
bool WideIsSameFile(const char16_t* a, const char16_t* b);

#else

using HDC = struct HDC__*;
using HPALETTE = struct HPALETTE__*;
using HWND = struct HWND__*;
using HGLOBAL = void*;
using COLORREF = uint32_t;
using LONG = int32_t;
using UINT = uint32_t;

/// A rectangle in pixels; right and bottom lie just outside it.
struct RECT {
  LONG left, top, right, bottom;
};

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
/// Whether two wide paths name one existing file, links followed.
ORB_HOST_API bool ORB_CALL WideIsSameFile(const char16_t* a, const char16_t* b);
/// Tests a wide path: 0 when the file grants `mode` (0 tests existence), else -1.
ORB_HOST_API int ORB_CALL WideAccess(const char16_t* path, int mode);

#endif
