#include "core/view/view.h"

#include <algorithm>
#include <bit>

#include "core/format/interruption.h"
#include "core/pictures/area_scaler.h"
#include "core/pictures/box_scaler.h"
#include "core/view/graphic_painter.h"
#include "media/shuffle.h"
#include "media/work.h"

namespace core {
namespace {

constexpr int64_t kMostSide = INT32_MAX;

// A segment of the picture, with what paints it while rows of it are wanted.
struct Item {
  PlacedSegment place;
  std::unique_ptr<GraphicPainter> graphic;
  std::unique_ptr<ImagePainter> image;
  bool isDone = false;  ///< nothing more is painted of it

  bool Covers(int64_t y) const { return y >= place.top && y < place.bottom; }
};

struct Rectangle {
  int64_t row = 0, column = 0, rows = 0, columns = 0;
};

}  // namespace

class FileView::Drawer {
 public:
  Drawer(const Survey& survey, const ViewRequest& request)
      : survey_(survey), request_(request), places_(survey) {}

  SampleFault Start() {
    if (SampleFault fault = request_.image ? AddOneImage() : AddSegments(); fault.Met()) return fault;
    if (items_.empty() && !missing_.empty())
      return {media::Outcome::BadData, missing_[0].segment + ": " + missing_[0].words};
    if (width_ <= 0 || height_ <= 0) return {media::Outcome::Invalid, "there is nothing in it to draw"};
    if (width_ > kMostSide || height_ > kMostSide)
      return {media::Outcome::NoMemory, "its picture has " + std::to_string(width_) + " x " +
                                            std::to_string(height_) + " pixels, more than " +
                                            std::to_string(kMostSide) + " a side"};
    if (SampleFault fault = TakeWindow(); fault.Met()) return fault;
    StartGraphics();
    TakeSize();
    TakeBackground();
    return Weigh();
  }

  uint64_t FullWidth() const { return static_cast<uint64_t>(width_); }
  uint64_t FullHeight() const { return static_cast<uint64_t>(height_); }
  uint32_t Width() const { return smallWidth_; }
  uint32_t Height() const { return smallHeight_; }
  uint64_t PixelsToMake() const {
    const bool isFew = request_.fast && IsSmaller();
    return static_cast<uint64_t>(window_.columns) *
           (isFew ? smallHeight_ : static_cast<uint64_t>(window_.rows));
  }
  const std::vector<LeftOut>& Missing() const { return missing_; }

  SampleFault Draw(const TakeRow& take) {
    row_.resize(3 * static_cast<size_t>(window_.columns));
    return IsSmaller() && request_.fast ? DrawNearest(take) : DrawAll(take);
  }

 private:
  // ---------------------------------------------------------------- what there is

  void Miss(const PlacedSegment& place, const std::string& words) {
    missing_.push_back({place.part->Title(), words});
  }

  SampleFault AddOneImage() {
    const SurveyedPart* part = survey_.Find(PartKind::Image, *request_.image);
    if (part == nullptr)
      return {media::Outcome::Invalid, "there is no image " + std::to_string(*request_.image)};
    items_.emplace_back();
    PlacedSegment& place = items_.back().place;
    place.part = part;
    place.bottom = height_ = part->Number("NROWS");
    place.right = width_ = part->Number("NCOLS");
    return {};
  }

  SampleFault AddSegments() {
    for (const PlacedSegment& place : places_.All()) {
      const bool isImage = place.part->kind == PartKind::Image;
      if (isImage && place.part->Trimmed("IREP") == "NODISPLY") continue;
      if (!place.readable) {
        Miss(place, "its level, place or size is not told");
        continue;
      }
      items_.emplace_back();
      Item& item = items_.back();
      item.place = place;
      if (isImage) {
        Widen(place.right, place.bottom);
      } else {
        AddGraphic(item);
      }
    }
    // All of them may be painted on a row.
    constexpr uint64_t kHeld = 64 << 20, kLeast = 32 << 10, kMost = 1 << 20;
    look_.pieceBytes = std::clamp(kHeld / std::max<uint64_t>(1, items_.size()), kLeast, kMost);
    std::stable_sort(items_.begin(), items_.end(),
                     [](const Item& a, const Item& b) { return a.place.level < b.place.level; });
    return {};
  }

  void AddGraphic(Item& item) {
    item.graphic = std::make_unique<GraphicPainter>(survey_, item.place);
    Widen(item.place.right, item.place.bottom);
    if (SampleFault fault = item.graphic->Load(); fault.Met()) {
      Miss(item.place, fault.words);
      items_.pop_back();
      return;
    }
    Widen(item.graphic->Right(), item.graphic->Bottom());
  }

