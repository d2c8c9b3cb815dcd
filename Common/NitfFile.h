// The document: one NITF 2.1 or NSIF file in memory.
#pragma once

#include "Common/DExSbHdr.h"
#include "Common/GrSubHdr.h"
#include "Common/ImSubHdr.h"
#include "Common/NtfHdr.h"
#include "Common/SegmentList.h"
#include "Common/StrmFHdr.h"
#include "Common/TxSubHdr.h"

/// Segment data is read on demand from the open file; all reads move its one position.
struct NitfFile {
  NitfFile() = default;
  ~NitfFile() { FreeObjects(); }
  NitfFile(const NitfFile&) = delete;
  NitfFile& operator=(const NitfFile&) = delete;

  /// Opens a file and reads its header and every segment's subheader, in file order. 1, -7 (also for a
  /// file that does not open), -9, -13, -78, -1, -700000 to -700002.
  Status ReadDocument(const char16_t* fileName);
  /// Makes the records for the counts that the header gives; -1.
  Status AllocateObjects();
  /// Closes the file and frees every record and table.
  void FreeObjects();
  /// Takes the options that the host's load flags carry.
  void TakeOptions(uint32_t loadFlags);

  // Positions in the file.

  void SeekPastHeader();
  /// Goes to the first byte of a segment's subheader or data and returns that position.
  int64_t SeekToSubheader(SegmentKind kind, uint32_t index);
  int64_t SeekToData(SegmentKind kind, uint32_t index);
  /// Length of a segment's data in the file; 0 at or beyond the current count.
  uint32_t DataLength(SegmentKind kind, uint32_t index) const;
  int32_t FileHandle() const { return file.Handle(); }

  /// Parses one header record at the file's position, and again from the replacement data when the first
  /// pass met a placeholder. The position is put back on success.
  template <class R>
  Status ParseHeader(R& record, FieldTable<R> table, StreamingFileHeader& streaming, ReadMode mode);

  /// The file header, null before FHDR was accepted.
  FileHeader* Header() { return headerPresent ? &header : nullptr; }
  uint32_t ImageCount() const { return images.Count(); }
  uint32_t GraphicCount() const { return graphics.Count(); }
  uint32_t TextCount() const { return texts.Count(); }

  OwnedFile file;
  bool hasSource = false;        ///< `source` is known
  WideFileIdentity source = {};  ///< of the open file
  bool graphicOption = false;
  bool liftDarkImages = false;
  bool fixedCanvas = false;
  uint32_t replacementConsumed = 0;
  bool streamingLocated = false;
  uint32_t replacementDistance = 0;  ///< from the end of the file to the next replacement byte
  bool headerPresent = false;
  FileHeader header;
  COLORREF background = 0xFFFFFF;
  SegmentList<ImageSubheader> images;
  SegmentList<GraphicSubheader> graphics;
  SegmentList<TextSubheader> texts;
  SegmentList<DataExtensionSubheader> dataExtensions;

 private:
  template <class R>
  Status ReadSubheaders(SegmentKind kind, SegmentList<R>& list, StreamingFileHeader& streaming);
  Status SeekToReplacement(StreamingFileHeader& streaming);
  uint32_t ReplacementLeft(const StreamingFileHeader& streaming) const {
    return streaming.SFH_L1 - std::min(streaming.SFH_L1, replacementConsumed);
  }
};

/// Finds the streaming file header by its first delimiter, searching from the end of the file, and reads
/// it. `distance` receives how far before the end the replacement data begins. 1, -13, -9, -7 or -1.
Status FindStreamingHeader(int32_t file, StreamingFileHeader& streaming, uint32_t& distance);

template <class R>
Status NitfFile::ParseHeader(R& record, FieldTable<R> table, StreamingFileHeader& streaming,
                             ReadMode mode) {
  const int64_t start = KernelSeek(FileHandle(), 0, kSeekCurrent);
  FieldReader reader(FileHandle(), mode, ReplacementLeft(streaming));
  Status status = ReadRows<R>(table, record, reader);
  if constexpr (requires { record.ReadTail(reader); }) {
    if (Ok(status)) status = record.ReadTail(reader);
  }
  if (status == Status::ReplacementEnd) return Status::Success;
  if (!Ok(status)) return status;
  if (mode == ReadMode::Replacement) {
    replacementConsumed += reader.Taken();
    replacementDistance -= reader.Taken();
  } else if (reader.SawPlaceholder()) {
    if (Status s = SeekToReplacement(streaming); !Ok(s)) return s;
    // A placeholder met in replacement mode starts nothing further.
    if (Status s = ParseHeader(record, table, streaming, ReadMode::Replacement); !Ok(s)) return s;
  }
  (void)KernelSeek(FileHandle(), start, kSeekStart);
  return Status::Success;
}
