#include "tests/faults/scenarios.h"

#include "orbntf/orbntf.h"
#include "tests/faults/injector.h"
#include "tests/support/encoders.h"
#include "tests/support/metafile.h"
#include "tests/support/vq.h"

namespace faults {
namespace {

using test::BlockStream;
using test::ImageForm;
using test::NitfBuilder;
using FilePtr = std::shared_ptr<test::TempFile>;

FilePtr Keep(const NitfBuilder& file) { return std::make_shared<test::TempFile>(file.Bytes()); }

class Document {
 public:
  explicit Document(const test::TempFile* file) {
    status = Orb_NITFCreate(&handle, file != nullptr ? file->Wide() : nullptr);
  }
  ~Document() {
    if (handle != nullptr) Orb_NITFDestroy(&handle);
  }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  NitfHandle handle = nullptr;
  int32_t status;
};

std::string Cgm() {
  using test::Element;
  using test::I;
  return test::Metafile(Element(5, 22, I({1})) + Element(4, 11, I({2, 2, 20, 20})) +
                        Element(4, 4, I({7, 8, 1}) + test::S("text")));
}

test::Record Symbol(const char* form = "C") {
  test::Record record = test::GraphicRecord();
  record.Set("SFMT", form).Set("SBND2", "0003000030").Set("SDLVL", "900");
  return record;
}

// ---------------------------------------------------------------- pictures

int32_t ORB_CALL TakeRow(void*, KernelBitmap*, uint8_t*, uint32_t, int32_t, int32_t, void*) { return 1; }

// fltInfo and fltLoad; takes no memory of its own.
int32_t Load(const char16_t* path, uint32_t flags) {
  HostFileInfo info = {};
  HostLoadOptions options = {};
  options.flags = flags;
  HostInformationRecord information = test::InformationRecord(path, info, options);
  if (const int32_t status = fltInfo(&information); status != 1) return status;
  KernelBitmap bitmap;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 24);
  HostLoadRecord record = {};
  record.fileName = path;
  record.bitmap = &bitmap;
  record.rowCallback = &TakeRow;
  record.options = &options;
  record.loadMemory = &LoadMemoryOrFail;
  record.setLoadCallback = &FileFormatSetLoadInfoCallback;
  record.required2224 = 1;
  return fltLoad(&record);
}

void AddPicture(std::vector<Scenario>& all, const std::string& name, const FilePtr& file,
                uint32_t flags = 0) {
  all.push_back({name, [=] { return Load(file->Wide(), flags); }, nullptr});
}

void AddUncompressed(std::vector<Scenario>& all) {
  const std::string data(4096, '\x21');
  for (const char* mode : {"B", "P", "R", "S"}) {
    ImageForm form{.blocksAcross = 2, .bands = 3, .representation = "RGB", .mode = mode};
    AddPicture(all, std::string("mode ") + mode, Keep(NitfBuilder().Image(form, data)));
  }
  AddPicture(all, "one block", Keep(NitfBuilder().Image(ImageForm{}, std::string(64, '\x05'))),
             kLoadLiftDarkImages);
  AddPicture(all, "blocks", Keep(NitfBuilder().Image({.blocksAcross = 2}, data)));
  AddPicture(all, "bi-level",
             Keep(NitfBuilder().Image({.blocksAcross = 2, .bits = 1, .pixelType = "B"}, data)));
  AddPicture(all, "32 bits", Keep(NitfBuilder().Image({.bits = 32, .significantBits = 20}, data)));
  AddPicture(all, "lookup table",
             Keep(NitfBuilder().Image(
                 {.representation = "RGB/LUT", .lookup = "aabbcc", .lookupTables = 3}, data)));
  ImageForm masked{.blocksAcross = 2, .compression = "NM", .lookup = "abcd", .lookupTables = 1};
  AddPicture(all, "pad pixels",
             Keep(NitfBuilder().Image(
                 masked, test::MaskBytes({.blocks = {0, 64}, .pads = {0, 1}, .padCode = 1}) + data)));
  const std::string none = test::MaskBytes({.blocks = {0xFFFFFFFF, 0xFFFFFFFF}});
  ImageForm above = masked;
  above.level = 2;
  above.location = "0000100001";
  AddPicture(all, "blank images", Keep(NitfBuilder().Image(masked, none).Image(above, none)));
  AddPicture(all, "two images", Keep(NitfBuilder().Image(masked, none).Graphic(Symbol(), Cgm())));
}

void AddCompressed(std::vector<Scenario>& all) {
  using test::BlockForm;
  const auto add = [&](const char* name, const ImageForm& form, const std::string& data) {
    AddPicture(all, name, Keep(NitfBuilder().Image(form, data)));
  };
  add("JPEG", BlockForm("C3", 1, 1, 1, "MONO"), BlockStream(0, 1, {0}));
  add("JPEG blocks", BlockForm("C3", 2, 1, 3, "RGB"),
      BlockStream(0, 2, {0, 1, 2}) + BlockStream(1, 2, {0, 1, 2}));
  add("JPEG of bands", BlockForm("C3", 2, 1, 4, "MULTI"),
      BlockStream(0, 2, {0, 1, 2, 0}) + BlockStream(1, 2, {0, 1, 2, 0}));
  std::string bands;
  for (int band = 0; band < 3; ++band) bands += BlockStream(0, 2, {band}) + BlockStream(1, 2, {band});
  add("JPEG band by band", BlockForm("C3", 2, 1, 3, "RGB", "S"), bands);
  const std::string first = BlockStream(0, 2, {0});
  add("masked JPEG", BlockForm("M3", 2, 1, 1, "MONO"),
      test::MaskBytes({.blocks = {0, static_cast<uint32_t>(first.size())}}) + first +
          BlockStream(1, 2, {0}));
  add("JPEG 2000", BlockForm("C8", 1, 1, 1, "MONO"), test::EncodeJpeg2000(test::kSide, test::kSide, {0}));
  ImageForm fax{.width = 64,
                .height = 48,
                .bits = 1,
                .compression = "C1",
                .pixelType = "B",
                .rate = "1D",
                .lookup = "ab",
                .lookupTables = 1};
  add("facsimile", fax, test::EncodeFacsimile(64, 48, false));
  const test::VqForm vectors;
  add("vectors", test::VqImage(vectors, "C4", 1, 1), test::VqData(vectors));
  test::VqForm colour;
  colour.bands = 3;
  add("masked vectors", test::VqImage(colour, "M4", 1, 1),
      test::MaskBytes({.blocks = {0, 0, 0}}) + test::VqData(colour));
}

// A file whose length stands in its streaming header.
NitfBuilder Streamed() {
  NitfBuilder file;
  file.Image(ImageForm{}, std::string(64, 'x'));
  const auto header = [&](size_t dataBytes) {
    NitfBuilder known = file;
    known.extensions.push_back(
        {test::DataExtensionRecord("STREAMING_FILE_HEADER"), std::string(dataBytes, ' ')});
    const std::string bytes = known.Bytes();
    return bytes.substr(0, bytes.find("IMTest"));
  };
  return test::Streamed(file, header(test::StreamingData(header(0)).size()));
}

void AddDrawings(std::vector<Scenario>& all) {
  AddPicture(all, "drawing", Keep(NitfBuilder().Graphic(Symbol(), Cgm())));
  AddPicture(all, "objects", Keep(NitfBuilder().Graphic(Symbol("O"), "anything")));
  AddPicture(all, "full file", Keep(test::FullFile()));
  AddPicture(all, "text only", Keep(NitfBuilder().Text("words")));
  AddPicture(all, "streamed", Keep(Streamed()));
}

// ---------------------------------------------------------------- documents

template <class P>
int32_t GiveBack(NitfHandle handle, auto get, auto set, auto release) {
  P record = {};
  int32_t status = get(handle, &record);
  if (status == 1) status = set(handle, &record);
  const int32_t freed = release(&record);
  return status == 1 ? freed : status;
}

template <class P>
auto Indexed(auto exchange, uint32_t index) {
  return [=](NitfHandle handle, P record) { return exchange(handle, index, record); };
}

int32_t ExchangeAll(NitfHandle handle) {
  int32_t status = GiveBack<NITFHeader>(handle, &Orb_NITFGetNITFHeader, &Orb_NITFSetNITFHeader,
                                        &Orb_NITFFreeNITFHeader);
  if (status == 1)
    status = GiveBack<ImageHeader>(handle, Indexed<ImageHeader*>(&Orb_NITFGetImageHeader, 0),
                                   Indexed<ImageHeader*>(&Orb_NITFSetImageHeader, 0),
                                   &Orb_NITFFreeImageHeader);
  if (status == 1)
    status = GiveBack<GraphicHeader>(handle, Indexed<GraphicHeader*>(&Orb_NITFGetGraphicHeader, 0),
                                     Indexed<GraphicHeader*>(&Orb_NITFSetGraphicHeader, 0),
                                     &Orb_NITFFreeGraphicHeader);
  if (status == 1)
    status =
        GiveBack<TextHeader>(handle, Indexed<TextHeader*>(&Orb_NITFGetTextHeader, 0),
                             Indexed<TextHeader*>(&Orb_NITFSetTextHeader, 0), &Orb_NITFFreeTextHeader);
  return status;
}

// A document that an operation works on, and what a save of it writes afterwards.
void AddOperation(std::vector<Scenario>& all, const std::string& name, const FilePtr& file,
                  std::function<int32_t(NitfHandle)> operation) {
  all.push_back({name,
                 [=] {
                   const Document document(file.get());
                   return document.status == 1 ? operation(document.handle) : document.status;
                 },
                 [=] { return file != nullptr ? file->Contents() : ""; }});
}

int32_t AppendPicture(NitfHandle handle) {
  KernelBitmap bitmap;
  if (KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, 9, 7, 24, kOrderBgr, nullptr, kViewTopLeft,
                           nullptr, 0) != 1)
    return -1;
  const int32_t status = Orb_NITFAppendImageSegment(handle, &bitmap, kFormatJpegRgb, 24, 30);
  KernelFreeBitmap(&bitmap);
  return status;
}

