// The host toolkit's file-format library: the records it passes to a filter, decoding from memory and
// encoding to memory. Operations return 1 for success or a negative host code unless said otherwise.
#pragma once

#include "host/kernel.h"
#include "host/vector.h"

// ---------------------------------------------------------------- options

inline constexpr uint32_t kLoadOptionsSize = 44;
inline constexpr uint32_t kSaveOptionsSize = 1905;

/// Bits that every load sets in the load options.
inline constexpr uint32_t kLoadFlagsAlways = 0x80000001;
inline constexpr uint32_t kLoadComponentsAreRgb = 0x4000;
inline constexpr uint32_t kLoadSelectedBands = 0x8000;
inline constexpr uint32_t kLoadFixedCanvas = 0x40000;
inline constexpr uint32_t kLoadLiftDarkImages = 0x80000;
inline constexpr uint32_t kLoadGraphicOption = 0x100000;

/// Load options; the flags are the fourth 32-bit word.
struct HostLoadOptions {
  uint32_t size;           ///< +0, 44
  uint32_t reserved4[2];   ///< +4
  uint32_t flags;          ///< +12
  int32_t bands[3];        ///< +16, red, green and blue band with kLoadSelectedBands
  uint32_t reserved28[4];  ///< +28
};
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

inline constexpr uint32_t kFileInfoSize = 2172;
inline constexpr uint32_t kFormatNitf = 248;
inline constexpr uint32_t kFormatJpegYcc = 10;
inline constexpr uint32_t kFormatJpegRgb = 182;
inline constexpr uint32_t kFormatCgm = 62;
inline constexpr uint32_t kFormatFacsimile1D = 66;
inline constexpr uint32_t kFormatFacsimile2D = 67;

/// What the library knows of an image file.
struct HostFileInfo {
  uint32_t size;               ///< +0
  uint32_t format;             ///< +4, format code
  uint8_t reserved8[1024];     ///< +8
  uint32_t width;              ///< +1032, pixels
  uint32_t height;             ///< +1036, rows
  uint32_t bitsPerPixel;       ///< +1040
  uint32_t reserved1044;       ///< +1044
  uint32_t imageBytes;         ///< +1048, decoded size, 4294967295 when it is more
  uint8_t reserved1052[40];    ///< +1052
  uint32_t pageNumber;         ///< +1092
  uint32_t pageCount;          ///< +1096
  uint8_t reserved1100[1072];  ///< +1100
};
static_assert(sizeof(HostFileInfo) == kFileInfoSize && offsetof(HostFileInfo, format) == 4 &&
              offsetof(HostFileInfo, width) == 1032 && offsetof(HostFileInfo, height) == 1036 &&
              offsetof(HostFileInfo, bitsPerPixel) == 1040 &&
              offsetof(HostFileInfo, imageBytes) == 1048 && offsetof(HostFileInfo, pageNumber) == 1092 &&
              offsetof(HostFileInfo, pageCount) == 1096);

/// Answer of a load-information callback to a decoder of raw data.
struct HostRawDataInfo {
  uint32_t size;
  uint32_t format;  ///< a raw format code
  uint32_t width, height;
  uint32_t bitsPerPixel;
  uint32_t photometric;  ///< 0: a set pixel is white
  uint32_t bitOrder;     ///< 1: most significant bit first
};
/// Describes raw data; returns 1.
using HostLoadInfoCallback = int32_t(ORB_CALL*)(HostRawDataInfo* info, void* userData);

/// Loads an image from memory into a bitmap record that it allocates. `bitsPerPixel` 0 takes the
/// decoder's own depth. A width and height that the record has on entry, 0 for none, are the most that is
/// wanted: a decoder may leave out what lies to the right of and below them.
using HostLoadMemory = int32_t(ORB_CALL*)(const void* bytes, KernelBitmap* bitmap, uint32_t recordSize,
                                          uint32_t bitsPerPixel, uint32_t colourOrder, uint32_t byteCount,
                                          const HostLoadOptions* options, HostFileInfo* info);
/// Installs a load-information callback and returns the previous one.
using HostSetLoadInfoCallback = HostLoadInfoCallback(ORB_CALL*)(HostLoadInfoCallback callback,
                                                                void* userData);

// ---------------------------------------------------------------- filter records

/// Receives one row of a finished canvas; 1 goes on, anything else ends the delivery. `flags` are 3,
/// plus 4 on the first row and 8 on the last.
using HostRowCallback = int32_t(ORB_CALL*)(void* context, KernelBitmap* bitmap, uint8_t* row,
                                           uint32_t flags, int32_t rowNumber, int32_t rowCount,
                                           void* userData);
inline constexpr uint32_t kRowAlways = 3;
inline constexpr uint32_t kRowFirst = 4;
inline constexpr uint32_t kRowLast = 8;

/// Argument of fltInfo. Offsets are those of 32-bit pointers.
struct HostInformationRecord {
  const char16_t* fileName;  ///< +0
  uint32_t reserved4;        ///< +4
  int32_t file;              ///< +8, the host's open handle
  HostFileInfo* info;        ///< +12, filled on success
  uint32_t reserved16[5];    ///< +16
  HostLoadOptions* options;  ///< +36
};

/// Argument of fltLoad. Offsets are those of 32-bit pointers.
struct HostLoadRecord {
  const char16_t* fileName;                 ///< +0
  KernelBitmap* bitmap;                     ///< +4, its bits per pixel are the canvas's
  uint32_t reserved8;                       ///< +8
  HostRowCallback rowCallback;              ///< +12
  void* userData;                           ///< +16
  uint32_t reserved20[9];                   ///< +20
  void* callbackContext;                    ///< +56
  uint32_t reserved60[525];                 ///< +60
  HostLoadOptions* options;                 ///< +2160
  uint32_t reserved2164[7];                 ///< +2164
  HostLoadMemory loadMemory;                ///< +2192, required
  HostSetLoadInfoCallback setLoadCallback;  ///< +2196, required
  uint32_t reserved2200[6];                 ///< +2200
  uint32_t required2224;                    ///< +2224, required to be non-zero
};

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
/// See HostLoadMemory.
ORB_HOST_API int32_t ORB_CALL FileFormatLoadMemory(const void* bytes, KernelBitmap* bitmap,
                                                   uint32_t recordSize, uint32_t bitsPerPixel,
                                                   uint32_t colourOrder, uint32_t byteCount,
                                                   const HostLoadOptions* options, HostFileInfo* info);
/// See HostSetLoadInfoCallback. The callback is the calling thread's.
ORB_HOST_API HostLoadInfoCallback ORB_CALL FileFormatSetLoadInfoCallback(HostLoadInfoCallback callback,
                                                                         void* userData);
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
