// Image segments: reading one into a bitmap and painting it at its place.
#pragma once

#include "Common/ImgPixel.h"

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
