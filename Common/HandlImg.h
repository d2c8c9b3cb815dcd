// Image segments: reading one into a bitmap and painting it at its place.
#pragma once

#include "Common/ImgModes.h"

/// Draws image segments one over the other. An image without a stored block is of one colour: it is
/// painted only once what comes next is known not to cover it.
class ImagePainter {
 public:
  ImagePainter(HostLoadRecord* record, HDC dc, NitfFile& document)
      : record_(record), dc_(dc), document_(document) {}

  /// Reads image segment `index` into a bitmap and paints it. The offsets are those of its attachment. 1,
  /// or the first failure.
  Status Draw(uint32_t index, int32_t rowOffset, int32_t columnOffset);
  /// Paints what was put off; wanted before anything else is painted and at the end.
  Status Finish();

 private:
  // A blank image, and the part of the canvas that it fills.
  struct Blank {
    const ImageSubheader* header = nullptr;  // null: none
    RECT filled{};
  };

  HostLoadRecord* record_;
  HDC dc_;
  NitfFile& document_;
  Blank waiting_;
};

/// Creates the segment's bitmap and fills it through the reader of its compression; -16 when there is
/// none. After a failure the bitmap holds no pixels. `blank` tells that none of them was stored.
Status LoadImageSegment(HostLoadRecord* record, NitfFile& document, uint32_t index, OwnedBitmap& bitmap,
                        bool* blank = nullptr);

/// Whether the file has what an uncompressed image's reader needs at the least: what drawing the segment
/// would answer first, found without touching a pixel. `known` is false, the result 1, for images of
/// which that cannot be told.
Status RequireImageData(NitfFile& document, uint32_t index, bool& known);

/// Gives a bitmap the colours of depth `bits`, entries 0 to 254.
Status PutDefaultColours(KernelBitmap& bitmap, uint32_t bits);
/// Gives a bitmap the segment's display palette; -1.
Status PutDisplayPalette(KernelBitmap& bitmap, const ImageSubheader& header);

/// Makes the bitmap of a downsampled image as large as its subheader says, where the document's rules ask
/// for it. 1, -1, or the host's status.
Status EnlargeToFullSize(const ImageSubheader& header, OwnedBitmap& bitmap);

/// Creates a bitmap of a size with the depth and the colours of a segment.
Status CreateSegmentBitmap(OwnedBitmap& bitmap, const ImageSubheader& header, uint32_t width,
                           uint32_t height);

// Readers of compressed data.

/// Facsimile ("C1", "M1").
Status ReadFacsimileImage(KernelBitmap& segment, const ImageSource& source);
/// JPEG and JPEG 2000 ("C3", "C5", "C6", "C8", "I1" and the masked forms).
Status ReadJpegImage(KernelBitmap& segment, const ImageSource& source);
/// Vector quantisation ("C4", "M4").
Status ReadVectorQuantisedImage(KernelBitmap& segment, const ImageSource& source);
