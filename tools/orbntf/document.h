// A document of the API, closed with its owner, and what the editing commands share.
#pragma once

#include <string>

#include "orbntf/orbntf.h"

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

/// Opens a document and reports a failure with the field at which it was met. Returns the exit code.
int OpenDocument(const std::string& command, Document& document, const std::string& path);
/// Reports the status of a file that an export was given by its path, with the field at which opening it
/// fails. Returns the exit code.
int ReportFile(const std::string& command, const std::string& path, int32_t status);

/// Saves a document under a path that must not be `input`; the file appears when it is complete. Returns
/// the exit code.
int SaveAs(const std::string& command, Document& document, const std::string& input,
           const std::string& output);

}  // namespace tool
