#include "core/edit/recompress.h"

#include <algorithm>
#include <cstring>

#include "core/edit/add.h"
#include "core/samples/rows.h"
#include "media/work.h"

namespace core {
namespace {

void Require(const SampleFault& fault, const SurveyedPart& part) {
  if (fault.Met()) RefuseFile(part.Title() + ": " + fault.words);
}

// An image segment as a picture.
class SegmentRaster : public Raster {
 public:
  SegmentRaster(const Survey& survey, const SurveyedPart& part) : survey_(survey), part_(part) {
    Require(DescribeSamples(part, samples_), part);
    form_.width = static_cast<uint32_t>(part.Number("NCOLS"));
    form_.height = static_cast<uint32_t>(part.Number("NROWS"));
    form_.bands = samples_.bands;
    form_.bits = std::clamp<uint32_t>(samples_.significantBits, 1, samples_.bits);
    if (samples_.kind == SampleKind::Real || samples_.kind == SampleKind::Complex)
      form_.bits = samples_.bits;
    form_.sampleBytes = samples_.sampleBytes;
    form_.kind = samples_.kind;
    form_.palette = samples_.palette;
    form_.isColour = form_.bands == 3 && part.Trimmed("IREP") == "RGB";
    form_.isYcc = form_.bands == 3 && part.Trimmed("IREP") == "YCbCr601";
    RequireSize(form_);
  }
  const std::optional<uint64_t>& Pad() const { return samples_.noData; }
  void Read(const TakePiece& take) override {
    SampleRows rows(survey_, part_, {});
    SampleImage form;
    Require(rows.Start(form), part_);
    if (form.width != form_.width || form.height != form_.height || form.bands != form_.bands)
      RefuseFile(part_.Title() + ": its data has another size than its subheader says");
    for (uint32_t y = 0; y < form_.height; ++y) {
      const uint8_t* samples = nullptr;
      Require(rows.Row(y, samples), part_);
      take({0, y, form_.width, 1, 0, form_.bands, samples});
    }
  }

 private:
  const Survey& survey_;
  const SurveyedPart& part_;
  SampleImage samples_;
};

// Samples of few bits lie in more of them.
void RequireFits(const Raster& raster, const SurveyedPart& part) {
  if (PieceBytes(raster.Form().bits) != raster.Form().sampleBytes && raster.Form().bits != 1)
    RefuseFile(part.Title() + ": samples of " + std::to_string(raster.Form().bits) + " bits in " +
               std::to_string(raster.Form().sampleBytes) + " bytes are not stored anew");
}

// Reads what was stored and holds it against what it was made from, row by row.
void Verify(SegmentRaster& before, const DraftPart& image) {
  const std::string header = image.Header();
  Draft alone(NewFileHeader());
  alone.Insert(DraftPart(PartKind::Image, header, image.data));
  alone.Finish();
  const auto scratch = std::make_shared<ScratchFile>("");
  std::string front = alone.file.Header() + header;
  scratch->Write(0, front.data(), front.size());
  uint64_t at = front.size();
  std::string piece;
  for (const Piece& data : image.data) {
    for (uint64_t done = 0; done < data.Length(); done += piece.size()) {
      piece = data.file != nullptr
                  ? data.file->At(data.offset + done, std::min<uint64_t>(1 << 20, data.length - done))
                  : data.bytes;
      scratch->Write(at, piece.data(), piece.size());
      at += piece.size();
    }
  }
  const Survey survey(scratch->Open(), scratch->Size());
  SegmentRaster after(survey, survey.parts.at(1));
  const RasterForm &was = before.Form(), &is = after.Form();
  const size_t rowBytes = size_t{was.width} * was.bands * was.sampleBytes;
  SampleRows rows(survey, survey.parts[1], {});
  SampleImage form;
  Require(rows.Start(form), survey.parts[1]);
  if (is.width != was.width || is.height != was.height || is.bands != was.bands ||
      is.sampleBytes != was.sampleBytes)
    RefuseFile("what was stored has another form than before");
  before.Read([&](const RasterPiece& own) {
    const uint8_t* samples = nullptr;
    Require(rows.Row(own.top, samples), survey.parts[1]);
    if (std::memcmp(samples, own.samples, rowBytes) != 0)
      RefuseFile("what was stored has other samples than before");
  });
}

}  // namespace

void Recompress(Draft& draft, size_t index, const std::string& folder, const StoreOptions& options,
                std::vector<std::string>& notes) {
  const DraftPart& image = *draft.Find(PartKind::Image, index);
  const SurveyedPart& part = *image.Origin();
  const uint64_t samples = SamplesAskedFor(part, {});
  SegmentRaster raster(*image.Source(), part);
  RequireFits(raster, part);
  media::AllowPixels(2 * samples);
  StoreOptions own = options;
  own.pad = raster.Pad();
  std::vector<StoredImage> stored = StoreRaster(draft, raster, folder, own, notes);
  if (stored.size() != 1) RefuseFile(part.Title() + " would be larger than one segment");
  const bool isExact = options.way == StoreOptions::Way::Plain ||
                       (options.way == StoreOptions::Way::Jpeg2000 && options.rate == 0);
  ReplaceImage(draft, index, std::move(stored[0]), false);
  if (isExact) Verify(raster, *draft.Find(PartKind::Image, index));
}

}  // namespace core
