// The host toolkit's vector library: drawings held by handle. The module never looks inside one.
// Operations return 1 for success or a negative host code unless said otherwise.
#pragma once

#include "host/kernel.h"

/// Value of VectorHandle::flags before the handle is initialised, and of flags2 afterwards.
inline constexpr uint32_t kVectorHandleFlags = 0x2002;
inline constexpr uint32_t kVectorHandleFlags2 = 0x8000;

/// A point of a drawing, y upwards.
struct VectorPoint {
  double x, y, z;
};

/// How far VectorTranslate moves a drawing.
struct VectorTranslation {
  double x, y, z;
  uint32_t flags;
};

/// Longest layer name, in characters.
inline constexpr uint32_t kVectorLayerNameLength = 64;
/// A layer to add to a drawing.
struct VectorLayer {
  char16_t name[kVectorLayerNameLength + 1];
};

/// Makes the handle an empty drawing.
ORB_HOST_API int32_t ORB_CALL VectorInitialise(VectorHandle* handle);
/// Non-zero when the handle holds no drawing.
ORB_HOST_API int32_t ORB_CALL VectorIsEmpty(const VectorHandle* handle);
/// Releases the drawing; the handle is empty afterwards.
ORB_HOST_API int32_t ORB_CALL VectorFree(VectorHandle* handle);
/// Makes the destination hold a copy of the source's drawing.
ORB_HOST_API int32_t ORB_CALL VectorCopy(VectorHandle* destination, const VectorHandle* source,
                                         uint32_t flags);
/// Sets the colour behind the drawing.
ORB_HOST_API int32_t ORB_CALL VectorSetBackground(VectorHandle* handle, COLORREF colour);
/// Chooses how the next paints are done; 1 is the ordinary way.
ORB_HOST_API int32_t ORB_CALL VectorSetPaintMode(VectorHandle* handle, uint32_t mode);
/// Paints the drawing, scaled to `width` x `height`, into a rectangle of the device context.
ORB_HOST_API int32_t ORB_CALL VectorPaint(HDC dc, const VectorHandle* handle, int32_t width,
                                          int32_t height, int32_t sourceX, int32_t sourceY,
                                          const RECT* destination, const RECT* clip, uint32_t flags);
/// Fills in the least and the greatest point of the drawing's objects.
ORB_HOST_API int32_t ORB_CALL VectorGetExtent(const VectorHandle* handle, VectorPoint* least,
                                              VectorPoint* greatest);
/// Adds an empty layer.
ORB_HOST_API int32_t ORB_CALL VectorAddLayer(VectorHandle* handle, const VectorLayer* layer);

// View operations: a pending translation, then its application; a view rectangle, then its fitting.

/// Notes a translation of the drawing.
ORB_HOST_API int32_t ORB_CALL VectorSetTranslation(VectorHandle* handle,
                                                   const VectorTranslation* translation,
                                                   const void* object, uint32_t flags);
/// Applies the noted translation to every object.
ORB_HOST_API int32_t ORB_CALL VectorApplyTranslation(VectorHandle* handle);
/// Forgets the noted translation.
ORB_HOST_API int32_t ORB_CALL VectorResetTranslation(VectorHandle* handle, const void* object,
                                                     uint32_t flags);
/// Makes a rectangle (y downwards) the part of the plane that the drawing is seen through; a drawing
/// saved afterwards has it as its virtual device extent.
ORB_HOST_API int32_t ORB_CALL VectorSetViewRectangle(VectorHandle* handle, const RECT* rectangle);
/// Resets the origin of the view to the rectangle's corner.
ORB_HOST_API int32_t ORB_CALL VectorResetOrigin(VectorHandle* handle, const void* origin, uint32_t flags);
/// Resets rotation and scale of the view.
ORB_HOST_API int32_t ORB_CALL VectorResetRotation(VectorHandle* handle, uint32_t flags);
ORB_HOST_API int32_t ORB_CALL VectorResetScale(VectorHandle* handle, uint32_t flags);
