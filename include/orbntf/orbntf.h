/* orbntf: NITF 2.1 / NSIF files as composite images and as documents.
 *
 * Usable from C and C++. Every export runs on its caller's thread; a document must not be used from two
 * threads at once. Wide text is UTF-16. */
#ifndef ORBNTF_H
#define ORBNTF_H

#include "orbntf/host.h"

/* ------------------------------------------------------------------ status codes */

/** Statuses of the exports. Codes of the host toolkit pass through unchanged. */
enum OrbStatus {
  ORB_SUCCESS = 1,
  ORB_LIMIT_REACHED = 0,         /**< 999 segments of the kind; null handle in header Get and Set */
  ORB_NO_SUCH_RECORD = 87,       /**< null public record, or an index without a segment */
  ORB_OUT_OF_MEMORY = -1,        /**< out of memory; no device context; no narrow text */
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

/* ------------------------------------------------------------------ documents */

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
 * @return 1; -9 when a required entry point or the row callback of the record is missing; the callback's
 * result when it is not 1; otherwise the first failure of reading or drawing. */
ORB_API int32_t ORB_CALL fltLoad(struct HostLoadRecord* record);

/** Saving through the filter is not supported: always -16. */
ORB_API int32_t ORB_CALL fltSave(void* record);

/* ------------------------------------------------------------------ drawing */

/** Draws the composite display into a caller's bitmap record. The background is the one that the file was
 * read with: one that Orb_NITFSetNITFHeader gave since is written by a save and drawn from the saved
 * file. An appended segment has its place on the canvas at once, but is drawn only from a saved and
 * reopened file: before that its data is looked for in the source file, which ends in -7 (always for a
 * document without a file) or in a codec's refusal.
 * @param bitmap freed first when it holds pixels; on success it holds a 24-bit canvas, the caller's.
 * @param document whose segments are drawn.
 * @return 1; -13 for a null bitmap record; otherwise the first failure. */
ORB_API int32_t ORB_CALL Orb_NtfRenderBitmap(struct KernelBitmap* bitmap, NitfHandle document);

/** Draws every image and graphic segment, in ascending display level, into a device context.
 * @param record the record of a running fltLoad, or null.
 * @param bitmap the bitmap that the device context paints on.
 * @param dc drawn into.
 * @param document whose segments are drawn.
 * @return 1, or the first failure; what was drawn before it stays. */
ORB_API int32_t ORB_CALL Orb_NitfDrawObjects(struct HostLoadRecord* record, struct HDC__* dc,
                                             struct KernelBitmap* bitmap, NitfHandle document);

/** Size of the composite display, in pixels. Appended images count with their places. An appended drawing
 * is looked for in the source file, which has none: -7 or the host's refusal until the document is saved
 * and reopened.
 * @return 1; -1 when it exceeds 2147483647; otherwise the failure of loading a graphic. */
ORB_API int32_t ORB_CALL GetActual_Width_Height(NitfHandle document, uint32_t* width, uint32_t* height);

/* ------------------------------------------------------------------ documents: public records
 *
 * Byte-packed. Strings are zero-terminated, in the file's own character set, at the field's full width;
 * character arrays are dates without a terminator. Get fills a record, which its caller has zeroed
 * before, with memory that only the matching Free export releases; Set only reads it. Field meanings:
 * MIL-STD-2500C, appendix A. */

#pragma pack(push, 1)

/** The file header. The last four dates and FVER come behind the other fields. */
typedef struct NITFHeader {
  char* FHDR;
  int32_t CLEVEL; /**< complexity level: 1 to 7 or 99 */
  char* STYPE;
  char* OSTAID;
  char* FTITLE;
  char* FSCLAS;
  char* FSCLSY;
  char* FSCODE;
  char* FSCTLH;
  char* FSREL;
  char* FSDCTP;
  char* FSDCXM;
  char* FSDG;
  char* FSCLTX;
  char* FSCATP;
  char* FSCAUT;
  char* FSCRSN;
  char* FSCTLN;
  char* ONAME;
  char* OPHONE;
  int32_t HL; /**< header length, bytes */
  int32_t FL; /**< file length, bytes */
  int32_t FSCOP;
  int32_t FSCPYS;
  int32_t ENCRYP;
  uint32_t NUMI;
  int32_t* LISH; /**< NUMI subheader lengths */
  int32_t* LI;   /**< NUMI data lengths */
  uint32_t NUMS;
  int32_t* LSSH; /**< NUMS subheader lengths */
  int32_t* LS;   /**< NUMS data lengths */
  int32_t NUMX;  /**< Set only */
  uint32_t NUMT;
  int32_t* LTSH;   /**< NUMT subheader lengths */
  int32_t* LT;     /**< NUMT data lengths */
  uint32_t NUMDES; /**< Set only */
  int32_t* LDSH;   /**< NUMDES subheader lengths; Set only */
  int32_t* LD;     /**< NUMDES data lengths; Set only */
  uint32_t NUMRES; /**< Set only */
  int32_t* LRESH;  /**< NUMRES subheader lengths; Set only */
  int32_t* LRE;    /**< NUMRES data lengths; Set only */
  int32_t UDHDL;   /**< Set only */
  int32_t UDHOFL;  /**< Set only */
  uint8_t* UDHD;   /**< UDHDL - 3 bytes; Set only */
  int32_t XHDL;    /**< Set only */
  int32_t XHDLOFL; /**< Set only */
  uint8_t* XHD;    /**< XHDL - 3 bytes; Set only */
  uint32_t FBKGC;  /**< red in the lowest byte, then green, blue; Set only */
  char FSSRDT[8];
  char FSDGDT[8];
  char FSDCDT[8];
  char FDT[14];
  float FVER; /**< 2.1 for "02.10" */
} NITFHeader;

/** An image subheader. */
typedef struct ImageHeader {
  char* IM;
  char* IID1;
  char IDATIM[14];
  char* TGTID;
  char* IID2;
  char* ISCLAS;
  char* ISCLSY;
  char* ISCODE;
  char* ISCTLH;
  char* ISREL;
  char* ISDCTP;
  char ISDCDT[8];
  char* ISDCXM;
  char* ISDG;
  char ISDGDT[8];
  char* ISCLTX;
  char* ISCATP;
  char* ISCAUT;
  char* ISCRSN;
  char ISSRDT[8];
  char* ISCTLN;
  int32_t ENCRYP;
  char* ISORCE;
  int32_t NROWS;
  int32_t NCOLS;
  char* PVTYPE;
  char* IREP;
  char* ICAT;
  int32_t ABPP;
  char* PJUST;
  char* ICORDS;
  char* IGEOLO;
  uint32_t NICOM;
  char** ICOM; /**< NICOM strings */
  char* IC;
  char* COMRAT;
  uint32_t NBANDS;
  int32_t XBANDS;
  char** IREPBAND; /**< NBANDS strings; neither Get nor Set uses it */
  char** ISUBCAT;  /**< the same */
  char** IFC;      /**< the same */
  char** IMFLT;    /**< the same */
  int32_t ISYNC;
  char* IMODE;
  int32_t NBPR;
  int32_t NBPC;
  int32_t NPPBH;
  int32_t NPPBV;
  int32_t NBPP;
  int32_t IDLVL;
  int32_t IALVL;
  int32_t ILOCrow;
  int32_t ILOCcolumn;
  char* IMAG;
  int32_t UDIDL;
  int32_t UDOFL;
  char* UDID; /**< UDIDL - 3 bytes, terminated */
  int32_t IXSHDL;
  int32_t IXSOFL;
  uint8_t* IXSHD; /**< IXSHDL - 3 bytes */
  int32_t IMDATOFF;
  uint16_t BMRLNTH;
  uint16_t TMRLNTH;
  uint16_t TPXCDLNTH; /**< in bits */
  uint8_t* TPXCD;     /**< pad pixel code, (TPXCDLNTH + 7) / 8 bytes */
} ImageHeader;

/** A graphic subheader. The numbers of SBND1 and SBND2 stand in the order of the field. */
typedef struct GraphicHeader {
  char* SY;
  char* SID;
  char* SNAME;
  char* SSCLAS;
  char* SSCLSY;
  char* SSCODE;
  char* SSCTLH;
  char* SSREL;
  char* SSDCTP;
  char SSDCDT[8];
  char* SSDCXM;
  char* SSDG;
  char SSDGDT[8];
  char* SSCLTX;
  char* SSCATP;
  char* SSCAUT;
  char* SSCRSN;
  char SSSRDT[8];
  char* SSCTLN;
  int32_t ENCRYP;
  char* SFMT;
  int32_t SSTRUCT;
  int32_t SDLVL;
  int32_t SALVL;
  int32_t SLOCrow;
  int32_t SLOCcolumn;
  int32_t SBND1row;
  int32_t SBND1column;
  char* SCOLOR;
  int32_t SBND2row;
  int32_t SBND2column;
  int32_t SRES1;
  int32_t SXSHDL;
  int32_t SXSOFL;
  uint8_t* SXSHD; /**< SXSHDL - 3 bytes */
} GraphicHeader;

/** A text subheader. */
typedef struct TextHeader {
  char* TE;
  char* TEXTID;
  int32_t TXTALVL;
  char TXTDT[14];
  char* TXTITL;
  char* TSCLAS;
  char* TSCLSY;
  char* TSCODE;
  char* TSCTLH;
  char* TSREL;
  char* TSDCTP;
  char TSDCDT[8];
  char* TSDCXM;
  char* TSDG;
  char TSDGDT[8];
  char* TSCLTX;
  char* TSCATP;
  char* TSCAUT;
  char* TSCRSN;
  char TSSRDT[8];
  char* TSCTLN;
  int32_t ENCRYP;
  char* TXTFMT;
  int32_t TXSHDL;
  int32_t TXSOFL;
  uint8_t* TXSHD; /**< TXSHDL - 3 bytes */
} TextHeader;

#pragma pack(pop)

/* ------------------------------------------------------------------ documents: life and status */

/** Opens a file as a document, or starts an empty one.
 * @param handle receives the document, null after a failure. The caller ends it with Orb_NITFDestroy.
 * @param fileName zero-terminated UTF-16 path, or null for an empty document.
 * @return 1; -1 for a null handle pointer; -10 when the file does not exist; the failure of reading it.
 */
ORB_API int32_t ORB_CALL Orb_NITFCreate(NitfHandle* handle, const char16_t* fileName);
/** The same with a narrow (UTF-8) path; -1 when it cannot be converted, as null cannot. */
ORB_API int32_t ORB_CALL Orb_NITFCreateA(NitfHandle* handle, const char* fileName);
/** Ends a document: closes its file and frees everything it holds; the handle becomes null.
 * @return 1, or -261 for a null handle. */
ORB_API int32_t ORB_CALL Orb_NITFDestroy(NitfHandle* handle);
/** Flags: 1 the document has no image, graphic or text segment; 2 it has a file header.
 * @return the flags, or -261 for a null handle. */
ORB_API int32_t ORB_CALL Orb_NITFGetStatus(NitfHandle handle);
/** Numbers of segments; 0 for a null handle. */
ORB_API uint32_t ORB_CALL Orb_NITFGetImageHeaderCount(NitfHandle handle);
ORB_API uint32_t ORB_CALL Orb_NITFGetGraphicHeaderCount(NitfHandle handle);
ORB_API uint32_t ORB_CALL Orb_NITFGetTextHeaderCount(NitfHandle handle);

/* ------------------------------------------------------------------ documents: header exchange */

/** Fills a record from the file header. The fields marked "Set only" keep what the caller had in them: a
 * caller who gives the record back with Set fills them first, from the file's own header or from what it
 * wants, or they become zeros: the background black, the extended data absent (UDHDL, XHDL). A null UDHD
 * or XHD keeps the bytes that there are; the length beside it counts their 3 overflow characters too.
 * When the extended data becomes longer or shorter, HL and FL are the caller's to change by as much: they
 * are written as they were set. After an append Get still gives the HL and the counts that the file had,
 * FL with what was appended; a save writes the true ones as long as HL is given back unchanged. 1; 0 for
 * a null handle; 87 for a null record; -1. */
ORB_API int32_t ORB_CALL Orb_NITFGetNITFHeader(NitfHandle handle, struct NITFHeader* record);
/** Stores a record in the file header, field by field; a refused field keeps its old value and the rest
 * goes on. Lengths are stored for the segments that the document has. 1; 0 for a null handle; 87 for a
 * null record. */
ORB_API int32_t ORB_CALL Orb_NITFSetNITFHeader(NitfHandle handle, const struct NITFHeader* record);
/** Releases what Get allocated. 1; 87 for a null record. */
ORB_API int32_t ORB_CALL Orb_NITFFreeNITFHeader(struct NITFHeader* record);

/** Fills a record from an image subheader. 1; 0 for a null handle; -13 for a null record; 87 for an
 * index without an image; -1. */
ORB_API int32_t ORB_CALL Orb_NITFGetImageHeader(NitfHandle handle, uint32_t index,
                                                struct ImageHeader* record);
/** Stores a record in an image subheader. The first refused field ends it: those before it are stored.
 * ICORDS and IC keep LISH and FL in step; a caller that changes NBANDS, XBANDS, NICOM, UDIDL or IXSHDL
 * sets them itself, as what a save writes is found by them; this holds also where a field behind a
 * changed NBANDS is refused. NICOM cannot exceed the comments that there are. A level set here is written
 * and read back, but the next append counts from the level that was read. 1; 0 for a null handle; 87 for
 * a null record or an index without an image; -13 for a value outside its field or table; -1. */
ORB_API int32_t ORB_CALL Orb_NITFSetImageHeader(NitfHandle handle, uint32_t index,
                                                const struct ImageHeader* record);
/** Releases what Get allocated. 1; 87 for a null record. */
ORB_API int32_t ORB_CALL Orb_NITFFreeImageHeader(struct ImageHeader* record);

/** The same for graphic subheaders, but that a null record gives 87 from Get too, and that the next
 * append counts from a level set here. A caller that changes SXSHDL sets LSSH and FL itself. */
ORB_API int32_t ORB_CALL Orb_NITFGetGraphicHeader(NitfHandle handle, uint32_t index,
                                                  struct GraphicHeader* record);
ORB_API int32_t ORB_CALL Orb_NITFSetGraphicHeader(NitfHandle handle, uint32_t index,
                                                  const struct GraphicHeader* record);
ORB_API int32_t ORB_CALL Orb_NITFFreeGraphicHeader(struct GraphicHeader* record);

/** The same for text subheaders. Get frees the TXSHD that the record holds. A caller that changes TXSHDL
 * sets LTSH and FL itself. */
ORB_API int32_t ORB_CALL Orb_NITFGetTextHeader(NitfHandle handle, uint32_t index,
                                               struct TextHeader* record);
ORB_API int32_t ORB_CALL Orb_NITFSetTextHeader(NitfHandle handle, uint32_t index,
                                               const struct TextHeader* record);
ORB_API int32_t ORB_CALL Orb_NITFFreeTextHeader(struct TextHeader* record);

/* ------------------------------------------------------------------ documents: appending */

struct VectorHandle;

/** Compresses a bitmap into a new image segment behind the others, one display level above everything.
 * @param formatCode 182 for RGB components, 10 for YCbCr.
 * @param bitsPerPixel 24 or 8.
 * @param qualityFactor 2 (best) to 255.
 * @param handle the document.
 * @param bitmap the picture; it stays the caller's.
 * @return 1; 0 when there are 999 images; -261 null handle; -2 no bitmap; -27, -21, -9 for the other
 * arguments; -13 for a side above 9998 or a file length that FL cannot take; -1; the host's failure.
 * After a failure the document is as it was. */
ORB_API int32_t ORB_CALL Orb_NITFAppendImageSegment(NitfHandle handle, struct KernelBitmap* bitmap,
                                                    uint32_t formatCode, uint32_t bitsPerPixel,
                                                    int32_t qualityFactor);
/** Encodes a drawing into a new graphic segment.
 * @param drawing moved below the zero line and seen through the rectangle; it stays the caller's.
 * @param rectangle its bounds on the canvas.
 * @param handle the document.
 * @return 1; 0 when there are 999 graphics; -261 null handle or rectangle; -814 no drawing; -501 an empty
 * one; -13 an extent beyond 99999, more than 999999 bytes or an FL that is full; the host's failure.
 * After a failure the document is as it was. */
ORB_API int32_t ORB_CALL Orb_NITFAppendGraphicSegment(NitfHandle handle, struct VectorHandle* drawing,
                                                      const struct tagRECT* rectangle);
/** Reads a text file into a new text segment.
 * @return 1; 0 when there are 999 texts; -261 null handle; -14 when the file does not open; -13 when it
 * has more than 99999 bytes or FL is full; -7; -1. After a failure the document is as it was. */
ORB_API int32_t ORB_CALL Orb_NITFAppendTextSegment(NitfHandle handle, const char16_t* fileName);
/** The same with a narrow path; -1 when it cannot be converted. */
ORB_API int32_t ORB_CALL Orb_NITFAppendTextSegmentA(NitfHandle handle, const char* fileName);

/* ------------------------------------------------------------------ documents: content and saving */

/** Replaces a graphic segment's drawing by a copy of the caller's.
 * @return 1; -261 null handle; -13 no such graphic, or a drawing of more than 999999 bytes; -814 no
 * drawing; -501 an empty one; -1; the host's failure. */
ORB_API int32_t ORB_CALL Orb_NITFSetVectorHandle(NitfHandle handle, uint32_t index,
                                                 const struct VectorHandle* drawing);
/** A graphic segment's drawing, loaded from the file: the document's, until it is loaded again or the
 * document ends. Null for a null handle, no such graphic, or a drawing that does not load. */
ORB_API struct VectorHandle* ORB_CALL Orb_NITFGetVectorHandle(NitfHandle handle, uint32_t index);
/** A text segment's text.
 * @param buffer null to ask for the length; else room for the length and a terminator.
 * @param length may be null; receives the length without terminator.
 * @param handle the document.
 * @param index the text segment, from 0.
 * @return 1; -261 null handle; 87 no such text; -7; -1. */
ORB_API int32_t ORB_CALL Orb_NITFGetTextSegment(NitfHandle handle, uint32_t index, char* buffer,
                                                uint32_t* length);
/** Writes the document as a NITF 2.1 file; the document stays usable. Lengths are written as the header
 * holds them; after Orb_NITFSetVectorHandle FL is still the old one. A save that fails leaves what it
 * wrote under the name: save under another name and rename where a file is there already.
 * @return 1; -261 null handle; -13 when the path names the document's own file, by whatever name; -5 when
 * the output does not open or does not take everything; -7; -1; -700000. */
ORB_API int32_t ORB_CALL Orb_NITFSaveFile(NitfHandle handle, const char16_t* fileName);
/** The same with a narrow path; -1 when it cannot be converted. */
ORB_API int32_t ORB_CALL Orb_NITFSaveFileA(NitfHandle handle, const char* fileName);

#endif
