// What a sound file is, rule by rule.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "core/format/codestream.h"
#include "core/format/jpeg_stream.h"
#include "core/format/metafile.h"
#include "core/format/places.h"
#include "core/format/records.h"
#include "core/format/survey.h"
#include "core/format/words.h"

namespace core {

enum class Severity { Note, Warning, Error };
const char* NameOf(Severity severity);

/// What a rule is asked of.
enum class On { File, Image, Graphic, Text, Extension, Header };  // Header: every header

struct Rule;

struct Metafile {
  std::vector<MetafileElement> elements;
  bool whole = false;  ///< no element is longer than the data
};

struct Finding {
  const Rule* rule;
  std::string part;   ///< "file header", "image 0"
  std::string field;  ///< mnemonic, or the rule's where the file has no such field
  uint64_t offset;    ///< in the file
  std::string words;  ///< what was found
};

/// The file under examination, and what was found in it.
class Checking {
 public:
  Checking(const Survey& surveyed, const RecordDefinitions& known)
      : survey(surveyed), definitions(known), places(surveyed) {}

  const Survey& survey;
  const RecordDefinitions& definitions;
  const Places places;
  std::string profile;  ///< "npje", "epje", "tpje" or "level:NN", of which more is asked
  std::vector<Finding> findings;

  /// The tagged records of a part, decoded once.
  const std::vector<TaggedRecord>& Records(const SurveyedPart& part) const;
  /// The JPEG streams of an image, walked once.
  const std::vector<FoundJpeg>& JpegStreams(const SurveyedPart& part) const;
  /// The elements of a graphic's metafile, walked once; none for other graphics.
  const Metafile& MetafileOf(const SurveyedPart& part) const;
  /// What an image's JPEG 2000 codestream says of itself, read once.
  const Codestream& CodestreamOf(const SurveyedPart& part) const;
  /// Asks every rule of every part that it is about; false when `progress`, asked with how much is done,
  /// from 0 to 1, did not want more.
  bool Run(const std::function<bool(double)>& progress = {});
  /// Notes that the rule that is being asked does not hold at a field of a part.
  void Fail(const SurveyedPart& part, const std::string& field, const std::string& words);
  /// The same at the rule's own field, told with its text: `FIELD is "TEXT"`.
  void FailAt(const SurveyedPart& part, const std::string& field);
  /// The same at a byte of the file.
  void FailAtByte(const SurveyedPart& part, uint64_t offset, const std::string& words);
  /// The same at a byte and a field of its own.
  void FailAt(const SurveyedPart& part, const std::string& field, uint64_t offset,
              const std::string& words);
  /// The same at a length of the file header that is a segment's: LISH and its like, or LI with `isData`.
  void FailAtLength(const SurveyedPart& part, bool isData, const std::string& words);
  /// The same at a field that is there with a text that it may not have.
  void FailUnlessAllowed(const SurveyedPart& part, const std::string& field);

 private:
  void Ask(const Rule& rule, const SurveyedPart& part);
  const Rule* asked_ = nullptr;
  mutable std::map<const SurveyedPart*, Metafile> metafiles_;
  mutable std::map<const SurveyedPart*, Codestream> codestreams_;
  mutable std::map<const SurveyedPart*, std::vector<TaggedRecord>> records_;
};

struct Rule {
  const char* id;
  Severity severity;
  On on;
  const char* field;
  const char* standard;  ///< where the public standard says so
  const char* sentence;  ///< what has to hold, for people
  void (*ask)(Checking& checking, const SurveyedPart& part);
};

/// "1 band", "2 bands".
std::string Count(uint64_t number, const std::string& one);

using Rules = std::span<const Rule>;
extern const Rules kFileRules, kLevelRules, kLengthRules, kSecurityRules, kRecordRules, kImageRules,
    kPixelRules, kBlockRules, kPlaceRules, kMaskRules, kJpegRules, kStreamRules, kGraphicRules,
    kTextRules, kExtensionRules, kProfileRules;
/// Every rule, in the order in which they are asked.
std::vector<const Rule*> AllRules();

}  // namespace core
