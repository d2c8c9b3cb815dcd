// A document of the API, closed with its owner, and what the editing commands share.
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

/// Opens a document and reports a failure with the field at which it was met. Returns the exit code.
int OpenDocument(const std::string& command, Document& document, const std::string& path);
/// The same for what the exports refuse to open but the tool can show.
int OpenEveryVersion(const std::string& command, Document& document, const std::string& path);
/// Reports a failure of a file with what its document tells of the cause. Returns the exit code.
int ReportDocument(const std::string& command, const std::string& path, const NitfFile& document,
                   int32_t status);
/// Reports the status of a file that an export was given by its path, with the field at which opening it
/// fails. Returns the exit code.
int ReportFile(const std::string& command, const std::string& path, int32_t status);

/// Saves a document as an Output of that name, which must not be `input`. Returns the exit code.
int SaveAs(const std::string& command, Document& document, const std::string& input,
           const std::string& output);

}  // namespace tool
