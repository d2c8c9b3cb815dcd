#include "Common/SaveNitf.h"

#include <algorithm>

#include "Common/ImCodes.h"
#include "Common/ImSubHdr.h"
#include "Common/ImgVq.h"

namespace {

constexpr char16_t kSourceFile[] = u"SaveNitf";

constexpr uint32_t kCopyChunk = 256 << 10;

// Whether an image's lengths in the file header are compared with what was written.
bool HasCheckedLengths(const ImageSubheader& image) {
  return image.mask.IMDATOFF != 0 && image.CompressionCode() == Compression::M4;
}

}  // namespace

Status SaveDocument(NitfFile& document, const char16_t* path) {
  if (path == nullptr) return Status::InvalidParameter;
  // The output is truncated while data is still to be copied from the source.
  WideFileIdentity target;
  if (document.hasSource && WideIdentify(path, &target) && target == document.source) {
    return Status::InvalidParameter;
  }
  OrbNitfSaveFile writer;
  OwnedFile output;
  output.OpenForWriting(path);
  const Status written = writer.WriteFile(output.Handle(), document);
  const Status closed = output.Close();
  return Ok(written) ? closed : written;
}

Status OrbNitfSaveFile::WriteFile(int32_t output, NitfFile& document) {
  output_ = output;
  document_ = &document;
  if (Status s = WriteFileHeader(); !Ok(s)) return s;
  if (Status s = WriteSegments(); !Ok(s)) return s;
  return endLost_ ? Status::ShortWrite : Status::Success;
}

int64_t OrbNitfSaveFile::OutputEnd() {
  const int64_t end = KernelSeek(output_, 0, kSeekEnd);
  endLost_ = endLost_ || end < 0;
  return end;
}

Status OrbNitfSaveFile::WriteFileHeader() {
  FieldWriter writer(output_);
  const FieldTable<FileHeader> table = FileHeader::Table();
  const FieldRow<FileHeader>* count = FindRow<FileHeader>(table, kSegmentLengths[0].countName);
  const auto before = static_cast<size_t>(count - table.data());
  if (Status s = WriteRows<FileHeader>(table.first(before), document_->header, writer); !Ok(s)) return s;
  lengthTableOffset_ = int64_t{writer.Written()} + count->width;
  return WriteRows<FileHeader>(table.subspan(before), document_->header, writer);
}

Status OrbNitfSaveFile::WriteSegments() {
  for (ImageSubheader& image : document_->images) {
    if (Status s = WriteImage(image); !Ok(s)) return s;
  }
  for (const GraphicSubheader& graphic : document_->graphics) {
    if (Status s = WriteSegment(graphic, SegmentKind::Graphic, graphic.appended); !Ok(s)) return s;
  }
  for (const TextSubheader& text : document_->texts) {
    if (Status s = WriteSegment(text, SegmentKind::Text, text.appended); !Ok(s)) return s;
  }
  const AppendedData none;
  for (const DataExtensionSubheader& extension : document_->dataExtensions) {
    if (Status s = WriteSegment(extension, SegmentKind::DataExtension, none); !Ok(s)) return s;
  }
  return Status::Success;
}

template <class R>
Status OrbNitfSaveFile::WriteSubheader(const R& record) {
  (void)OutputEnd();
  FieldWriter writer(output_);
  return WriteRows<R>(R::Table(), record, writer);
}

template <class R>
Status OrbNitfSaveFile::WriteSegment(const R& record, SegmentKind kind, const AppendedData& appended) {
  if (Status s = WriteSubheader(record); !Ok(s)) return s;
  return appended.present ? WriteAppended(appended, kind, record.index)
                          : CopyFromSource(kind, record.index);
}

Status OrbNitfSaveFile::WriteAppended(const AppendedData& appended, SegmentKind kind, uint32_t index) {
  const uint32_t length = document_->header.Lengths(kind).Current(index).data;
  return WriteExactly(output_, appended.bytes.data(),
                      static_cast<uint32_t>(std::min<size_t>(appended.bytes.size(), length)));
}

