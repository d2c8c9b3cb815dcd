/* The host toolkit's records that the exports take, and the few of its operations that a program needs to
 * make and free them. Usable from C99 and C++. Operations return 1 for success. */
#ifndef ORBNTF_HOST_H
#define ORBNTF_HOST_H

#include <stddef.h>

#include "orbntf/platform.h"

#if defined(_WIN32)
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#else
/** A device context. */
typedef struct HDC__* HDC;
/** A palette of a device. */
typedef struct HPALETTE__* HPALETTE;
/** A colour, 0x00BBGGRR. */
typedef uint32_t COLORREF;
/** A rectangle in pixels; right and bottom lie just outside it. */
typedef struct tagRECT {
  int32_t left, top, right, bottom;
} RECT;
#endif

/* ------------------------------------------------------------------ numbers */

/** Sizes that records and operations are given, bits of flags, and codes. */
enum OrbHostNumber {
  ORB_BITMAP_RECORD_SIZE = 168,
  ORB_LOAD_OPTIONS_SIZE = 44,
  ORB_FILE_INFO_SIZE = 2172,
  ORB_BITMAP_ALLOCATED = 1, /**< of KernelBitmap.flags: it holds pixels */
  ORB_BITMAP_ACCESSED = 2,  /**< between access and release */
  ORB_ORDER_RGB = 0,        /**< order of a pixel's colour bytes; also of palette indexes */
  ORB_ORDER_BGR = 1,
  ORB_ORDER_GREY = 2,
  ORB_ORDER_AS_DECODED = 4, /**< asks a decoder for its own order */
  ORB_VIEW_TOP_LEFT = 1,    /**< kernel row 0 is the picture's top row */
  ORB_VIEW_BOTTOM_LEFT = 4, /**< kernel row 0 is the picture's bottom row, as of a drawn composite */
  ORB_LOAD_FIXED_CANVAS = 0x40000, /**< of HostLoadOptions.flags: draw on 2048 x 2048 pixels */
  ORB_LOAD_LIFT_DARK = 0x80000,    /**< brighten images that are nearly black */
  ORB_ROW_FIRST = 4,               /**< of a row callback's flags */
  ORB_ROW_LAST = 8,
  ORB_FORMAT_JPEG_YCC = 10, /**< format codes of Orb_NITFAppendImageSegment */
  ORB_FORMAT_JPEG_RGB = 182
};

/* ------------------------------------------------------------------ records */

/** A bitmap. 168 bytes with these offsets on every platform; pointers take eight bytes everywhere. */
typedef struct KernelBitmap {
  uint32_t size;            /**< +0, always 168 */
  uint32_t memoryKind;      /**< +4 */
  uint32_t reserved8;       /**< +8 */
  uint32_t width;           /**< +12, pixels */
  uint32_t height;          /**< +16, rows */
  uint32_t bitsPerPixel;    /**< +20 */
  uint32_t bytesPerLine;    /**< +24, a multiple of 4 */
  uint32_t colourOrder;     /**< +28, ORB_ORDER_... */
  uint32_t viewPerspective; /**< +32, ORB_VIEW_... */
  uint32_t flags;           /**< +36, ORB_BITMAP_... */
  uint32_t colourCount;     /**< +40, palette entries, 0 for none */
  uint32_t interleaved;     /**< +44, hint of readers that deliver whole pixels */
  uint64_t pixels;          /**< +48, address of the pixel rows */
  uint64_t palette;         /**< +56, address of colourCount entries of blue, green, red and a byte */
  uint64_t byteCount;       /**< +64, bytesPerLine x height */
  uint8_t reserved72[96];   /**< +72 */
} KernelBitmap;

/** A drawing's handle, held by value. The drawing behind it belongs to the handle's holder. */
typedef struct VectorHandle {
  uint32_t flags;
  uint32_t flags2;
  void* drawing;
} VectorHandle;

/** Load options; the flags are the fourth 32-bit word. */
typedef struct HostLoadOptions {
  uint32_t size;          /**< +0, 44 */
  uint32_t reserved4[2];  /**< +4 */
  uint32_t flags;         /**< +12 */
  int32_t bands[3];       /**< +16, red, green and blue band with the flag 0x8000 */
  uint32_t reserved28[4]; /**< +28 */
} HostLoadOptions;

/** What the library knows of an image file. */
typedef struct HostFileInfo {
  uint32_t size;              /**< +0 */
  uint32_t format;            /**< +4, format code */
  uint8_t reserved8[1024];    /**< +8 */
  uint32_t width;             /**< +1032, pixels */
  uint32_t height;            /**< +1036, rows */
  uint32_t bitsPerPixel;      /**< +1040 */
  uint32_t reserved1044;      /**< +1044 */
  uint32_t imageBytes;        /**< +1048, decoded size, 4294967295 when it is more */
  uint8_t reserved1052[40];   /**< +1052 */
  uint32_t pageNumber;        /**< +1092 */
  uint32_t pageCount;         /**< +1096 */
  uint8_t reserved1100[1072]; /**< +1100 */
} HostFileInfo;

