// Read in front of every source of the module where the fault tests build it: each call to the host goes
// through Call, which knows its place in the source and may fail it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <type_traits>
#include <utility>

#include "host/display.h"
#include "host/fileformat.h"
#include "host/kernel.h"
#include "host/vector.h"
#include "host/windows.h"
#include "tests/faults/result.h"

namespace faults {

/// Whether the call of a host operation at a place of the source is to fail.
bool ShouldFail(const char* name, const char* file, int line);

/// Keeps a call's arguments where a test asks for them.
void Keep(const char* name, std::initializer_list<int64_t> arguments);

/// An argument as a number: 1 and 0 for what points to something and what does not, of a rectangle its
/// width and height.
template <class T>
int64_t NumberFor(const T& argument) {
  if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) return static_cast<int64_t>(argument);
  if constexpr (std::is_same_v<T, const RECT*> || std::is_same_v<T, RECT*>)
    return argument == nullptr
               ? 0
               : int64_t{argument->right - argument->left} << 32 | (argument->bottom - argument->top);
  if constexpr (std::is_null_pointer_v<T>) return 0;
  if constexpr (std::is_pointer_v<T>) return argument != nullptr;
  return 1;
}

/// How an operation fails. One that gives something back does its work and then says that it failed;
/// calls that cannot fail are let through.
enum class Manner { NotDone, Done, Never };

template <class Result>
Result FailedResult(std::string_view name) {
  if constexpr (std::is_pointer_v<Result>) return nullptr;
  if constexpr (std::is_same_v<Result, int32_t>) return name == "KernelOpen" ? kNoFile : kInjected;
  if constexpr (std::is_same_v<Result, int64_t>) return -1;
  if constexpr (std::is_same_v<Result, uint32_t>) return 0;
}

template <auto Operation, Manner How, class... Arguments>
auto Call(const char* name, const char* file, int line, Arguments&&... arguments) {
  using Result = decltype(Operation(std::forward<Arguments>(arguments)...));
  Keep(name, {NumberFor(arguments)...});
  if constexpr (How == Manner::Never || std::is_void_v<Result>) {
    return Operation(std::forward<Arguments>(arguments)...);
  } else {
    if (!ShouldFail(name, file, line)) return Operation(std::forward<Arguments>(arguments)...);
    if constexpr (How == Manner::Done) (void)Operation(std::forward<Arguments>(arguments)...);
    return FailedResult<Result>(name);
  }
}

}  // namespace faults

