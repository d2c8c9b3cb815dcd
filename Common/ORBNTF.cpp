// Exports of the document API.
#include <algorithm>

#include "Common/Append.h"
#include "Common/Encode.h"
#include "Common/Exchange.h"
#include "Common/HandlGfx.h"
#include "Common/SaveNitf.h"

namespace {

constexpr char16_t kSourceFile[] = u"ORBNTF";

constexpr int32_t kNoSegments = 1, kHasHeader = 2;

Status StartEmpty(NitfFile& document) {
  document.header.currentHeaderLength = kBareHeaderLength;
  document.headerPresent = true;
  return document.header.SetFileLength(kBareHeaderLength);
}

Status Create(NitfHandle& handle, const char16_t* fileName) {
  TrackedObject<NitfFile> document;
  if (Status s = document.Make(ORB_HERE); !Ok(s)) return s;
  if (fileName == nullptr) {
    if (Status s = StartEmpty(*document); !Ok(s)) return s;
  } else {
    if (WideAccess(fileName, 0) != 0) return Status::FileNotFound;
    if (Status s = document->ReadDocument(fileName); !Ok(s)) return s;
  }
  handle = document.Release();
  return Status::Success;
}

// Runs an export's wide form on a narrow path.
template <class Work>
int32_t WithWidePath(const char* path, Work work) {
  Orb_A2W wide;
  return wide.Convert(path) != 0 ? work(wide.Value()) : ToCaller(Status::OutOfMemory);
}

// What the header exports do before they exchange a segment's record.
template <class List, class Record, class Work>
int32_t ExchangeSegment(NitfHandle handle, List NitfFile::*list, uint32_t index, Record* record,
                        Status nullRecord, Work work) {
  if (handle == nullptr) return ToCaller(Status::LimitReached);
  if (record == nullptr) return ToCaller(nullRecord);
  auto* header = (handle->*list).At(index);
  return ToCaller(header != nullptr ? work(*header, *record) : Status::NoSuchRecord);
}

template <class Record>
int32_t FreeRecord(Record* record, void (*release)(Record&)) {
  if (record == nullptr) return ToCaller(Status::NoSuchRecord);
  release(*record);
  return ToCaller(Status::Success);
}

Status SetDrawing(NitfFile& document, uint32_t index, const VectorHandle* drawing) {
  GraphicSubheader* graphic = document.graphics.At(index);
  if (graphic == nullptr) return Status::InvalidParameter;
  if (drawing == nullptr) return Status::NoData;
  if (VectorIsEmpty(drawing) != 0) return Status::EmptyDrawing;
  // Nothing of the record changes before everything new is at hand.
  OwnedDrawing copy;
  if (Status s = FromHost(VectorCopy(&copy.handle, drawing, 0)); !Ok(s)) return s;
  if (Status s = EncodeDrawing(*drawing, graphic->appended); !Ok(s)) return s;
  std::swap(graphic->drawing.handle, copy.handle);
  document.header.graphics.current[index].data = static_cast<uint32_t>(graphic->appended.bytes.size());
  return Status::Success;
}

Status GetText(NitfFile& document, uint32_t index, char* buffer, uint32_t* length) {
  if (index >= document.TextCount()) return Status::NoSuchRecord;
  const TextSubheader& text = *document.texts.At(index);
  const uint32_t bytes = document.header.texts.Current(index).data;
  if (length != nullptr) *length = bytes;
  if (buffer == nullptr) return Status::Success;
  size_t held = bytes;
  if (text.appended.present) {
    held = std::min<size_t>(bytes, text.appended.bytes.size());
    KernelCopyMemory(buffer, text.appended.bytes.data(), held);
  } else {
    if (document.SeekToData(SegmentKind::Text, index) < 0) return Status::ShortRead;
    if (Status s = ReadExactly(document.FileHandle(), buffer, bytes); !Ok(s)) return s;
  }
  buffer[held] = 0;
  return Status::Success;
}

}  // namespace

