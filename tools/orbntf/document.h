// A document of the API, closed with its owner.
#pragma once

#include <string>

#include "Common/NitfFile.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/tool.h"

namespace tool {

class Document {
 public:
  Document() = default;
  ~Document() {
    if (handle_ != nullptr) Orb_NITFDestroy(&handle_);
  }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  int32_t Open(const std::string& path) { return Orb_NITFCreateA(&handle_, path.c_str()); }
  int32_t StartEmpty() { return Orb_NITFCreate(&handle_, nullptr); }
  NitfHandle get() const { return handle_; }

 private:
  NitfHandle handle_ = nullptr;
};

}  // namespace tool
