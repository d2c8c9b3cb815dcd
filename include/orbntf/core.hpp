// orbntf core for C++17: NITF 2.1 and NSIF 1.0 files by the published standard (MIL-STD-2500C, JBP).
// Structure, fields and their meaning, tagged records, findings, samples of image segments in windows,
// pictures, and changes that leave every other byte as it is.
//
// Any number of files may be used in any threads; one file in one thread at a time. What a function gives
// belongs to the caller. The only exception that leaves is orbntf::core::Error. Work and memory of a call
// are bounded by what the file's bytes and the asked window are worth.
#ifndef ORBNTF_CORE_HPP
#define ORBNTF_CORE_HPP

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#if defined(__GNUC__)
#define ORBNTF_CORE_API __attribute__((visibility("default")))
#else
#define ORBNTF_CORE_API
#endif

namespace orbntf::core {

/// Why something could not be done.
enum class ErrorKind {
  Unreadable,   ///< the file cannot be opened or read, or is no regular file
  NotNitf,      ///< it is no NITF 2.1 or NSIF 1.0 file
  Truncated,    ///< data ends too early
  Damaged,      ///< data is not what its headers say, or does not decode
  Unsupported,  ///< a form that is not handled
  Invalid,      ///< an argument that makes no sense: a segment, window or band that is not there
  TooMuch,      ///< more memory or work than there is, or than the file's bytes are worth
  Stopped,      ///< the caller's progress function or Interruption answered false
  NotWritten,   ///< an output cannot be written
  BreaksRule,   ///< an output would break a rule of the format that was kept before
};

/// What every function throws, and nothing else.
class ORBNTF_CORE_API Error : public std::runtime_error {
 public:
  Error(ErrorKind kind, const std::string& words, std::string segment = {},
        std::optional<uint64_t> byte = {}, std::string field = {});
  ~Error() override;
  /// Why it could not be done.
  ErrorKind Kind() const noexcept { return kind_; }
  /// The segment that it is about, "image 0"; empty where it is about none.
  const std::string& Segment() const noexcept { return segment_; }
  /// The mnemonic of the field that it is about; empty where it is about none.
  const std::string& Field() const noexcept { return field_; }
  /// Where in the file that field, or else the segment's data, begins, where that is known.
  std::optional<uint64_t> Byte() const noexcept { return byte_; }