#define HOST_CALL(name, manner, ...) \
  ::faults::Call<&name, ::faults::Manner::manner>(#name, __FILE__, __LINE__ __VA_OPT__(, ) __VA_ARGS__)

#define ColourAdjust(...) HOST_CALL(ColourAdjust, NotDone, __VA_ARGS__)
#define ColourHistogram(...) HOST_CALL(ColourHistogram, NotDone, __VA_ARGS__)
#define ColourMerge(...) HOST_CALL(ColourMerge, NotDone, __VA_ARGS__)
#define DisplayCreatePalette(...) HOST_CALL(DisplayCreatePalette, NotDone, __VA_ARGS__)
#define DisplayPaintBitmap(...) HOST_CALL(DisplayPaintBitmap, NotDone, __VA_ARGS__)
#define EffectsPaintTransparent(...) HOST_CALL(EffectsPaintTransparent, NotDone, __VA_ARGS__)
#define FileFormatDefaultLoadOptions(...) HOST_CALL(FileFormatDefaultLoadOptions, NotDone, __VA_ARGS__)
#define FileFormatDefaultSaveOptions(...) HOST_CALL(FileFormatDefaultSaveOptions, NotDone, __VA_ARGS__)
#define FileFormatInfoMemory(...) HOST_CALL(FileFormatInfoMemory, NotDone, __VA_ARGS__)
#define FileFormatLoadDrawingMemory(...) HOST_CALL(FileFormatLoadDrawingMemory, NotDone, __VA_ARGS__)
#define FileFormatSaveBitmapMemory(...) HOST_CALL(FileFormatSaveBitmapMemory, NotDone, __VA_ARGS__)
#define FileFormatSaveDrawingMemory(...) HOST_CALL(FileFormatSaveDrawingMemory, NotDone, __VA_ARGS__)
#define GlobalLock(...) HOST_CALL(GlobalLock, NotDone, __VA_ARGS__)
#define ImageEffectsCombine(...) HOST_CALL(ImageEffectsCombine, NotDone, __VA_ARGS__)
#define KernelAccessBitmap(...) HOST_CALL(KernelAccessBitmap, NotDone, __VA_ARGS__)
#define KernelAllocate(...) HOST_CALL(KernelAllocate, NotDone, __VA_ARGS__)
#define KernelAllocateBitmap(...) HOST_CALL(KernelAllocateBitmap, NotDone, __VA_ARGS__)
#define KernelClose(...) HOST_CALL(KernelClose, Done, __VA_ARGS__)
#define KernelCreateBitmapDc(...) HOST_CALL(KernelCreateBitmapDc, NotDone, __VA_ARGS__)
#define KernelCreatePalette(...) HOST_CALL(KernelCreatePalette, NotDone, __VA_ARGS__)
#define KernelDeleteBitmapDc(...) HOST_CALL(KernelDeleteBitmapDc, Done, __VA_ARGS__)
#define KernelDeleteObject(...) HOST_CALL(KernelDeleteObject, Done, __VA_ARGS__)
#define KernelFillBitmap(...) HOST_CALL(KernelFillBitmap, NotDone, __VA_ARGS__)
#define KernelFreeBitmap(...) HOST_CALL(KernelFreeBitmap, Done, __VA_ARGS__)
#define KernelFreeGlobal(...) HOST_CALL(KernelFreeGlobal, Done, __VA_ARGS__)
#define KernelGetColours(...) HOST_CALL(KernelGetColours, NotDone, __VA_ARGS__)
#define KernelGetRow(...) HOST_CALL(KernelGetRow, NotDone, __VA_ARGS__)
#define KernelInitialiseBitmap(...) HOST_CALL(KernelInitialiseBitmap, Done, __VA_ARGS__)
#define KernelMakePaletteTable(...) HOST_CALL(KernelMakePaletteTable, NotDone, __VA_ARGS__)
#define KernelOpen(...) HOST_CALL(KernelOpen, NotDone, __VA_ARGS__)
#define KernelPrepareScratchBitmap(...) HOST_CALL(KernelPrepareScratchBitmap, Done, __VA_ARGS__)
#define KernelPutColours(...) HOST_CALL(KernelPutColours, NotDone, __VA_ARGS__)
#define KernelPutRow(...) HOST_CALL(KernelPutRow, NotDone, __VA_ARGS__)
#define KernelRead(...) HOST_CALL(KernelRead, NotDone, __VA_ARGS__)
#define KernelReallocate(...) HOST_CALL(KernelReallocate, NotDone, __VA_ARGS__)
#define KernelReleaseBitmap(...) HOST_CALL(KernelReleaseBitmap, Done, __VA_ARGS__)
#define KernelSeek(...) HOST_CALL(KernelSeek, NotDone, __VA_ARGS__)
#define KernelSetBitmapData(...) HOST_CALL(KernelSetBitmapData, NotDone, __VA_ARGS__)
#define KernelSetPalette(...) HOST_CALL(KernelSetPalette, NotDone, __VA_ARGS__)
#define KernelWiden(...) HOST_CALL(KernelWiden, NotDone, __VA_ARGS__)
#define KernelWrite(...) HOST_CALL(KernelWrite, NotDone, __VA_ARGS__)
#define VectorAddLayer(...) HOST_CALL(VectorAddLayer, NotDone, __VA_ARGS__)
#define VectorApplyTranslation(...) HOST_CALL(VectorApplyTranslation, NotDone, __VA_ARGS__)
#define VectorCopy(...) HOST_CALL(VectorCopy, NotDone, __VA_ARGS__)
#define VectorFree(...) HOST_CALL(VectorFree, Done, __VA_ARGS__)
#define VectorGetExtent(...) HOST_CALL(VectorGetExtent, NotDone, __VA_ARGS__)
#define VectorInitialise(...) HOST_CALL(VectorInitialise, Done, __VA_ARGS__)
#define VectorIsEmpty(...) HOST_CALL(VectorIsEmpty, Never, __VA_ARGS__)
#define VectorPaint(...) HOST_CALL(VectorPaint, NotDone, __VA_ARGS__)
#define VectorResetOrigin(...) HOST_CALL(VectorResetOrigin, NotDone, __VA_ARGS__)
#define VectorResetRotation(...) HOST_CALL(VectorResetRotation, NotDone, __VA_ARGS__)
#define VectorResetScale(...) HOST_CALL(VectorResetScale, NotDone, __VA_ARGS__)
#define VectorResetTranslation(...) HOST_CALL(VectorResetTranslation, NotDone, __VA_ARGS__)
#define VectorSetBackground(...) HOST_CALL(VectorSetBackground, NotDone, __VA_ARGS__)
#define VectorSetPaintMode(...) HOST_CALL(VectorSetPaintMode, NotDone, __VA_ARGS__)
#define VectorSetTranslation(...) HOST_CALL(VectorSetTranslation, NotDone, __VA_ARGS__)
#define VectorSetViewRectangle(...) HOST_CALL(VectorSetViewRectangle, NotDone, __VA_ARGS__)
#define WideAccess(...) HOST_CALL(WideAccess, NotDone, __VA_ARGS__)
