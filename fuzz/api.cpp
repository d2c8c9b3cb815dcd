#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "Common/Exchange.h"
#include "fuzz/support.h"

namespace {

using fuzz::Choices;
using fuzz::Require;

// Numbers that tell how much memory a pointer has: they may shrink only.
bool Measures(std::string_view name) {
  constexpr std::string_view kMeasures[] = {"NUMI",   "NUMS",   "NUMX",  "NUMT",   "NUMDES",
                                            "NUMRES", "UDHDL",  "XHDL",  "UDIDL",  "IXSHDL",
                                            "SXSHDL", "TXSHDL", "NICOM", "NBANDS", "XBANDS"};
  return std::find(std::begin(kMeasures), std::end(kMeasures), name) != std::end(kMeasures);
}

// Changes some fields of a public record; strings point into `texts`, and are put back by Restore.
class Changes {
 public:
  Changes(PublicTable table, void* record) : table_(table), record_(record) {}
  ~Changes() {
    // A field may have been changed twice: the first was what the record owns.
    for (auto change = strings_.rbegin(); change != strings_.rend(); ++change)
      StoreTo(change->first, change->second);
  }

  void Make(Choices& choices) {
    for (int n = choices.Byte() % 4; n >= 0; --n) {
      const PublicField& field = table_[choices.Byte() % table_.size()];
      uint8_t* place = field.place(record_);
      if (field.kind == PublicKind::Pointer) continue;
      if (field.kind == PublicKind::String) {
        SetString(place, choices);
      } else if (field.kind == PublicKind::Int && Measures(field.name)) {
        StoreTo(place, std::min(LoadFrom<uint32_t>(place), choices.Number()));
      } else if (!Measures(field.name)) {
        for (size_t i = 0; i < SizeOf(field.kind); ++i) place[i] = choices.Byte();
      }
    }
  }

 private:
  void SetString(uint8_t* place, Choices& choices) {
    constexpr size_t kLongest = 90;
    if (used_ == std::size(texts_)) return;
    std::string& text = texts_[used_++];
    for (size_t length = choices.Byte() % kLongest; text.size() < length;)
      text += static_cast<char>(choices.Byte() | 1);
    strings_.push_back({place, LoadFrom<char*>(place)});
    StoreTo(place, text.data());
  }

  PublicTable table_;
  void* record_;
  std::string texts_[4];
  size_t used_ = 0;
  std::vector<std::pair<uint8_t*, char*>> strings_;
};

template <class P>
void GetAndSet(NitfHandle document, Choices& choices, PublicTable table, auto get, auto set,
               auto release) {
  P record = {};
  if (get(document, &record) == ORB_SUCCESS) {
    Changes changes(table, &record);
    changes.Make(choices);
    (void)set(document, &record);
  }
  (void)release(&record);
}

template <class P>
void ExchangeOne(NitfHandle document, Choices& choices, PublicTable table,
                 int32_t(ORB_CALL* get)(NitfHandle, uint32_t, P*),
                 int32_t(ORB_CALL* set)(NitfHandle, uint32_t, const P*), int32_t(ORB_CALL* release)(P*)) {
  const uint32_t index = choices.Byte() % 4;
  GetAndSet<P>(
      document, choices, table, [&](NitfHandle d, P* record) { return get(d, index, record); },
      [&](NitfHandle d, P* record) { return set(d, index, record); }, release);
}

void AppendBitmap(NitfHandle document, Choices& choices) {
  KernelBitmap bitmap;
  const uint32_t side = 1u + choices.Byte() % 32, depth = choices.Byte() % 2 == 0 ? 8 : 24;
  if (KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, side, side, depth, kOrderBgr, nullptr,
                           kViewTopLeft, nullptr, 0) != kHostOk) {
    return;
  }
  (void)Orb_NITFAppendImageSegment(document, &bitmap, kFormatJpegRgb, depth, choices.Byte());
  KernelFreeBitmap(&bitmap);
}

