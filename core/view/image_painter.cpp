#include "core/view/image_painter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/format/words.h"
#include "core/view/band_tones.h"
#include "core/view/mask_rows.h"
#include "media/shuffle.h"

namespace core {
namespace {

uint8_t ClampToByte(int32_t value) { return static_cast<uint8_t>(std::clamp(value, 0, 255)); }

// Luminance and differences of full range as the colour that they mean (ITU-R BT.601), in place.
void ToColours(uint8_t* rgb, uint64_t pixels) {
  constexpr int32_t kOne = 1 << 16, kHalf = kOne / 2;
  constexpr int32_t kRed = 91881, kGreenBlue = 22554, kGreenRed = 46802, kBlue = 116130;
  for (; pixels > 0; --pixels, rgb += 3) {
    const int32_t y = rgb[0] * kOne + kHalf, cb = rgb[1] - 128, cr = rgb[2] - 128;
    rgb[0] = ClampToByte((y + kRed * cr) >> 16);
    rgb[1] = ClampToByte((y - kGreenBlue * cb - kGreenRed * cr) >> 16);
    rgb[2] = ClampToByte((y + kBlue * cb) >> 16);
  }
}

}  // namespace

class ImagePainter::Painter {
 public:
  Painter(const Survey& survey, const SurveyedPart& image, ImageLook look, uint64_t column,
          uint64_t columns)
      : survey_(survey), image_(image), look_(std::move(look)), column_(column), columns_(columns) {}

  SampleFault Start() {
    const bool reduces = IsOneOf(image_.Text("IC"), "C8|M8|C3|M3|C5|M5");
    reduce_ = reduces ? look_.reduce : 0;
    if (!IsOneOf(image_.Text("IC"), "C8|M8")) reduce_ = std::min(reduce_, 3u);
    isEnlarged_ = image_.Text("IC") == "I1";
    if (SampleFault fault = ChooseBands(image_, look_.bands, shown_); fault.Met()) return fault;
    if (SampleFault fault = FindTones(survey_, image_, shown_, look_.stretch, tones_); fault.Met())
      return fault;
    if (SampleFault fault = StartRows(); fault.Met()) return fault;
    for (size_t i = 0; i < shown_.bands.size(); ++i)
      bands_.push_back(std::make_unique<BandTones>(form_, shown_.tables[i], tones_[i]));
    mask_ = std::make_unique<MaskRows>(image_, form_, shown_);
    return {};
  }

  bool IsOpaque() const { return !mask_->LeavesOut(); }

  SampleFault Paint(uint64_t y, uint8_t* rgb) {
    if (isEnlarged_) return PaintEnlarged(y, rgb);
    const uint8_t* samples = nullptr;
    if (SampleFault fault = rows_->Row(y >> reduce_, samples); fault.Met()) return fault;
    if (reduce_ != 0) samples = Spread(samples);
    if (IsOpaque()) {
      Convert(samples, columns_, rgb);
      return {};
    }
    isShown_.resize(columns_);
    row_.resize(3 * columns_);
    mask_->Look(y, column_, samples, isShown_);
    Convert(samples, columns_, row_.data());
    for (size_t x = 0; x < isShown_.size();) {
      const auto begin = isShown_.begin() + static_cast<ptrdiff_t>(x);
      const auto end =
          static_cast<size_t>(std::find(begin, isShown_.end(), 1 - *begin) - isShown_.begin());
      if (*begin != 0) std::copy(&row_[3 * x], row_.data() + 3 * end, rgb + 3 * x);
      x = end;
    }
    return {};
  }

 private:
  SampleFault StartRows() {
    for (;; --reduce_) {
      RowsRequest request = {shown_.bands, column_, columns_,        look_.row,
                             look_.rows,   reduce_, look_.pieceBytes};
      if (isEnlarged_) request.column = request.columns = 0;
      rows_ = std::make_unique<SampleRows>(survey_, image_, request);
      if (SampleFault fault = rows_->Start(form_); fault.Met()) return fault;
      if (image_.Text("PJUST") == "L") form_.significantBits = form_.bits;
      const uint8_t* samples = nullptr;
      if (reduce_ == 0) return {};
      // Its codec may have no picture as small as that.
      if (!rows_->Row(0, samples).Met()) return {};
    }
  }

  // Pixels of a reduced row, each as often as it stands for columns.
  const uint8_t* Spread(const uint8_t* samples) {
    const size_t bytes = form_.PixelBytes();
    spread_.resize(columns_ * bytes);
    for (uint64_t x = 0; x < columns_; ++x)
      std::memcpy(&spread_[x * bytes],
                  samples + std::min<uint64_t>(((column_ + x) >> reduce_) - (column_ >> reduce_),
                                               form_.width - 1) *
                                bytes,
                  bytes);
    return spread_.data();
  }

