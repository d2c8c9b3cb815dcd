// What samples are, and how bands and lookup tables make colours of them.
#include <algorithm>

#include "core/check/rule.h"

namespace core {
namespace {

void AskType(Checking& checking, const SurveyedPart& part) { checking.FailUnlessAllowed(part, "PVTYPE"); }

void AskDepth(Checking& checking, const SurveyedPart& part) {
  struct Depths {
    std::string_view type, depths;
  };
  if (IsOneOf(part.Text("IC"), "C8|M8")) {
    constexpr int64_t kMost = 38;
    if (part.Number("NBPP") < 1 || part.Number("NBPP") > kMost) checking.FailAt(part, "NBPP");
    return;
  }
  constexpr Depths kDepths[] = {
      {"B", "01"}, {"INT", "08|12|16|32|64"}, {"SI", "08|12|16|32|64"}, {"R", "32|64"}, {"C", "64"}};
  for (const Depths& allowed : kDepths) {
    if (part.Trimmed("PVTYPE") != allowed.type || !part.Has("NBPP")) continue;
    if (!IsOneOf(part.Text("NBPP"), allowed.depths))
      checking.Fail(part, "NBPP",
                    "NBPP is " + Quoted(part.Text("NBPP")) + " where PVTYPE is " + Quoted(allowed.type));
  }
}

void AskSignificant(Checking& checking, const SurveyedPart& part) {
  const int64_t stored = part.Number("NBPP"), significant = part.Number("ABPP");
  if (!part.Has("NBPP")) return;
  if (significant < 0)
    return checking.Fail(part, "ABPP", "ABPP is " + Quoted(part.Text("ABPP")) + ", it wants two digits");
  if (significant < 1 || (stored > 0 && significant > stored))
    checking.Fail(part, "ABPP",
                  "ABPP is " + Quoted(part.Text("ABPP")) + " where NBPP is " + Quoted(part.Text("NBPP")));
}

void AskJustification(Checking& checking, const SurveyedPart& part) {
  checking.FailUnlessAllowed(part, "PJUST");
}

// Representations, and what goes with each.
struct Representation {
  std::string_view name;
  int64_t least, most;         // bands
  std::string_view bandCodes;  // that a band may have
  std::string_view wanted;     // that have to be there, empty for none
};
constexpr Representation kRepresentations[] = {
    {"MONO", 1, 1, "|M|LU", ""},
    {"RGB", 3, 3, "R|G|B", "R|G|B"},
    {"RGB/LUT", 1, 1, "LU", "LU"},
    {"YCbCr601", 3, 3, "Y|Cb|Cr", "Y|Cb|Cr"},
    {"MULTI", 2, 99999, "|M|R|G|B|LU", ""},
    {"NVECTOR", 1, 99999, "", ""},
    {"POLAR", 2, 2, "", ""},
    {"VPH", 2, 2, "", ""},
    {"NODISPLY", 1, 99999, "", ""},
};

const Representation* RepresentationOf(const SurveyedPart& part) {
  const auto* found =
      std::find_if(std::begin(kRepresentations), std::end(kRepresentations),
                   [&](const Representation& known) { return known.name == part.Trimmed("IREP"); });
  return found != std::end(kRepresentations) ? found : nullptr;
}

void AskRepresentation(Checking& checking, const SurveyedPart& part) {
  if (part.Has("IREP") && RepresentationOf(part) == nullptr) checking.FailAt(part, "IREP");
}

void AskBands(Checking& checking, const SurveyedPart& part) {
  const Representation* known = RepresentationOf(part);
  const int64_t bands = part.Bands();
  if (known == nullptr || bands == 0 || (bands >= known->least && bands <= known->most)) return;
  checking.Fail(part, "NBANDS",
                std::string(known->name) + " with " + Count(static_cast<uint64_t>(bands), "band"));
}

void AskBandCount(Checking& checking, const SurveyedPart& part) {
  if (!part.Has("NBANDS")) return;
  const int64_t few = part.Number("NBANDS"), many = part.Number("XBANDS");
  if (few < 0) return checking.FailAt(part, "NBANDS");
  if (part.Has("XBANDS") && many < 10)
    checking.Fail(part, "XBANDS",
                  "XBANDS is " + Quoted(part.Text("XBANDS")) + ": NBANDS tells fewer than 10");
}

void AskBandCodes(Checking& checking, const SurveyedPart& part) {
  const Representation* known = RepresentationOf(part);
  const int64_t bands = part.Bands();
  if (known == nullptr || !part.complete || bands < known->least || bands > known->most) return;
  std::string seen;
  for (int64_t band = 1; band <= bands; ++band) {
    const std::string name = "IREPBAND" + std::to_string(band);
    const std::string code(part.Trimmed(name));
    if (!IsOneOf(code, known->bandCodes))
      return checking.Fail(part, name, name + " is " + Quoted(code) + " in " + std::string(known->name));
    if (!known->wanted.empty() && IsOneOf(code, seen.empty() ? "-" : seen))
      return checking.Fail(part, name, name + " is " + Quoted(code) + " a second time");
    seen += (seen.empty() ? "" : "|") + code;
  }
}

bool HasTables(const SurveyedPart& part) {
  for (int64_t band = 1; band <= part.Bands(); ++band) {
    if (part.Number("NLUTS" + std::to_string(band)) > 0) return true;
  }
  return false;
}

void AskTables(Checking& checking, const SurveyedPart& part) {
  for (int64_t band = 1; band <= part.Bands(); ++band) {
    const std::string name = "NLUTS" + std::to_string(band);
    if (part.Has(name) && (part.Number(name) < 0 || part.Number(name) > 4)) checking.FailAt(part, name);
  }
}

void AskEntries(Checking& checking, const SurveyedPart& part) {
  for (int64_t band = 1; band <= part.Bands(); ++band) {
    const std::string name = "NELUT" + std::to_string(band);
    if (part.Has(name) && (part.Number(name) < 1 || part.Number(name) > 65536))
      checking.FailAt(part, name);
  }
}

void AskMissingTable(Checking& checking, const SurveyedPart& part) {
  for (int64_t band = 1; band <= part.Bands() && part.complete; ++band) {
    const std::string number = std::to_string(band);
    if (part.Trimmed("IREPBAND" + number) == "LU" && part.Number("NLUTS" + number) == 0)
      return checking.Fail(
          part, "IREPBAND" + number,
          std::string("IREPBAND").append(number).append(" is LU, and NLUTS").append(number).append(" 0"));
  }
}

void AskFilter(Checking& checking, const SurveyedPart& part) {
  for (int64_t band = 1; band <= part.Bands() && part.complete; ++band) {
    const std::string name = "IFC" + std::to_string(band);
    if (part.Text(name) != "N") return checking.FailAt(part, name);
  }
}

void AskValues(Checking& checking, const SurveyedPart& part) {
  const int64_t bits = part.Number("ABPP"), entries = part.Number("NELUT1");
  if (part.Trimmed("IREP") != "RGB/LUT" || bits < 1 || bits > 16 || entries < 1) return;
  if (entries < int64_t{1} << bits)
    checking.Fail(part, "NELUT1",
                  std::to_string(entries) + (entries == 1 ? " entry" : " entries") + " for samples of " +
                      std::to_string(bits) + " bits");
}

void AskTableType(Checking& checking, const SurveyedPart& part) {
  if (HasTables(part) && !IsOneOf(part.Trimmed("PVTYPE"), "INT|B"))
    checking.Fail(part, "PVTYPE", "lookup tables where PVTYPE is " + Quoted(part.Trimmed("PVTYPE")));
}

void AskTableCompression(Checking& checking, const SurveyedPart& part) {
  const Codestream& stream = checking.CodestreamOf(part);
  const bool keepsAll = stream.isReversible && stream.layers == 1;
  if (HasTables(part) && !keepsAll && !IsOneOf(part.Text("IC"), "NC|NM|C1|M1|C4|M4|C5|M5"))
    checking.Fail(part, "IC", "lookup tables where IC is " + Quoted(part.Text("IC")));
}

void AskPalette(Checking& checking, const SurveyedPart& part) {
  if (part.Trimmed("IREP") == "RGB/LUT" && part.Has("NLUTS1") && part.Number("NLUTS1") != 3)
    checking.Fail(
        part, "NLUTS1",
        "RGB/LUT with " +
            Count(static_cast<uint64_t>(std::max<int64_t>(0, part.Number("NLUTS1"))), "lookup table"));
}

constexpr const char kTableA3[] = "MIL-STD-2500C, table A-3";
constexpr Rule kRules[] = {
    {"pixel.type", Severity::Error, On::Image, "PVTYPE", kTableA3, "Samples are INT, B, SI, R or C.",
     AskType},
    {"pixel.depth", Severity::Error, On::Image, "NBPP", kTableA3,
     "The depth goes with the type: 1 for B, 8, 12, 16, 32, 64 for INT and SI, 32 or 64 for R, 64 for C; "
     "1 "
     "to 38 of JPEG 2000.",
     AskDepth},
    {"pixel.significant", Severity::Error, On::Image, "ABPP", kTableA3,
     "There are at most as many significant bits as stored ones.", AskSignificant},
    {"pixel.justification", Severity::Error, On::Image, "PJUST", kTableA3,
     "Significant bits stand right or left.", AskJustification},
    {"pixel.representation", Severity::Error, On::Image, "IREP", kTableA3,
     "The representation is a known one.", AskRepresentation},
    {"pixel.bands", Severity::Error, On::Image, "NBANDS", kTableA3,
     "There are as many bands as the representation wants.", AskBands},
    {"pixel.bands.count", Severity::Error, On::Image, "XBANDS", kTableA3,
     "NBANDS tells up to 9 bands, XBANDS more.", AskBandCount},
    {"pixel.bands.codes", Severity::Error, On::Image, "IREPBAND", kTableA3,
     "Bands show what goes with the representation.", AskBandCodes},
    {"table.count", Severity::Error, On::Image, "NLUTS", kTableA3,
     "A band has at most four lookup tables.", AskTables},
    {"table.palette", Severity::Error, On::Image, "NLUTS", kTableA3,
     "RGB/LUT has three lookup tables: red, green and blue.", AskPalette},
    {"table.entries", Severity::Error, On::Image, "NELUT", kTableA3,
     "Lookup tables have 1 to 65536 entries.", AskEntries},
    {"table.missing", Severity::Error, On::Image, "IREPBAND", kTableA3,
     "A band that shows a lookup table has one.", AskMissingTable},
    {"band.filter", Severity::Error, On::Image, "IFC", kTableA3, "The filter condition is N: none.",
     AskFilter},
    {"table.values", Severity::Warning, On::Image, "NELUT", kTableA3,
     "The lookup tables of RGB/LUT have an entry for every value that a sample can have.", AskValues},
    {"table.type", Severity::Error, On::Image, "NLUTS", kTableA3,
     "Lookup tables go with samples INT and B.", AskTableType},
    {"table.compression", Severity::Warning, On::Image, "IC", kTableA3,
     "Lookup tables go with compressions that keep every value.", AskTableCompression},
};

}  // namespace

const Rules kPixelRules = kRules;

}  // namespace core
