// Composes NITF files from named fields. It knows the layout on its own, so that it can disagree with the
// module.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// Fields of one header in file order. A field's text is written as it stands.
class Record {
 public:
  struct Field {
    std::string name;
    size_t width;
    std::string text;
  };
  explicit Record(std::vector<Field> fields) : fields_(std::move(fields)) {}

  /// Sets a field: numbers are filled with zeros in front, other texts with spaces behind; a text of the
  /// full width or more stands as it is.
  Record& Set(const std::string& name, const std::string& text);
  Record& Set(const std::string& name, int64_t number);
  Record& SetRaw(const std::string& name, const std::string& bytes);
  /// Adds a field behind another one.
  Record& InsertAfter(const std::string& name, const std::string& added, const std::string& text);
  Record& Remove(const std::string& name);
  const std::string& Get(const std::string& name) const;
  std::string Bytes() const;
  /// Bytes in front of a field.
  size_t OffsetOf(const std::string& name) const;

 private:
  Field& Find(const std::string& name);
  std::vector<Field> fields_;
};

std::string Digits(int64_t number, size_t width);
std::string Big(uint64_t number, size_t bytes);
/// What a STREAMING_FILE_HEADER holds (MIL-STD-2500C, 5.8.3.3): the replacement between its marks and
/// lengths, the second of which may be another.
std::string StreamingData(const std::string& replacement, int64_t secondLength = -1);

/// What an image looks like to its subheader.
struct ImageForm {
  int width = 8, height = 8;
  int blocksAcross = 1, blocksDown = 1;  ///< of width x height pixels each
  int bands = 1;
  int bits = 8;
  int significantBits = 0;  ///< ABPP, 0 for all
  std::string compression = "NC";
  std::string representation = "MONO";
  std::string mode = "B";
  std::string pixelType = "INT";
  std::vector<std::string> bandCodes;
  std::string rate = "00.0";
  std::string lookup;  ///< lookup tables of the first band, one after the other
  int lookupTables = 0;
  int level = 1, attachment = 0;
  std::string location = "0000000000";
};
Record ImageRecord(const ImageForm& form);
Record GraphicRecord();
Record TextRecord();
Record DataExtensionRecord(const std::string& id);

/// The image data mask table in front of masked data.
struct MaskForm {
  std::vector<uint32_t> blocks;  ///< empty: no block records
  std::vector<uint32_t> pads;    ///< empty: no pad pixel records
  int padCode = -1;              ///< 8-bit pad pixel code
};
std::string MaskBytes(const MaskForm& mask);

struct Segment {
  Record subheader;
  std::string data;
};

/// A file. Lengths, counts and offsets are filled in by Bytes unless `patches` says otherwise.
class NitfBuilder {
 public:
  NitfBuilder();
  Record header;
  std::vector<Segment> images, graphics, texts, extensions;

  NitfBuilder& Image(const ImageForm& form, std::string data);
  NitfBuilder& Image(Record subheader, std::string data);
  NitfBuilder& Graphic(Record subheader, std::string data);
  NitfBuilder& Text(std::string data);
  /// Overrides what Bytes fills in: "FL", "HL", "LISH0", "LI0", "LS0", ...
  NitfBuilder& Patch(const std::string& name, const std::string& text);
  std::string Bytes() const;

 private:
  std::string Lengths(const std::vector<Segment>& segments, const char* subheader, size_t subheaderWidth,
                      const char* data, size_t dataWidth) const;
  std::string Patched(const std::string& name, std::string text) const;
  std::vector<std::pair<std::string, std::string>> patches_;
};

/// A file with segments of every kind, extended data in each header that can carry some, comments, places
/// and data extension fields.
NitfBuilder FullFile();

/// A file whose length waits, with a streaming file header that begins with other bytes.
NitfBuilder Streamed(NitfBuilder file, const std::string& replacement);

}  // namespace test
