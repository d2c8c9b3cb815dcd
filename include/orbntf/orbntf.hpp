// orbntf for C++17: owners of documents, header records and bitmaps over orbntf.h. Header-only; throws
// nothing of its own.
#ifndef ORBNTF_HPP
#define ORBNTF_HPP

#include <cstring>
#include <string>
#include <utility>

#include "orbntf/orbntf.h"

namespace orbntf {

/// A status; codes of the host toolkit pass through unchanged.
enum class Status : int32_t {
  Success = ORB_SUCCESS,
  LimitReached = ORB_LIMIT_REACHED,
  NoSuchRecord = ORB_NO_SUCH_RECORD,
  OutOfMemory = ORB_OUT_OF_MEMORY,
  NoBitmap = ORB_NO_BITMAP,
  ShortWrite = ORB_SHORT_WRITE,
  ShortRead = ORB_SHORT_READ,
  BadStructure = ORB_BAD_STRUCTURE,
  FileNotFound = ORB_FILE_NOT_FOUND,
  InvalidParameter = ORB_INVALID_PARAMETER,
  TextNotOpened = ORB_TEXT_NOT_OPENED,
  Unsupported = ORB_UNSUPPORTED,
  BadQuality = ORB_BAD_QUALITY,
  BadBitmapDepth = ORB_BAD_BITMAP_DEPTH,
  BadVersion = ORB_BAD_VERSION,
  NullHandle = ORB_NULL_HANDLE,
  EmptyDrawing = ORB_EMPTY_DRAWING,
  NoData = ORB_NO_DATA,
  BadPixelType = ORB_BAD_PIXEL_TYPE,
  BadComplexity = ORB_BAD_COMPLEXITY,
  BadSampleDepth = ORB_BAD_SAMPLE_DEPTH
};

inline bool IsSuccess(Status status) { return status == Status::Success; }

/// A status in words, static text.
inline const char* TextOf(Status status) {
  switch (status) {
    case Status::Success:
      return "success";
    case Status::LimitReached:
      return "limit of 999 segments of one kind reached, or no document";
    case Status::NoSuchRecord:
      return "no such segment";
    case Status::OutOfMemory:
      return "more memory than there is, or a picture too large";
    case Status::NoBitmap:
      return "no usable bitmap";
    case Status::ShortWrite:
      return "the output could not be written";
    case Status::ShortRead:
      return "the file ends too early, or cannot be read";
    case Status::BadStructure:
      return "not the expected NITF structure";
    case Status::FileNotFound:
      return "no such file";
    case Status::InvalidParameter:
      return "invalid value";
    case Status::TextNotOpened:
      return "the text file cannot be opened";
    case Status::Unsupported:
      return "not supported";
    case Status::BadQuality:
      return "quality factor out of range";
    case Status::BadBitmapDepth:
      return "bits per pixel neither 24 nor 8";
    case Status::BadVersion:
      return "version is not 02.10";
    case Status::NullHandle:
      return "no document";
    case Status::EmptyDrawing:
      return "empty drawing";
    case Status::NoData:
      return "no data";
    case Status::BadPixelType:
      return "unsupported pixel value type";
    case Status::BadComplexity:
      return "unsupported complexity level";
    case Status::BadSampleDepth:
      return "more than one band of 16 bits";
  }
  return "failure of a host library";
}

/// A public header record that frees what it points to.
template <class R, int32_t(ORB_CALL* kFree)(R*)>
class Record {
 public:
  Record() { std::memset(&record_, 0, sizeof record_); }
  ~Record() { kFree(&record_); }
  Record(Record&& other) noexcept : Record() { std::swap(record_, other.record_); }
  Record& operator=(Record&& other) noexcept {
    std::swap(record_, other.record_);
    return *this;
  }
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;

  R* operator->() { return &record_; }
  const R* operator->() const { return &record_; }
  R* get() { return &record_; }
  const R* get() const { return &record_; }

 private:
  R record_;
};
using FileRecord = Record<NITFHeader, &Orb_NITFFreeNITFHeader>;
using ImageRecord = Record<ImageHeader, &Orb_NITFFreeImageHeader>;
using GraphicRecord = Record<GraphicHeader, &Orb_NITFFreeGraphicHeader>;
using TextRecord = Record<TextHeader, &Orb_NITFFreeTextHeader>;

/// A host bitmap freed with its owner.
class Bitmap {
 public:
  Bitmap() { KernelInitialiseBitmap(&record_, ORB_BITMAP_RECORD_SIZE, 0, 0, 0); }
  ~Bitmap() { KernelFreeBitmap(&record_); }
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;

