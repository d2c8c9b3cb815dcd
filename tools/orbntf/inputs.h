// What a command reads: regular files, or standard input by way of one.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "core/format/bytes.h"
#include "tools/orbntf/core_names.h"

namespace tool {

/// The path to read of an input that a command line names: "-" is standard input, which is read into a
/// temporary file first. ReadError for what is there but no regular file, folders aside.
std::string TakeInput(const std::string& name);
/// An input's name as messages have it.
std::string InputName(const std::string& path);

/// ReadError when the host could not read some of what it was asked for since the last call.
void RequireHostReads(const std::string& path);

/// The inputs of a command, which none of its outputs may be.
class Inputs {
 public:
  Inputs() = default;
  explicit Inputs(const std::vector<std::string>& paths);
  void Add(const std::string& path);
  /// Whether an output of a name would be written over one of them, by whatever name.
  bool Hold(const std::string& output) const;

 private:
  std::vector<core::FileIdentity> identities_;
};

}  // namespace tool