void Start(VectorHandle& handle) {
  handle = {};
  handle.flags = kVectorHandleFlags;
  VectorInitialise(&handle);
  handle.flags2 = kVectorHandleFlags2;
}

// Does something with a drawing that the test made, which no fault concerns.
int32_t WithDrawing(auto work) {
  VectorHandle drawing;
  Start(drawing);
  HostLoadOptions options;
  FileFormatDefaultLoadOptions(&options, kLoadOptionsSize);
  options.flags |= kLoadFlagsAlways;
  static const std::string cgm = Cgm();
  int32_t status =
      FileFormatLoadDrawingMemory(cgm.data(), &drawing, static_cast<uint32_t>(cgm.size()), &options, 0);
  if (status == 1) status = work(drawing);
  VectorFree(&drawing);
  return status;
}

int32_t AppendDrawing(NitfHandle handle) {
  const RECT rectangle = {2, 3, 50, 40};
  return WithDrawing(
      [&](VectorHandle& drawing) { return Orb_NITFAppendGraphicSegment(handle, &drawing, &rectangle); });
}

int32_t ReadText(NitfHandle handle) {
  uint32_t length = 0;
  char buffer[100];
  return Orb_NITFGetTextSegment(handle, 0, buffer, &length);
}

void AddDocuments(std::vector<Scenario>& all) {
  const FilePtr full = Keep(test::FullFile());
  const auto text = std::make_shared<test::TempFile>("a text", ".txt");
  const auto symbol = Keep(NitfBuilder().Graphic(Symbol(), Cgm()));
  AddOperation(all, "exchange", full, &ExchangeAll);
  AddOperation(all, "append image", full, &AppendPicture);
  AddOperation(all, "append drawing", full, &AppendDrawing);
  AddOperation(all, "append text", full,
               [=](NitfHandle h) { return Orb_NITFAppendTextSegment(h, text->Wide()); });
  AddOperation(all, "append text by narrow path", full,
               [=](NitfHandle h) { return Orb_NITFAppendTextSegmentA(h, text->Path().c_str()); });
  AddOperation(all, "read text", full, &ReadText);
  AddOperation(all, "get drawing", symbol,
               [](NitfHandle h) { return Orb_NITFGetVectorHandle(h, 0) != nullptr ? 1 : kNoResult; });
  AddOperation(all, "set drawing", symbol, [](NitfHandle h) {
    return WithDrawing([&](VectorHandle& drawing) { return Orb_NITFSetVectorHandle(h, 0, &drawing); });
  });
  AddOperation(all, "measure", symbol, [](NitfHandle h) {
    uint32_t width = 0, height = 0;
    return GetActual_Width_Height(h, &width, &height);
  });
  AddOperation(all, "empty document", nullptr, &AppendPicture);
  // Into a bitmap that holds pixels.
  AddOperation(all, "render", full, [](NitfHandle h) {
    KernelBitmap bitmap;
    KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, 3, 3, 24, kOrderBgr, nullptr, kViewTopLeft,
                         nullptr, 0);
    const int32_t status = Orb_NtfRenderBitmap(&bitmap, h);
    KernelFreeBitmap(&bitmap);
    return status;
  });
}

