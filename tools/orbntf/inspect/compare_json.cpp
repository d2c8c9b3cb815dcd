#include "tools/orbntf/inspect/compare_json.h"

#include "core/format/json_text.h"
#include "core/format/words.h"

namespace tool {
namespace {

void WriteNumber(JsonText& json, const char* key, const std::optional<uint64_t>& number) {
  json.Key(key);
  if (number)
    json.Number(static_cast<int64_t>(*number));
  else
    json.Null();
}

void WriteTexts(JsonText& json, const char* key, const std::vector<TextDifference>& differences,
                bool asBytes) {
  json.Key(key);
  json.BeginArray();
  for (const TextDifference& difference : differences) {
    json.BeginObject();
    json.Key("part");
    json.String(difference.part);
    json.Key("name");
    json.FieldText(difference.name);
    if (!difference.field.empty()) {
      json.Key("field");
      json.String(ToUtf8(difference.field));
    }
    for (const auto& [side, text] : {std::pair{"a", &difference.a}, {"b", &difference.b}}) {
      json.Key(side);
      if (!*text)
        json.Null();
      else if (asBytes && difference.field.empty())
        json.String(HexOf(**text));
      else
        json.FieldText(**text);
    }
    json.EndObject();
  }
  json.EndArray();
}

void WritePixels(JsonText& json, const PixelDifference& pixels) {
  json.Key("pixels");
  json.BeginObject();
  json.Key("statusA");
  json.Number(pixels.a.Code());
  json.Key("statusB");
  json.Number(pixels.b.Code());
  if (pixels.BothDraw()) {
    for (const auto& [key, number] : {std::pair{"widthA", pixels.widthA},
                                      {"heightA", pixels.heightA},
                                      {"widthB", pixels.widthB},
                                      {"heightB", pixels.heightB}})
      WriteNumber(json, key, number);
  }
  if (pixels.BothDraw() && pixels.SameSize()) {
    WriteNumber(json, "count", pixels.count);
    json.Key("largest");
    json.Number(pixels.largest);
    json.Key("box");
    if (pixels.count == 0) {
      json.Null();
    } else {
      json.BeginObject();
      for (const auto& [key, number] : {std::pair{"left", pixels.left},
                                        {"top", pixels.top},
                                        {"right", pixels.right},
                                        {"bottom", pixels.bottom}})
        WriteNumber(json, key, number);
      json.EndObject();
    }
  }
  json.EndObject();
}

void WriteSamples(JsonText& json, const std::vector<SampleDifference>& images) {
  json.Key("samples");
  json.BeginArray();
  for (const SampleDifference& samples : images) {
    json.BeginObject();
    json.Key("part");
    json.String(samples.part);
    if (samples.problem.empty()) {
      WriteNumber(json, "samples", samples.samples);
      WriteNumber(json, "differing", samples.differing);
      json.Key("largest");
      json.Real(samples.largest);
      json.Key("mean");
      json.Real(samples.mean);
      WriteNumber(json, "notNumbers", samples.notNumbers);
    } else {
      json.Key("problem");
      json.String(samples.problem);
    }
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace

std::string ComparisonJson(const std::string& a, const std::string& b, const Comparison& comparison,
                           const PixelDifference& pixels) {
  JsonText json(true);
  json.BeginObject();
  json.Key("a");
  json.String(a);
  json.Key("b");
  json.String(b);
  WriteTexts(json, "fields", comparison.fields, false);
  WriteTexts(json, "records", comparison.records, true);
  json.Key("segments");
  json.BeginArray();
  for (const DataDifference& difference : comparison.segments) {
    json.BeginObject();
    json.Key("part");
    json.String(difference.part);
    WriteNumber(json, "a", difference.a);
    WriteNumber(json, "b", difference.b);
    WriteNumber(json, "firstOffset", difference.firstOffset);
    json.EndObject();
  }
  json.EndArray();
  WriteSamples(json, comparison.samples);
  WritePixels(json, pixels);
  json.EndObject();
  return json.Text();
}

}  // namespace tool
