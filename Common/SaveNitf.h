// Writes a document as one NITF 2.1 file.
#pragma once

#include "Common/NitfFile.h"

/// The writer of one save. It writes every header from its record and copies segment data from the
/// document's source file or from appended bytes.
class OrbNitfSaveFile : NonCopyable {
 public:
  virtual ~OrbNitfSaveFile() = default;

  /// Writes the file header and every segment. 1, or the first failure: -5, -7, -1 or -700000.
  Status WriteFile(int32_t output, NitfFile& document);

 private:
  Status WriteFileHeader();
  Status WriteSegments();
  template <class R>
  Status WriteSubheader(const R& record);
  /// A graphic, text or data extension: its subheader, then its data.
  template <class R>
  Status WriteSegment(const R& record, SegmentKind kind, const AppendedData& appended);
  Status WriteAppended(const AppendedData& appended, SegmentKind kind, uint32_t index);
  Status WriteImage(ImageSubheader& image);
  Status WriteImageData(ImageSubheader& image);
  Status WriteRawImage(ImageSubheader& image);
  int64_t RawDataStart(const ImageSubheader& image);
  /// The codes of a vector-quantised image, block by block.
  Status WriteVectorQuantised(ImageSubheader& image);
  Status PatchLength(const ImageSubheader& image, uint64_t value, bool ofSubheader);
  /// Copies `bytes` from the source file's position to the output.
  Status CopyBytes(uint64_t bytes);
  /// Copies a segment's data as it stands in the source file.
  Status CopyFromSource(SegmentKind kind, uint32_t index);
  /// Goes to the end of what was written and tells where that is.
  int64_t OutputEnd();

  int32_t output_ = kNoFile;
  NitfFile* document_ = nullptr;
  int64_t lengthTableOffset_ = 0;  ///< of the first image's LISH
  bool lengthsPatched_ = false;
  bool endLost_ = false;  ///< there was no going to the end once
};

/// Saves a document under a wide path. -13 when that names the document's source file.
Status SaveDocument(NitfFile& document, const char16_t* path);
