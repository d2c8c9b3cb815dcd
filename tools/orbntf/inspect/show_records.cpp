#include "tools/orbntf/inspect/show_records.h"

#include "core/format/numbers.h"
#include "core/format/values.h"
#include "core/format/words.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

void WriteValue(JsonText& json, const DecodedField& field) {
  if (IsAbsent(field)) return json.Null();
  if (const auto number = ValueOf(field)) {
    const auto whole = static_cast<int64_t>(*number);
    return (field.field->kind == ValueKind::Number || field.field->kind == ValueKind::Unsigned) &&
                   static_cast<double>(whole) == *number
               ? json.Number(whole)
               : json.Real(*number);
  }
  if (field.field->kind == ValueKind::Float || field.field->kind == ValueKind::Unsigned)
    return json.Null();
  const std::string date = field.field->kind == ValueKind::Date ? IsoDate(field.text) : "";
  if (!date.empty()) return json.String(date);
  json.FieldText(TrimmedText(field.text));
}

void WriteFields(JsonText& json, const std::vector<DecodedField>& fields) {
  json.BeginObject();
  for (const DecodedField& field : fields) {
    json.Key(ToUtf8(field.field->name));
    if (field.turns.empty() && !field.field->repeats) {
      WriteValue(json, field);
      continue;
    }
    json.BeginArray();
    for (const auto& turn : field.turns) {
      if (field.field->fields.empty()) {
        WriteValue(json, turn.front());
      } else {
        WriteFields(json, turn);
      }
    }
    json.EndArray();
  }
  json.EndObject();
}

void DescribeFields(const std::vector<DecodedField>& fields, const std::string& indent,
                    const std::string& number, std::string& text) {
  for (const DecodedField& field : fields) {
    const RecordField& known = *field.field;
    for (size_t turn = 0; turn < field.turns.size(); ++turn)
      DescribeFields(field.turns[turn], indent, number + "[" + std::to_string(turn + 1) + "]", text);
    if (!field.turns.empty() || !known.fields.empty() || (known.repeats && field.text.empty())) continue;
    text.append(indent).append(Printable(known.name)).append(number).append(": ");
    text += IsAbsent(field) ? "–"
                            : ShownText(field) + (known.unit.empty() ? "" : " " + Printable(known.unit));
    text += '\n';
  }
}

}  // namespace

void WriteRecords(JsonText& json, const std::vector<TaggedRecord>& records) {
  json.BeginArray();
  for (const TaggedRecord& record : records) {
    json.BeginObject();
    json.Key("tag");
    json.FieldText(record.tag);
    json.Key("area");
    json.String(record.area);
    json.Key("offset");
    json.Number(static_cast<int64_t>(record.offset));
    json.Key("length");
    json.Number(static_cast<int64_t>(record.bytes.size()));
    if (record.problem.empty()) {
      json.Key("fields");
      WriteFields(json, record.fields);
    } else {
      json.Key("problem");
      json.String(record.problem);
      json.Key("bytes");
      json.String(HexOf(record.bytes));
    }
    json.EndObject();
  }
  json.EndArray();
}

std::string DescribeRecord(const TaggedRecord& record, const std::string& indent) {
  constexpr size_t kShown = 64;
  const std::string tag = record.tag.empty() ? "bytes" : Shown(record.tag);
  std::string text = indent + tag + " in " + record.area + ", " + std::to_string(record.bytes.size()) +
                     " bytes at " + std::to_string(record.offset);
  if (!record.problem.empty())
    return text + ": " + record.problem + ": " + HexOf(record.bytes, kShown) + '\n';
  text += ": " + Printable(record.definition->title) + '\n';
  DescribeFields(record.fields, indent + "  ", "", text);
  return text;
}

}  // namespace tool
