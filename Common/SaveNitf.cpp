#include "Common/SaveNitf.h"

#include <algorithm>

#include "Common/ImgVq.h"

namespace {

constexpr char16_t kSourceFile[] = u"SaveNitf";

constexpr uint32_t kCopyChunk = 1 << 20;
constexpr int64_t kLengthEntryBytes = 16;  // LISH and LI of one image in the file header
constexpr uint32_t kSubheaderLengthWidth = 6;
constexpr uint32_t kDataLengthWidth = 10;

bool IsVectorQuantised(const ImageSubheader& image) {
  return image.CompressionCode() == Compression::C4 || image.CompressionCode() == Compression::M4;
}

// Whether an image's lengths in the file header are compared with what was written.
bool HasCheckedLengths(const ImageSubheader& image) {
  return image.mask.IMDATOFF != 0 && image.CompressionCode() == Compression::M4;
}

template <class R>
Status WriteSubheader(const R& record, int32_t output) {
  (void)KernelSeek(output, 0, kSeekEnd);
  FieldWriter writer(output);
  return WriteRows<R>(R::Table(), record, writer);
}

Status WriteBuffer(int32_t output, const void* bytes, size_t held, uint32_t count) {
  return WriteExactly(output, bytes, static_cast<uint32_t>(std::min<size_t>(held, count)));
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
  FieldWriter writer(output);
  const FieldTable<FileHeader> table = FileHeader::Table();
  const auto upTo = static_cast<size_t>(FindRow<FileHeader>(table, "NUMI") - table.data());
  constexpr int64_t kCountWidth = 3;
  if (Status s = WriteRows<FileHeader>(table.first(upTo), document.header, writer); !Ok(s)) return s;
  lengthTableOffset_ = writer.Written() + kCountWidth;
  if (Status s = WriteRows<FileHeader>(table.subspan(upTo), document.header, writer); !Ok(s)) return s;
  return WriteSegments();
}

Status OrbNitfSaveFile::WriteSegments() {
  NitfFile& document = *document_;
  for (ImageSubheader& image : document.images) {
    if (Status s = WriteImage(image); !Ok(s)) return s;
  }
  const FileHeader& header = document.header;
  for (const GraphicSubheader& graphic : document.graphics) {
    if (Status s = WriteSubheader(graphic, output_); !Ok(s)) return s;
    const uint32_t length = header.graphics.Current(graphic.index).data;
    const Status status =
        graphic.hasGraphicData
            ? WriteBuffer(output_, graphic.graphicData.data(), graphic.graphicData.size(), length)
            : CopyFromSource(SegmentKind::Graphic, graphic.index, length);
    if (!Ok(status)) return status;
  }
  for (const TextSubheader& text : document.texts) {
    if (Status s = WriteSubheader(text, output_); !Ok(s)) return s;
    const uint32_t length = header.texts.Current(text.index).data;
    // The terminator behind an appended text is not the file's.
    const Status status = text.hasText
                              ? WriteBuffer(output_, text.text.data(), text.text.size() - 1, length)
                              : CopyFromSource(SegmentKind::Text, text.index, length);
    if (!Ok(status)) return status;
  }
  uint32_t index = 0;
  for (const DataExtensionSubheader& extension : document.dataExtensions) {
    if (Status s = WriteSubheader(extension, output_); !Ok(s)) return s;
    const uint32_t length = header.dataExtensions.Current(index).data;
    if (Status s = CopyFromSource(SegmentKind::DataExtension, index++, length); !Ok(s)) return s;
  }
  return Status::Success;
}

Status OrbNitfSaveFile::WriteImage(ImageSubheader& image) {
  const auto pixel = static_cast<uint32_t>(image.Pixel());
  if (pixel > static_cast<uint32_t>(PixelType::BiLevel)) {
    MessageBoxA(nullptr, "Unsupported PVTYPE", "Error", MB_OK);
    return Status::BadPixelType;
  }
  const int64_t start = OutputEnd();
  if (Status s = WriteSubheader(image, output_); !Ok(s)) return s;
  maskTableSize_ = 0;
  if (image.HasMaskTable()) {
    FieldWriter writer(output_);
    if (Status s = image.mask.Write(writer); !Ok(s)) return s;
    maskTableSize_ = writer.Written();
  }
  const int64_t subheaderEnd = OutputEnd();
  const SegmentLengths lengths = document_->header.images.Current(image.index);
  if (HasCheckedLengths(image)) {
    const auto length = static_cast<uint64_t>(subheaderEnd - start - maskTableSize_);
    if (length != lengths.subheader) {
      lengthsPatched_ = true;
      if (Status s = PatchLength(image, length, true); !Ok(s)) return s;
    }
  }
  if (Status s = WriteImageData(image); !Ok(s)) return s;
  if (!HasCheckedLengths(image)) return Status::Success;
  lengthsPatched_ = true;
  const auto length = static_cast<uint64_t>(OutputEnd() - subheaderEnd) + maskTableSize_;
  return length != lengths.data ? PatchLength(image, length, false) : Status::Success;
}

Status OrbNitfSaveFile::PatchLength(const ImageSubheader& image, uint64_t value, bool ofSubheader) {
  const uint32_t width = ofSubheader ? kSubheaderLengthWidth : kDataLengthWidth;
  const int64_t entry = lengthTableOffset_ + kLengthEntryBytes * image.index;
  (void)KernelSeek(output_, entry + (ofSubheader ? 0 : kSubheaderLengthWidth), kSeekStart);
  FieldWriter writer(output_);
  if (Status s = writer.PutNumber(static_cast<int64_t>(value), width); !Ok(s)) return s;
  SegmentLengths& lengths = document_->header.images.current[image.index];
  (ofSubheader ? lengths.subheader : lengths.data) = Saturate32(value);
  (void)OutputEnd();
  return Status::Success;
}

Status OrbNitfSaveFile::WriteImageData(ImageSubheader& image) {
  const uint32_t length = document_->header.images.Current(image.index).data;
  if (image.hasAppendedData) {
    return WriteBuffer(output_, image.appendedData.data(), image.appendedData.size(), length);
  }
  return IsVectorQuantised(image) ? WriteVectorQuantised(image) : WriteRawImage(image);
}

// Where the file header says that an image's data begins; behind a masked vector-quantised image, whose
// lengths may have been patched, in front of the mask table just written.
int64_t OrbNitfSaveFile::RawDataStart(const ImageSubheader& image) const {
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
  return CopyFromSource(SegmentKind::Image, image.index,
                        document_->header.images.Current(image.index).data);
}

Status OrbNitfSaveFile::CopyFromSource(SegmentKind kind, uint32_t index, uint32_t bytes) {
  (void)document_->SeekToData(kind, index);
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
  (void)KernelSeek(document_->FileHandle(), source.dataStart + extent.start, kSeekStart);
  return CopyBytes(extent.bytes);
}
