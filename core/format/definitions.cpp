#include "core/format/definitions.h"

#include <algorithm>
#include <filesystem>

#include <nlohmann/json.hpp>

#include "core/format/bytes.h"

namespace core {
namespace {

using Json = nlohmann::json;

constexpr size_t kMostDepth = 8, kTagLength = 6;

// Takes definitions apart; the first problem stays.
class Taker {
 public:
  explicit Taker(std::string& problem) : problem_(problem) {}

  RecordDefinition Definition(const Json& json) {
    RecordDefinition definition;
    if (!json.is_object()) return Refuse("is no object"), definition;
    definition.tag = Text(json, "tag");
    definition.title = Text(json, "title");
    definition.document = Text(json, "document");
    if (definition.tag.empty() || definition.tag.size() > kTagLength)
      Refuse("\"tag\" has one to six letters");
    if (json.contains("length")) definition.length = Number(json, "length");
    definition.fields = Fields(json, 0);
    return definition;
  }

 private:
  void Refuse(const std::string& words) {
    if (problem_.empty()) problem_ = words;
  }
  std::string Text(const Json& json, const char* key) {
    const auto found = json.find(key);
    if (found == json.end()) return "";
    if (!found->is_string()) return Refuse(std::string("\"") + key + "\" is no text"), "";
    return found->get<std::string>();
  }
  uint32_t Number(const Json& json, const char* key) {
    const auto found = json.find(key);
    if (found == json.end() || !found->is_number_unsigned() || found->get<uint64_t>() > 99999)
      return Refuse(std::string("\"") + key + "\" is no number up to 99999"), 0;
    return found->get<uint32_t>();
  }
  std::vector<RecordField> Fields(const Json& json, size_t depth) {
    std::vector<RecordField> fields;
    const auto found = json.find("fields");
    if (found == json.end() || !found->is_array() || found->empty() || depth > kMostDepth)
      return Refuse("\"fields\" is a list"), fields;
    for (const Json& field : *found) fields.push_back(Field(field, depth));
    return fields;
  }
  RecordField Field(const Json& json, size_t depth) {
    RecordField field;
    if (!json.is_object()) return Refuse("a field is no object"), field;
    field.name = Text(json, "name");
    if (field.name.empty()) Refuse("a field has no \"name\"");
    field.unit = Text(json, "unit");
    field.note = Text(json, "note");
    TakeRepeat(json, field);
    TakeCondition(json, field);
    if (json.contains("fields")) {
      field.fields = Fields(json, depth + 1);
      return field;
    }
    TakeWidth(json, field);
    field.kind = Kind(field.name, Text(json, "kind"));
    return field;
  }
  void TakeRepeat(const Json& json, RecordField& field) {
    const auto found = json.find("repeat");
    field.repeats = found != json.end();
    if (!field.repeats) return;
    if (found->is_number()) {
      field.count = Number(json, "repeat");
    } else if (found->is_array()) {
      for (const Json& factor : *found) field.counts.push_back(Count(factor));
    } else {
      field.counts.push_back(Count(*found));
    }
  }
  // "NAME", {"of": NAME, "less": N}, {"triangle": NAME} or {"each": NAME}.
  RecordCount Count(const Json& json) {
    RecordCount count;
    if (json.is_string()) {
      count.field = json.get<std::string>();
      return count;
    }
    if (!json.is_object())
      return Refuse("\"repeat\" is a number, a name, or says what is counted"), count;
    count.isTriangle = json.contains("triangle");
    count.isEach = json.contains("each");
    count.field = Text(json, count.isTriangle ? "triangle" : count.isEach ? "each" : "of");
    if (json.contains("less")) count.less = Number(json, "less");
    if (count.field.empty()) Refuse("\"repeat\" has no \"of\", \"triangle\" or \"each\"");
    return count;
  }
  // A number, the name of the field that tells, or {"by": NAME, "widths": {TEXT: N}}.
  void TakeWidth(const Json& json, RecordField& field) {
    const auto found = json.find("width");
    if (found != json.end() && found->is_string()) {
      field.widthField = found->get<std::string>();
    } else if (found != json.end() && found->is_object() && found->contains("widths")) {
      field.widthField = Text(*found, "by");
      const Json& widths = (*found)["widths"];
      for (auto width = widths.begin(); width != widths.end(); ++width)
        field.widths[width.key()] = Number(widths, width.key().c_str());
    } else {
      field.width = Number(json, "width");
    }
    if (field.width == 0 && field.widthField.empty()) Refuse(field.name + " has no \"width\"");
  }
  void TakeCondition(const Json& json, RecordField& field) {
    const auto found = json.find("when");
    if (found == json.end()) return;
    if (!found->is_array()) return field.when.push_back(Condition(*found));
    for (const Json& condition : *found) field.when.push_back(Condition(condition));
  }
  RecordCondition Condition(const Json& json) {
    RecordCondition condition;
    const bool isWhole = json.is_object() && (json.contains("in") || json.contains("notIn") ||
                                              json.contains("bit") || json.contains("above"));
    if (!isWhole)
      return Refuse("\"when\" has \"field\" and one of \"in\", \"notIn\", \"bit\" and \"above\""),
             condition;
    condition.field = Text(json, "field");
    if (condition.field.empty()) Refuse("\"when\" has no \"field\"");
    condition.in = Texts(json, "in");
    condition.notIn = Texts(json, "notIn");
    if (json.contains("bit")) condition.bit = Number(json, "bit");
    if (json.contains("above")) condition.above = Number(json, "above");
    return condition;
  }
  std::vector<std::string> Texts(const Json& json, const char* key) {
    std::vector<std::string> texts;
    const auto found = json.find(key);
    if (found == json.end()) return texts;
    for (const Json& text : *found) {
      if (!text.is_string()) return Refuse(std::string("\"") + key + "\" is a list of texts"), texts;
      texts.push_back(text.get<std::string>());
    }
    return texts;
  }
  ValueKind Kind(const std::string& field, const std::string& word) {
    constexpr const char* kWords[] = {"text", "number", "real", "date", "unsigned", "float"};
    const auto* found = std::find(std::begin(kWords), std::end(kWords), word);
    if (found == std::end(kWords))
      return Refuse("field " + field + ": \"kind\" is text, number, real, date, unsigned or float"),
             ValueKind::Text;
    return static_cast<ValueKind>(found - std::begin(kWords));
  }