/** Answer of a load-information callback to a decoder of raw data. */
typedef struct HostRawDataInfo {
  uint32_t size;
  uint32_t format; /**< a raw format code */
  uint32_t width, height;
  uint32_t bitsPerPixel;
  uint32_t photometric; /**< 0: a set pixel is white */
  uint32_t bitOrder;    /**< 1: most significant bit first */
} HostRawDataInfo;

/** Describes raw data; returns 1. */
typedef int32_t(ORB_CALL* HostLoadInfoCallback)(HostRawDataInfo* info, void* userData);
/** Loads an image from memory into a bitmap record that it allocates. `bitsPerPixel` 0 takes the
 * decoder's own depth. A width and height that the record has on entry, 0 for none, are the most that is
 * wanted: a decoder may leave out what lies to the right of and below them. */
typedef int32_t(ORB_CALL* HostLoadMemory)(const void* bytes, KernelBitmap* bitmap, uint32_t recordSize,
                                          uint32_t bitsPerPixel, uint32_t colourOrder, uint32_t byteCount,
                                          const HostLoadOptions* options, HostFileInfo* info);
/** Installs a load-information callback and returns the previous one. */
typedef HostLoadInfoCallback(ORB_CALL* HostSetLoadInfoCallback)(HostLoadInfoCallback callback,
                                                                void* userData);
/** Receives one row of a finished canvas; 1 goes on, anything else ends the delivery. `flags` are 3, plus
 * ORB_ROW_FIRST and ORB_ROW_LAST. */
typedef int32_t(ORB_CALL* HostRowCallback)(void* context, KernelBitmap* bitmap, uint8_t* row,
                                           uint32_t flags, int32_t rowNumber, int32_t rowCount,
                                           void* userData);

/** Argument of fltInfo. Offsets are those of 32-bit pointers. */
typedef struct HostInformationRecord {
  const char16_t* fileName; /**< +0 */
  uint32_t reserved4;       /**< +4 */
  int32_t file;             /**< +8, the host's open handle, -1 for none */
  HostFileInfo* info;       /**< +12, filled on success */
  uint32_t reserved16[5];   /**< +16 */
  HostLoadOptions* options; /**< +36 */
} HostInformationRecord;

/** Argument of fltLoad. Offsets are those of 32-bit pointers. */
typedef struct HostLoadRecord {
  const char16_t* fileName;                /**< +0 */
  KernelBitmap* bitmap;                    /**< +4, its bits per pixel are the canvas's */
  uint32_t reserved8;                      /**< +8 */
  HostRowCallback rowCallback;             /**< +12 */
  void* userData;                          /**< +16 */
  uint32_t reserved20[9];                  /**< +20 */
  void* callbackContext;                   /**< +56 */
  uint32_t reserved60[525];                /**< +60 */
  HostLoadOptions* options;                /**< +2160 */
  uint32_t reserved2164[7];                /**< +2164 */
  HostLoadMemory loadMemory;               /**< +2192, required */
  HostSetLoadInfoCallback setLoadCallback; /**< +2196, required */
  uint32_t reserved2200[6];                /**< +2200 */
  uint32_t required2224;                   /**< +2224, required to be non-zero */
} HostLoadRecord;

/* ------------------------------------------------------------------ operations */

/** Makes an empty record: size as given, no pixels. */
ORB_HOST_API int32_t ORB_CALL KernelInitialiseBitmap(KernelBitmap* bitmap, uint32_t recordSize,
                                                     uint32_t width, uint32_t height,
                                                     uint32_t bitsPerPixel);
/** Allocates zeroed pixel rows (or takes a copy of `size` bytes of `data`). Depths up to 8 bits start
 * with the default colour table when no palette is given. A side of 0, a depth outside 1 to 64 or more
 * than 2^31 - 1 bytes gives -1 and allocates nothing. */
ORB_HOST_API int32_t ORB_CALL KernelAllocateBitmap(KernelBitmap* bitmap, uint32_t recordSize,
                                                   uint32_t memoryKind, uint32_t width, uint32_t height,
                                                   uint32_t bitsPerPixel, uint32_t colourOrder,
                                                   HPALETTE palette, uint32_t viewPerspective,
                                                   const void* data, uint32_t size);
/** Frees the pixels and the palette and clears the allocated flag. */
ORB_HOST_API int32_t ORB_CALL KernelFreeBitmap(KernelBitmap* bitmap);
/** See HostLoadMemory. */
ORB_HOST_API int32_t ORB_CALL FileFormatLoadMemory(const void* bytes, KernelBitmap* bitmap,
                                                   uint32_t recordSize, uint32_t bitsPerPixel,
                                                   uint32_t colourOrder, uint32_t byteCount,
                                                   const HostLoadOptions* options, HostFileInfo* info);
/** See HostSetLoadInfoCallback. The callback is the calling thread's. */
ORB_HOST_API HostLoadInfoCallback ORB_CALL FileFormatSetLoadInfoCallback(HostLoadInfoCallback callback,
                                                                         void* userData);

#endif
