#include "core/format/allowed.h"

#include <algorithm>

#include "core/format/geography.h"
#include "core/format/numbers.h"
#include "core/format/part.h"
#include "core/format/words.h"

namespace core {
namespace {

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::string ProblemOfTime(std::string_view value) {
  return IsTime(value) ? "" : "not a date and time, CCYYMMDDhhmmss";
}

std::string ProblemOfDay(std::string_view value) {
  return TrimmedText(value).empty() || IsDay(value) ? "" : "not a date, CCYYMMDD";
}

// Fields whose texts are in a list; prefixes of the security fields are left off.
struct Listed {
  std::string_view name;
  std::string_view texts;  // a blank is allowed where the list begins with one
  bool isSecurity;
};
constexpr Listed kLists[] = {{"CLAS", "T|S|C|R|U", true},
                             {"DCTP", "|DD|DE|GD|GE|O|X", true},
                             {"DG", "|S|C|R", true},
                             {"CATP", "|O|D|M", true},
                             {"CRSN", "|A|B|C|D|E|F|G", true},
                             {"PVTYPE", "INT|B|SI|R|C", false},
                             {"PJUST", "L|R", false},
                             {"IMODE", "B|P|R|S", false},
                             {"IC", "NC|NM|C0|C1|C3|C4|C5|C6|C7|C8|I1|M0|M1|M3|M4|M5|M6|M7|M8", false},
                             {"ICAT",
                              "VIS|SL|TI|FL|RD|EO|OP|HR|HS|CP|BP|SAR|SARIQ|IR|MAP|MS|FP|MRI|XRAY|CAT|VD|"
                              "PAT|LEG|DTEM|MATR|LOCG|BARO|CURRENT|DEPTH|WIND",
                              false},
                             {"ICORDS", "|U|G|N|S|D", false},
                             {"TXTFMT", "STA|MTF|UT1|U8S", false},
                             {"SFMT", "C", false},
                             {"SCOLOR", "C|M", false},
                             {"STYPE", "BF01", false},
                             {"ENCRYP", "0", false}};

const Listed* ListOf(std::string_view field) {
  const auto* found = std::find_if(std::begin(kLists), std::end(kLists),
                                   [&](const Listed& list) { return list.name == field; });
  return found != std::end(kLists) ? found : nullptr;
}

// "T S C R U", "S C R or blank".
std::string WordsOf(std::string_view texts) {
  const bool blank = texts[0] == '|';
  std::string words(texts.substr(blank ? 1 : 0));
  std::replace(words.begin(), words.end(), '|', ' ');
  return words + (blank ? " or blank" : "");
}

std::string ProblemOfListed(std::string_view name, std::string_view value) {
  for (const Listed& list : kLists) {
    // FS, IS, SS and TS are the headers' prefixes.
    const bool isIt = list.isSecurity ? name.size() == list.name.size() + 2 && name[1] == 'S' &&
                                            EndsWith(name, list.name)
                                      : name == list.name;
    if (isIt && !IsOneOf(TrimmedText(value), list.texts)) return "not one of " + WordsOf(list.texts);
  }
  return "";
}

std::string ProblemOfLevel(std::string_view value, int least, int most) {
  const int64_t level = NumberOf(value).value_or(-1);
  return level >= least && level <= most
             ? ""
             : "not a number from " + std::to_string(least) + " to " + std::to_string(most);
}

std::string ProblemOfPlace(char icords, std::string_view value) {
  if (CornersOf(icords, value)) return "";
  return std::string("not four corners of ICORDS \"") + icords + '"';
}

}  // namespace

bool IsAllowed(std::string_view field, std::string_view text) {
  const Listed* list = ListOf(field);
  return list == nullptr || IsOneOf(TrimmedText(text), list->texts);
}

bool DescribesPixels(const std::string& name) {
  constexpr std::string_view kNames[] = {"NROWS", "NCOLS", "PVTYPE", "ABPP",  "PJUST", "IC",  "COMRAT",
                                         "IMODE", "NBPR",  "NBPC",   "NPPBH", "NPPBV", "NBPP"};
  return std::find(std::begin(kNames), std::end(kNames), name) != std::end(kNames);
}

std::string ProblemOf(std::string_view name, std::string_view value, char icords) {
  if (name == "FDT" || name == "IDATIM" || name == "TXTDT") return ProblemOfTime(value);
  if (EndsWith(name, "DCDT") || EndsWith(name, "DGDT") || EndsWith(name, "SRDT"))
    return ProblemOfDay(value);
  if (name == "IGEOLO") return ProblemOfPlace(icords, value);
  if (name == "IDLVL" || name == "SDLVL") return ProblemOfLevel(value, 1, 999);
  if (name == "IALVL" || name == "SALVL" || name == "TXTALVL") return ProblemOfLevel(value, 0, 998);
  if (name == "OSTAID" && TrimmedText(value).empty()) return "the station is not blank";
  return ProblemOfListed(name, value);
}

}  // namespace core
