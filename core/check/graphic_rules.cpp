// Graphic segments and their metafiles.
#include "core/check/rule.h"

namespace core {
namespace {

void AskForm(Checking& checking, const SurveyedPart& part) { checking.FailUnlessAllowed(part, "SFMT"); }

void AskColour(Checking& checking, const SurveyedPart& part) {
  checking.FailUnlessAllowed(part, "SCOLOR");
}

void AskBounds(Checking& checking, const SurveyedPart& part) {
  const PlacedSegment* place = part.complete ? checking.places.Of(part) : nullptr;
  if (place == nullptr || !place->readable ||
      (place->top <= place->bottom && place->left <= place->right))
    return;
  checking.Fail(part, "SBND1",
                "SBND1 " + Quoted(part.Text("SBND1")) + " is not above and left of SBND2 " +
                    Quoted(part.Text("SBND2")));
}

void AskReserved(Checking& checking, const SurveyedPart& part) {
  for (const char* name : {"SSTRUCT", "SRES"}) {
    if (part.Has(name) && part.Text(name).find_first_not_of('0') != std::string_view::npos)
      checking.FailAt(part, name);
  }
}

bool IsMetafile(const SurveyedPart& part) { return part.complete && part.Text("SFMT") == "C"; }

bool Is(const MetafileElement& element, uint32_t elementClass, uint32_t id) {
  return element.elementClass == elementClass && element.id == id;
}

void AskBegin(Checking& checking, const SurveyedPart& part) {
  const std::vector<MetafileElement>& elements = checking.MetafileOf(part).elements;
  if (IsMetafile(part) && (elements.empty() || !Is(elements.front(), 0, 1)))
    checking.FailAtByte(part, part.dataOffset, "the data does not begin with BEGIN METAFILE");
}

void AskEnd(Checking& checking, const SurveyedPart& part) {
  const auto& [elements, whole] = checking.MetafileOf(part);
  if (elements.empty() || !Is(elements.front(), 0, 1) || Is(elements.back(), 0, 2)) return;
  checking.FailAtByte(part, part.dataOffset + elements.back().offset,
                      whole ? "the metafile has no END METAFILE" : "an element is longer than the data");
}

void AskPicture(Checking& checking, const SurveyedPart& part) {
  bool open = false, body = false;
  size_t pictures = 0;
  for (const MetafileElement& element : checking.MetafileOf(part).elements) {
    if (element.elementClass != 0 && element.elementClass != 4) continue;
    const bool begins = Is(element, 0, 3), bodyBegins = Is(element, 0, 4), ends = Is(element, 0, 5);
    const bool inOrder = begins ? !open : bodyBegins ? open && !body : ends ? open && body : true;
    if (!inOrder || (element.elementClass == 4 && !body))
      return checking.FailAtByte(part, part.dataOffset + element.offset,
                                 "element " + std::to_string(element.elementClass) + "/" +
                                     std::to_string(element.id) + " stands outside its picture");
    open = begins || (open && !ends);
    body = bodyBegins || (body && !ends);
    pictures += begins;
  }
  if (pictures > 1)
    checking.FailAtByte(part, part.dataOffset, "the metafile has " + Count(pictures, "picture"));
}

void AskVersion(Checking& checking, const SurveyedPart& part) {
  for (const MetafileElement& element : checking.MetafileOf(part).elements) {
    if (!Is(element, 1, 1) || element.word < 0) continue;
    if (element.word != 1)
      return checking.FailAtByte(part, part.dataOffset + element.offset,
                                 "the metafile is of version " + std::to_string(element.word));
  }
}

// The elements of the profile, by class: bit n for id n.
constexpr uint64_t Ids(std::initializer_list<int> ids) {
  uint64_t bits = 0;
  for (const int id : ids) bits |= uint64_t{1} << id;
  return bits;
}
constexpr uint64_t kProfile[] = {
    Ids({0, 1, 2, 3, 4, 5}),
    Ids({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}),
    Ids({1, 2, 3, 4, 5, 6, 7}),
    Ids({1, 2, 3, 4, 5, 6}),
    Ids({1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19}),
    Ids({2,  3,  4,  6,  7,  8,  10, 11, 12, 13, 14, 15, 16, 17,
         18, 22, 23, 24, 25, 27, 28, 29, 30, 31, 32, 33, 34}),
    0,  // escapes
    0,  // external elements
};

void AskProfile(Checking& checking, const SurveyedPart& part) {
  for (const MetafileElement& element : checking.MetafileOf(part).elements) {
    const bool known = element.elementClass < std::size(kProfile) && element.id < 64 &&
                       (kProfile[element.elementClass] >> element.id & 1) != 0;
    if (!known)
      return checking.FailAtByte(part, part.dataOffset + element.offset,
                                 "element " + std::to_string(element.elementClass) + "/" +
                                     std::to_string(element.id) + " is none of the profile");
  }
}

constexpr const char kTableA5[] = "MIL-STD-2500C, table A-5";
constexpr const char kProfileText[] = "MIL-STD-2301A; ISO/IEC 8632-3";
constexpr Rule kRules[] = {
    {"graphic.form", Severity::Error, On::Graphic, "SFMT", kTableA5, "A graphic is CGM: SFMT is C.",
     AskForm},
    {"graphic.colour", Severity::Error, On::Graphic, "SCOLOR", kTableA5,
     "A graphic is in colour or monochrome: C or M.", AskColour},
    {"graphic.bounds", Severity::Error, On::Graphic, "SBND1", kTableA5,
     "The first bound lies above and left of the second.", AskBounds},
    {"graphic.reserved", Severity::Error, On::Graphic, "SSTRUCT", kTableA5,
     "SSTRUCT and SRES are reserved: zeros.", AskReserved},
    {"cgm.begin", Severity::Error, On::Graphic, "SFMT", kProfileText, "A metafile begins with its mark.",
     AskBegin},
    {"cgm.end", Severity::Error, On::Graphic, "SFMT", kProfileText, "A metafile ends with its mark.",
     AskEnd},
    {"cgm.picture", Severity::Error, On::Graphic, "SFMT", kProfileText,
     "A metafile has one picture, and what is drawn stands in its body.", AskPicture},
    {"cgm.version", Severity::Warning, On::Graphic, "SFMT", kProfileText, "Metafiles are of version 1.",
     AskVersion},
    {"cgm.profile", Severity::Warning, On::Graphic, "SFMT", kProfileText,
     "Metafiles hold elements of the profile.", AskProfile},
};

}  // namespace

const Rules kGraphicRules = kRules;

}  // namespace core