// ---------------------------------------------------------------- life and status

int32_t ORB_CALL Orb_NITFCreate(NitfHandle* handle, const char16_t* fileName) {
  if (handle == nullptr) return ToCaller(Status::OutOfMemory);
  *handle = nullptr;
  return ToCaller(Create(*handle, fileName));
}

int32_t ORB_CALL Orb_NITFCreateA(NitfHandle* handle, const char* fileName) {
  if (handle != nullptr) *handle = nullptr;
  return WithWidePath(fileName, [&](const char16_t* path) { return Orb_NITFCreate(handle, path); });
}

int32_t ORB_CALL Orb_NITFDestroy(NitfHandle* handle) {
  if (handle == nullptr || *handle == nullptr) return ToCaller(Status::NullHandle);
  TrackedObject<NitfFile> document;
  document.Adopt(std::exchange(*handle, nullptr));
  return ToCaller(Status::Success);
}

int32_t ORB_CALL Orb_NITFGetStatus(NitfHandle handle) {
  if (handle == nullptr) return ToCaller(Status::NullHandle);
  const uint32_t segments = handle->ImageCount() + handle->GraphicCount() + handle->TextCount();
  return (segments == 0 ? kNoSegments : 0) + (handle->headerPresent ? kHasHeader : 0);
}

uint32_t ORB_CALL Orb_NITFGetImageHeaderCount(NitfHandle handle) {
  return handle != nullptr ? handle->ImageCount() : 0;
}
uint32_t ORB_CALL Orb_NITFGetGraphicHeaderCount(NitfHandle handle) {
  return handle != nullptr ? handle->GraphicCount() : 0;
}
uint32_t ORB_CALL Orb_NITFGetTextHeaderCount(NitfHandle handle) {
  return handle != nullptr ? handle->TextCount() : 0;
}

// ---------------------------------------------------------------- header exchange

int32_t ORB_CALL Orb_NITFGetNITFHeader(NitfHandle handle, NITFHeader* record) {
  if (handle == nullptr) return ToCaller(Status::LimitReached);
  return ToCaller(record != nullptr ? GetFileHeader(handle->header, *record) : Status::NoSuchRecord);
}

int32_t ORB_CALL Orb_NITFSetNITFHeader(NitfHandle handle, const NITFHeader* record) {
  if (handle == nullptr) return ToCaller(Status::LimitReached);
  if (record == nullptr) return ToCaller(Status::NoSuchRecord);
  SetFileHeader(handle->header, *record);
  return ToCaller(Status::Success);
}

int32_t ORB_CALL Orb_NITFFreeNITFHeader(NITFHeader* record) {
  return FreeRecord(record, &FreeFileHeader);
}

int32_t ORB_CALL Orb_NITFGetImageHeader(NitfHandle handle, uint32_t index, ImageHeader* record) {
  return ExchangeSegment(handle, &NitfFile::images, index, record, Status::InvalidParameter,
                         &GetImageHeader);
}
int32_t ORB_CALL Orb_NITFSetImageHeader(NitfHandle handle, uint32_t index, const ImageHeader* record) {
  return ExchangeSegment(handle, &NitfFile::images, index, record, Status::NoSuchRecord, &SetImageHeader);
}
int32_t ORB_CALL Orb_NITFFreeImageHeader(ImageHeader* record) {
  return FreeRecord(record, &FreeImageHeader);
}

int32_t ORB_CALL Orb_NITFGetGraphicHeader(NitfHandle handle, uint32_t index, GraphicHeader* record) {
  return ExchangeSegment(handle, &NitfFile::graphics, index, record, Status::NoSuchRecord,
                         &GetGraphicHeader);
}
int32_t ORB_CALL Orb_NITFSetGraphicHeader(NitfHandle handle, uint32_t index,
                                          const GraphicHeader* record) {
  return ExchangeSegment(handle, &NitfFile::graphics, index, record, Status::NoSuchRecord,
                         &SetGraphicHeader);
}
int32_t ORB_CALL Orb_NITFFreeGraphicHeader(GraphicHeader* record) {
  return FreeRecord(record, &FreeGraphicHeader);
}

