#include "tools/orbntf/commands/change.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "Common/Exchange.h"
#include "core/format/allowed.h"
#include "tools/orbntf/output/true_lengths.h"
#include "tools/orbntf/output/verify.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

// Stores a text in a public record's field; false when it is no value of the field's kind.
bool StoreNumber(const std::string& text, const PublicPlace& place, bool isShort) {
  char* end = nullptr;
  errno = 0;
  const long value = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != 0 || errno != 0 || value > INT32_MAX || value < INT32_MIN) return false;
  if (isShort && (value < 0 || value > UINT16_MAX)) return false;
  isShort ? StoreTo(place.bytes, static_cast<uint16_t>(value))
          : StoreTo(place.bytes, static_cast<int32_t>(value));
  return true;
}

bool StoreText(const std::string& text, const PublicPlace& place) {
  FreePointer(place.bytes);
  char* copy = CopyForCaller(text);
  StoreTo(place.bytes, copy);
  return copy != nullptr;
}

bool StoreDate(const std::string& text, const PublicPlace& place) {
  if (text.size() != SizeOf(place.field->kind)) return false;
  std::memcpy(place.bytes, text.data(), text.size());
  return true;
}

bool StoreLocation(const std::string& text, const PublicPlace& place) {
  const size_t comma = text.find(',');
  if (comma == std::string::npos) return false;
  return StoreNumber(text.substr(0, comma), place, false) &&
         StoreNumber(text.substr(comma + 1), {place.field, place.bytes + 4}, false);
}

// "#RRGGBB" as the record holds colours.
bool StoreColour(const std::string& text, const PublicPlace& place) {
  char* end = nullptr;
  if (text.size() != 7 || text[0] != '#') return false;
  const auto rgb = static_cast<uint32_t>(std::strtoul(text.c_str() + 1, &end, 16));
  StoreTo(place.bytes, (rgb >> 16 & 255) | (rgb & 0xFF00) | (rgb & 255) << 16);
  return *end == 0;
}

bool StoreReal(const std::string& text, const PublicPlace& place) {
  char* end = nullptr;
  StoreTo(place.bytes, std::strtof(text.c_str(), &end));
  return !text.empty() && *end == 0;
}

bool StoreValue(const std::string& text, const PublicPlace& place) {
  switch (place.field->kind) {
    case PublicKind::String:
      return StoreText(text, place);
    case PublicKind::Short:
      return StoreNumber(text, place, true);
    case PublicKind::Int:
      return std::string_view(place.field->name) == "FBKGC" ? StoreColour(text, place)
                                                            : StoreNumber(text, place, false);
    case PublicKind::Float:
      return StoreReal(text, place);
    case PublicKind::Date:
    case PublicKind::DateTime:
      return StoreDate(text, place);
    case PublicKind::Location:
      return StoreLocation(text, place);
    case PublicKind::Pointer:
      return false;
  }
  return false;
}

// Fields that describe the file's structure: lengths and counts of what is there.
bool IsStructural(const std::string& name) {
  constexpr const char* kNames[] = {"FL",      "HL",      "NICOM",    "NBANDS", "XBANDS", "UDIDL",
                                    "IXSHDL",  "SXSHDL",  "TXSHDL",   "UDHDL",  "XHDL",   "NUMI",
                                    "NUMS",    "NUMT",    "NUMX",     "NUMDES", "NUMRES", "IMDATOFF",
                                    "BMRLNTH", "TMRLNTH", "TPXCDLNTH"};
  return std::find(std::begin(kNames), std::end(kNames), name) != std::end(kNames);
}

enum class Change { Done, NoField, BadValue, Refused, AlreadyRefused, Failed };

// Get, change one field, Set; `status` receives the export's result.
template <class Record, class Get, class Set, class Free>
Change ChangeField(PublicTable table, const std::string& name, const std::string& value, Get get, Set set,
                   Free free, int32_t& status) {
  Record record = {};
  const PublicPlace place = FindPlace(table, &record, name);
  if (place.field == nullptr || place.field->kind == PublicKind::Pointer || IsStructural(name)) {
    return Change::NoField;
  }
  Change change = Change::Failed;
  status = get(&record);
  if (status == ORB_SUCCESS) {
    change = StoreValue(value, place) ? Change::Refused : Change::BadValue;
    if (change == Change::Refused) {
      status = set(&record);
      if (status == ORB_SUCCESS) change = Change::Done;
    }
  }
  free(&record);
  if (change == Change::Refused) {
    // A file may hold a value that no Set accepts; then it is not this field that is refused.
    Record unchanged = {};
    if (get(&unchanged) == ORB_SUCCESS && set(&unchanged) != ORB_SUCCESS) change = Change::AlreadyRefused;
    free(&unchanged);
  }
  return change;
}

