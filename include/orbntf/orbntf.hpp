// orbntf for C++17: owners of documents, header records and bitmaps over orbntf.h. Header-only; throws
// nothing of its own.
#ifndef ORBNTF_HPP
#define ORBNTF_HPP

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
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

/// The fields of a file header that Orb_NITFSetNITFHeader stores and Orb_NITFGetNITFHeader leaves alone:
/// a record given back without them would lose them.
class SetOnlyFields {
 public:
  /// Takes them from a file, of a streamed one from the replacement data at its end. False when the file
  /// cannot be read.
  bool Read(const std::string& path) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (file == nullptr) return false;
    std::string bytes(kLongestHeader, '\0');
    bytes.resize(std::fread(&bytes[0], 1, bytes.size(), file.get()));
    waits_ = false;
    if (!Parse(bytes)) return false;
    if (!waits_) return true;
    const std::string replacement = FindReplacement(file.get());
    bytes.replace(0, std::min(replacement.size(), bytes.size()), replacement);
    return Parse(bytes);
  }
  void PutInto(NITFHeader& record) const {
    record.FBKGC = background_;
    record.NUMX = numx_;
    record.NUMDES = numdes_;
    record.NUMRES = numres_;
    record.UDHDL = udhdl_;
    record.UDHOFL = udhofl_;
    record.XHDL = xhdl_;
    record.XHDLOFL = xhdlofl_;
  }
  /// Notes what Set stored: numbers that do not fit are refused.
  void TakeFrom(const NITFHeader& record) {
    background_ = record.FBKGC;
    Take(record.NUMX, 999, numx_);
    Take(static_cast<int32_t>(record.NUMDES), 999, numdes_);
    Take(static_cast<int32_t>(record.NUMRES), 999, numres_);
    if (record.UDHDL == 0 || record.UDHDL >= kOverflow) Take(record.UDHDL, 99999, udhdl_);
    Take(record.UDHOFL, 999, udhofl_);
    if (record.XHDL == 0 || record.XHDL >= kOverflow) Take(record.XHDL, 99999, xhdl_);
    Take(record.XHDLOFL, 999, xhdlofl_);
  }

 private:
  static constexpr size_t kLongestHeader = 999999;
  static constexpr int32_t kOverflow = 3;  // bytes of an overflow field, which its length counts

  // The fields in the order of MIL-STD-2500C, table A-1.
  class Reader {
   public:
    Reader(const std::string& bytes, bool& waits) : bytes_(bytes), waits_(waits) {}
    bool Good() const { return at_ <= bytes_.size(); }
    void Skip(size_t count) { at_ += count; }
    int32_t Number(size_t width) {
      const size_t first = at_;
      at_ += width;
      if (!Good()) return 0;
      const std::string digits = bytes_.substr(first, width);
      waits_ = waits_ || digits.find_first_not_of('9') == std::string::npos;
      int32_t number = 0;
      for (const char digit : digits) {
        if (digit < '0' || digit > '9' || number > 99999999) break;
        number = number * 10 + (digit - '0');
      }
      return number;
    }
    uint32_t Colour() {
      const size_t first = at_;
      at_ += 3;
      if (!Good()) return 0;
      const auto part = [&](size_t i) { return uint32_t{static_cast<uint8_t>(bytes_[first + i])}; };
      return part(0) | part(1) << 8 | part(2) << 16;
    }
    /// A count and as many pairs of lengths.
    uint32_t List(size_t subheaderWidth, size_t dataWidth) {
      bool ignored = false;
      const size_t first = at_;
      const auto count = static_cast<uint32_t>(Reader(bytes_, ignored, first).Number(3));
      at_ += 3;
      for (uint32_t i = 0; i < count && Good(); ++i) {
        (void)Number(subheaderWidth);
        (void)Number(dataWidth);
      }
      return count;
    }

   private:
    Reader(const std::string& bytes, bool& waits, size_t at) : bytes_(bytes), waits_(waits), at_(at) {}
    const std::string& bytes_;
    bool& waits_;
    size_t at_ = 0;
  };

  bool Parse(const std::string& bytes) {
    constexpr size_t kBackground = 297, kToFileLength = 24 + 18;
    Reader reader(bytes, waits_);
    reader.Skip(kBackground);
    background_ = reader.Colour();
    reader.Skip(kToFileLength);
    (void)reader.Number(12);
    (void)reader.Number(6);
    (void)reader.List(6, 10);
    (void)reader.List(4, 6);
    numx_ = reader.Number(3);
    (void)reader.List(4, 5);
    numdes_ = static_cast<int32_t>(reader.List(4, 9));
    numres_ = static_cast<int32_t>(reader.List(4, 7));
    TakeExtended(reader, udhdl_, udhofl_);
    TakeExtended(reader, xhdl_, xhdlofl_);
    return reader.Good();
  }
  static void TakeExtended(Reader& reader, int32_t& length, int32_t& overflow) {
    length = reader.Number(5);
    overflow = length != 0 ? reader.Number(3) : 0;
    if (length > kOverflow) reader.Skip(static_cast<size_t>(length - kOverflow));
  }
  // What stands between the marks of a streaming file header at the end of the file.
  static std::string FindReplacement(std::FILE* file) {
    constexpr long kMargins = 2 * 11;
    const std::string first = "\x0A\x6E\x1D\x97", second = "\x0E\xCA\x14\xBF";
    if (std::fseek(file, 0, SEEK_END) != 0) return "";
    const long size = std::ftell(file);
    const long start = std::max(0L, size - static_cast<long>(kLongestHeader) - kMargins);
    if (size < 0 || std::fseek(file, start, SEEK_SET) != 0) return "";
    std::string tail(static_cast<size_t>(size - start), '\0');
    tail.resize(std::fread(&tail[0], 1, tail.size(), file));
    const size_t from = tail.rfind(first);
    const size_t to = from == std::string::npos ? from : tail.find(second, from);
    return to == std::string::npos ? "" : tail.substr(from + first.size(), to - from - first.size());
  }
  static void Take(int32_t given, int32_t most, int32_t& field) {
    if (given >= 0 && given <= most) field = given;
  }

  uint32_t background_ = 0;
  int32_t numx_ = 0, numdes_ = 0, numres_ = 0, udhdl_ = 0, udhofl_ = 0, xhdl_ = 0, xhdlofl_ = 0;
  bool waits_ = false;  // a length is all nines: it was not known when the header was written
};

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
  Document(Document&& other) noexcept
      : handle_(std::exchange(other.handle_, nullptr)),
        setOnly_(other.setOnly_),
        complete_(other.complete_) {}
  Document& operator=(Document&& other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(setOnly_, other.setOnly_);
    std::swap(complete_, other.complete_);
    return *this;
  }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  /// Opens a file; the document is empty-handed when that fails.
  Status Open(const std::string& path) {
    Close();
    const auto status = static_cast<Status>(Orb_NITFCreateA(&handle_, path.c_str()));
    setOnly_ = {};
    complete_ = IsSuccess(status) && setOnly_.Read(path);
    return status;
  }
  /// Starts a document without segments.
  Status StartEmpty() {
    Close();
    setOnly_ = {};
    complete_ = true;
    return static_cast<Status>(Orb_NITFCreate(&handle_, nullptr));
  }
  void Close() {
    if (handle_ != nullptr) Orb_NITFDestroy(&handle_);
  }
  Status Save(const std::string& path) {
    return static_cast<Status>(Orb_NITFSaveFileA(handle_, path.c_str()));
  }

  uint32_t ImageCount() const { return Orb_NITFGetImageHeaderCount(handle_); }
  uint32_t GraphicCount() const { return Orb_NITFGetGraphicHeaderCount(handle_); }
  uint32_t TextCount() const { return Orb_NITFGetTextHeaderCount(handle_); }

  /// Fills all of the record but the lengths of extensions and UDHD and XHD, which Set leaves alone where
  /// they are null: a record that is given back changes nothing. ShortRead when the file's own header
  /// cannot be read, for then a Set would lose some of it.
  Status Get(FileRecord& record) {
    const auto status = static_cast<Status>(Orb_NITFGetNITFHeader(handle_, Fresh(record)));
    if (!IsSuccess(status)) return status;
    setOnly_.PutInto(*record.get());
    return complete_ ? Status::Success : Status::ShortRead;
  }
  /// Stores a record that Get filled. A refused field keeps its value and the rest goes on.
  Status Set(const FileRecord& record) {
    const auto status = static_cast<Status>(Orb_NITFSetNITFHeader(handle_, record.get()));
    if (IsSuccess(status)) setOnly_.TakeFrom(*record.get());
    return status;
  }
  /// Changes one text of the file header, such as `document.Set(&NITFHeader::FTITLE, "A title")`, and
  /// nothing else. InvalidParameter for a text that the field cannot hold.
  Status Set(char* NITFHeader::*field, const std::string& text) {
    FileRecord record;
    if (const Status status = Get(record); !IsSuccess(status)) return status;
    std::string given = text;
    char* const held = TextIn(record, field);
    PutText(record, field, &given[0]);
    const Status status = Set(record);
    PutText(record, field, held);
    if (!IsSuccess(status)) return status;
    if (const Status again = Get(record); !IsSuccess(again)) return again;
    const std::string stored = TextIn(record, field);
    const bool fits = stored.compare(0, given.size(), given) == 0 &&
                      stored.find_first_not_of(' ', given.size()) == std::string::npos;
    return fits ? Status::Success : Status::InvalidParameter;
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
  Status Render(Bitmap& bitmap) {
    return static_cast<Status>(Orb_NtfRenderBitmap(bitmap.get(), handle_));
  }

  /// For the exports that are not wrapped; null before Open.
  NitfHandle get() const { return handle_; }

 private:
  template <class R, int32_t(ORB_CALL* kFree)(R*)>
  static R* Fresh(Record<R, kFree>& record) {
    record = Record<R, kFree>();
    return record.get();
  }
  // The records are packed: a member may lie anywhere.
  static char* TextIn(FileRecord& record, char* NITFHeader::*field) {
    char* text = nullptr;
    std::memcpy(&text, &(record.get()->*field), sizeof text);
    return text;
  }
  static void PutText(FileRecord& record, char* NITFHeader::*field, char* text) {
    std::memcpy(&(record.get()->*field), &text, sizeof text);
  }

  NitfHandle handle_ = nullptr;
  SetOnlyFields setOnly_;
  bool complete_ = false;  // setOnly_ holds what the document has
};

}  // namespace orbntf

#endif
