// A file as it will be: the parts of one that there is, some of them changed.
#pragma once

#include <functional>
#include <set>

#include "core/edit/pieces.h"
#include "core/format/survey.h"

namespace core {

/// Why something cannot be changed as it was asked for.
class EditError : public std::runtime_error {
 public:
  /// What is at fault: the argument, or the file as it is.
  enum class Of { Argument, File };
  EditError(Of of, const std::string& words) : std::runtime_error(words), of_(of) {}
  Of What() const { return of_; }

 private:
  Of of_;
};
[[noreturn]] inline void RefuseArgument(const std::string& words) {
  throw EditError(EditError::Of::Argument, words);
}
[[noreturn]] inline void RefuseFile(const std::string& words) {
  throw EditError(EditError::Of::File, words);
}

/// A number with zeros in front of it; EditError where it has too many digits for a field.
std::string NumberDigits(uint64_t value, size_t width, const std::string& field);

/// The file header or a segment as it will be.
class DraftPart {
 public:
  /// One of a file that stays as it is and outlives this.
  DraftPart(const Survey& source, const SurveyedPart& part);
  /// A new one.
  DraftPart(PartKind kind, std::string header, Pieces data);

  PartKind kind;
  Pieces data;
  std::set<std::string> named;  ///< fields that were asked to change
  bool otherData = false;       ///< its data was asked to change

  const Survey* Source() const { return source_; }
  /// As it stands in its file; null for a new one.
  const SurveyedPart* Origin() const { return origin_; }
  /// Whether its header has other bytes than in its file.
  bool HasOtherHeader() const { return own_ != nullptr; }
  /// The fields as they are now.
  const SurveyedPart& Fields() const { return *fields_; }
  std::string Header() const;
  uint64_t HeaderLength() const;
  /// As it stands in its file, as far as it is there; 0 for a new one.
  uint64_t StoredHeaderLength() const;
  uint64_t DataLength() const { return LengthOf(data); }
  /// Where a field begins in the header.
  size_t At(const SurveyedField& field) const {
    return static_cast<size_t>(field.offset - Fields().offset);
  }
  /// "image 0" of its file; of a new one "the new image".
  std::string Title() const;

  /// What the file header says of a length: its stored text unless it is another one now.
  std::string LengthText(const LayoutRow& row, uint64_t now, bool isOther) const;
  std::string HeaderLengthText(const LayoutRow& row) const;

  /// Puts other bytes in place of some of the header's.
  void Replace(size_t at, size_t count, std::string_view bytes);
  /// Gives a field a text of its width.
  void Put(const std::string& field, std::string_view text);
  /// The same with a number's digits. Refuses one that has too many.
  void PutNumber(const std::string& field, uint64_t value);

 private:
  /// Whether the file header's length is less than its fields take.
  bool IsShort() const {
    return kind == PartKind::File && origin_ != nullptr && origin_->fieldsEnd > origin_->headerLength;
  }
  // Takes the fields of the header as it is now.
  void Take();
  const Survey* source_ = nullptr;
  const SurveyedPart* origin_ = nullptr;
  std::string header_;
  std::shared_ptr<const SurveyedPart> own_;  // of the header as it is now
  const SurveyedPart* fields_ = nullptr;     // of the two the one that holds
};

/// A file as it will be.
class Draft {
 public:
  /// Begins as a file that stays as it is and outlives this.
  explicit Draft(const Survey& source);
  /// Begins with a file header alone.
  explicit Draft(std::string header);
  Draft(Draft&&) = default;
  /// What is done to a copy leaves this as it is.
  Draft(const Draft&) = default;
  Draft& operator=(Draft&&) = default;

  DraftPart file;                   ///< the file header
  std::vector<DraftPart> segments;  ///< in file order
  Pieces tail;                      ///< bytes behind the last segment
  bool mended = false;              ///< lengths of the file header are not those that are stored

  const Survey* Source() const { return file.Source(); }
  size_t Count(PartKind kind) const;
  /// A segment by its number within its kind; null for none.
  DraftPart* Find(PartKind kind, size_t index);
  /// The number within its kind.
  size_t IndexOf(const DraftPart& part) const;
  /// Adds a segment behind those of its kind.
  DraftPart& Insert(DraftPart part);
  void Erase(PartKind kind, size_t index);
  /// Sets what follows from what is there: counts and lengths of the file header whose values changed.
  void Finish();
  /// Writes all of it, and gives the hash of each segment's data.
  void Write(PieceWriter& writer, std::vector<ContentHash>& hashes);

  /// Keeps what pieces lie in as long as this.
  template <class Owned>
  Owned& Keep(std::shared_ptr<Owned> owned) {
    kept_.push_back(owned);
    return *owned;
  }
  uint64_t Size() const;

 private:
  void TakeSegments();
  void RefuseShort() const;
  std::string Lists() const;
  void AddTo(const char* field, int64_t more);
  std::string AsStored(uint64_t offset, uint64_t length) const;
  void PatchReplacement();
  std::vector<std::shared_ptr<void>> kept_;
};

}  // namespace core
