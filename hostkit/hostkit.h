// Controls of the stand-in toolkit for programs that run on it: limits, message handlers, the leak
// tracker's findings and fault injection. The module knows nothing of these.
#pragma once

#include "host/kernel.h"

// ---------------------------------------------------------------- statuses of the stand-in libraries

inline constexpr int32_t kHostOk = 1;
inline constexpr int32_t kHostNoMemory = -1;
inline constexpr int32_t kHostCloseFailed = -5;
inline constexpr int32_t kHostBadData = -9;         ///< bytes that are not what they should be
inline constexpr int32_t kHostInvalid = -13;        ///< an argument that makes no sense
inline constexpr int32_t kHostUnsupported = -16;    ///< a form that the stand-in does not handle
inline constexpr int32_t kHostNotRecognised = -20;  ///< no known image format
inline constexpr int32_t kHostOverBudget = -31;     ///< more work or memory than the bytes are worth

// ---------------------------------------------------------------- limits and messages

/// Refuses bitmaps and drawings of more pixels than this, those that codecs work on included; 0 lifts the
/// limit.
ORB_HOST_API void ORB_CALL HostkitSetMaxPixels(uint64_t pixels);
/// Bounds what the calling thread does from here on by what a file of some bytes and a canvas of some
/// pixels are worth, or by so many percent of that: operations beyond it are refused with
/// kHostOverBudget. Starts at the full amount with every call.
ORB_HOST_API void ORB_CALL HostkitLimitWork(uint64_t fileBytes, uint64_t canvasPixels, uint32_t percent);
ORB_HOST_API void ORB_CALL HostkitLiftWorkLimit();
/// Bounds it by what is left of a limit of the caller's own: nanoseconds of an ordinary core, and samples
/// that JPEG 2000 decoders make.
ORB_HOST_API void ORB_CALL HostkitGiveWork(uint64_t nanoseconds, uint64_t samples);
/// What is left of the calling thread's limit.
ORB_HOST_API void ORB_CALL HostkitWorkLeft(uint64_t* nanoseconds, uint64_t* samples);

/// Receives message boxes; null restores the default, which prints `caption: text` on standard error.
/// The handlers exist where the stand-in supplies the Windows calls, not on Windows itself.
using HostkitMessageHandler = void (*)(const char* text, const char* caption);
ORB_HOST_API void ORB_CALL HostkitSetMessageHandler(HostkitMessageHandler handler);
/// Receives debugger output; null (the default) drops it.
using HostkitDebugHandler = void (*)(const char* text);
ORB_HOST_API void ORB_CALL HostkitSetDebugHandler(HostkitDebugHandler handler);

/// The system's error (errno) of the calling thread's first read of a file that failed since the last
/// call; 0 for none. A read beyond the end of a file is no error.
ORB_HOST_API int32_t ORB_CALL HostkitReadError();
/// The same of writes.
ORB_HOST_API int32_t ORB_CALL HostkitWriteError();

// ---------------------------------------------------------------- leak tracker

/// One outstanding resource. `kind` is a KernelResourceKind, 0 for kernel memory, 1 for an open file,
/// 2 for a bitmap's pixels or a device context.
struct HostkitLeak {
  int32_t kind;
  uint32_t line;
  const char16_t* file;
  uint64_t bytes;
};
/// Number of outstanding resources; fills up to `capacity` of `leaks`, which may be null.
ORB_HOST_API uint32_t ORB_CALL HostkitOutstanding(HostkitLeak* leaks, uint32_t capacity);
/// Bytes of kernel memory and bitmaps now held, and the most held since the last reset.
ORB_HOST_API uint64_t ORB_CALL HostkitBytesHeld();
ORB_HOST_API uint64_t ORB_CALL HostkitPeakBytes(int32_t reset);

// ---------------------------------------------------------------- fault injection

enum HostkitFault : int32_t {
  kFaultAllocation,
  kFaultOpen,
  kFaultRead,
  kFaultWrite,
  kFaultClose,
  kFaultCodec,
  kFaultKinds
};
/// Makes the n-th call of a kind from now on fail, once; 0 disarms. Restarts the kind's call counter.
ORB_HOST_API void ORB_CALL HostkitArmFault(int32_t kind, uint64_t n);
/// Counts a call and tells whether it is the one to fail. The test support calls it for allocations
/// that do not pass through the kernel.
ORB_HOST_API int32_t ORB_CALL HostkitShouldFail(int32_t kind);
/// Calls of a kind since it was last armed.
ORB_HOST_API uint64_t ORB_CALL HostkitFaultCalls(int32_t kind);