 private:
  ErrorKind kind_;
  std::string segment_, field_;
  std::optional<uint64_t> byte_;
};

/// While it lasts, long work of its thread asks now and then whether it goes on: reading, drawing,
/// checking, comparing, storing and saving, as bytes are read and between rows, parts and rules. Where
/// the answer is false, or the function throws, the work ends with Stopped. It must not use the file that
/// is worked on. One inside another takes its place; an empty function lets all work go on.
class ORBNTF_CORE_API Interruption {
 public:
  explicit Interruption(std::function<bool()> goesOn);
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Parts of a file, in the order of MIL-STD-2500C, table A-1.
enum class SegmentKind { FileHeader, Image, Graphic, Text, DataExtension, ReservedExtension };

/// The file header or a segment as the file header's lengths place it.
struct SegmentInfo {
  SegmentKind kind = SegmentKind::FileHeader;
  uint32_t index = 0;         ///< within its kind, from 0
  uint64_t offset = 0;        ///< of its header, in the file
  uint64_t headerLength = 0;  ///< in bytes, as declared
  uint64_t dataOffset = 0;    ///< of its data; the file header has none
  uint64_t dataLength = 0;    ///< in bytes, as declared: the file may have fewer
  bool complete = false;      ///< every field of its header is there
  std::string title;          ///< "file header", "image 0"
};

/// A field of a header, as it is stored.
struct FieldText {
  std::string name;     ///< the mnemonic; of repeated ones with a number from 1: "LISH1", "IREPBAND2"
  std::string text;     ///< its bytes
  std::string meaning;  ///< in words
  uint64_t offset = 0;  ///< in the file
};

/// A field of a tagged record (STDI-0002).
struct RecordFieldText {
  std::string name;                                 ///< the mnemonic
  std::string unit;                                 ///< of its number; empty for none
  std::string text;                                 ///< its bytes; empty where it repeats
  std::vector<std::vector<RecordFieldText>> turns;  ///< of one that repeats, a list for each time
};

/// A tagged record.
struct Record {
  std::string tag;      ///< six characters; empty for bytes behind the last whole record
  std::string area;     ///< the field that holds it: UDHD, XHD, UDID, IXSHD, SXSHD, TXSHD, DESDATA
  uint64_t offset = 0;  ///< of its tag, in the file
  std::string bytes;    ///< behind tag and length
  std::string problem;  ///< why it is not decoded; empty where it is
  std::vector<RecordFieldText> fields;
};

/// How much it matters: worth knowing, out of line, or wrong.
enum class Severity { Note, Warning, Error };

/// What does not hold in a file.
struct Finding {
  Severity severity = Severity::Note;
  std::string rule;      ///< "block.colour"
  std::string segment;   ///< "image 0"
  std::string field;     ///< mnemonic
  uint64_t offset = 0;   ///< in the file
  std::string words;     ///< what was found
  std::string sentence;  ///< what has to hold
  std::string standard;  ///< where the published standard says so
};

/// PVTYPE (MIL-STD-2500C, table A-3). A complex number is two reals of half its bits, the real part
/// first.
enum class SampleKind { Unsigned, Signed, Real, Complex };

/// What is wanted of an image segment.
struct SampleRequest {
  /// Of the full image, from its upper left corner; rows or columns of 0 go as far as the image does.
  uint64_t row = 0, column = 0, rows = 0, columns = 0;
  std::vector<uint32_t> bands;  ///< from 0, in the order that is wanted; empty for all
  uint32_t reduce = 0;          ///< sides of 1/2^reduce, rounded up; up to 16, of JPEG 3
  /// Called now and then with how much is done, from 0 to 1; false ends the work with Stopped.
  std::function<bool(double)> progress;
};

/// Samples at their own depth.
struct Samples {
  uint32_t width = 0, height = 0;          ///< of the window, in pixels
  uint32_t bands = 0;                      ///< samples of a pixel
  uint32_t bits = 0;                       ///< NBPP
  uint32_t significantBits = 0;            ///< ABPP
  uint32_t sampleBytes = 0;                ///< that each takes here: 1, 2, 4 or 8
  SampleKind kind = SampleKind::Unsigned;  ///< PVTYPE
  /// Rows from the top, bands side by side in pixels, numbers in host byte order.
  std::vector<uint8_t> data;
  std::optional<uint64_t> noData;  ///< what stands where a mask says that there are no pixels
  std::vector<uint8_t> palette;    ///< red, green, blue of each entry of the lookup tables
};

/// How samples of more than eight bits, signed, real and complex ones become bytes.
enum class StretchBy {
  Percent,  ///< the least and greatest of them left out: so many percent are black and white
  MinMax,   ///< the least is black and the greatest white
  None,     ///< the high eight of the significant bits; of reals as MinMax
};

/// What is wanted of a file's picture. A stretch follows from the file alone, never from the part or
/// size.
struct PictureRequest {
  /// A part of the picture, from its upper left corner; rows or columns of 0 go as far as it does.
  uint64_t row = 0, column = 0, rows = 0, columns = 0;
  uint32_t scale = 1;  ///< squares of so many pixels are averaged to one
  uint32_t size = 0;   ///< in place of it: pixels of the longer side, means of areas; never enlarged
  bool fast = false;   ///< smaller pictures take the nearest pixels, and read no more than these
  std::optional<uint32_t> image;  ///< this image alone; else the composite of all segments
  std::vector<uint32_t> bands;    ///< one or three that are shown, from 0; empty for each image's own
  StretchBy stretch = StretchBy::Percent;
  double low = 2, high = 98;  ///< of StretchBy::Percent
  bool stretchEach = false;   ///< each band by itself, not all that are shown together
};

/// A segment that could not be drawn, and left its place in a picture empty.
struct MissingSegment {
  std::string segment, words;
};

/// Of a picture.
struct PictureInfo {
  uint64_t fullWidth = 0, fullHeight = 0;  ///< of all of it, in pixels
  uint32_t width = 0, height = 0;          ///< of what was asked for
  std::vector<MissingSegment> missing;
};

/// Where a point of an image lies on earth.
struct GroundPlace {
  double latitude = 0, longitude = 0;  ///< degrees on WGS 84, north and east positive
  std::optional<double> height;        ///< metres above its ellipsoid, of models that know of heights
  std::string model;                   ///< what tells it: "RPC00B", "IGEOLO"
  double error = 0;                    ///< metres that it may be off, as the model itself tells
};
/// A point of an image; 0, 0 is the middle of the first pixel.
struct ImagePlace {
  double row = 0, column = 0;
  std::string model;
  double error = 0;  ///< metres
};

struct Difference;

/// An open file. It is read as it is asked for, and never changed. One that was moved from can only be
/// assigned to or destroyed; the same holds for an Edit.
class ORBNTF_CORE_API File {
 public:
  /// Opens a file by its path, bytes of any kind. Unreadable; NotNitf.
  static File Open(const std::string& path);
  /// Opens bytes that stay where they are while the file is used. NotNitf.
  static File FromMemory(const void* bytes, size_t count);
  File(File&&) noexcept;
  File& operator=(File&&) noexcept;
  ~File();