// The file header's Set does not say what it refused: what was stored is compared with what was asked.
bool TookFileField(NitfHandle handle, const std::string& name, const NITFHeader& asked) {
  NITFHeader stored = {};
  auto* askedRecord = const_cast<NITFHeader*>(&asked);
  if (Orb_NITFGetNITFHeader(handle, &stored) != ORB_SUCCESS) return false;
  FillSetOnlyFields(handle->header, stored);
  const PublicPlace before = FindPlace(PublicFileFields(), askedRecord, name);
  const PublicPlace after = FindPlace(PublicFileFields(), &stored, name);
  bool same = std::memcmp(before.bytes, after.bytes, SizeOf(before.field->kind)) == 0;
  if (before.field->kind == PublicKind::String) {
    const char* wanted = LoadFrom<const char*>(before.bytes);
    same = std::strncmp(wanted, LoadFrom<const char*>(after.bytes), std::strlen(wanted)) == 0;
  }
  Orb_NITFFreeNITFHeader(&stored);
  return same;
}

Change ChangeFileField(NitfHandle handle, const std::string& name, const std::string& value,
                       int32_t& status) {
  return ChangeField<NITFHeader>(
      PublicFileFields(), name, value,
      [&](NITFHeader* record) {
        const int32_t result = Orb_NITFGetNITFHeader(handle, record);
        FillSetOnlyFields(handle->header, *record);
        return result;
      },
      [&](NITFHeader* record) {
        const int32_t result = Orb_NITFSetNITFHeader(handle, record);
        return result == ORB_SUCCESS && !TookFileField(handle, name, *record) ? ORB_INVALID_PARAMETER
                                                                              : result;
      },
      &Orb_NITFFreeNITFHeader, status);
}

Change ChangeTargetField(NitfHandle handle, const Target& target, const std::string& name,
                         const std::string& value, int32_t& status) {
  if (target.kind.empty()) return ChangeFileField(handle, name, value, status);
  const uint32_t index = target.index;
  const auto change = [&]<class Record>(PublicTable table, auto get, auto set, auto free, Record*) {
    return ChangeField<Record>(
        table, name, value, [&](Record* record) { return get(handle, index, record); },
        [&](Record* record) { return set(handle, index, record); }, free, status);
  };
  if (target.kind == "image") {
    return change(PublicImageFields(), &Orb_NITFGetImageHeader, &Orb_NITFSetImageHeader,
                  &Orb_NITFFreeImageHeader, static_cast<ImageHeader*>(nullptr));
  }
  if (target.kind == "graphic") {
    return change(PublicGraphicFields(), &Orb_NITFGetGraphicHeader, &Orb_NITFSetGraphicHeader,
                  &Orb_NITFFreeGraphicHeader, static_cast<GraphicHeader*>(nullptr));
  }
  return change(PublicTextFields(), &Orb_NITFGetTextHeader, &Orb_NITFSetTextHeader,
                &Orb_NITFFreeTextHeader, static_cast<TextHeader*>(nullptr));
}

}  // namespace

bool ParseTarget(const std::string& text, Target& target) {
  const size_t colon = text.find(':');
  if (colon == std::string::npos) return false;
  target.kind = text.substr(0, colon);
  const std::string digits = text.substr(colon + 1);
  const bool number = !digits.empty() && digits.size() <= 9 &&
                      digits.find_first_not_of("0123456789") == std::string::npos;
  const bool known = target.kind == "image" || target.kind == "graphic" || target.kind == "text";
  if (number) target.index = static_cast<uint32_t>(std::stoul(digits));
  return known && number;
}

// ICORDS of the image that is changed; blank for other segments.
char FormOfCorners(const NitfFile& document, const Target& target) {
  const ImageSubheader* image = document.images.At(target.index);
  return image != nullptr ? image->ICORDS.text[0] : ' ';
}

int ApplyChange(const ChangeContext& context, Document& document, const Target& target,
                const std::string& assignment) {
  const std::string& command = context.command;
  const size_t equals = assignment.find('=');
  if (equals == std::string::npos)
    return Refuse(command, assignment + ": neither a segment nor FIELD=VALUE");
  const std::string name = assignment.substr(0, equals);
  const std::string value = assignment.substr(equals + 1);
  if (DescribesPixels(name)) return Refuse(command, name + ": describes the pixels that are stored");
  if (const std::string problem =
          context.force ? "" : ProblemOf(name, value, FormOfCorners(*document.get(), target));
      !problem.empty()) {
    return Refuse(command, name + ": " + problem + " (--force takes it all the same)");
  }
  int32_t status = ORB_SUCCESS;
  switch (ChangeTargetField(document.get(), target, name, value, status)) {
    case Change::Done:
      return kExitOk;
    case Change::NoField:
      return Refuse(command, name + ": no such field here");
    case Change::BadValue:
      return Refuse(command, name + ": not a value of this field");
    case Change::Refused:
      return Report(command, context.file + ": " + name, status);
    case Change::AlreadyRefused:
      return Report(command, context.file + ": a value that the header already holds", status);
    case Change::Failed:
      break;
  }
  return Report(command, context.file, status);
}

std::vector<std::string> SettableFields(const std::string& kind) {
  const PublicTable table = kind == "image"     ? PublicImageFields()
                            : kind == "graphic" ? PublicGraphicFields()
                            : kind == "text"    ? PublicTextFields()
                                                : PublicFileFields();
  std::vector<std::string> names;
  for (const PublicField& field : table) {
    if (field.kind != PublicKind::Pointer && !IsStructural(field.name) && !DescribesPixels(field.name))
      names.emplace_back(field.name);
  }
  return names;
}

}  // namespace tool
