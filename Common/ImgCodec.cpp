#include "Common/ImgCodec.h"

#include <algorithm>

#include "Common/ImgBitmap.h"
#include "Common/ImgStreams.h"
#include "host/display.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImgCodec";

// The file-format library's calls: the host's own entry points while a load record is at hand.
class Codec {
 public:
  explicit Codec(const HostLoadRecord* record)
      : load_(record != nullptr ? record->loadMemory : &FileFormatLoadMemory),
        setCallback_(record != nullptr ? record->setLoadCallback : &FileFormatSetLoadInfoCallback) {}

  Status Load(std::span<const uint8_t> bytes, KernelBitmap& bitmap, uint32_t bitsPerPixel,
              KernelColourOrder order, const HostLoadOptions* options) const {
    return FromHost(load_(bytes.data(), &bitmap, kBitmapRecordSize, bitsPerPixel, order,
                          static_cast<uint32_t>(bytes.size()), options, nullptr));
  }
  HostLoadInfoCallback SetCallback(HostLoadInfoCallback callback, void* userData) const {
    return setCallback_(callback, userData);
  }

 private:
  HostLoadMemory load_;
  HostSetLoadInfoCallback setCallback_;
};

bool Recognise(std::span<const uint8_t> stream, HostFileInfo& info) {
  info = {};
  return Ok(FromHost(FileFormatInfoMemory(stream.data(), &info, kFileInfoSize,
                                          static_cast<uint32_t>(stream.size()), 0, nullptr)));
}

// A decoded image may exceed its place a little and is clipped; one of twice its size is no part of the
// file.
bool FitsPlace(const HostFileInfo& info, uint64_t width, uint64_t height) {
  return info.width <= 2 * width && info.height <= 2 * height;
}

// Starts the bitmap that block n is decoded into. A stream larger than its block reaches into what lies
// beside it, as far as the segment bitmap goes.
void StartBlock(OwnedBitmap& block, const ImageSubheader& header, uint64_t n,
                const KernelBitmap& segment) {
  const BlockPlace place = PlaceOfBlock(header, n);
  block.Start(std::min(2 * header.NPPBH.value, segment.width - place.column),
              std::min(2 * header.NPPBV.value, segment.height - place.row));
}

// Reads `bytes` of the data into a fresh buffer; -7 before memory is taken for what the file does not
// have.
Status ReadStream(const ImageSource& source, int64_t offset, int64_t bytes, KernelBuffer<uint8_t>& stream,
                  uint32_t spaceInFront = 0) {
  if (offset < 0 || bytes < 0 || bytes > int64_t{UINT32_MAX} - spaceInFront) return Status::ShortRead;
  if (Status s = source.Require(offset, static_cast<uint64_t>(bytes)); !Ok(s)) return s;
  if (Status s = stream.Allocate(static_cast<uint64_t>(bytes) + spaceInFront, ORB_HERE); !Ok(s)) return s;
  return source.ReadAt(offset, stream.data() + spaceInFront, static_cast<uint32_t>(bytes));
}

// ---------------------------------------------------------------- facsimile

struct FacsimileDescription {
  uint32_t format, width, height;
};

int32_t ORB_CALL DescribeFacsimile(HostRawDataInfo* info, void* userData) {
  const auto* description = static_cast<const FacsimileDescription*>(userData);
  info->format = description->format;
  info->width = description->width;
  info->height = description->height;
  info->bitsPerPixel = 1;
  info->photometric = 0;
  info->bitOrder = 1;
  return 1;
}

// ---------------------------------------------------------------- JPEG family

// Tells the decoder of a later block what the first block's own NITF segment said: its length takes in
// the start-of-image marker of the stream behind it.
constexpr uint8_t kNitfSegment[] = {0xFF, 0xD8, 0xFF, 0xE6, 0x00, 0x19, 'N',  'I',  'T',
                                    'F',  0x00, 0x02, 0x00, 'B',  0x00, 0x02, 0x00, 0x02,
                                    0x03, 0x08, 0x00, 0x01, 0x00, 0x03, 0x08, 0x01, 0x01};
static_assert(sizeof kNitfSegment == 27);

Status FillLoadOptions(const ImageSource& source, HostLoadOptions& options) {
  const ImageSubheader& header = source.header;
  options = {};
  if (Status s = FromHost(FileFormatDefaultLoadOptions(&options, kLoadOptionsSize)); !Ok(s)) return s;
  if (header.RepresentationCode() == Representation::Rgb) options.flags |= kLoadComponentsAreRgb;
  if (header.RepresentationCode() == Representation::Multi) {
    const BandSelection bands = SelectBands(header, source.rememberedBands, {0, 0, 0});
    options.flags |= kLoadSelectedBands;
    options.bands[0] = bands.red;
    options.bands[1] = bands.green;
    options.bands[2] = bands.blue;
  }
  return Status::Success;
}