  std::string& problem_;
};

}  // namespace

std::optional<RecordDefinition> ParseDefinition(std::string_view json, std::string& problem) {
  const Json parsed = Json::parse(json, nullptr, false);
  problem.clear();
  if (parsed.is_discarded()) {
    problem = "is no JSON";
    return std::nullopt;
  }
  RecordDefinition definition = Taker(problem).Definition(parsed);
  return problem.empty() ? std::optional(std::move(definition)) : std::nullopt;
}

namespace {

RecordDefinitions::ByTag MakeCompiled() {
  // The parser's destructors take memory and cannot fail for want of it: what all of this takes is there,
  // or nothing is begun.
  constexpr size_t kTaken = 8 << 20;
  {
    const std::unique_ptr<volatile char[]> taken(new volatile char[kTaken]);
    taken[0] = 0;
  }
  RecordDefinitions::ByTag definitions;
  for (const CompiledText& compiled : kRecordTexts) {
    std::string problem;
    if (auto definition = ParseDefinition(compiled.text, problem))
      definitions.emplace(definition->tag, *definition);
  }
  return definitions;
}

}  // namespace

const RecordDefinitions::ByTag& RecordDefinitions::All() const {
  if (definitions_ != nullptr) return *definitions_;
  static const ByTag compiled = MakeCompiled();
  return compiled;
}

std::string RecordDefinitions::AddFolder(const std::string& folder) {
  std::error_code error;
  std::vector<std::string> paths;
  for (auto entry = std::filesystem::directory_iterator(folder, error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    if (entry->path().extension() == ".json") paths.push_back(entry->path().string());
  }
  if (error) return folder + ": " + error.message();
  std::sort(paths.begin(), paths.end());
  auto all = std::make_shared<ByTag>(All());
  for (const std::string& path : paths) {
    std::string problem;
    auto definition = ParseDefinition(ReadWhole(path), problem);
    if (!definition) return problem.insert(0, path + ": ");
    all->insert_or_assign(definition->tag, std::move(*definition));
  }
  definitions_ = std::move(all);
  return "";
}

std::string TakeDefinitions(const std::string& folder, std::unique_ptr<RecordDefinitions>& definitions) {
  definitions = std::make_unique<RecordDefinitions>();
  return folder.empty() ? "" : definitions->AddFolder(folder);
}

const RecordDefinition* RecordDefinitions::Find(std::string_view tag) const {
  const auto found = All().find(tag);
  return found != All().end() ? &found->second : nullptr;
}

}  // namespace core
