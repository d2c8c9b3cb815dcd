#include "tests/support/support.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <random>
#include <sstream>

#if !defined(ORBNTF_FAULTS)
// Allocations of the module that do not pass through the kernel fail on demand as well.
void* operator new(size_t bytes, const std::nothrow_t&) noexcept {
  if (HostkitShouldFail(kFaultAllocation)) return nullptr;
  try {
    return ::operator new(bytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](size_t bytes, const std::nothrow_t&) noexcept {
  if (HostkitShouldFail(kFaultAllocation)) return nullptr;
  try {
    return ::operator new[](bytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
#endif

namespace test {
namespace {

std::vector<std::string> messages;

struct Sink {
  Picture& picture;
  const RenderRequest& request;
  const KernelBitmap* bitmap;
};

int32_t ORB_CALL TakeRow(void* context, KernelBitmap* bitmap, uint8_t* row, uint32_t flags,
                         int32_t number, int32_t count, void* userData) {
  auto& sink = *static_cast<Sink*>(context);
  EXPECT_EQ(userData, &sink.picture);
  EXPECT_EQ(bitmap, sink.bitmap);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(number, static_cast<int32_t>(sink.picture.rowFlags.size()));
  sink.picture.rowFlags.push_back(flags);
  if (number == sink.request.stopAtRow) return sink.request.stopResult;
  for (uint32_t x = 0; sink.request.bitsPerPixel == 24 && x < sink.picture.width; ++x, row += 3) {
    sink.picture.pixels.push_back({row[2], row[1], row[0]});
  }
  return 1;
}

int32_t LoadRows(const char16_t* path, const RenderRequest& request, Picture& picture) {
  KernelBitmap bitmap;
  Sink sink{picture, request, &bitmap};
  HostLoadOptions options = {};
  options.flags = request.flags;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, request.bitsPerPixel);
  HostLoadRecord record = {};
  record.fileName = path;
  record.bitmap = &bitmap;
  record.rowCallback = &TakeRow;
  record.userData = &picture;
  record.callbackContext = &sink;
  record.options = &options;
  record.loadMemory = request.loadMemory;
  record.setLoadCallback = request.setLoadCallback;
  record.required2224 = 1;
  const int32_t status = fltLoad(&record);
  EXPECT_EQ(options.flags, request.flags | kLoadFlagsAlways) << "set whatever comes of it";
  return status;
}

}  // namespace

TempFile::TempFile(const std::string& bytes, const std::string& suffix)
    : path_(testing::TempDir() + "orbntf-" + std::to_string(std::random_device()()) +
            std::to_string(std::random_device()()) + suffix),
      wide_(Widen(path_)) {
  EXPECT_FALSE(std::filesystem::exists(wide_));
  std::ofstream(std::filesystem::path(wide_), std::ios::binary) << bytes;
  // Where a later test wants them, files are kept, each once.
  constexpr size_t kLargestKept = 200000;
  const char* folder = std::getenv("ORBNTF_KEPT_FILES");
  if (folder == nullptr || bytes.size() < 9 || bytes.size() > kLargestKept || bytes.substr(1, 3) != "ITF")
    return;
  std::ofstream(folder + ("/" + std::to_string(std::hash<std::string>()(bytes))), std::ios::binary)
      << bytes;
}
TempFile::~TempFile() {
  std::error_code ignored;
  std::filesystem::remove(wide_, ignored);
}
std::string TempFile::Contents() const { return ReadFile(wide_); }

std::u16string Widen(const std::string& path) {
  Orb_A2W wide;
  return wide.Convert(path.c_str()) != 0 ? wide.Value() : u"";
}

std::vector<std::filesystem::path> SamplePaths() {
  std::vector<std::filesystem::path> paths;
  const char* folder = std::getenv("ORBNTF_SAMPLES");
  if (folder == nullptr || *folder == 0) {
    std::printf("ORBNTF_SAMPLES names no folder of real files: they are skipped\n");
    return paths;
  }
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".ntf") paths.push_back(entry.path());
  }
  return paths;
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

std::ostream& operator<<(std::ostream& out, Rgb colour) {
  return out << '(' << int{colour.red} << ',' << int{colour.green} << ',' << int{colour.blue} << ')';
}

HostInformationRecord InformationRecord(const char16_t* path, HostFileInfo& info,
                                        HostLoadOptions& options) {
  HostInformationRecord record = {};
  record.fileName = path;
  record.file = kNoFile;
  record.info = &info;
  record.options = &options;
  return record;
}

Picture Render(const char16_t* path, const RenderRequest& request) {
  Picture picture;
  HostLoadOptions options = {};
  options.flags = request.flags;
  HostFileInfo info = {};
  HostInformationRecord record = InformationRecord(path, info, options);
  picture.status = fltInfo(&record);
  if (picture.status != 1) return picture;
  picture.width = info.width;
  picture.height = info.height;
  picture.status = LoadRows(path, request, picture);
  return picture;
}

Picture RenderBytes(const std::string& bytes, const RenderRequest& request) {
  return Render(TempFile(bytes), request);
}

Picture RenderImage(const ImageForm& form, const std::string& data) {
  return RenderBytes(NitfBuilder().Image(form, data).Bytes());
}

std::vector<std::string>& ModuleTest::Messages() { return messages; }

void ModuleTest::SetUp() {
  messages.clear();
  CatchMessages(&messages);
}

void ModuleTest::TearDown() {
  for (int kind = 0; kind < kFaultKinds; ++kind) HostkitArmFault(kind, 0);
  CatchMessages(nullptr);
  HostkitSetMaxPixels(0);
  ExpectNoLeaks();
}

bool HostHasCodecs() {
  HostLoadOptions options = {};
  options.size = kLoadOptionsSize;
  KernelBitmap bitmap;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 0);
  const char bytes[] = "not an image";
  return FileFormatLoadMemory(bytes, &bitmap, kBitmapRecordSize, 0, kOrderAsDecoded, sizeof bytes,
                              &options, nullptr) != kHostUnsupported;
}

bool HostPaintsDrawings() {
  return VectorPaint(nullptr, nullptr, 0, 0, 0, 0, nullptr, nullptr, 0) != kHostUnsupported;
}

void ExpectNoLeaks() {
  HostkitLeak leaks[8];
  const uint32_t count = HostkitOutstanding(leaks, 8);
  for (uint32_t i = 0; i < std::min(count, 8u); ++i) {
    const std::u16string file(leaks[i].file);
    ADD_FAILURE() << "leak of kind " << leaks[i].kind << " from " << std::string(file.begin(), file.end())
                  << ':' << leaks[i].line << ", " << leaks[i].bytes << " bytes";
  }
  EXPECT_EQ(count, 0u);
}

}  // namespace test
