// Status of every operation.
#pragma once

#include <cstdint>

#include "orbntf/orbntf.h"

/// A status. Codes of the host toolkit that have no name here are held as they are.
enum class [[nodiscard]] Status : int32_t{
    Success = ORB_SUCCESS,
    LimitReached = ORB_LIMIT_REACHED,
    NoSuchRecord = ORB_NO_SUCH_RECORD,
    OutOfMemory = ORB_OUT_OF_MEMORY,
    NoBitmap = ORB_NO_BITMAP,
    ShortWrite = ORB_SHORT_WRITE,
    ShortRead = ORB_SHORT_READ,
    BadStructure = ORB_BAD_STRUCTURE,
    FileNotFound = ORB_FILE_NOT_FOUND,
    InvalidParameter = ORB_INVALID_PARAMETER,
    TextNotOpened = ORB_TEXT_NOT_OPENED,
    Unsupported = ORB_UNSUPPORTED,
    BadQuality = ORB_BAD_QUALITY,
    BadBitmapDepth = ORB_BAD_BITMAP_DEPTH,
    BadVersion = ORB_BAD_VERSION,
    NullHandle = ORB_NULL_HANDLE,
    EmptyDrawing = ORB_EMPTY_DRAWING,
    NoData = ORB_NO_DATA,
    BadPixelType = ORB_BAD_PIXEL_TYPE,
    BadComplexity = ORB_BAD_COMPLEXITY,
    BadSampleDepth = ORB_BAD_SAMPLE_DEPTH,
    /// Internal: a parse in replacement mode used up the replacement data. Never leaves the module.
    ReplacementEnd = 2,
};

constexpr bool Ok(Status status) { return status == Status::Success; }
/// Takes a host library's result as a status.
constexpr Status FromHost(int32_t result) { return static_cast<Status>(result); }
constexpr int32_t ToCaller(Status status) { return static_cast<int32_t>(status); }
