#include "tools/orbntf/inspect/field_rules.h"

#include <algorithm>

#include "tools/orbntf/inspect/geography.h"
#include "tools/orbntf/inspect/values.h"

namespace tool {
namespace {

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::string_view Trimmed(std::string_view text) { return text.substr(0, text.find_last_not_of(' ') + 1); }

bool IsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

// Whether digits "CCYYMMDD" begin a text and name a day that there was.
bool BeginsWithDay(std::string_view text) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (text.size() < 8 || text.substr(0, 8).find_first_not_of("0123456789") != std::string_view::npos)
    return false;
  const auto number = [&](size_t at, size_t count) {
    return static_cast<int>(NumberOf(text.substr(at, count)).value_or(0));
  };
  const int month = number(4, 2), day = number(6, 2);
  if (month < 1 || month > 12 || day < 1) return false;
  return day <= kDays[month - 1] + (month == 2 && IsLeapYear(number(0, 4)));
}

std::string ProblemOfTime(std::string_view value) {
  return IsTime(value) ? "" : "not a date and time, CCYYMMDDhhmmss";
}

std::string ProblemOfDay(std::string_view value) {
  return Trimmed(value).empty() || IsDay(value) ? "" : "not a date, CCYYMMDD";
}

// Fields whose texts are in a list; prefixes of the security fields are left off.
struct Listed {
  std::string_view name;
  const char* values;  // separated by spaces; a blank value is allowed where the list begins with one
  bool isSecurity;
};
constexpr Listed kLists[] = {{"CLAS", "T S C R U", true},
                             {"DCTP", " DD DE GD GE O X", true},
                             {"DG", " S C R", true},
                             {"CATP", " O D M", true},
                             {"CRSN", " A B C D E F G", true},
                             {"ICORDS", " U G N S D", false},
                             {"TXTFMT", "STA MTF UT1 U8S", false},
                             {"SFMT", "C", false},
                             {"SCOLOR", "C M", false},
                             {"STYPE", "BF01", false},
                             {"ENCRYP", "0", false}};

bool IsListed(const Listed& list, std::string_view value) {
  std::string_view left = list.values;
  if (value.empty()) return left[0] == ' ';
  while (!left.empty()) {
    const size_t end = std::min(left.find(' '), left.size());
    if (left.substr(0, end) == value) return true;
    left.remove_prefix(std::min(end + 1, left.size()));
  }
  return false;
}

std::string ProblemOfListed(std::string_view name, std::string_view value) {
  for (const Listed& list : kLists) {
    // FS, IS, SS and TS are the headers' prefixes.
    const bool isIt = list.isSecurity ? name.size() == list.name.size() + 2 && name[1] == 'S' &&
                                            EndsWith(name, list.name)
                                      : name == list.name;
    if (isIt && !IsListed(list, Trimmed(value)))
      return "not one of " + std::string(Trimmed(list.values)) +
             (list.values[0] == ' ' ? " or blank" : "");
  }
  return "";
}

std::string ProblemOfLevel(std::string_view value, int least, int most) {
  const int64_t level = NumberOf(value).value_or(-1);
  return level >= least && level <= most
             ? ""
             : "not a number from " + std::to_string(least) + " to " + std::to_string(most);
}

std::string ProblemOfPlace(const NitfFile& document, const Target& target, std::string_view value) {
  const ImageSubheader* image = document.images.At(target.index);
  if (image == nullptr) return "";
  if (CornersOf(image->ICORDS.text[0], value)) return "";
  return std::string("not four corners of ICORDS \"") + image->ICORDS.text + '"';
}

}  // namespace

bool IsDay(std::string_view text) { return text.size() == 8 && BeginsWithDay(text); }

bool IsTime(std::string_view text) {
  if (text.size() != 14 || IsoDate(text).empty()) return false;
  return text.find('-') != std::string_view::npos ||
         (text.find_first_not_of("0123456789") == std::string_view::npos && BeginsWithDay(text));
}

bool DescribesPixels(const std::string& name) {
  constexpr std::string_view kNames[] = {"NROWS", "NCOLS", "PVTYPE", "ABPP",  "PJUST", "IC",  "COMRAT",
                                         "IMODE", "NBPR",  "NBPC",   "NPPBH", "NPPBV", "NBPP"};
  return std::find(std::begin(kNames), std::end(kNames), name) != std::end(kNames);
}

std::string ProblemOf(const NitfFile& document, const Target& target, const std::string& name,
                      const std::string& value) {
  if (name == "FDT" || name == "IDATIM" || name == "TXTDT") return ProblemOfTime(value);
  if (EndsWith(name, "DCDT") || EndsWith(name, "DGDT") || EndsWith(name, "SRDT"))
    return ProblemOfDay(value);
  if (name == "IGEOLO") return ProblemOfPlace(document, target, value);
  if (name == "IDLVL" || name == "SDLVL") return ProblemOfLevel(value, 1, 999);
  if (name == "IALVL" || name == "SALVL" || name == "TXTALVL") return ProblemOfLevel(value, 0, 998);
  if (name == "OSTAID" && Trimmed(value).empty()) return "the station is not blank";
  return ProblemOfListed(name, value);
}

}  // namespace tool
