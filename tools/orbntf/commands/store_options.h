// How a command line says that a picture is stored.
#pragma once

#include <map>

#include "core/edit/store.h"
#include "tools/orbntf/tool.h"

namespace tool {

/// An option of storing and its description; those that take no value are switches.
struct StoreOption {
  const char *name, *description;
  bool takesValue;
};
extern const std::span<const StoreOption> kStoreOptions;

/// Notes that one was given; what is wrong with its value, empty for nothing.
std::string TakeStoreOption(const std::string& name, const std::string& value, StoreOptions& options);

/// Options of storing, each given once, of a command that stores one picture.
struct StoreWords {
  std::map<std::string, std::string> values;
  std::map<std::string, bool> switches;
};
void AddStoreOptions(const Command& command, StoreWords& words);
/// What is wrong with them, empty for nothing.
std::string StoreOptionsOf(const Command& command, const StoreWords& words, StoreOptions& options);

/// Where scratch files of an output go: its own folder.
std::string ScratchFolderOf(const std::string& output);

}  // namespace tool
