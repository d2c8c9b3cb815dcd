#include "core/edit/store.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/edit/store_streams.h"
#include "core/edit/transparency.h"

namespace core {
namespace {

constexpr uint32_t kLargestBlock = 8192, kUsualBlock = 1024, kMostBlocks = 9999;
constexpr uint64_t kMostMasked = 4000000000;  // offsets of masked blocks have 32 bits
constexpr uint32_t kMostRows = 99999999;

// A palette's indexes as the colours that they stand for.
class ColourRaster : public Raster {
 public:
  explicit ColourRaster(Raster& raster) : raster_(raster) {
    form_ = raster.Form();
    form_.bands = 3;
    form_.bits = 8;
    form_.isColour = true;
    form_.palette.swap(palette_);
  }
  void Read(const TakePiece& take) override {
    std::vector<uint8_t> samples;
    raster_.Read([&](const RasterPiece& piece) {
      const size_t count = size_t{piece.width} * piece.height;
      samples.assign(3 * count, 0);
      for (size_t i = 0; i < count; ++i) {
        const size_t entry = size_t{3} * piece.samples[i];
        if (entry + 3 <= palette_.size()) std::memcpy(&samples[3 * i], &palette_[entry], 3);
      }
      RasterPiece own = piece;
      own.bands = 3;
      own.samples = samples.data();
      take(own);
    });
  }

