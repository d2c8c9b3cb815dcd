// Opens any bytes as a document, renders it and saves it.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "host/fileformat.h"
#include "hostkit/hostkit.h"
#include "orbntf/orbntf.h"

namespace {

void DropMessage(const char*, const char*) {}

std::string MakePath() {
  std::string path = std::string(P_tmpdir) + "/orbntf-fuzz-XXXXXX";
  close(mkstemp(path.data()));
  return path;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(const uint8_t* data,
                                                                             size_t size) {
  static const std::string input = MakePath(), output = MakePath();
  HostkitSetMessageHandler(&DropMessage);
  HostkitSetMaxPixels(1 << 22);
  std::FILE* file = std::fopen(input.c_str(), "wb");
  std::fwrite(data, 1, size, file);
  std::fclose(file);
  NitfHandle document = nullptr;
  if (Orb_NITFCreateA(&document, input.c_str()) != ORB_SUCCESS) return 0;
  KernelBitmap bitmap = {};
  if (Orb_NtfRenderBitmap(&bitmap, document) == ORB_SUCCESS) KernelFreeBitmap(&bitmap);
  (void)Orb_NITFSaveFileA(document, output.c_str());
  Orb_NITFDestroy(&document);
  if (HostkitOutstanding(nullptr, 0) != 0) std::abort();
  return 0;
}
