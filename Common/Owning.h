// Types that own what the host toolkit hands out, so that every way out of an operation releases it.
// Nothing here throws: memory that is not to be had is a status.
#pragma once

#include <cstddef>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

#include "Common/Status.h"
#include "host/kernel.h"

/// Where a resource was asked for; the leak tracker reports it. Each source file names itself with a
/// constant kSourceFile.
struct SourceTag {
  uint32_t line;
  const char16_t* file;
};
#define ORB_HERE \
  SourceTag { __LINE__, kSourceFile }

/// Base of types that have one owner each.
struct NonCopyable {
  NonCopyable() = default;
  NonCopyable(const NonCopyable&) = delete;
  NonCopyable& operator=(const NonCopyable&) = delete;
};

/// Kernel memory holding `size` trivially copyable elements, zeroed.
template <class T>
class KernelBuffer {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  KernelBuffer() = default;
  ~KernelBuffer() { Reset(); }
  KernelBuffer(KernelBuffer&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}
  KernelBuffer& operator=(KernelBuffer&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    return *this;
  }

  /// Releases what is held and takes `count` elements; -1 when that fails.
  Status Allocate(uint64_t count, SourceTag where) {
    Reset();
    if (count > SIZE_MAX / sizeof(T)) return Status::OutOfMemory;
    size_ = static_cast<size_t>(count);
    data_ = static_cast<T*>(KernelAllocate(size_, sizeof(T), where.line, where.file));
    if (data_ != nullptr) return Status::Success;
    size_ = 0;
    return Status::OutOfMemory;
  }
  /// Changes the count, keeping the elements; -1, everything kept, when that fails. Shrinking never
  /// fails: the block stays as it is.
  Status Resize(uint64_t count, SourceTag where) {
    if (count > SIZE_MAX / sizeof(T)) return Status::OutOfMemory;
    const auto elements = static_cast<size_t>(count);
    if (data_ == nullptr || elements > size_) {
      void* moved = KernelReallocate(data_, elements * sizeof(T), where.line, where.file);
      if (moved == nullptr) return Status::OutOfMemory;
      data_ = static_cast<T*>(moved);
    }
    size_ = elements;
    return Status::Success;
  }
  void Reset() {
    KernelFree(data_, __LINE__, u"Owning");
    data_ = nullptr;
    size_ = 0;
  }
  /// Gives the memory to a caller, who frees it with KernelFree.
  T* Release() {
    size_ = 0;
    return std::exchange(data_, nullptr);
  }

  T* data() const { return data_; }
  size_t size() const { return size_; }
  T& operator[](size_t i) const { return data_[i]; }
  std::span<T> Span() const { return {data_, size_}; }
  T* begin() const { return data_; }
  T* end() const { return data_ + size_; }

 private:
  T* data_ = nullptr;
  size_t size_ = 0;
};

/// An object from new, known to the leak tracker.
template <class T>
class TrackedObject : NonCopyable {
 public:
  ~TrackedObject() { Reset(); }

  template <class... Arguments>
  Status Make(SourceTag where, Arguments&&... arguments) {
    Reset();
    object_ = new (std::nothrow) T(std::forward<Arguments>(arguments)...);
    if (object_ == nullptr) return Status::OutOfMemory;
    KernelTrackResource(kResourceObject, object_, where.line, where.file);
    return Status::Success;
  }
  void Reset() {
    if (object_ == nullptr) return;
    KernelUntrackResource(kResourceObject, object_, __LINE__, u"Owning");
    delete std::exchange(object_, nullptr);
  }
  /// Gives the object, still tracked, to a holder that gives it back with Adopt.
  T* Release() { return std::exchange(object_, nullptr); }
  void Adopt(T* object) {
    Reset();
    object_ = object;
  }

  T* get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
};

/// An array from new[], value-initialised and known to the leak tracker.
template <class T>
class TrackedArray : NonCopyable {
 public:
  ~TrackedArray() { Reset(); }

  Status Make(size_t count, SourceTag where) {
    Reset();
    data_ = new (std::nothrow) T[count]();
    if (data_ == nullptr) return Status::OutOfMemory;
    size_ = count;
    KernelTrackResource(kResourceArray, data_, where.line, where.file);
    return Status::Success;
  }
  void Reset() {
    size_ = 0;
    if (data_ == nullptr) return;
    KernelUntrackResource(kResourceArray, data_, __LINE__, u"Owning");
    delete[] std::exchange(data_, nullptr);
  }
  void Swap(TrackedArray& other) {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
  }

  T* data() const { return data_; }
  size_t size() const { return size_; }
  T& operator[](size_t i) const { return data_[i]; }
  T* begin() const { return data_; }
  T* end() const { return data_ + size_; }
  std::span<T> Span() const { return {data_, size_}; }

 private:
  T* data_ = nullptr;
  size_t size_ = 0;
};

/// An open file.
class OwnedFile : NonCopyable {
 public:
  ~OwnedFile() { (void)Close(); }

  /// Opens for reading; a failure leaves no handle, and every read of that is short.
  void OpenForReading(const char16_t* path) {
    (void)Close();
    handle_ = KernelOpen(path, kOpenRead, kPermissionRead);
  }
  /// Creates or truncates for writing; a failure leaves no handle, and every write to that is short.
  void OpenForWriting(const char16_t* path) {
    (void)Close();
    handle_ = KernelOpen(path, kOpenCreate, kPermissionWrite);
  }
  /// -5 when bytes written earlier did not reach the disk.
  Status Close() {
    if (handle_ == kNoFile) return Status::Success;
    return Ok(FromHost(KernelClose(std::exchange(handle_, kNoFile)))) ? Status::Success
                                                                      : Status::ShortWrite;
  }
  bool IsOpen() const { return handle_ != kNoFile; }
  int32_t Handle() const { return handle_; }