void AddSaves(std::vector<Scenario>& all) {
  const test::VqForm vectors;
  const auto saving = [&](const std::string& name, const FilePtr& file,
                          const std::function<int32_t(NitfHandle)>& before) {
    const auto out = std::make_shared<test::TempFile>();
    AddOperation(all, "save " + name, file, [=](NitfHandle handle) {
      const int32_t ready = before != nullptr ? before(handle) : 1;
      return ready == 1 ? Orb_NITFSaveFile(handle, out->Wide()) : ready;
    });
  };
  saving("full file", Keep(test::FullFile()), nullptr);
  saving("appended", Keep(test::FullFile()), [](NitfHandle h) {
    const int32_t status = AppendPicture(h);
    return status == 1 ? AppendDrawing(h) : status;
  });
  saving("vectors", Keep(NitfBuilder().Image(test::VqImage(vectors, "C4", 1, 1), test::VqData(vectors))),
         nullptr);
  saving("masked vectors",
         Keep(NitfBuilder().Image(
             test::VqImage(vectors, "M4", 1, 1),
             test::MaskBytes({.blocks = {0}}) + test::VqData(vectors) + "more than the blocks need")),
         nullptr);
  ImageForm masked{.blocksAcross = 2, .compression = "NM"};
  saving("mask",
         Keep(NitfBuilder().Image(
             masked, test::MaskBytes({.blocks = {0, 64}, .padCode = 1}) + std::string(128, 'm'))),
         nullptr);
  const auto narrow = std::make_shared<test::TempFile>();
  AddOperation(all, "save by narrow path", Keep(test::FullFile()),
               [=](NitfHandle h) { return Orb_NITFSaveFileA(h, narrow->Path().c_str()); });
}

}  // namespace

std::vector<Scenario> Scenarios() {
  std::vector<Scenario> all;
  AddUncompressed(all);
  AddCompressed(all);
  AddDrawings(all);
  AddDocuments(all);
  AddSaves(all);
  return all;
}

}  // namespace faults
