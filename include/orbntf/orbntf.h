/* orbntf: NITF 2.1 / NSIF files as composite images and as documents.
 *
 * Usable from C and C++. Every export runs on its caller's thread; a document must not be used from two
 * threads at once. Wide text is UTF-16. */
#ifndef ORBNTF_H
#define ORBNTF_H

#include "orbntf/platform.h"

/* ------------------------------------------------------------------ status codes */

/** Statuses of the exports. Codes of the host toolkit pass through unchanged. */
enum OrbStatus {
  ORB_SUCCESS = 1,
  ORB_LIMIT_REACHED = 0,         /**< 999 segments of the kind; null handle in header Get and Set */
  ORB_NO_SUCH_RECORD = 87,       /**< null public record, or an index without a segment */
  ORB_OUT_OF_MEMORY = -1,        /**< out of memory; no device context; text not convertible */
  ORB_NO_BITMAP = -2,            /**< no usable bitmap to append */
  ORB_SHORT_WRITE = -5,          /**< a write moved fewer bytes than asked */
  ORB_SHORT_READ = -7,           /**< a read moved fewer bytes than asked */
  ORB_BAD_STRUCTURE = -9,        /**< not the expected NITF structure; unknown format code */
  ORB_FILE_NOT_FOUND = -10,      /**< the file to open does not exist */
  ORB_INVALID_PARAMETER = -13,   /**< null pointer, text too long, value outside its table */
  ORB_TEXT_NOT_OPENED = -14,     /**< a text file to append does not open */
  ORB_UNSUPPORTED = -16,         /**< not supported */
  ORB_BAD_QUALITY = -21,         /**< quality factor out of range */
  ORB_BAD_BITMAP_DEPTH = -27,    /**< appended bitmap neither 24 nor 8 bits per pixel */
  ORB_BAD_VERSION = -78,         /**< FVER is not "02.10" */
  ORB_NULL_HANDLE = -261,        /**< a null document handle */
  ORB_EMPTY_DRAWING = -501,      /**< an empty vector drawing */
  ORB_NO_DATA = -814,            /**< no data given */
  ORB_BAD_PIXEL_TYPE = -700000,  /**< unsupported PVTYPE */
  ORB_BAD_COMPLEXITY = -700001,  /**< unsupported CLEVEL */
  ORB_BAD_SAMPLE_DEPTH = -700002 /**< more than one band of 16 bits */
};

/* ------------------------------------------------------------------ records of the host toolkit */

struct HostInformationRecord;
struct HostLoadRecord;
struct KernelBitmap;
#if !defined(_WIN32)
struct HDC__;
#define ORB_HDC struct HDC__*
#else
#define ORB_HDC HDC
#include <windows.h>
#endif

#ifdef __cplusplus
struct NitfFile;
typedef NitfFile* NitfHandle;
#else
/** A document. */
typedef struct NitfFile* NitfHandle;
#endif

/* ------------------------------------------------------------------ filter */

/** Reports the size of a file's composite display.
 * @param record the host's; its options gain 0x80000001, its file information is filled on success.
 * @return 1, or the first failure of reading the file. */
ORB_API int32_t ORB_CALL fltInfo(struct HostInformationRecord* record);

/** Draws a file's composite display and hands it to the host's row callback, top row first.
 * @param record the host's; its options gain 0x80000001.
 * @return 1; -9 when a required entry point of the record is missing; the callback's result when it is
 * not 1; otherwise the first failure of reading or drawing. */
ORB_API int32_t ORB_CALL fltLoad(struct HostLoadRecord* record);

/** Saving through the filter is not supported: always -16. */
ORB_API int32_t ORB_CALL fltSave(void* record);

/* ------------------------------------------------------------------ drawing */

/** Draws the composite display into a caller's bitmap record.
 * @param bitmap freed first when it holds pixels; on success it holds a 24-bit canvas, the caller's.
 * @return 1; -13 for a null bitmap record; otherwise the first failure. */
ORB_API int32_t ORB_CALL Orb_NtfRenderBitmap(struct KernelBitmap* bitmap, NitfHandle document);

/** Draws every image and graphic segment, in ascending display level, into a device context.
 * @param record the record of a running fltLoad, or null.
 * @param bitmap the bitmap that the device context paints on.
 * @return 1, or the first failure; what was drawn before it stays. */
ORB_API int32_t ORB_CALL Orb_NitfDrawObjects(struct HostLoadRecord* record, ORB_HDC dc,
                                             struct KernelBitmap* bitmap, NitfHandle document);

/** Size of the composite display, in pixels.
 * @return 1; -1 when it exceeds 2147483647; otherwise the failure of loading a graphic. */
ORB_API int32_t ORB_CALL GetActual_Width_Height(NitfHandle document, uint32_t* width, uint32_t* height);

#endif
