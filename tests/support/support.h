// The fixture of every test that runs the module: no leaks, message boxes kept, faults disarmed.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Common/Status.h"
#include "host/fileformat.h"
#include "hostkit/hostkit.h"
#include "tests/support/builder.h"

namespace test {

/// A file of given bytes, removed with the object.
class TempFile {
 public:
  explicit TempFile(const std::string& bytes = "", const std::string& suffix = ".ntf");
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  const std::string& Path() const { return path_; }
  const char16_t* Wide() const { return wide_.c_str(); }
  std::string Contents() const;

 private:
  std::string path_;
  std::u16string wide_;
};
std::u16string Widen(const std::string& path);
std::string ReadFile(const std::filesystem::path& path);
/// The NITF files of the folder that ORBNTF_SAMPLES names; none where it names none, which is said.
std::vector<std::filesystem::path> SamplePaths();

struct Rgb {
  uint8_t red = 0, green = 0, blue = 0;
  bool operator==(const Rgb&) const = default;
};
std::ostream& operator<<(std::ostream& out, Rgb colour);
inline constexpr Rgb kWhite{255, 255, 255};
inline constexpr Rgb Grey(int value) {
  const auto v = static_cast<uint8_t>(value);
  return {v, v, v};
}

/// What fltLoad delivered.
struct Picture {
  int32_t status = 0;
  uint32_t width = 0, height = 0;
  std::vector<Rgb> pixels;
  std::vector<uint32_t> rowFlags;
  Rgb At(uint32_t x, uint32_t y) const { return pixels.at(size_t{y} * width + x); }
};
struct RenderRequest {
  uint32_t flags = 0;
  int stopAtRow = -1;  ///< the callback gives `stopResult` there
  int32_t stopResult = 0;
  uint32_t bitsPerPixel = 24;
  HostLoadMemory loadMemory = &FileFormatLoadMemory;
  HostSetLoadInfoCallback setLoadCallback = &FileFormatSetLoadInfoCallback;
};
/// The record that a host without an open handle passes to fltInfo.
HostInformationRecord InformationRecord(const char16_t* path, HostFileInfo& info,
                                        HostLoadOptions& options);
/// Renders a file through fltInfo and fltLoad.
Picture Render(const char16_t* path, const RenderRequest& request = {});
inline Picture Render(const TempFile& file, const RenderRequest& request = {}) {
  return Render(file.Wide(), request);
}
Picture RenderBytes(const std::string& bytes, const RenderRequest& request = {});
/// The picture of a file of one image.
Picture RenderImage(const ImageForm& form, const std::string& data);

class ModuleTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
  /// Texts of the message boxes since the test began.
  static std::vector<std::string>& Messages();
};

/// Whether the host toolkit of this build encodes and decodes images, and paints drawings.
bool HostHasCodecs();
bool HostPaintsDrawings();

/// Directs message boxes into the list, null to where they go otherwise.
void CatchMessages(std::vector<std::string>* messages);

/// Fails with the list of what is outstanding unless nothing is.
void ExpectNoLeaks();

}  // namespace test
