#include "core/edit/fields.h"

#include <algorithm>
#include <charconv>

#include "core/format/allowed.h"
#include "core/format/geography.h"
#include "core/format/words.h"

namespace core {
namespace {

// ---------------------------------------------------------------- texts

std::string HexOfCode(uint32_t code) {
  char text[16];
  (void)std::snprintf(text, sizeof text, "U+%04X", code);
  return text;
}

// The character that a text begins with, and how many bytes it takes; bytes that are no UTF-8 stand for
// themselves.
uint32_t FirstCharacter(std::string_view text, size_t& bytes) {
  bytes = Utf8Bytes(text);
  const auto lead = static_cast<uint8_t>(text[0]);
  if (bytes <= 1) {
    bytes = 1;
    return lead;
  }
  uint32_t code = lead & (0x7Fu >> bytes);
  for (size_t i = 1; i < bytes; ++i) code = code << 6 | (static_cast<uint8_t>(text[i]) & 0x3Fu);
  return code;
}

// The text in the character set of a field.
std::string Encoded(const std::string& field, FieldForm form, std::string_view value) {
  std::string encoded;
  for (size_t bytes = 0; !value.empty(); value.remove_prefix(bytes)) {
    const uint32_t code = FirstCharacter(value, bytes);
    const bool basic = code >= 0x20 && code <= 0x7E;
    const bool extended = form == FieldForm::Extended && code >= 0xA0 && code <= 0xFF;
    if (!basic && !extended)
      RefuseArgument(field + ": " + Quoted(value.substr(0, bytes)) + " (" + HexOfCode(code) +
                     ") cannot stand in it: it takes " +
                     (form == FieldForm::Extended ? "the characters of Latin-1" : "ASCII"));
    encoded += static_cast<char>(code);
  }
  return encoded;
}

std::string Padded(const std::string& field, std::string text, size_t width) {
  if (text.size() > width)
    RefuseArgument(field + ": " + std::to_string(text.size()) + " characters, it takes " +
                   std::to_string(width));
  text.resize(width, ' ');
  return text;
}

std::string NumberText(const std::string& field, const std::string& value, size_t width) {
  if (DigitsOf(value) < 0 || value.size() > width)
    RefuseArgument(field + ": not a number of up to " + std::to_string(width) + " digits");
  return std::string(width - value.size(), '0') + value;
}

// "ROW,COL" in five characters each.
std::string PlaceText(const std::string& field, const std::string& value) {
  int64_t row = 0, column = 0;
  if (PlaceOfText(value, row, column)) return value;
  const size_t comma = value.find(',');
  std::string text;
  for (const std::string& part :
       {value.substr(0, comma), comma == std::string::npos ? "" : value.substr(comma + 1)}) {
    const bool isNegative = !part.empty() && part[0] == '-';
    const int64_t number = DigitsOf(part.substr(isNegative ? 1 : 0));
    if (number < 0 || number > (isNegative ? 9999 : 99999))
      RefuseArgument(field + ": not a place, ROW,COL, each from -9999 to 99999");
    const std::string digits = std::to_string(number);
    text += (isNegative ? "-" : "") + std::string((isNegative ? 4 : 5) - digits.size(), '0') + digits;
  }
  return text;
}

// Eight numbers, latitude and longitude of each corner, in the form of the image; other values stay.
std::string CornersText(const std::string& value, char icords) {
  GeographicCorners corners{};
  size_t count = 0;
  std::string_view left = value;
  while (!left.empty() && count < 8) {
    const size_t end = std::min(left.find_first_of(", "), left.size());
    if (end != 0) {
      double& number = count % 2 == 0 ? corners[count / 2].latitude : corners[count / 2].longitude;
      const size_t sign = left[0] == '+' ? 1 : 0;
      const auto parsed = std::from_chars(left.data() + sign, left.data() + end, number);
      if (parsed.ec != std::errc() || parsed.ptr != left.data() + end) return value;
      ++count;
    }
    left.remove_prefix(std::min(end + 1, left.size()));
  }
  if (count != 8 || !left.empty()) return value;
  const auto text = IgeoloText(icords, corners);
  if (!text)
    RefuseArgument("IGEOLO: the form " + Quoted(std::string(1, icords)) + " cannot say these corners");
  return *text;
}

// "#RRGGBB" as three bytes.
std::string ColourText(const std::string& field, const std::string& value) {
  const bool isColour = value.size() == 7 && value[0] == '#' &&
                        value.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
  if (!isColour) RefuseArgument(field + ": not a colour, #RRGGBB");
  std::string bytes;
  for (size_t i = 1; i < 7; i += 2)
    bytes += static_cast<char>(std::stoul(value.substr(i, 2), nullptr, 16));
  return bytes;
}

// ---------------------------------------------------------------- what is set by what there is

bool IsLength(std::string_view name) {
  const size_t digits = name.find_first_of("0123456789");
  const std::string_view stem = name.substr(0, digits);
  for (const ListLayout& list : kListLayouts) {
    if (stem == list.count.name || stem == list.subheader.name || stem == list.data.name) return true;
  }
  for (const AreaLayout* area :
       {&kFileUserArea, &kFileArea, &kImageUserArea, &kImageArea, &kGraphicArea, &kTextArea}) {
    if (name == area->length.name || name == area->overflow.name) return true;
  }
  constexpr std::string_view kNames[] = {
      "FL",     "HL",    "NUMX",    "NBANDS",  "XBANDS", "NLUTS", "NELUT", "FHDR", "FVER", "DESSHL",
      "RESSHL", "DESID", "DESOFLW", "DESITEM", "IM",     "SY",    "TE",    "DE",   "RE"};
  return std::find(std::begin(kNames), std::end(kNames), stem) != std::end(kNames);
}

void RefuseUnsettable(const std::string& name) {
  if (IsLength(name)) RefuseArgument(name + ": says what else there is, and follows from that");
  if (DescribesPixels(name)) RefuseArgument(name + ": describes the pixels that are stored");
  if (HoldsBytes(name) && name != "FBKGC") RefuseArgument(name + ": holds bytes, no text");
}

// ---------------------------------------------------------------- what moves others

// Corners come and go with their form.
void SetCornerForm(DraftPart& part, const FieldChange& change) {
  const std::optional<SurveyedField> form = part.Fields().Find("ICORDS");
  const std::string text = StoredText("ICORDS", FieldForm::Basic, 1, change.value, change.force);
  const std::optional<SurveyedField> corners = part.Fields().Find("IGEOLO");
  const size_t at = part.At(*form) + 1;
  if (corners && text == " ") part.Replace(at, corners->text.size(), "");
  if (!corners && text != " ") part.Replace(at, 0, std::string(kImageCornersLayout.width, ' '));
  part.named.insert("IGEOLO");
  part.Put("ICORDS", text);
}

void SetCommentCount(DraftPart& part, int64_t count) {
  const int64_t now = part.Fields().Number("NICOM");
  if (count < 0 || count > 9) RefuseArgument("NICOM: an image has up to 9 comments");
  if (now < 0) RefuseFile(part.Title() + ": NICOM is no number");
  const size_t first = part.At(*part.Fields().Find("NICOM")) + 1, width = kCommentLayout.width;
  const auto kept = static_cast<size_t>(std::min(now, count)), wanted = static_cast<size_t>(count);
  std::string header = part.Header();
  std::string comments = header.substr(first, kept * width);
  comments.resize(wanted * width, ' ');
  // The count and its comments change at once: between them the header would not parse.
  part.Replace(first - 1, 1 + static_cast<size_t>(now) * width, std::to_string(count) + comments);
  for (int64_t i = 1; i <= 9; ++i) part.named.insert("ICOM" + std::to_string(i));
  part.named.insert("NICOM");
}

// A comment behind the last one is a new one.
bool AddsComment(const DraftPart& part, const std::string& name) {
  return part.kind == PartKind::Image && name.substr(0, 4) == "ICOM" &&
         DigitsOf(name.substr(4)) == part.Fields().Number("NICOM") + 1;
}

// The header's own name of a field of classification.
std::string NameIn(const SurveyedPart& part, const std::string& name) {
  if (part.Has(name)) return name;
  if (name == "CLAS" && part.kind == PartKind::DataExtension) return "DECLAS";
  if (name == "CLAS" && part.kind == PartKind::Reserved) return "RECLAS";
  return part.SecurityPrefix() + name;
}

}  // namespace

std::string StoredText(const std::string& field, FieldForm form, size_t width, const std::string& value,
                       bool force) {
  if (field == "FBKGC") return ColourText(field, value);
  if (form == FieldForm::Number && !(force && DigitsOf(value) < 0))
    return NumberText(field, value, width);
  if (form == FieldForm::Place) return PlaceText(field, value);
  return Padded(field, Encoded(field, form, value), width);
}

void SetField(DraftPart& part, const FieldChange& change) {
  const std::string& name = change.name;
  if (name == "NICOM" && part.kind == PartKind::Image)
    return SetCommentCount(part, DigitsOf(change.value));
  if (AddsComment(part, name)) SetCommentCount(part, part.Fields().Number("NICOM") + 1);
  const std::optional<SurveyedField> found = part.Fields().Find(name);
  if (!found) RefuseArgument(name + ": no such field here; info --json lists those that there are");
  RefuseUnsettable(name);
  const std::string_view form = part.Fields().Text("ICORDS");
  const char icords = form.empty() ? ' ' : form[0];
  const std::string value = name == "IGEOLO" ? CornersText(change.value, icords) : change.value;
  const std::string problem = change.force ? "" : ProblemOf(name, value, icords);
  if (!problem.empty()) RefuseArgument(name + ": " + problem + " (--force takes it all the same)");
  part.named.insert(name);
  if (name == "ICORDS") return SetCornerForm(part, change);
  part.Put(name, StoredText(name, found->form, found->text.size(), value, change.force));
}

void SetEverywhere(Draft& draft, const FieldChange& change) {
  bool any = false;
  const auto set = [&](DraftPart& part) {
    FieldChange own = change;
    own.name = NameIn(part.Fields(), change.name);
    if (!part.Fields().Has(own.name)) return;
    any = true;
    SetField(part, own);
  };
  set(draft.file);
  for (DraftPart& part : draft.segments) set(part);
  if (!any) RefuseArgument(change.name + ": no header has such a field");
}

std::vector<std::string> SettableFields(PartKind kind) {
  std::vector<std::string> names;
  const auto take = [&](Layout rows, const std::string& prefix = "") {
    for (const LayoutRow& row : rows) {
      const std::string name = prefix + row.name;
      if (!IsLength(name) && !DescribesPixels(name)) names.push_back(name);
    }
  };
  const auto security = [&](const char* prefix) { take(kSecurityLayout, prefix); };
  switch (kind) {
    case PartKind::File:
      take(kFileFrontLayout);
      security("FS");
      take(kFileMiddleLayout);
      break;
    case PartKind::Image:
      take(kImageFrontLayout);
      security("IS");
      take(kImageSizeLayout);
      take({&kImageCornersLayout, 1});
      take({&kCommentCountLayout, 1});
      take(kImageBlocksLayout);
      break;
    case PartKind::Graphic:
      take(kGraphicFrontLayout);
      security("SS");
      take(kGraphicBodyLayout);
      break;
    case PartKind::Text:
      take(kTextFrontLayout);
      security("TS");
      take(kTextBodyLayout);
      break;
    default:
      take(kExtensionFrontLayout);
      take(kSecurityLayout.first(1), "DE");
      take(kSecurityLayout.subspan(1), "DES");
  }
  return names;
}

}  // namespace core