  // Drawings take many times the memory of their bytes: few large ones are held.
  void StartGraphics() {
    constexpr uint64_t kHeld = 1 << 20;
    uint64_t held = 0;
    for (Item& item : items_) {
      if (item.graphic == nullptr) continue;
      const bool isHeld = item.graphic->Bytes() <= kHeld - held;
      if (isHeld) held += item.graphic->Bytes();
      item.graphic->Start(static_cast<uint32_t>(width_), static_cast<uint32_t>(height_), isHeld);
    }
  }

  void Widen(int64_t right, int64_t bottom) {
    width_ = std::max(width_, right);
    height_ = std::max(height_, bottom);
  }

  // ---------------------------------------------------------------- what is wanted

  SampleFault TakeWindow() {
    const auto within = [](uint64_t begin, uint64_t count, int64_t side, int64_t& first,
                           int64_t& length) {
      const auto all = static_cast<uint64_t>(side);
      if (begin >= all) return false;
      first = static_cast<int64_t>(begin);
      length = static_cast<int64_t>(count == 0 ? all - begin : std::min(count, all - begin));
      return true;
    };
    if (within(request_.row, request_.rows, height_, window_.row, window_.rows) &&
        within(request_.column, request_.columns, width_, window_.column, window_.columns))
      return {};
    return {media::Outcome::Invalid, "the part lies outside of the picture, which has " +
                                         std::to_string(height_) + " rows and " + std::to_string(width_) +
                                         " columns"};
  }

  void TakeSize() {
    const auto longer = static_cast<uint64_t>(std::max(window_.rows, window_.columns));
    const auto side = [&](int64_t pixels) {
      const auto all = static_cast<uint64_t>(pixels);
      if (request_.size == 0) return static_cast<uint32_t>((all + request_.scale - 1) / request_.scale);
      if (request_.size >= longer) return static_cast<uint32_t>(all);
      return static_cast<uint32_t>(std::max<uint64_t>(1, (all * request_.size + longer / 2) / longer));
    };
    smallWidth_ = side(window_.columns);
    smallHeight_ = side(window_.rows);
    look_.bands = request_.bands;
    look_.stretch = request_.stretch;
    const auto times = static_cast<uint64_t>(window_.columns) / smallWidth_;
    if (request_.fast)
      look_.reduce = static_cast<uint32_t>(std::bit_width(std::max<uint64_t>(1, times)) - 1);
  }
  // Few bytes can ask for a picture that nobody could keep.
  SampleFault Weigh() const {
    constexpr uint64_t kAlways = uint64_t{1} << 30, kPerByte = 1024;
    if (!media::AllowsPixels(PixelsToMake()))
      return {media::Outcome::NoMemory,
              "its picture has " + std::to_string(PixelsToMake()) + " pixels, more than the " +
                  std::to_string(media::MaxPixels()) +
                  " that are allowed; a part of it, or a smaller picture of nearest pixels, has fewer"};
    if (PixelsToMake() <= kAlways + kPerByte * survey_.file.Size()) return {};
    return {media::Outcome::OverBudget,
            "its picture has " + std::to_string(window_.rows) + " rows and " +
                std::to_string(window_.columns) +
                " columns, more than its bytes are worth; a part of it, or a smaller picture of nearest "
                "pixels, is drawn"};
  }
  bool IsSmaller() const { return smallWidth_ != window_.columns || smallHeight_ != window_.rows; }

  void TakeBackground() {
    const std::string_view colour = survey_.Header().Text("FBKGC");
    for (size_t c = 0; c < 3 && colour.size() == 3; ++c) background_[c] = static_cast<uint8_t>(colour[c]);
  }

  // ---------------------------------------------------------------- rows

  SampleFault DrawAll(const TakeRow& take) {
    const bool byBoxes = request_.size == 0;
    BoxScaler boxes(static_cast<uint32_t>(window_.columns), static_cast<uint32_t>(window_.rows),
                    byBoxes ? request_.scale : 1);
    AreaScaler areas(static_cast<uint32_t>(window_.columns), static_cast<uint32_t>(window_.rows),
                     smallWidth_, smallHeight_);
    uint32_t made = 0;
    for (int64_t y = 0; y < window_.rows; ++y) {
      if (SampleFault fault = Compose(window_.row + y); fault.Met()) return fault;
      const uint8_t* row = !IsSmaller() ? row_.data()
                           : byBoxes    ? boxes.Take(row_.data())
                                        : areas.Take(row_.data());
      if (row != nullptr && !take(made++, row)) return Stopped();
    }
    return {};
  }

