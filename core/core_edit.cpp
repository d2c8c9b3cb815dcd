// The library's surface over core/edit.
#include <cstring>

#include "core/core_state.h"
#include "core/edit/add.h"
#include "core/edit/fields.h"
#include "core/edit/recompress.h"
#include "core/edit/record_edits.h"
#include "core/edit/save.h"
#include "core/edit/segments.h"
#include "media/work.h"

namespace orbntf::core {
namespace {

::core::PartKind KindOf(SegmentKind kind) { return static_cast<::core::PartKind>(kind); }

::core::StoreOptions OptionsOf(const Storage& storage) {
  ::core::StoreOptions options;
  options.way = static_cast<::core::StoreOptions::Way>(storage.way);
  options.quality = storage.quality;
  options.rate = storage.rate;
  options.block = storage.block;
  options.mode = storage.mode;
  options.isMasked = storage.masked;
  options.isAsIs = storage.asIs;
  options.page = storage.page.value_or(UINT32_MAX);
  if (storage.background) {
    const uint32_t rgb = *storage.background;
    options.background = {static_cast<uint8_t>(rgb >> 16), static_cast<uint8_t>(rgb >> 8),
                          static_cast<uint8_t>(rgb)};
  }
  const bool isFine = storage.quality >= 1 && storage.quality <= 100 && storage.rate >= 0 &&
                      storage.rate <= 38 && storage.block <= 8192 &&
                      std::strchr("BPRS", storage.mode) != nullptr && storage.mode != 0;
  if (!isFine) throw Error(ErrorKind::Invalid, "quality, rate, block or mode make no sense");
  return options;
}

// Samples of the caller as a picture.
class SamplesRaster : public ::core::Raster {
 public:
  explicit SamplesRaster(const Samples& samples) : samples_(samples) {
    form_.width = samples.width;
    form_.height = samples.height;
    form_.bands = samples.bands;
    form_.bits = samples.significantBits != 0 ? samples.significantBits : samples.bits;
    form_.kind = static_cast<::core::SampleKind>(samples.kind);
    if (samples.kind == SampleKind::Real || samples.kind == SampleKind::Complex)
      form_.bits = 8 * samples.sampleBytes;
    form_.sampleBytes = ::core::PieceBytes(form_.bits);
    form_.isColour = samples.bands == 3;
    form_.palette = samples.palette;
    ::core::RequireSize(form_);
    const uint64_t wanted =
        uint64_t{samples.width} * samples.height * samples.bands * samples.sampleBytes;
    if (form_.bits < 1 || form_.bits > 64 || form_.sampleBytes != samples.sampleBytes ||
        samples.data.size() != wanted)
      throw Error(ErrorKind::Invalid, "the samples do not fill their rows");
  }
  void Read(const ::core::TakePiece& take) override {
    take({0, 0, form_.width, form_.height, 0, form_.bands, samples_.data.data()});
  }

 private:
  const Samples& samples_;
};

// A change of a field, which an error names with its header; `title` gives that one's.
template <class Title, class Change>
Edit& InField(Edit& edit, Title title, const std::string& field, Change change) {
  return Guarded([&]() -> Edit& {
    try {
      Guarded(change);
    } catch (const Error& error) {
      throw Error(error.Kind(), error.what(), title(), error.Byte(), field);
    }
    return edit;
  });
}

}  // namespace

struct Edit::State {
  State(::core::Draft&& begun, const std::string& date) : draft(std::move(begun)), labels{date, ""} {}

  ::core::DraftPart& Part(SegmentKind kind, uint32_t index) {
    ::core::DraftPart* part = draft.Find(KindOf(kind), index);
    if (part == nullptr) throw Error(ErrorKind::Invalid, "there is no such segment");
    return *part;
  }
  // Makes a change of many steps: all of it, or nothing where it throws.
  template <class Change>
  void ChangeWhole(Change change) {
    ::core::Draft changed = draft;
    change(changed);
    draft = std::move(changed);
  }
  std::string TitleOf(SegmentKind kind, uint32_t index) {
    const ::core::DraftPart* part = draft.Find(KindOf(kind), index);
    return part != nullptr ? part->Title() : "";
  }
  ::core::Placing PlacingOf(const Placement& place) {
    const ::core::DraftPart* on = place.on ? &Part(place.on->kind, place.on->index) : nullptr;
    return {on, place.row, place.column};
  }
  uint32_t Add(std::vector<::core::StoredImage> images, const Placement& place) {
    const ::core::DraftPart& first =
        ::core::AddImages(draft, std::move(images), PlacingOf(place), labels);
    return static_cast<uint32_t>(draft.IndexOf(first));
  }

