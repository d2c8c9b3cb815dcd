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
    field.width = Number(json, "width");
    if (field.width == 0) Refuse(field.name + " has no \"width\"");
    field.kind = Kind(field.name, Text(json, "kind"));
    return field;
  }
  void TakeRepeat(const Json& json, RecordField& field) {
    const auto found = json.find("repeat");
    field.repeats = found != json.end();
    if (!field.repeats) return;
    if (found->is_string()) {
      field.countField = found->get<std::string>();
    } else {
      field.count = Number(json, "repeat");
    }
  }
  void TakeCondition(const Json& json, RecordField& field) {
    const auto found = json.find("when");
    if (found == json.end()) return;
    const bool isWhole = found->is_object() && found->contains("in") && (*found)["in"].is_array();
    if (!isWhole) return Refuse("\"when\" has \"field\" and \"in\"");
    field.whenField = Text(*found, "field");
    if (field.whenField.empty()) Refuse("\"when\" has no \"field\"");
    for (const Json& text : (*found)["in"]) {
      if (!text.is_string()) return Refuse("\"in\" is a list of texts");
      field.whenIn.push_back(text.get<std::string>());
    }
  }
  ValueKind Kind(const std::string& field, const std::string& word) {
    constexpr const char* kWords[] = {"text", "number", "real", "date"};
    const auto* found = std::find(std::begin(kWords), std::end(kWords), word);
    if (found == std::end(kWords))
      return Refuse("field " + field + ": \"kind\" is text, number, real or date"), ValueKind::Text;
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

RecordDefinitions::RecordDefinitions() {
  for (const CompiledText& compiled : kRecordTexts) {
    std::string problem;
    if (auto definition = ParseDefinition(compiled.text, problem))
      definitions_.emplace(definition->tag, *definition);
  }
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
  for (const std::string& path : paths) {
    std::string problem;
    auto definition = ParseDefinition(ReadWhole(path), problem);
    if (!definition) return problem.insert(0, path + ": ");
    definitions_.insert_or_assign(definition->tag, std::move(*definition));
  }
  return "";
}

std::string TakeDefinitions(const std::string& folder, std::unique_ptr<RecordDefinitions>& definitions) {
  definitions = std::make_unique<RecordDefinitions>();
  return folder.empty() ? "" : definitions->AddFolder(folder);
}

const RecordDefinition* RecordDefinitions::Find(std::string_view tag) const {
  const auto found = definitions_.find(tag);
  return found != definitions_.end() ? &found->second : nullptr;
}

}  // namespace core