Status OrbNitfSaveFile::WriteImage(ImageSubheader& image) {
  if (static_cast<uint32_t>(image.Pixel()) > static_cast<uint32_t>(PixelType::BiLevel)) {
    MessageBoxA(nullptr, "Unsupported PVTYPE", "Error", MB_OK);
    return Status::BadPixelType;
  }
  const int64_t start = OutputEnd();
  if (Status s = WriteSubheader(image); !Ok(s)) return s;
  FieldWriter table(output_);
  if (image.HasMaskTable()) {
    if (Status s = image.mask.Write(table); !Ok(s)) return s;
  }
  const int64_t subheaderEnd = OutputEnd();
  const SegmentLengths lengths = document_->header.images.Current(image.index);
  if (HasCheckedLengths(image)) {
    const auto length = static_cast<uint64_t>(subheaderEnd - start - table.Written());
    if (length != lengths.subheader) {
      if (Status s = PatchLength(image, length, true); !Ok(s)) return s;
    }
  }
  if (Status s = WriteImageData(image); !Ok(s)) return s;
  if (!HasCheckedLengths(image)) return Status::Success;
  lengthsPatched_ = true;
  const auto length = static_cast<uint64_t>(OutputEnd() - subheaderEnd) + table.Written();
  return length != lengths.data ? PatchLength(image, length, false) : Status::Success;
}

Status OrbNitfSaveFile::PatchLength(const ImageSubheader& image, uint64_t value, bool ofSubheader) {
  const SegmentLengthFields& fields = LengthFieldsOf(SegmentKind::Image);
  const int64_t entry = lengthTableOffset_ + int64_t{fields.EntryBytes()} * image.index;
  if (KernelSeek(output_, entry + (ofSubheader ? 0 : fields.subheaderWidth), kSeekStart) < 0) {
    return Status::ShortWrite;
  }
  FieldWriter writer(output_);
  const uint32_t width = ofSubheader ? fields.subheaderWidth : fields.dataWidth;
  if (Status s = writer.PutNumber(static_cast<int64_t>(value), width); !Ok(s)) return s;
  SegmentLengths& lengths = document_->header.images.current[image.index];
  (ofSubheader ? lengths.subheader : lengths.data) = Saturate32(value);
  (void)OutputEnd();
  return Status::Success;
}

Status OrbNitfSaveFile::WriteImageData(ImageSubheader& image) {
  if (image.appended.present) return WriteAppended(image.appended, SegmentKind::Image, image.index);
  return image.Family() == ReaderFamily::VectorQuantised ? WriteVectorQuantised(image)
                                                         : WriteRawImage(image);
}

// Where the file header says that an image's data begins; behind a masked vector-quantised image, whose
// lengths may have been patched, in front of the mask table just written.
int64_t OrbNitfSaveFile::RawDataStart(const ImageSubheader& image) {
  if (lengthsPatched_) return OutputEnd() - image.mask.IMDATOFF;
  const LengthTable& table = document_->header.images;
  int64_t start = document_->header.currentHeaderLength;
  for (uint32_t i = 0; i < image.index; ++i) {
    start += int64_t{table.current[i].subheader} + table.current[i].data;
  }
  return start + table.Current(image.index).subheader;
}

// The source's data begins with its own mask table, which takes the place of the one written from the
// record.
Status OrbNitfSaveFile::WriteRawImage(ImageSubheader& image) {
  if (KernelSeek(output_, RawDataStart(image), kSeekStart) < 0) return Status::ShortWrite;
  return CopyFromSource(SegmentKind::Image, image.index);
}

Status OrbNitfSaveFile::CopyFromSource(SegmentKind kind, uint32_t index) {
  const uint64_t bytes = document_->header.Lengths(kind).Current(index).data;
  if (bytes != 0 && document_->SeekToData(kind, index) < 0) return Status::ShortRead;
  return CopyBytes(bytes);
}

Status OrbNitfSaveFile::CopyBytes(uint64_t bytes) {
  if (bytes == 0) return Status::Success;
  const int32_t source = document_->FileHandle();
  if (Status s = RequireRemaining(source, bytes); !Ok(s)) return s;
  KernelBuffer<uint8_t> chunk;
  if (Status s = chunk.Allocate(std::min<uint64_t>(bytes, kCopyChunk), ORB_HERE); !Ok(s)) return s;
  while (bytes > 0) {
    const auto count = static_cast<uint32_t>(std::min<uint64_t>(bytes, chunk.size()));
    if (Status s = ReadExactly(source, chunk.data(), count); !Ok(s)) return s;
    if (Status s = WriteExactly(output_, chunk.data(), count); !Ok(s)) return s;
    bytes -= count;
  }
  return Status::Success;
}

// What the image's blocks do not need is left behind.
Status OrbNitfSaveFile::WriteVectorQuantised(ImageSubheader& image) {
  const ImageSource source = ImageSource::Of(*document_, image.index, nullptr);
  VqDataExtent extent;
  if (Status s = FindVqDataExtent(source, extent); !Ok(s)) return s;
  if (Status s = SeekTo(document_->FileHandle(), source.dataStart + extent.start); !Ok(s)) return s;
  return CopyBytes(extent.bytes);
}