Status ReadSingleStream(KernelBitmap& segment, const ImageSource& source) {
  const ImageSubheader& header = source.header;
  const uint32_t offset = header.mask.IMDATOFF;
  KernelBuffer<uint8_t> stream;
  if (Status s = ReadStream(source, offset, int64_t{source.length} - offset, stream); !Ok(s)) return s;
  HostFileInfo info;
  if (Recognise(stream.Span(), info) &&
      !FitsPlace(info, header.FullWidth().Value(), header.FullHeight().Value())) {
    return Status::BadStructure;
  }
  HostLoadOptions options;
  if (Status s = FillLoadOptions(source, options); !Ok(s)) return s;
  source.blank = false;
  (void)KernelFreeBitmap(&segment);
  if (Status s = Codec(source.record).Load(stream.Span(), segment, 0, kOrderAsDecoded, &options); !Ok(s))
    return s;
  // The decoder's bitmap took the place of the one that had the display palette.
  const bool coloured = header.palette.size() != 0 && segment.bitsPerPixel <= 16;
  return coloured ? PutDisplayPalette(segment, header) : Status::Success;
}

// Reads the stream of one block with room for the NITF segment in front of it.
class BlockStream {
 public:
  Status Read(const ImageSource& source, const StreamPlace& place) {
    return ReadStream(source, place.offset, place.length, buffer_, sizeof kNitfSegment);
  }
  std::span<const uint8_t> Plain() const { return buffer_.Span().subspan(sizeof kNitfSegment); }
  std::span<const uint8_t> WithNitfSegment() const {
    KernelCopyMemory(buffer_.data(), kNitfSegment, sizeof kNitfSegment);
    return buffer_.Span();
  }
  /// Whether the stream is an image that its block has room for.
  bool IsUsable(const ImageSubheader& header) const {
    HostFileInfo info;
    return Recognise(Plain(), info) && FitsPlace(info, header.NPPBH.value, header.NPPBV.value);
  }

 private:
  KernelBuffer<uint8_t> buffer_;
};

Status ReadBlocks(KernelBitmap& segment, const ImageSource& source) {
  const ImageSubheader& header = source.header;
  const Codec codec(source.record);
  const bool multi = header.RepresentationCode() == Representation::Multi;
  const uint64_t count = header.BlockCount();
  StreamFinder finder(source);
  bool decodedOne = false;
  for (uint64_t n = 0; n < count; ++n) {
    StreamPlace place{};
    if (header.mask.HasBlockRecords()) {
      if (!header.mask.HasBlock(n)) continue;
      if (Status s = finder.FindRecorded(n, count, place); !Ok(s)) return s;
    } else {
      if (Status s = n + 1 == count ? finder.FindLast(place) : finder.FindNext(place); !Ok(s)) return s;
      finder.Pass(place);
    }
    BlockStream stream;
    if (Status s = stream.Read(source, place); !Ok(s)) return s;
    if (!stream.IsUsable(header)) continue;
    HostLoadOptions options;
    if (Status s = FillLoadOptions(source, options); !Ok(s)) return s;
    const auto bytes = multi && decodedOne ? stream.WithNitfSegment() : stream.Plain();
    OwnedBitmap block;
    StartBlock(block, header, n, segment);
    if (Status s = codec.Load(bytes, block.record, 0, kOrderAsDecoded, &options); !Ok(s)) return s;
    decodedOne = true;
    if (Status s = PlaceBlock(source, segment, block.record, PlaceOfBlock(header, n)); !Ok(s)) return s;
  }
  return Status::Success;
}

// One stream per band and block, all blocks of a band before the next band's. Streams without records
// are found once, in file order.
class BandSequentialReader {
 public:
  BandSequentialReader(KernelBitmap& segment, const ImageSource& source)
      : segment_(segment),
        source_(source),
        header_(source.header),
        codec_(source.record),
        finder_(source) {}

  Status Read() {
    bandCount_ = header_.BandCount();
    blockCount_ = header_.BlockCount();
    if (!header_.mask.HasBlockRecords()) {
      if (Status s = FindStreams(); !Ok(s)) return s;
    }
    // Three bands are merged, so two-band images have an empty one in front.
    if (Status s = bands_.Make(std::max(3u, bandCount_), ORB_HERE); !Ok(s)) return s;
    for (uint64_t n = 0; n < blockCount_; ++n) {
      if (Status s = ReadBlock(n); !Ok(s)) return s;
    }
    return Status::Success;
  }

 private:
  // Finds streams until they reach the end of the data; any further one is the last stream again.
  Status FindStreams() {
    constexpr uint64_t kLeastStream = 2;  // starts of an image can lie as close
    const CheckedSize wanted = CheckedSize(bandCount_) * blockCount_;
    const uint64_t most = source_.length / kLeastStream + 1;
    if (Status s = streams_.Allocate(wanted.Within(most) ? wanted.Value() : most, ORB_HERE); !Ok(s))
      return s;
    for (StreamPlace& place : streams_) {
      if (finder_.IsExhausted()) break;
      if (!Ok(finder_.FindNext(place))) {
        if (Status s = finder_.FindLast(place); !Ok(s)) return s;
      }
      finder_.Pass(place);
      ++streamCount_;
    }
    return Status::Success;
  }
  Status FindStream(uint64_t number, StreamPlace& place) {
    if (number >= streamCount_) return finder_.FindLast(place);
    place = streams_[static_cast<size_t>(number)];
    return Status::Success;
  }

