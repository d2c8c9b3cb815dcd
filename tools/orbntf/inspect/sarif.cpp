#include "tools/orbntf/inspect/sarif.h"

#include <algorithm>

#include "core/format/words.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

void Member(JsonText& json, const char* key, const std::string& text) {
  json.Key(key);
  json.String(text);
}

void Message(JsonText& json, const char* key, const std::string& text) {
  json.Key(key);
  json.BeginObject();
  Member(json, "text", text);
  json.EndObject();
}

// A path as part of a URI.
std::string UriOf(const std::string& path) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  constexpr std::string_view kPlain = "-._~/";
  std::string uri;
  for (const char c : path) {
    const auto byte = static_cast<uint8_t>(c);
    if (std::isalnum(byte) != 0 || kPlain.find(c) != std::string_view::npos) {
      uri += c;
    } else {
      uri.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
  }
  return uri;
}

const char* LevelOf(Severity severity) {
  return severity == Severity::Error ? "error" : severity == Severity::Warning ? "warning" : "note";
}

void WriteDriver(JsonText& json, const std::vector<Finding>& findings) {
  json.Key("tool");
  json.BeginObject();
  json.Key("driver");
  json.BeginObject();
  Member(json, "name", "orbntf");
  Member(json, "version", VersionText().substr(7, VersionText().find_first_of(" \n", 7) - 7));
  json.Key("rules");
  json.BeginArray();
  std::vector<const Rule*> told;
  for (const Finding& finding : findings) {
    if (std::find(told.begin(), told.end(), finding.rule) != told.end()) continue;
    told.push_back(finding.rule);
    json.BeginObject();
    Member(json, "id", finding.rule->id);
    Message(json, "shortDescription", finding.rule->sentence);
    Message(json, "help", finding.rule->standard);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
  json.EndObject();
}

void WriteResult(JsonText& json, const std::string& path, const Finding& finding) {
  json.BeginObject();
  Member(json, "ruleId", finding.rule->id);
  Member(json, "level", LevelOf(finding.rule->severity));
  Message(json, "message", finding.part + ", " + finding.field + ": " + Printable(finding.words));
  json.Key("locations");
  json.BeginArray();
  json.BeginObject();
  json.Key("physicalLocation");
  json.BeginObject();
  json.Key("artifactLocation");
  json.BeginObject();
  Member(json, "uri", UriOf(InputName(path)));
  json.EndObject();
  json.Key("region");
  json.BeginObject();
  json.Key("byteOffset");
  json.Number(static_cast<int64_t>(finding.offset));
  json.Key("byteLength");
  json.Number(1);
  json.EndObject();
  json.EndObject();
  json.EndObject();
  json.EndArray();
  json.EndObject();
}

}  // namespace

std::string SarifBegin() {
  return "{\"$schema\": \"https://json.schemastore.org/sarif-2.1.0.json\", \"version\": \"2.1.0\", "
         "\"runs\": [\n";
}
std::string SarifEnd() { return "\n]}\n"; }

std::string SarifRun(const std::string& path, const std::vector<Finding>& findings) {
  JsonText json(true);
  json.BeginObject();
  WriteDriver(json, findings);
  json.Key("results");
  json.BeginArray();
  for (const Finding& finding : findings) WriteResult(json, path, finding);
  json.EndArray();
  json.EndObject();
  return json.Text();
}

std::string SarifFailure(const std::string& path, const std::string& words) {
  JsonText json(true);
  json.BeginObject();
  WriteDriver(json, {});
  json.Key("results");
  json.BeginArray();
  json.EndArray();
  json.Key("invocations");
  json.BeginArray();
  json.BeginObject();
  json.Key("executionSuccessful");
  json.Bool(false);
  json.Key("toolExecutionNotifications");
  json.BeginArray();
  json.BeginObject();
  Member(json, "level", "error");
  Message(json, "message", InputName(path) + ": " + words);
  json.EndObject();
  json.EndArray();
  json.EndObject();
  json.EndArray();
  json.EndObject();
  return json.Text();
}

}  // namespace tool
