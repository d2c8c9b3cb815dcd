// The host toolkit's file-format library: the records it passes to a filter, decoding from memory and
// encoding to memory. The records stand in orbntf/host.h. Operations return 1 for success or a negative
// host code unless said otherwise.
#pragma once

#include "host/kernel.h"
#include "host/vector.h"

// ---------------------------------------------------------------- options

inline constexpr uint32_t kLoadOptionsSize = ORB_LOAD_OPTIONS_SIZE;
inline constexpr uint32_t kSaveOptionsSize = 1905;

/// Bits that every load sets in the load options.
inline constexpr uint32_t kLoadFlagsAlways = 0x80000001;
inline constexpr uint32_t kLoadComponentsAreRgb = 0x4000;
inline constexpr uint32_t kLoadSelectedBands = 0x8000;
inline constexpr uint32_t kLoadFixedCanvas = ORB_LOAD_FIXED_CANVAS;
inline constexpr uint32_t kLoadLiftDarkImages = ORB_LOAD_LIFT_DARK;
inline constexpr uint32_t kLoadGraphicOption = 0x100000;

static_assert(sizeof(HostLoadOptions) == kLoadOptionsSize && offsetof(HostLoadOptions, flags) == 12 &&
              offsetof(HostLoadOptions, bands) == 16);

#pragma pack(push, 1)
/// Save options.
struct HostSaveOptions {
  uint32_t size;            ///< +0, 1905
  uint8_t reserved4[1897];  ///< +4
  uint32_t flags;           ///< +1901, the last word: 1 saves to memory
};
#pragma pack(pop)
static_assert(sizeof(HostSaveOptions) == kSaveOptionsSize && offsetof(HostSaveOptions, flags) == 1901);
inline constexpr uint32_t kSaveToMemory = 1;

// ---------------------------------------------------------------- information

inline constexpr uint32_t kFileInfoSize = ORB_FILE_INFO_SIZE;
inline constexpr uint32_t kFormatNitf = 248;
inline constexpr uint32_t kFormatJpegYcc = ORB_FORMAT_JPEG_YCC;
inline constexpr uint32_t kFormatJpegRgb = ORB_FORMAT_JPEG_RGB;
inline constexpr uint32_t kFormatCgm = 62;
inline constexpr uint32_t kFormatFacsimile1D = 66;
inline constexpr uint32_t kFormatFacsimile2D = 67;

static_assert(sizeof(HostFileInfo) == kFileInfoSize && offsetof(HostFileInfo, format) == 4 &&
              offsetof(HostFileInfo, width) == 1032 && offsetof(HostFileInfo, height) == 1036 &&
              offsetof(HostFileInfo, bitsPerPixel) == 1040 &&
              offsetof(HostFileInfo, imageBytes) == 1048 && offsetof(HostFileInfo, pageNumber) == 1092 &&
              offsetof(HostFileInfo, pageCount) == 1096);

// ---------------------------------------------------------------- filter records

inline constexpr uint32_t kRowAlways = 3;
inline constexpr uint32_t kRowFirst = ORB_ROW_FIRST;
inline constexpr uint32_t kRowLast = ORB_ROW_LAST;

static_assert(sizeof(void*) != 4 || (offsetof(HostInformationRecord, fileName) == 0 &&
                                     offsetof(HostInformationRecord, file) == 8 &&
                                     offsetof(HostInformationRecord, info) == 12 &&
                                     offsetof(HostInformationRecord, options) == 36));
static_assert(sizeof(void*) != 4 ||
              (offsetof(HostLoadRecord, fileName) == 0 && offsetof(HostLoadRecord, bitmap) == 4 &&
               offsetof(HostLoadRecord, rowCallback) == 12 && offsetof(HostLoadRecord, userData) == 16 &&
               offsetof(HostLoadRecord, callbackContext) == 56 &&
               offsetof(HostLoadRecord, options) == 2160 &&
               offsetof(HostLoadRecord, loadMemory) == 2192 &&
               offsetof(HostLoadRecord, setLoadCallback) == 2196 &&
               offsetof(HostLoadRecord, required2224) == 2224));

// ---------------------------------------------------------------- operations

/// Fill options records with the library's defaults.
ORB_HOST_API int32_t ORB_CALL FileFormatDefaultLoadOptions(HostLoadOptions* options, uint32_t size);
ORB_HOST_API int32_t ORB_CALL FileFormatDefaultSaveOptions(HostSaveOptions* options, uint32_t size);
/// Tells what image the bytes hold; 1 only when they are recognised.
ORB_HOST_API int32_t ORB_CALL FileFormatInfoMemory(const void* bytes, HostFileInfo* info,
                                                   uint32_t infoSize, uint32_t byteCount, uint32_t flags,
                                                   const HostLoadOptions* options);
/// Encodes a bitmap into a fresh global memory handle; `byteCount` receives the size.
ORB_HOST_API int32_t ORB_CALL FileFormatSaveBitmapMemory(HGLOBAL* memory, const KernelBitmap* bitmap,
                                                         uint32_t format, uint32_t bitsPerPixel,
                                                         int32_t qualityFactor, uint32_t* byteCount,
                                                         const HostSaveOptions* options);
/// Decodes a drawing (CGM) from memory into an initialised handle.
ORB_HOST_API int32_t ORB_CALL FileFormatLoadDrawingMemory(const void* bytes, VectorHandle* handle,
                                                          uint32_t byteCount,
                                                          const HostLoadOptions* options, uint32_t flags);
/// Encodes a drawing (format kFormatCgm) into a fresh global memory handle.
ORB_HOST_API int32_t ORB_CALL FileFormatSaveDrawingMemory(HGLOBAL* memory, const VectorHandle* handle,
                                                          uint32_t format, uint32_t* byteCount,
                                                          const HostSaveOptions* options);
