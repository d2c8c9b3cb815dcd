// The host toolkit's display, effects, colour and image-effects libraries: painting a bitmap into a
// device context, colour operations and combining bitmaps. Operations return 1 for success.
#pragma once

#include "host/kernel.h"

/// Makes a palette that shows the bitmap's colours on the device context, null when none is needed.
/// Freed with KernelDeleteObject.
ORB_HOST_API HPALETTE ORB_CALL DisplayCreatePalette(HDC dc, const KernelBitmap* bitmap);

/// Paints a bitmap (or a source rectangle of it) pixel by pixel into `destination`, clipped to the
/// device context and to the clip rectangles that are given.
ORB_HOST_API int32_t ORB_CALL DisplayPaintBitmap(HDC dc, KernelBitmap* bitmap, const RECT* source,
                                                 const RECT* sourceClip, const RECT* destination,
                                                 const RECT* destinationClip, uint32_t rasterOperation);

/// Paints like DisplayPaintBitmap, leaving out every pixel of the transparent colour. The numbers
/// between the clip rectangle and the colour are settings of effects that this call does not use.
ORB_HOST_API int32_t ORB_CALL EffectsPaintTransparent(
    HDC dc, KernelBitmap* bitmap, const RECT* source, const RECT* sourceClip, const RECT* destination,
    const RECT* destinationClip, int32_t steps, int32_t delay, int32_t speed, int32_t cycles,
    int32_t pass, int32_t maximumPass, int32_t kind, int32_t smooth, COLORREF transparent,
    int32_t reserved1, int32_t reserved2, uint32_t rasterOperation);

/// Counts a bitmap's luminance (palettes applied) into `count` counters; adds to what they hold.
ORB_HOST_API int32_t ORB_CALL ColourHistogram(KernelBitmap* bitmap, uint32_t* counters, uint32_t count,
                                              uint32_t flags);
/// Brightens a bitmap by thousandths of full scale, clamped.
ORB_HOST_API int32_t ORB_CALL ColourAdjust(KernelBitmap* bitmap, int32_t thousandths);
/// Merges three band bitmaps of one size into a fresh 24-bit bitmap: the first is blue, the last red.
/// The caller frees the destination. `flags` is 0.
ORB_HOST_API int32_t ORB_CALL ColourMerge(KernelBitmap* destination, const KernelBitmap* bands,
                                          uint32_t recordSize, uint32_t flags);

/// Operation value that copies.
inline constexpr uint32_t kCombineCopy = 800;
/// Combines `width` x `height` pixels of `source` at (sourceX, sourceY) into `destination` at (x, y),
/// clipped to both. Equal depths copy bits; others convert colours.
ORB_HOST_API int32_t ORB_CALL ImageEffectsCombine(KernelBitmap* destination, uint32_t x, uint32_t y,
                                                  uint32_t width, uint32_t height, KernelBitmap* source,
                                                  uint32_t sourceX, uint32_t sourceY, uint32_t operation);