  /// Bytes of the file.
  uint64_t Size() const;
  /// The file header and every segment that it counts, in file order.
  const std::vector<SegmentInfo>& Segments() const;
  /// One of them; Invalid where it is not there.
  const SegmentInfo& Segment(SegmentKind kind, uint32_t index = 0) const;
  /// The fields of a header in file order, as far as they are there.
  std::vector<FieldText> Fields(const SegmentInfo& segment) const;
  /// One field; none where the header does not have it.
  std::optional<FieldText> Field(const SegmentInfo& segment, const std::string& name) const;
  /// The tagged records of a header, decoded where their definition is known.
  std::vector<Record> Records(const SegmentInfo& segment) const;
  /// Bytes of a segment's data from an offset on: fewer than `count` only where the file or the segment
  /// ends. TooMuch for more than 1 GiB at once.
  std::string Data(const SegmentInfo& segment, uint64_t offset, uint64_t count) const;
  /// What does not hold, in the order of its bytes. `progress` as in SampleRequest.
  /// With a profile, "npje", "epje", "tpje" or "level:NN", what that asks for as well. Invalid for
  /// others.
  std::vector<Finding> Check(const std::function<bool(double)>& progress = {},
                             const std::string& profile = {}) const;
  /// What the fields of a header mean that mean more than a text, as a JSON object by mnemonic: numbers,
  /// dates by ISO 8601, places as [row, column], colours as "#RRGGBB", null for texts that mean nothing;
  /// IGEOLO in degrees and as GeoJSON.
  std::string ValuesJson(const SegmentInfo& segment) const;
  /// Where a point of an image lies by the first model that the image has whole, at a height in metres
  /// above the WGS 84 ellipsoid; else at the model's own. Invalid where nothing tells it, or not there.
  GroundPlace ToGround(const SegmentInfo& image, double row, double column,
                       std::optional<double> height = {}) const;
  /// The point of an image that lies somewhere on earth. Invalid as there.
  ImagePlace ToImage(const SegmentInfo& image, double latitude, double longitude,
                     std::optional<double> height = {}) const;
  /// A page of HTML that tells what is in the file, where it is and what does not hold.
  std::string Report(const std::string& title = {}) const;
  /// The size of a picture, and what is known to be missing from it before it is drawn. Invalid; TooMuch.
  PictureInfo DescribePicture(const PictureRequest& request = {}) const;
  /// Draws a picture by the published standard (MIL-STD-2500C, 5.3) in memory for a few rows. `take` gets
  /// its rows, the top one first: red, green and blue of each pixel; false ends the work with Stopped.
  /// Unreadable; Invalid; TooMuch; Stopped.
  PictureInfo Draw(const PictureRequest& request,
                   const std::function<bool(uint32_t row, const uint8_t* rgb)>& take) const;
  /// Samples of an image segment. The decoder of a single JPEG or facsimile stream is kept until its last
  /// row, so that windows below go on in it. Truncated; Damaged; Unsupported; Invalid; TooMuch; Stopped.
  Samples ReadSamples(const SegmentInfo& image, const SampleRequest& request = {}) const;
  /// The same without any samples: their size, depth and kind. Unsupported; Invalid.
  Samples DescribeSamples(const SegmentInfo& image) const;
  /// Which pixels of a window are there: a byte of 1 each, and of 0 where the mask of an image (IC NM, M1
  /// and their like) has no block or a pad pixel in all bands that are asked for. `reduce` is 0. As
  /// ReadSamples.
  std::vector<uint8_t> ReadMask(const SegmentInfo& image, const SampleRequest& request = {}) const;