 private:
  int32_t handle_ = kNoFile;
};

/// A bitmap record whose pixels are freed with it.
class OwnedBitmap : NonCopyable {
 public:
  OwnedBitmap() { Start(0, 0); }
  ~OwnedBitmap() { Free(); }

  /// Starts a record without pixels, of the size that a decoder is to fill at most.
  void Start(uint32_t width, uint32_t height) {
    Free();
    (void)KernelInitialiseBitmap(&record, kBitmapRecordSize, width, height, 0);
  }

  /// Allocates fresh pixels (memory kind 1).
  Status Allocate(uint32_t width, uint32_t height, uint32_t bitsPerPixel, KernelColourOrder order,
                  KernelView view) {
    Free();
    return FromHost(KernelAllocateBitmap(&record, kBitmapRecordSize, 1, width, height, bitsPerPixel,
                                         order, nullptr, view, nullptr, 0));
  }
  void Free() {
    if ((record.flags & kBitmapAllocated) != 0) (void)KernelFreeBitmap(&record);
  }
  /// Gives the pixels to another record.
  void MoveTo(KernelBitmap& other) {
    other = record;
    (void)KernelInitialiseBitmap(&record, kBitmapRecordSize, 0, 0, 0);
  }

  KernelBitmap record{};
};

/// Access to a bitmap's rows, given back at its end.
class RowAccess : NonCopyable {
 public:
  explicit RowAccess(KernelBitmap& bitmap)
      : bitmap_(bitmap), status_(FromHost(KernelAccessBitmap(&bitmap))) {}
  ~RowAccess() {
    if (Ok(status_)) (void)KernelReleaseBitmap(&bitmap_);
  }

  /// Whether there is access: 1, or the kernel's code, which Get and Put give too.
  Status Result() const { return status_; }
  Status Get(void* to, uint32_t row) {
    return Ok(status_) ? FromHost(KernelGetRow(&bitmap_, to, row, bitmap_.bytesPerLine)) : status_;
  }
  Status Put(const void* from, uint32_t row) {
    return Ok(status_) ? FromHost(KernelPutRow(&bitmap_, from, row, bitmap_.bytesPerLine)) : status_;
  }

 private:
  KernelBitmap& bitmap_;
  Status status_;
};

/// A device context on a bitmap.
class BitmapDc : NonCopyable {
 public:
  explicit BitmapDc(KernelBitmap& bitmap) : dc_(KernelCreateBitmapDc(&bitmap)) {}
  ~BitmapDc() {
    if (dc_ != nullptr) (void)KernelDeleteBitmapDc(dc_);
  }
  /// Null when there is none.
  HDC get() const { return dc_; }

 private:
  HDC dc_;
};

/// A palette handle, known to the leak tracker.
class OwnedPalette : NonCopyable {
 public:
  OwnedPalette(HPALETTE palette, SourceTag where) : palette_(palette) {
    if (palette_ != nullptr) KernelTrackResource(kResourceHandle, palette_, where.line, where.file);
  }
  ~OwnedPalette() {
    if (palette_ != nullptr) (void)KernelDeleteObject(palette_, __LINE__, u"Owning");
  }
  HPALETTE get() const { return palette_; }

 private:
  HPALETTE palette_;
};

/// A global memory handle that the host filled, known to the leak tracker.
class OwnedGlobal : NonCopyable {
 public:
  ~OwnedGlobal() {
    if (bytes_ != nullptr) (void)GlobalUnlock(handle);
    if (tracked_) (void)KernelFreeGlobal(handle, __LINE__, u"Owning");
  }

  /// Takes over `handle`, which a host operation has just filled, and locks it; -1 when it does not lock.
  Status Lock(SourceTag where) {
    if (handle == nullptr) return Status::OutOfMemory;
    KernelTrackResource(kResourceHandle, handle, where.line, where.file);
    tracked_ = true;
    bytes_ = GlobalLock(handle);
    return bytes_ != nullptr ? Status::Success : Status::OutOfMemory;
  }
  const void* Bytes() const { return bytes_; }

  HGLOBAL handle = nullptr;

 private:
  const void* bytes_ = nullptr;
  bool tracked_ = false;
};

// ---------------------------------------------------------------- exact reads and writes

/// Reads exactly `bytes`; -7 when the file gives fewer.
inline Status ReadExactly(int32_t file, void* to, uint32_t bytes) {
  return KernelRead(file, to, bytes) == bytes ? Status::Success : Status::ShortRead;
}
/// Writes exactly `bytes`; -5 when the file takes fewer.
inline Status WriteExactly(int32_t file, const void* from, uint32_t bytes) {
  return KernelWrite(file, from, bytes) == bytes ? Status::Success : Status::ShortWrite;
}
/// Goes to a position; -7 when there is no going there.
inline Status SeekTo(int32_t file, int64_t position, int32_t origin = kSeekStart) {
  return KernelSeek(file, position, origin) < 0 ? Status::ShortRead : Status::Success;
}
/// -7 unless as many bytes remain: the test before memory is taken for a length that a file states.
inline Status RequireRemaining(int32_t file, uint64_t bytes) {
  if (bytes == 0) return Status::Success;
  const int64_t position = KernelSeek(file, 0, kSeekCurrent);
  const int64_t end = KernelSeek(file, 0, kSeekEnd);
  if (Status s = SeekTo(file, position); !Ok(s)) return s;
  const bool enough = end >= position && bytes <= static_cast<uint64_t>(end - position);
  return enough ? Status::Success : Status::ShortRead;
}
