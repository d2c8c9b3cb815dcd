// A document of the API, closed with its owner.
#pragma once

#include <memory>
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
  /// Also NSIF 1.00 and any complexity level, and past a subheader that does not parse.
  int32_t OpenEveryVersion(const std::string& path) {
    own_ = std::make_unique<NitfFile>();
    own_->header.rules.everyVersion = own_->readsOn = true;
    return ToCaller(own_->ReadDocument(Widen(path).c_str()));
  }
  /// As the published standard shows it, not as the module does.
  int32_t OpenByStandard(const std::string& path) {
    own_ = std::make_unique<NitfFile>();
    own_->header.rules = DisplayRules::Standard();
    return ToCaller(own_->ReadDocument(Widen(path).c_str()));
  }
  int32_t StartEmpty() { return Orb_NITFCreate(&handle_, nullptr); }
  NitfHandle get() const { return own_ != nullptr ? own_.get() : handle_; }

 private:
  NitfHandle handle_ = nullptr;
  std::unique_ptr<NitfFile> own_;
};

}  // namespace tool
