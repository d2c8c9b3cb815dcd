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

/// Texts of characters, and big-endian bytes: whole numbers without a sign, and IEEE 754 reals.
enum class ValueKind { Text, Number, Real, Date, Unsigned, Float };

/// What an earlier field has to be, without the blanks behind it.
struct RecordCondition {
  std::string field;
  std::vector<std::string> in;     ///< one of these texts, where there are any
  std::vector<std::string> notIn;  ///< none of these
  std::optional<uint32_t> bit;     ///< a number in which this bit is set, 0 being the lowest
  std::optional<int64_t> above;    ///< a number greater than this
};

/// A number that an earlier field tells: its own, less some, its triangle n(n + 1) / 2, or, of a field
/// that came once for each turn of the outermost loop, that of this turn.
struct RecordCount {
  std::string field;
  uint32_t less = 0;
  bool isTriangle = false, isEach = false;
};

/// A field, or a group of them that repeats or comes only sometimes.
struct RecordField {
  std::string name;
  uint32_t width = 0;      ///< 0 for a group, and where another field tells
  std::string widthField;  ///< the earlier field that tells the width
  std::map<std::string, uint32_t, std::less<>>
      widths;  ///< by its text, where that is not the width itself
  ValueKind kind = ValueKind::Text;
  std::string unit, note;
  bool repeats = false;
  uint32_t count = 1;                 ///< how often it comes, where no field tells
  std::vector<RecordCount> counts;    ///< or the numbers whose product tells it
  std::vector<RecordCondition> when;  ///< it comes only where all of these hold
  std::vector<RecordField> fields;    ///< of a group
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
  /// Begins with the definitions that the tool brings along.
  RecordDefinitions() = default;
  /// Adds the *.json files of a folder; one of a tag that is there replaces it. What is wrong, empty for
  /// nothing.
  std::string AddFolder(const std::string& folder);
  const RecordDefinition* Find(std::string_view tag) const;
  using ByTag = std::map<std::string, RecordDefinition, std::less<>>;
  const ByTag& All() const;

 private:
  // Those that come along and more; null for those that come along, which are made when they are asked
  // for.
  std::shared_ptr<const ByTag> definitions_;
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