  Status ReadBlock(uint64_t n) {
    for (uint32_t band = 0; band < bandCount_; ++band) {
      if (Status s = ReadBand(n, band); !Ok(s)) return s;
    }
    OwnedBitmap block;
    const size_t front = bands_.size() - 3;
    bool any = false;
    KernelBitmap three[3];
    for (size_t i = 0; i < 3; ++i) {
      three[i] = bands_[front + i].record;
      any = any || (three[i].flags & kBitmapAllocated) != 0;
    }
    if (any) {
      if (Status s = FromHost(ColourMerge(&block.record, three, kBitmapRecordSize, 0)); !Ok(s)) return s;
    }
    for (OwnedBitmap& band : bands_) band.Free();
    return any ? PlaceBlock(source_, segment_, block.record, PlaceOfBlock(header_, n)) : Status::Success;
  }

  Status ReadBand(uint64_t n, uint32_t band) {
    const uint64_t number = band * blockCount_ + n;
    StreamPlace place{};
    if (header_.mask.HasBlockRecords()) {
      if (!header_.mask.HasBlock(number)) return Status::Success;
      if (Status s = finder_.FindRecorded(number, bandCount_ * blockCount_, place); !Ok(s)) return s;
    } else if (Status s = FindStream(number, place); !Ok(s)) {
      return s;
    }
    const size_t slot = bandCount_ - 1 - band + (bands_.size() - bandCount_);
    // Only the last three are merged; the others are decoded for their statuses alone, and a last stream
    // that stands for many bands gives its status with one that is shown.
    const bool isShown = slot + 3 >= bands_.size();
    if (!isShown && !header_.mask.HasBlockRecords() && number >= streamCount_) return Status::Success;
    BlockStream stream;
    if (Status s = stream.Read(source_, place); !Ok(s)) return s;
    if (!stream.IsUsable(header_)) return Status::Success;
    HostLoadOptions options = {};
    if (Status s = FromHost(FileFormatDefaultLoadOptions(&options, kLoadOptionsSize)); !Ok(s)) return s;
    const Representation representation = header_.RepresentationCode();
    if (representation == Representation::Rgb || representation == Representation::Multi) {
      options.flags |= kLoadComponentsAreRgb;
    }
    StartBlock(bands_[slot], header_, n, segment_);
    const Status status = codec_.Load(stream.Plain(), bands_[slot].record, 0, kOrderAsDecoded, &options);
    if (!isShown) bands_[slot].Free();
    return status;
  }

  KernelBitmap& segment_;
  const ImageSource& source_;
  const ImageSubheader& header_;
  Codec codec_;
  StreamFinder finder_;
  uint32_t bandCount_ = 0;
  uint64_t blockCount_ = 0;
  KernelBuffer<StreamPlace> streams_;
  uint64_t streamCount_ = 0;
  TrackedArray<OwnedBitmap> bands_;
};

}  // namespace

Status ReadFacsimileImage(KernelBitmap& segment, const ImageSource& source) {
  const ImageSubheader& header = source.header;
  if (header.mask.IMDATOFF > source.length) return Status::ShortRead;
  KernelBuffer<uint8_t> data;
  if (Status s = ReadStream(source, 0, source.length, data); !Ok(s)) return s;
  const BiLevelOption option = header.FacsimileOption();
  const bool twoDimensional = option == BiLevelOption::TwoDS || option == BiLevelOption::TwoDH;
  FacsimileDescription description = {twoDimensional ? kFormatFacsimile2D : kFormatFacsimile1D,
                                      segment.width, segment.height};
  const Codec codec(source.record);
  const uint32_t depth = segment.bitsPerPixel;
  source.blank = false;
  (void)KernelFreeBitmap(&segment);
  const HostLoadInfoCallback previous = codec.SetCallback(&DescribeFacsimile, &description);
  const Status status =
      codec.Load(data.Span().subspan(header.mask.IMDATOFF), segment, depth, kOrderBgr, nullptr);
  (void)codec.SetCallback(previous, nullptr);
  return status;
}

Status ReadJpegImage(KernelBitmap& segment, const ImageSource& source) {
  const ImageSubheader& header = source.header;
  const Compression code = header.CompressionCode();
  if (header.IsSingleBlock() || code == Compression::C8 || code == Compression::M8) {
    return ReadSingleStream(segment, source);
  }
  if (header.BandCount() > 1 && header.Mode() == ImageMode::S) {
    return BandSequentialReader(segment, source).Read();
  }
  return ReadBlocks(segment, source);
}