int32_t ORB_CALL Orb_NITFGetTextHeader(NitfHandle handle, uint32_t index, TextHeader* record) {
  return ExchangeSegment(handle, &NitfFile::texts, index, record, Status::NoSuchRecord, &GetTextHeader);
}
int32_t ORB_CALL Orb_NITFSetTextHeader(NitfHandle handle, uint32_t index, const TextHeader* record) {
  return ExchangeSegment(handle, &NitfFile::texts, index, record, Status::NoSuchRecord, &SetTextHeader);
}
int32_t ORB_CALL Orb_NITFFreeTextHeader(TextHeader* record) {
  return FreeRecord(record, &FreeTextHeader);
}

// ---------------------------------------------------------------- appending

int32_t ORB_CALL Orb_NITFAppendImageSegment(NitfHandle handle, KernelBitmap* bitmap, uint32_t formatCode,
                                            uint32_t bitsPerPixel, int32_t qualityFactor) {
  if (handle == nullptr) return ToCaller(Status::NullHandle);
  return ToCaller(AppendImage(*handle, bitmap, formatCode, bitsPerPixel, qualityFactor));
}

int32_t ORB_CALL Orb_NITFAppendGraphicSegment(NitfHandle handle, VectorHandle* drawing,
                                              const RECT* rectangle) {
  if (handle == nullptr || rectangle == nullptr) return ToCaller(Status::NullHandle);
  return ToCaller(AppendGraphic(*handle, drawing, *rectangle));
}

int32_t ORB_CALL Orb_NITFAppendTextSegment(NitfHandle handle, const char16_t* fileName) {
  if (handle == nullptr) return ToCaller(Status::NullHandle);
  return ToCaller(AppendText(*handle, fileName));
}

int32_t ORB_CALL Orb_NITFAppendTextSegmentA(NitfHandle handle, const char* fileName) {
  return WithWidePath(fileName,
                      [&](const char16_t* path) { return Orb_NITFAppendTextSegment(handle, path); });
}

// ---------------------------------------------------------------- content and saving

int32_t ORB_CALL Orb_NITFSetVectorHandle(NitfHandle handle, uint32_t index, const VectorHandle* drawing) {
  if (handle == nullptr) return ToCaller(Status::NullHandle);
  return ToCaller(SetDrawing(*handle, index, drawing));
}

VectorHandle* ORB_CALL Orb_NITFGetVectorHandle(NitfHandle handle, uint32_t index) {
  GraphicSubheader* graphic = handle != nullptr ? handle->graphics.At(index) : nullptr;
  if (graphic == nullptr) return nullptr;
  if (!Ok(LoadGraphicDrawing(*handle, index))) return nullptr;
  graphic->handleGiven = true;
  return &graphic->drawing.handle;
}

int32_t ORB_CALL Orb_NITFGetTextSegment(NitfHandle handle, uint32_t index, char* buffer,
                                        uint32_t* length) {
  if (handle == nullptr) return ToCaller(Status::NullHandle);
  return ToCaller(GetText(*handle, index, buffer, length));
}

int32_t ORB_CALL Orb_NITFSaveFile(NitfHandle handle, const char16_t* fileName) {
  if (handle == nullptr) return ToCaller(Status::NullHandle);
  return ToCaller(SaveDocument(*handle, fileName));
}

int32_t ORB_CALL Orb_NITFSaveFileA(NitfHandle handle, const char* fileName) {
  return WithWidePath(fileName, [&](const char16_t* path) { return Orb_NITFSaveFile(handle, path); });
}