  void Convert(const uint8_t* samples, uint64_t pixels, uint8_t* rgb) const {
    const size_t step = form_.PixelBytes();
    const auto count = static_cast<uint32_t>(pixels);
    if (shown_.as == ShownAs::Magnitude && shown_.bands.size() == 2) {
      for (; pixels > 0; --pixels, samples += step, rgb += 3)
        std::fill_n(
            rgb, 3,
            ToneOf(std::hypot(ValueOf(form_, samples), ValueOf(form_, samples + form_.sampleBytes)),
                   tones_[0]));
      return;
    }
    if (bands_.size() == 1) {
      if (bands_[0]->IsIdentity()) return media::TripleBytes(samples, count, rgb);
      return bands_[0]->Show(samples, step, pixels, rgb, true);
    }
    const bool asTheyAre =
        std::all_of(bands_.begin(), bands_.end(), [](const auto& band) { return band->IsIdentity(); });
    if (asTheyAre) std::memcpy(rgb, samples, 3 * pixels);
    for (size_t i = 0; !asTheyAre && i < bands_.size(); ++i)
      bands_[i]->Show(samples + i * form_.sampleBytes, step, pixels, rgb + i, false);
    if (shown_.as == ShownAs::Differences) ToColours(rgb, pixels);
  }

  // ---------------------------------------------------------------- downsampled images

  // Where a row or column of the large image lies between two of the small one, in 1/256.
  struct Between {
    uint64_t first, second;
    uint32_t share;  // of the second
  };
  static Between PlaceOf(uint64_t n, uint64_t small, uint64_t large) {
    constexpr uint64_t kOne = 256;
    // Middles of pixels fall on middles of pixels.
    const uint64_t twice = (2 * n + 1) * small * kOne / large;
    const uint64_t at = (std::max(twice, kOne) - kOne) / 2;
    return {at / kOne, std::min(at / kOne + 1, small - 1), static_cast<uint32_t>(at % kOne)};
  }

  SampleFault SmallRow(uint64_t y, std::vector<uint8_t>& rgb) {
    const uint8_t* samples = nullptr;
    if (SampleFault fault = rows_->Row(y, samples); fault.Met()) return fault;
    rgb.resize(size_t{3} * form_.width);
    Convert(samples, form_.width, rgb.data());
    return {};
  }

  SampleFault PaintEnlarged(uint64_t y, uint8_t* rgb) {
    constexpr uint32_t kOne = 256;
    const auto rows = static_cast<uint64_t>(image_.Number("NROWS")),
               columns = static_cast<uint64_t>(image_.Number("NCOLS"));
    const Between place = PlaceOf(y, form_.height, rows);
    std::vector<uint8_t> upper, lower;
    if (SampleFault fault = SmallRow(place.first, upper); fault.Met()) return fault;
    if (SampleFault fault = SmallRow(place.second, lower); fault.Met()) return fault;
    // Entries of a table have nothing between them.
    const bool isMixed = shown_.tables[0].entries.empty();
    const auto mix = [&](uint32_t a, uint32_t b, uint32_t share) {
      return a * (kOne - share) + b * share;
    };
    for (uint64_t x = 0; x < columns_; ++x) {
      const Between at = PlaceOf(column_ + x, form_.width, columns);
      for (size_t c = 0; c < 3; ++c, ++rgb) {
        const size_t a = 3 * at.first + c, b = 3 * at.second + c;
        *rgb = isMixed ? static_cast<uint8_t>(mix(mix(upper[a], upper[b], at.share),
                                                  mix(lower[a], lower[b], at.share), place.share) /
                                              (kOne * kOne))
                       : upper[a];
      }
    }
    return {};
  }

  const Survey& survey_;
  const SurveyedPart& image_;
  ImageLook look_;
  uint64_t column_, columns_;
  uint32_t reduce_ = 0;
  bool isEnlarged_ = false;
  ShownBands shown_;
  std::vector<ToneRange> tones_;
  SampleImage form_;
  std::unique_ptr<SampleRows> rows_;
  std::vector<std::unique_ptr<BandTones>> bands_;
  std::unique_ptr<MaskRows> mask_;
  std::vector<uint8_t> isShown_, row_, spread_;
};

ImagePainter::ImagePainter(const Survey& survey, const SurveyedPart& image, ImageLook look,
                           uint64_t column, uint64_t columns)
    : painter_(std::make_unique<Painter>(survey, image, std::move(look), column, columns)) {}
ImagePainter::~ImagePainter() = default;
SampleFault ImagePainter::Start() { return painter_->Start(); }
SampleFault ImagePainter::Paint(uint64_t y, uint8_t* rgb) { return painter_->Paint(y, rgb); }
bool ImagePainter::IsOpaque() const { return painter_->IsOpaque(); }

}  // namespace core