 private:
  friend class Edit;
  friend ORBNTF_CORE_API std::vector<Difference> Compare(const File& a, const File& b);
  struct State;
  explicit File(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

/// How the samples of an image are stored.
enum class StorageWay {
  Uncompressed,  ///< every depth and kind
  Jpeg,          ///< 8 bits of one band or three of colour, 12 bits of one band
  Jpeg2000,      ///< whole numbers of up to 31 bits
};
struct Storage {
  StorageWay way = StorageWay::Uncompressed;
  int quality = 85;     ///< of JPEG, 1 to 100
  double rate = 0;      ///< of JPEG 2000, bits a sample; 0 for numerically lossless
  uint32_t block = 0;   ///< side of blocks up to 8192; 0 for one, or 1024 where a side exceeds 8192
  char mode = 'B';      ///< IMODE of uncompressed data: B, P, R or S
  bool masked = false;  ///< blocks whose pixels are all no data are left out
  bool asIs = false;    ///< the stream of a JPEG or JPEG 2000 file itself
  std::optional<uint32_t> page;        ///< of a TIFF file, from 0
  std::optional<uint32_t> background;  ///< 0xRRGGBB that shines through transparent pixels
};

/// Where a new image or graphic stands.
struct Placement {
  int64_t row = 0, column = 0;
  /// The image or graphic that it is attached to, from which row and column count; none for the canvas.
  std::optional<SegmentInfo> on;
};

/// Changes to a file, which are written under a name by Save; the file itself stays as it is. What is not
/// named keeps its bytes. Segments are named by kind and number as they are at that time.
///
/// Invalid where a change makes no sense, with the field or character in its words.
class ORBNTF_CORE_API Edit {
 public:
  /// Begins as a file, which outlives this. What is added is dated now, or by SOURCE_DATE_EPOCH.
  explicit Edit(const File& file);
  /// Begins as a new file without segments, dated CCYYMMDDhhmmss.
  static Edit New(const std::string& date);
  Edit(Edit&&) noexcept;
  Edit& operator=(Edit&&) noexcept;
  ~Edit();

  /// Sets a field: UTF-8, places as "ROW,COL", FBKGC as "#RRGGBB". With `force` also to what the format
  /// does not allow.
  Edit& Set(SegmentKind kind, uint32_t index, const std::string& field, const std::string& value,
            bool force = false);
  /// Sets a field in every header that has it; those of classification without their prefix ("CLAS").
  Edit& SetAll(const std::string& field, const std::string& value, bool force = false);
  /// Gives the first record of a tag other data, or adds it.
  Edit& SetRecord(SegmentKind kind, uint32_t index, const std::string& tag, const std::string& data);
  /// Sets a field of it by its definition.
  Edit& SetRecordField(SegmentKind kind, uint32_t index, const std::string& tag, const std::string& field,
                       const std::string& value);
  /// Takes the first record of a tag out.
  Edit& RemoveRecord(SegmentKind kind, uint32_t index, const std::string& tag);
  /// Takes a segment out; what is attached to it stays at its place.
  Edit& Remove(SegmentKind kind, uint32_t index);
  /// Adds the segments of another file, which outlives this.
  Edit& Merge(const File& other);

  /// Adds a picture file as an image above all others, one segment or several below each other. Its
  /// number among the images. Unreadable; Unsupported.
  uint32_t AppendImage(const std::string& path, const Storage& storage = {}, const Placement& place = {});
  /// The same of samples as ReadSamples gives them; three bands are red, green and blue.
  uint32_t AppendImage(const Samples& samples, const Storage& storage = {}, const Placement& place = {});
  /// Adds a metafile (CGM) as it is. Its number among the graphics.
  uint32_t AppendGraphic(const std::string& metafile, const Placement& place = {});
  /// Adds a text as it is. Its number among the texts.
  uint32_t AppendText(const std::string& text);
  /// Adds a data extension of a registered name. Its number among the data extensions.
  uint32_t AppendData(const std::string& name, uint32_t version, const std::string& data);
  /// Stores an image of the file anew; ways that lose nothing are read again and compared.
  Edit& Recompress(uint32_t image, const Storage& storage);
  /// Sets CLEVEL; 0 for the lowest that the file fits.
  Edit& SetLevel(uint32_t level = 0);

  /// Writes all of it under a name, which may be that of no input, after it was proven: segments and
  /// fields that were not named are as they were, lengths add up, no rule is broken that was kept. With
  /// `force` rules may be broken. NotWritten; BreaksRule; Unreadable. What the name stood for is kept on
  /// failure.
  void Save(const std::string& path, bool force = false);

 private:
  struct State;
  explicit Edit(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

/// Something that is not the same in two files.
struct Difference {
  enum class Kind { Field, Record, Data, Samples };
  Kind kind = Kind::Field;
  std::string segment;  ///< "image 0", "image 1 | image 0" where the places differ
  std::string name;     ///< mnemonic, or a record's tag and which one of that tag it is
  std::string field;    ///< of a record that both files decode
  /// Texts of fields, bytes of records, or the data's length; none where a file does not have it.
  std::optional<std::string> a, b;
  std::string words;  ///< of samples: how many differ, and by how much
};
/// What differs between two files, every byte of them compared; none for files of the same bytes.
/// Unreadable; TooMuch.
ORBNTF_CORE_API std::vector<Difference> Compare(const File& a, const File& b);

/// The version of the library, "0.2.0".
ORBNTF_CORE_API const char* Version();

}  // namespace orbntf::core

#endif