void AppendDrawing(NitfHandle document, Choices& choices) {
  VectorHandle* drawing = Orb_NITFGetVectorHandle(document, choices.Byte() % 4);
  if (drawing == nullptr) return;
  if (choices.Byte() % 2 == 0) {
    (void)Orb_NITFSetVectorHandle(document, choices.Byte() % 4, drawing);
    return;
  }
  const RECT rectangle = {choices.Byte(), choices.Byte(), choices.Byte(), choices.Byte()};
  (void)Orb_NITFAppendGraphicSegment(document, drawing, &rectangle);
}

void ReadText(NitfHandle document, Choices& choices) {
  uint32_t length = 0;
  const uint32_t index = choices.Byte() % 4;
  if (Orb_NITFGetTextSegment(document, index, nullptr, &length) != ORB_SUCCESS || length > 1 << 20)
    return;
  std::string text(size_t{length} + 1, '\0');
  (void)Orb_NITFGetTextSegment(document, index, text.data(), &length);
}

void Step(NitfHandle document, Choices& choices) {
  switch (choices.Byte() % 9) {
    case 0:
      return GetAndSet<NITFHeader>(document, choices, PublicFileFields(), &Orb_NITFGetNITFHeader,
                                   &Orb_NITFSetNITFHeader, &Orb_NITFFreeNITFHeader);
    case 1:
      return ExchangeOne<ImageHeader>(document, choices, PublicImageFields(), &Orb_NITFGetImageHeader,
                                      &Orb_NITFSetImageHeader, &Orb_NITFFreeImageHeader);
    case 2:
      return ExchangeOne<GraphicHeader>(document, choices, PublicGraphicFields(),
                                        &Orb_NITFGetGraphicHeader, &Orb_NITFSetGraphicHeader,
                                        &Orb_NITFFreeGraphicHeader);
    case 3:
      return ExchangeOne<TextHeader>(document, choices, PublicTextFields(), &Orb_NITFGetTextHeader,
                                     &Orb_NITFSetTextHeader, &Orb_NITFFreeTextHeader);
    case 4:
      return AppendBitmap(document, choices);
    case 5:
      return AppendDrawing(document, choices);
    case 6:
      return ReadText(document, choices);
    case 7:
      (void)fuzz::Draw(document);
      return;
    default:
      (void)Orb_NITFGetStatus(document);
  }
}

// A document that was saved twice is the same bytes twice; what an untouched one wrote and opens again
// writes the same.
void SaveAndCompare(NitfHandle document) {
  static fuzz::MemoryFile first, second;
  const int32_t status = Orb_NITFSaveFileA(document, first.Path().c_str());
  const std::string bytes = first.Contents();
  Require(Orb_NITFSaveFileA(document, second.Path().c_str()) == status, "the same status twice");
  if (status != ORB_SUCCESS) return;
  Require(second.Contents() == bytes, "the same file twice");
  NitfHandle again = nullptr;
  if (Orb_NITFCreateA(&again, first.Path().c_str()) == ORB_SUCCESS) {
    (void)Orb_NITFSaveFileA(again, second.Path().c_str());
    Orb_NITFDestroy(&again);
  }
}

}  // namespace

int fuzz::Api(const uint8_t* data, size_t size) {
  static MemoryFile file;
  Begin(size);
  Choices choices(data, size);
  const int steps = choices.Byte() % 8;
  // What the steps take is no longer part of the file, so they are taken first.
  constexpr size_t kMostChoices = 400;
  uint8_t kept[kMostChoices];
  size_t count = std::min({size, kMostChoices, static_cast<size_t>(steps) * 50});
  std::memcpy(kept, data + size - count, count);
  size -= count;
  file.Fill(data, size);
  NitfHandle document = nullptr;
  const bool empty = choices.Byte() == 0xFF;
  if (Orb_NITFCreate(&document, empty ? nullptr : file.Wide()) == ORB_SUCCESS) {
    Choices driving(kept, count);
    for (int i = 0; i < steps; ++i) Step(document, driving);
    SaveAndCompare(document);
    Orb_NITFDestroy(&document);
  }
  RequireNothingHeld();
  return 0;
}