 private:
  Raster& raster_;
  std::vector<uint8_t> palette_;
};

// ---------------------------------------------------------------- forms

uint32_t StoredBits(uint32_t bits, const StoreOptions& options) {
  if (bits == 1 && options.way == StoreOptions::Way::Plain) return 1;
  return 8 * PieceBytes(bits);
}

uint32_t BlockSide(uint32_t side, bool isOne, const StoreOptions& options) {
  if (options.block == 0 && isOne) return side;
  uint32_t block = options.block != 0 ? options.block : kUsualBlock;
  if (side <= block) return side;
  while ((side - 1) / block >= kMostBlocks && block < kLargestBlock)
    block = std::min(2 * block, kLargestBlock);
  return block;
}

BlockForm BlocksOf(const RasterForm& form, const StoreOptions& options) {
  BlockForm blocks;
  blocks.width = form.width;
  blocks.height = form.height;
  blocks.bands = form.bands;
  blocks.bits = StoredBits(form.bits, options);
  blocks.isComplex = form.kind == SampleKind::Complex;
  const bool isPlain = options.way == StoreOptions::Way::Plain;
  const bool isOne = form.width <= kLargestBlock && form.height <= kLargestBlock &&
                     options.way != StoreOptions::Way::Jpeg2000 && !options.isMasked;
  blocks.blockWidth = BlockSide(form.width, isOne, options);
  blocks.blockHeight = BlockSide(form.height, isOne, options);
  blocks.mode = isPlain ? (options.mode != 0 ? options.mode : 'B') : 'P';
  if (blocks.bits == 1 || (blocks.mode == 'S' && (blocks.Count() == 1 || blocks.bands == 1)))
    blocks.mode = 'B';
  return blocks;
}

void TakeBands(const RasterForm& raster, ImageForm& form) {
  form.bands.assign(raster.bands, BandForm());
  form.representation = raster.bands == 1                      ? "MONO"
                        : raster.isColour && raster.bands == 3 ? "RGB"
                                                               : "MULTI";
  form.category = raster.bands > 3 ? "MS" : "VIS";
  if (raster.bands == 1) form.bands[0].representation = "M";
  constexpr const char* kColours[] = {"R", "G", "B"};
  for (size_t i = 0; i < 3 && raster.isColour; ++i) form.bands[i].representation = kColours[i];
  constexpr const char* kDifferences[] = {"Y", "Cb", "Cr"};
  for (size_t i = 0; i < 3 && raster.isYcc; ++i) form.bands[i].representation = kDifferences[i];
  if (raster.isYcc) form.representation = "YCbCr601";
  if (raster.palette.empty()) return;
  form.representation = "RGB/LUT";
  form.bands[0].representation = "LU";
  form.bands[0].tables.assign(3, "");
  for (size_t i = 0; i < raster.palette.size(); ++i)
    form.bands[0].tables[i % 3] += static_cast<char>(raster.palette[i]);
  if (raster.bits <= 8) form.significantBits = form.bits;
}

ImageForm FormOf(const RasterForm& raster, const BlockForm& blocks) {
  constexpr const char* kTypes[] = {"INT", "SI", "R", "C"};
  ImageForm form;
  form.rows = blocks.height;
  form.columns = blocks.width;
  form.pixelType = blocks.bits == 1 ? "B" : kTypes[static_cast<size_t>(raster.kind)];
  form.bits = blocks.bits;
  form.significantBits = raster.bits;
  TakeBands(raster, form);
  form.mode = blocks.mode;
  form.blocksAcross = blocks.Across();
  form.blocksDown = blocks.Down();
  form.blockWidth = blocks.blockWidth;
  form.blockHeight = blocks.blockHeight;
  return form;
}

// ---------------------------------------------------------------- uncompressed data

void AddBig(std::string& text, uint64_t value, size_t bytes) {
  for (size_t i = bytes; i-- > 0;) text += static_cast<char>(value >> (8 * i));
}

// The mask table of an image (MIL-STD-2500C, table A-3(A)) and the blocks behind it.
Pieces MaskedData(const BlockStore& store, const FileBytes& blocks, uint64_t pad, bool leavesOut) {
  const BlockForm& form = store.Form();
  const uint64_t records = form.Records(), bytes = form.RecordBytes(), codeBytes = form.SampleBytes();
  std::string table, offsets, pads;
  Pieces data = {PieceOf("")};
  uint64_t at = 0;
  for (uint64_t record = 0; record < records; ++record) {
    const bool isLeft = leavesOut && store.IsEmpty(record);
    AddBig(offsets, isLeft ? kNoRecord : at, 4);
    AddBig(pads, isLeft || !store.HasPads(record) ? kNoRecord : at, 4);
    if (isLeft) continue;
    if (data.size() > 1 && data.back().offset + data.back().length == record * bytes) {
      data.back().length += bytes;
    } else {
      data.push_back({&blocks, record * bytes, bytes});
    }
    at += bytes;
  }
  AddBig(table, 10 + codeBytes + (leavesOut ? 4 * records : 0) + 4 * records, 4);
  AddBig(table, leavesOut ? 4 : 0, 2);
  AddBig(table, 4, 2);
  AddBig(table, 8 * codeBytes, 2);
  AddBig(table, pad, codeBytes);
  data[0].bytes = table + (leavesOut ? offsets : "") + pads;
  return data;
}

// The parts of the picture, one below the other, that are a segment each.
std::vector<BlockForm> SplitByRows(const BlockForm& whole, uint64_t mostBytes) {
  const uint64_t bandBytes = whole.PlaneBytes() * whole.bands * whole.Across();  // of a row of blocks
  const uint64_t most = std::min<uint64_t>(mostBytes / std::max<uint64_t>(1, bandBytes), kMostBlocks);
  if (most == 0)
    throw PictureError("a row of its blocks is larger than a segment may be; --block makes them smaller");
  const auto rows = static_cast<uint32_t>(std::min<uint64_t>(most * whole.blockHeight, kMostRows));
  std::vector<BlockForm> parts;
  for (uint64_t top = 0; top < whole.height; top += rows) {
    BlockForm part = whole;
    part.height = static_cast<uint32_t>(std::min<uint64_t>(rows, whole.height - top));
    part.blockHeight = std::min(part.blockHeight, whole.Count() == 1 ? part.height : part.blockHeight);
    parts.push_back(part);
  }
  return parts;
}

StoredImage FinishImage(Draft& draft, BlockStore& store, const RasterForm& raster,
                        const StoreOptions& options, const std::optional<uint64_t>& pad) {
  StoredImage image = {FormOf(raster, store.Form()), {}};
  const FileBytes& blocks = store.Finish();
  draft.Keep(store.Scratch());
  if (options.way == StoreOptions::Way::Jpeg) {
    StoreJpeg(draft, store, raster, options.quality, image);
  } else if (options.way == StoreOptions::Way::Jpeg2000) {
    StoreJpeg2000(draft, store, raster, options.rate, image);
  } else if (pad && store.Form().bits > 1) {
    image.form.compression = "NM";
    image.data = MaskedData(store, blocks, *pad, options.isMasked);
  } else {
    image.data = {{&blocks, 0, store.Form().Bytes()}};
  }
  return image;
}

}  // namespace

std::vector<StoredImage> StoreRaster(Draft& draft, Raster& given, const std::string& folder,
                                     const StoreOptions& options, std::vector<std::string>& notes) {
  OpaqueRaster opaque(given, options);
  const bool isPlain = options.way == StoreOptions::Way::Plain;
  std::unique_ptr<ColourRaster> coloured;
  if (!isPlain && !opaque.Form().palette.empty()) coloured = std::make_unique<ColourRaster>(opaque);
  Raster& raster = coloured != nullptr ? static_cast<Raster&>(*coloured) : opaque;
  const RasterForm& form = raster.Form();
  RequireStorable(form, options);
  const std::optional<uint64_t> pad = !isPlain ? std::nullopt : options.pad ? options.pad : opaque.Pad();
  if (options.isMasked && !pad) throw PictureError("--masked: it has no pixels that are no data");
  if (!isPlain && opaque.Pad())
    notes.emplace_back("which pixels are no data is not told: the storage has no mask");
  const BlockForm whole = BlocksOf(form, options);
  std::vector<BlockStore> stores;
  std::vector<uint32_t> tops;
  std::vector<CornerFields> corners;
  uint32_t top = 0;
  for (const BlockForm& part :
       SplitByRows(whole, pad ? std::min(options.mostBytes, kMostMasked) : options.mostBytes)) {
    stores.emplace_back(part, folder);
    tops.push_back(top);
    corners.push_back(CornersFor(given.Form(), top, part.height, options.icords, notes));
    top += part.height;
  }
  raster.Read([&](const RasterPiece& piece) {
    for (size_t i = 0; i < stores.size(); ++i) {
      if (piece.top < tops[i] + stores[i].Form().height && uint64_t{piece.top} + piece.height > tops[i])
        stores[i].Put(piece, form.sampleBytes, tops[i], pad);
    }
  });
  std::vector<StoredImage> images;
  for (size_t i = 0; i < stores.size(); ++i) {
    images.push_back(FinishImage(draft, stores[i], form, options, pad));
    images.back().top = tops[i];
    images.back().corners = corners[i];
  }
  return images;
}

std::vector<StoredImage> StorePicture(Draft& draft, const std::string& path, const std::string& folder,
                                      const StoreOptions& options, std::vector<std::string>& notes) {
  if (options.isAsIs) return {StoreAsIs(draft, path)};
  const std::optional<uint32_t> page =
      options.page != UINT32_MAX ? std::optional(options.page) : std::nullopt;
  const std::unique_ptr<Raster> raster = OpenRaster(path, page);
  return StoreRaster(draft, *raster, folder, options, notes);
}

}  // namespace core
