// What the bytes of tagged records mean: definitions are data, a JSON file a tag. docs/records.md
// describes their form.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace core {

enum class ValueKind { Text, Number, Real, Date };

/// A field, or a group of them that repeats or comes only sometimes.
struct RecordField {
  std::string name;
  uint32_t width = 0;  ///< 0 for a group
  ValueKind kind = ValueKind::Text;
  std::string unit, note;
  bool repeats = false;
  uint32_t count = 1;               ///< how often it comes, where no field tells
  std::string countField;           ///< or the earlier field that tells it
  std::string whenField;            ///< it comes only where this earlier field …
  std::vector<std::string> whenIn;  ///< … has one of these texts
  std::vector<RecordField> fields;  ///< of a group
};

struct RecordDefinition {
  std::string tag, title, document;
  std::optional<uint32_t> length;  ///< of records of a fixed length
  std::vector<RecordField> fields;
};

/// Takes a definition from JSON; what is wrong with it in `problem`.
std::optional<RecordDefinition> ParseDefinition(std::string_view json, std::string& problem);

class RecordDefinitions {
 public:
  /// The definitions that the tool brings along.
  RecordDefinitions();
  /// Adds the *.json files of a folder; one of a tag that is there replaces it. What is wrong, empty for
  /// nothing.
  std::string AddFolder(const std::string& folder);
  const RecordDefinition* Find(std::string_view tag) const;
  const std::map<std::string, RecordDefinition, std::less<>>& All() const { return definitions_; }

 private:
  std::map<std::string, RecordDefinition, std::less<>> definitions_;
};

/// Makes the definitions that the tool brings along and adds those of a folder, "" for none; what is
/// wrong, empty for nothing.
std::string TakeDefinitions(const std::string& folder, std::unique_ptr<RecordDefinitions>& definitions);

/// Texts compiled into the tool.
struct CompiledText {
  std::string_view name, text;
};
extern const std::span<const CompiledText> kRecordTexts;

}  // namespace core