  ::core::Draft draft;
  ::core::Labels labels;
  ::core::RecordDefinitions definitions;
  std::vector<const ::core::Survey*> inputs;
  std::vector<::core::FileIdentity> pictures;  // that are inputs as well
  std::vector<std::string> notes;
};

Edit::Edit(std::unique_ptr<State> state) : state_(std::move(state)) {}
Edit::Edit(const File& file) {
  Guarded(
      [&] { state_ = std::make_unique<State>(::core::Draft(file.state_->survey), ::core::DateNow()); });
  state_->inputs.push_back(&file.state_->survey);
}
Edit::Edit(Edit&&) noexcept = default;
Edit& Edit::operator=(Edit&&) noexcept = default;
Edit::~Edit() = default;

Edit Edit::New(const std::string& date) {
  return Guarded([&] {
    if (date.size() != 14) throw Error(ErrorKind::Invalid, "a date is CCYYMMDDhhmmss");
    return Edit(std::make_unique<State>(::core::NewFile({date, ""}), date));
  });
}

Edit& Edit::Set(SegmentKind kind, uint32_t index, const std::string& field, const std::string& value,
                bool force) {
  return InField(
      *this, [&] { return state_->TitleOf(kind, index); }, field,
      [&] {
        ::core::SetField(state_->Part(kind, index), {field, value, force});
      });
}

Edit& Edit::SetAll(const std::string& field, const std::string& value, bool force) {
  return InField(
      *this, [] { return std::string(); }, field,
      [&] {
        state_->ChangeWhole([&](::core::Draft& draft) {
          ::core::SetEverywhere(draft, {field, value, force});
        });
      });
}

Edit& Edit::SetRecord(SegmentKind kind, uint32_t index, const std::string& tag, const std::string& data) {
  return Guarded([&]() -> Edit& {
    ::core::PutRecord(state_->draft, {KindOf(kind), index, tag, 1}, data);
    return *this;
  });
}

Edit& Edit::SetRecordField(SegmentKind kind, uint32_t index, const std::string& tag,
                           const std::string& field, const std::string& value) {
  return InField(
      *this, [&] { return state_->TitleOf(kind, index); }, field,
      [&] {
        ::core::SetRecordField(state_->draft, {KindOf(kind), index, tag, 1}, state_->definitions, field,
                               value);
      });
}

Edit& Edit::RemoveRecord(SegmentKind kind, uint32_t index, const std::string& tag) {
  return Guarded([&]() -> Edit& {
    ::core::RemoveRecord(state_->draft, {KindOf(kind), index, tag, 1});
    return *this;
  });
}

Edit& Edit::Remove(SegmentKind kind, uint32_t index) {
  return Guarded([&]() -> Edit& {
    ::core::RemoveSegment(state_->draft, KindOf(kind), index);
    return *this;
  });
}

Edit& Edit::Merge(const File& other) {
  return Guarded([&]() -> Edit& {
    state_->ChangeWhole(
        [&](::core::Draft& draft) { state_->notes = ::core::Merge(draft, other.state_->survey); });
    state_->inputs.push_back(&other.state_->survey);
    return *this;
  });
}

uint32_t Edit::AppendImage(const std::string& path, const Storage& storage, const Placement& place) {
  return Guarded([&] {
    RequirePath(path);
    const auto picture = ::core::IdentityOf(path);
    const uint32_t number = state_->Add(
        ::core::StorePicture(state_->draft, path, "", OptionsOf(storage), state_->notes), place);
    if (picture) state_->pictures.push_back(*picture);
    return number;
  });
}

uint32_t Edit::AppendImage(const Samples& samples, const Storage& storage, const Placement& place) {
  return Guarded([&] {
    SamplesRaster raster(samples);
    ::core::StoreOptions options = OptionsOf(storage);
    options.pad = samples.noData;
    return state_->Add(::core::StoreRaster(state_->draft, raster, "", options, state_->notes), place);
  });
}

uint32_t Edit::AppendGraphic(const std::string& metafile, const Placement& place) {
  return Guarded([&] {
    const auto& part =
        ::core::AddGraphic(state_->draft, metafile, state_->PlacingOf(place), state_->labels);
    return static_cast<uint32_t>(state_->draft.IndexOf(part));
  });
}

uint32_t Edit::AppendText(const std::string& text) {
  return Guarded([&] {
    const auto& part = ::core::AddText(state_->draft, text, state_->labels);
    return static_cast<uint32_t>(state_->draft.IndexOf(part));
  });
}

uint32_t Edit::AppendData(const std::string& name, uint32_t version, const std::string& data) {
  return Guarded([&] {
    const auto& part = ::core::AddData(state_->draft, name, version, data, state_->labels);
    return static_cast<uint32_t>(state_->draft.IndexOf(part));
  });
}

Edit& Edit::Recompress(uint32_t image, const Storage& storage) {
  return Guarded([&]() -> Edit& {
    const ::core::DraftPart& part = state_->Part(SegmentKind::Image, image);
    if (part.Origin() == nullptr) throw Error(ErrorKind::Invalid, "the image is a new one");
    const media::WorkLimit limit(part.Source()->file.Size());
    state_->ChangeWhole([&](::core::Draft& draft) {
      ::core::Recompress(draft, image, "", OptionsOf(storage), state_->notes);
    });
    return *this;
  });
}

Edit& Edit::SetLevel(uint32_t level) {
  return Guarded([&]() -> Edit& {
    (void)::core::SetLevel(state_->draft, level, true);
    return *this;
  });
}

void Edit::Save(const std::string& path, bool force) {
  Guarded([&] {
    RequirePath(path);
    for (const ::core::Survey* input : state_->inputs) {
      if (input->file.Is(path)) throw Error(ErrorKind::Invalid, "the output is an input");
    }
    const auto output = ::core::IdentityOf(path);
    for (const ::core::FileIdentity& picture : state_->pictures) {
      if (output == picture) throw Error(ErrorKind::Invalid, "the output is an input");
    }
    ::core::Draft draft = state_->draft;
    const ::core::Proof proof = ::core::SaveAs(draft, path, state_->definitions, force);
    if (!proof.fault.empty()) throw Error(ErrorKind::NotWritten, proof.fault);
    if (!proof.errors.empty() && !force) throw Error(ErrorKind::BreaksRule, proof.errors[0]);
  });
}

}  // namespace orbntf::core