  /// Allocates zeroed rows of 24 bits (blue, green, red) or 8 bits (grey), the top row first.
  Status Allocate(uint32_t width, uint32_t height, uint32_t bitsPerPixel) {
    KernelFreeBitmap(&record_);
    const uint32_t order = bitsPerPixel == 8 ? ORB_ORDER_RGB : ORB_ORDER_BGR;
    return static_cast<Status>(KernelAllocateBitmap(&record_, ORB_BITMAP_RECORD_SIZE, 1, width, height,
                                                    bitsPerPixel, order, nullptr, ORB_VIEW_TOP_LEFT,
                                                    nullptr, 0));
  }
  uint32_t Width() const { return record_.width; }
  uint32_t Height() const { return record_.height; }
  /// Row `y` from the top of the picture, whatever the order of the rows.
  uint8_t* Row(uint32_t y) {
    const bool bottomUp = record_.viewPerspective == ORB_VIEW_BOTTOM_LEFT;
    auto* rows = reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(record_.pixels));
    return rows + static_cast<size_t>(bottomUp ? record_.height - 1 - y : y) * record_.bytesPerLine;
  }
  KernelBitmap* get() { return &record_; }

 private:
  KernelBitmap record_;
};

/// A document; closed with its owner.
class Document {
 public:
  Document() = default;
  ~Document() { Close(); }
  Document(Document&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Document& operator=(Document&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  /// Opens a file; the document is empty-handed when that fails.
  Status Open(const std::string& path) {
    Close();
    return static_cast<Status>(Orb_NITFCreateA(&handle_, path.c_str()));
  }
  /// Starts a document without segments.
  Status StartEmpty() {
    Close();
    return static_cast<Status>(Orb_NITFCreate(&handle_, nullptr));
  }
  void Close() {
    if (handle_ != nullptr) Orb_NITFDestroy(&handle_);
  }
  Status Save(const std::string& path) { return static_cast<Status>(Orb_NITFSaveFileA(handle_, path.c_str())); }

  uint32_t ImageCount() const { return Orb_NITFGetImageHeaderCount(handle_); }
  uint32_t GraphicCount() const { return Orb_NITFGetGraphicHeaderCount(handle_); }
  uint32_t TextCount() const { return Orb_NITFGetTextHeaderCount(handle_); }

  Status Get(FileRecord& record) { return static_cast<Status>(Orb_NITFGetNITFHeader(handle_, Fresh(record))); }
  Status Set(const FileRecord& record) {
    return static_cast<Status>(Orb_NITFSetNITFHeader(handle_, record.get()));
  }
  Status Get(uint32_t index, ImageRecord& record) {
    return static_cast<Status>(Orb_NITFGetImageHeader(handle_, index, Fresh(record)));
  }
  Status Set(uint32_t index, const ImageRecord& record) {
    return static_cast<Status>(Orb_NITFSetImageHeader(handle_, index, record.get()));
  }
  Status Get(uint32_t index, GraphicRecord& record) {
    return static_cast<Status>(Orb_NITFGetGraphicHeader(handle_, index, Fresh(record)));
  }
  Status Set(uint32_t index, const GraphicRecord& record) {
    return static_cast<Status>(Orb_NITFSetGraphicHeader(handle_, index, record.get()));
  }
  Status Get(uint32_t index, TextRecord& record) {
    return static_cast<Status>(Orb_NITFGetTextHeader(handle_, index, Fresh(record)));
  }
  Status Set(uint32_t index, const TextRecord& record) {
    return static_cast<Status>(Orb_NITFSetTextHeader(handle_, index, record.get()));
  }
  /// A text segment's text.
  Status GetText(uint32_t index, std::string& text) {
    uint32_t length = 0;
    int32_t status = Orb_NITFGetTextSegment(handle_, index, nullptr, &length);
    if (status != ORB_SUCCESS) return static_cast<Status>(status);
    text.resize(static_cast<size_t>(length) + 1);
    status = Orb_NITFGetTextSegment(handle_, index, &text[0], nullptr);
    text.resize(length);
    return static_cast<Status>(status);
  }

  /// Adds a picture, encoded as JPEG: quality from 2 (best) to 255.
  Status AppendImage(Bitmap& bitmap, uint32_t bitsPerPixel, int32_t quality) {
    return static_cast<Status>(
        Orb_NITFAppendImageSegment(handle_, bitmap.get(), ORB_FORMAT_JPEG_RGB, bitsPerPixel, quality));
  }
  Status AppendText(const std::string& path) {
    return static_cast<Status>(Orb_NITFAppendTextSegmentA(handle_, path.c_str()));
  }
  /// Draws the composite into a bitmap of 24 bits, blue first.
  Status Render(Bitmap& bitmap) { return static_cast<Status>(Orb_NtfRenderBitmap(bitmap.get(), handle_)); }

  /// For the exports that are not wrapped; null before Open.
  NitfHandle get() const { return handle_; }

 private:
  template <class R, int32_t(ORB_CALL* kFree)(R*)>
  static R* Fresh(Record<R, kFree>& record) {
    record = Record<R, kFree>();
    return record.get();
  }

  NitfHandle handle_ = nullptr;
};

}  // namespace orbntf

#endif