  // The pixels in the middle of what each stands for.
  SampleFault DrawNearest(const TakeRow& take) {
    std::vector<uint8_t> small(size_t{3} * smallWidth_);
    const auto middle = [](uint64_t n, int64_t large, uint32_t few) {
      return static_cast<int64_t>((2 * n + 1) * static_cast<uint64_t>(large) / (2 * uint64_t{few}));
    };
    for (uint32_t y = 0; y < smallHeight_; ++y) {
      if (SampleFault fault = Compose(window_.row + middle(y, window_.rows, smallHeight_)); fault.Met())
        return fault;
      for (uint32_t x = 0; x < smallWidth_; ++x)
        std::copy_n(&row_[3 * static_cast<size_t>(middle(x, window_.columns, smallWidth_))], 3,
                    &small[size_t{3} * x]);
      if (!take(y, small.data())) return Stopped();
    }
    return {};
  }

  // A row of the picture, as far as it is in the window.
  SampleFault Compose(int64_t y) {
    Interruption::Ask();
    size_t first = items_.size();
    // What an image covers all of is not painted.
    for (; first > 0; --first) {
      if (Hides(items_[first - 1], y)) break;
    }
    if (first == 0) {
      std::copy_n(background_, 3, row_.begin());
      media::RepeatFront(row_.data(), 3, row_.size());
    } else {
      --first;
    }
    for (size_t i = first; i < items_.size(); ++i) {
      SampleFault fault = Paint(items_[i], y);
      if (fault.outcome == media::Outcome::Stopped) return fault;
      if (!fault.Met()) continue;
      Miss(items_[i].place, fault.words);
      items_[i].isDone = true;
      items_[i].image.reset();
      if (i == first && first != 0) return Compose(y);  // what it hid is seen now
    }
    return {};
  }

  bool Hides(Item& item, int64_t y) {
    if (item.isDone || item.graphic != nullptr || !item.Covers(y)) return false;
    if (item.place.left > window_.column || item.place.right < window_.column + window_.columns)
      return false;
    return Begin(item) && item.image->IsOpaque();
  }

  // Makes what paints an image, once a row of it is wanted.
  bool Begin(Item& item) {
    if (item.image != nullptr) return true;
    const int64_t left = std::max(item.place.left, window_.column),
                  right = std::min(item.place.right, window_.column + window_.columns);
    if (left >= right) {
      item.isDone = true;
      return false;
    }
    ImageLook look = look_;
    const int64_t top = std::max(item.place.top, window_.row),
                  bottom = std::min(item.place.bottom, window_.row + window_.rows);
    look.row = static_cast<uint64_t>(top - item.place.top);
    look.rows = static_cast<uint64_t>(bottom - top);
    auto painter = std::make_unique<ImagePainter>(survey_, *item.place.part, look,
                                                  static_cast<uint64_t>(left - item.place.left),
                                                  static_cast<uint64_t>(right - left));
    if (SampleFault fault = painter->Start(); fault.Met()) {
      Miss(item.place, fault.words);
      item.isDone = true;
      return false;
    }
    item.image = std::move(painter);
    return true;
  }

  SampleFault Paint(Item& item, int64_t y) {
    if (item.isDone) return {};
    if (item.graphic != nullptr)
      return item.graphic->Paint(y, window_.column, window_.columns, row_.data());
    if (y >= item.place.bottom) {
      item.isDone = true;
      item.image.reset();
    }
    if (!item.Covers(y) || !Begin(item)) return {};
    const int64_t left = std::max(item.place.left, window_.column);
    return item.image->Paint(static_cast<uint64_t>(y - item.place.top),
                             &row_[3 * static_cast<size_t>(left - window_.column)]);
  }

  const Survey& survey_;
  const ViewRequest& request_;
  Places places_;
  std::vector<Item> items_;  // the lowest level first
  std::vector<LeftOut> missing_;
  int64_t width_ = 0, height_ = 0;
  Rectangle window_;
  uint32_t smallWidth_ = 0, smallHeight_ = 0;
  ImageLook look_;
  uint8_t background_[3] = {};
  std::vector<uint8_t> row_;
};

FileView::FileView(const Survey& survey, const ViewRequest& request)
    : drawer_(std::make_unique<Drawer>(survey, request)) {}
FileView::~FileView() = default;
SampleFault FileView::Start() { return drawer_->Start(); }
uint64_t FileView::FullWidth() const { return drawer_->FullWidth(); }
uint64_t FileView::FullHeight() const { return drawer_->FullHeight(); }
uint32_t FileView::Width() const { return drawer_->Width(); }
uint32_t FileView::Height() const { return drawer_->Height(); }
uint64_t FileView::PixelsToMake() const { return drawer_->PixelsToMake(); }
SampleFault FileView::Draw(const TakeRow& take) { return drawer_->Draw(take); }
const std::vector<LeftOut>& FileView::Missing() const { return drawer_->Missing(); }

}  // namespace core
