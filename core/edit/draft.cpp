#include "core/edit/draft.h"

#include <algorithm>

#include "core/format/survey_fields.h"

namespace core {
namespace {

constexpr PartKind kKinds[] = {PartKind::Image, PartKind::Graphic, PartKind::Text,
                               PartKind::DataExtension, PartKind::Reserved};

std::shared_ptr<const SurveyedPart> Parse(PartKind kind, const std::string& header) {
  if (kind == PartKind::File) return std::make_shared<SurveyedPart>(SurveyFileHeader(header));
  auto part = std::make_shared<SurveyedPart>();
  part->kind = kind;
  part->headerLength = header.size();
  KeptData none = {0, 0};
  SurveySegment(FileBytes(std::string_view(header)), *part, none);
  return part;
}

// What a file has of a run of its bytes.
Pieces PiecesOf(const Survey& source, uint64_t offset, uint64_t length) {
  const uint64_t size = source.file.Size();
  if (offset >= size || length == 0) return {};
  return {{&source.file, offset, std::min(length, size - offset)}};
}

}  // namespace

std::string NumberDigits(uint64_t value, size_t width, const std::string& field) {
  std::string digits = std::to_string(value);
  if (digits.size() > width)
    RefuseArgument(field + " would be " + digits + ", and has " + std::to_string(width) + " digits");
  return digits.insert(0, width - digits.size(), '0');
}

DraftPart::DraftPart(const Survey& source, const SurveyedPart& part)
    : kind(part.kind), source_(&source), origin_(&part), fields_(&part) {
  if (kind != PartKind::File) data = PiecesOf(source, part.dataOffset, part.dataLength);
}

DraftPart::DraftPart(PartKind newKind, std::string header, Pieces newData)
    : kind(newKind), data(std::move(newData)), header_(std::move(header)) {
  Take();
}

void DraftPart::Take() {
  own_ = Parse(kind, header_);
  fields_ = own_.get();
}

std::string DraftPart::Header() const {
  if (HasOtherHeader() || source_ == nullptr) return header_;
  // Where the header's length is too small, what it says of itself is its extent.
  return source_->file.At(origin_->offset, IsShort() ? origin_->fieldsEnd : origin_->headerLength);
}

uint64_t DraftPart::HeaderLength() const {
  return HasOtherHeader() ? header_.size() : StoredHeaderLength();
}

uint64_t DraftPart::StoredHeaderLength() const {
  if (origin_ == nullptr) return 0;
  const uint64_t size = source_->file.Size(), left = size - std::min(size, origin_->offset);
  return std::min(left, IsShort() ? origin_->fieldsEnd : origin_->headerLength);
}

std::string DraftPart::LengthText(const LayoutRow& row, uint64_t now, bool isOther) const {
  if (origin_ == nullptr || isOther) return NumberDigits(now, row.width, row.name + (" of " + Title()));
  return std::string(source_->Header().Text(row.name + std::to_string(origin_->index + 1)));
}

// A length that was wrong stays so by as much.
std::string DraftPart::HeaderLengthText(const LayoutRow& row) const {
  const uint64_t stored = StoredHeaderLength();
  const uint64_t missing = origin_ != nullptr ? origin_->headerLength - stored : 0;
  return LengthText(row, HeaderLength() + missing, HeaderLength() != stored);
}

std::string DraftPart::Title() const {
  return origin_ != nullptr ? origin_->Title() : "the new " + std::string(NameOf(kind));
}

void DraftPart::Replace(size_t at, size_t count, std::string_view bytes) {
  if (own_ == nullptr) header_ = Header();
  if (bytes.size() != count && !Fields().complete)
    RefuseFile(Title() + ": its header does not hold all its fields, so that nothing in it can move");
  if (bytes.size() != count && kind == PartKind::File && IsShort())
    RefuseFile("HL is less than the fields of the file header take; --mend sets it");
  header_.replace(at, count, bytes);
  Take();
}

void DraftPart::Put(const std::string& field, std::string_view text) {
  const std::optional<SurveyedField> found = Fields().Find(field);
  if (!found) RefuseFile(Title() + " has no field " + field);
  if (found->text == text) return;
  Replace(At(*found), found->text.size(), text);
}

void DraftPart::PutNumber(const std::string& field, uint64_t value) {
  const std::optional<SurveyedField> found = Fields().Find(field);
  if (!found) RefuseFile(Title() + " has no field " + field);
  Put(field, NumberDigits(value, found->text.size(), field));
}

Draft::Draft(const Survey& source) : file(source, source.Header()) { TakeSegments(); }

Draft::Draft(std::string header) : file(PartKind::File, std::move(header), {}) {}

void Draft::TakeSegments() {
  const Survey& source = *Source();
  const SurveyedPart& header = source.Header();
  const uint64_t size = source.file.Size();
  // Where the header's length is too small or not there, it says nothing of where segments are.
  if (!header.complete || header.headerLength < header.fieldsEnd) {
    tail = PiecesOf(source, file.HeaderLength(), size);
    return;
  }
  for (size_t i = 1; i < source.parts.size(); ++i) segments.emplace_back(source, source.parts[i]);
  tail = PiecesOf(source, source.segmentsEnd, size);
}

size_t Draft::Count(PartKind kind) const {
  return static_cast<size_t>(std::count_if(segments.begin(), segments.end(),
                                           [&](const DraftPart& part) { return part.kind == kind; }));
}

DraftPart* Draft::Find(PartKind kind, size_t index) {
  if (kind == PartKind::File) return &file;
  for (DraftPart& part : segments) {
    if (part.kind == kind && index-- == 0) return &part;
  }
  return nullptr;
}

size_t Draft::IndexOf(const DraftPart& part) const {
  size_t index = 0;
  for (const DraftPart& other : segments) {
    if (&other == &part) break;
    index += other.kind == part.kind ? 1 : 0;
  }
  return index;
}

DraftPart& Draft::Insert(DraftPart part) {
  if (Source() != nullptr && !Source()->Header().complete)
    RefuseFile("the file header does not hold all its fields: nothing can be added");
  constexpr size_t kMost = 999;
  if (Count(part.kind) == kMost)
    RefuseArgument(std::string("a file has at most 999 segments of a kind: ") + NameOf(part.kind));
  const auto behind = std::find_if(segments.begin(), segments.end(), [&](const DraftPart& other) {
    return static_cast<int>(other.kind) > static_cast<int>(part.kind);
  });
  return *segments.insert(behind, std::move(part));
}

void Draft::Erase(PartKind kind, size_t index) {
  const DraftPart* part = Find(kind, index);
  if (part != nullptr && kind != PartKind::File)
    segments.erase(segments.begin() + (part - segments.data()));
}

// ---------------------------------------------------------------- what follows from what is there

// The lists of lengths, from the first count to behind the last length. What did not change stays as it
// stands, whatever it says.
std::string Draft::Lists() const {
  const SurveyedPart& fields = file.Fields();
  std::string lists;
  for (size_t kind = 0; kind < kListLayouts.size(); ++kind) {
    const ListLayout& list = kListLayouts[kind];
    if (kKinds[kind] == PartKind::Text) lists += fields.Text(kReservedCountLayout.name);
    const size_t count = Count(kKinds[kind]);
    const bool isSame =
        std::max<int64_t>(0, fields.Number(list.count.name)) == static_cast<int64_t>(count);
    lists += isSame ? std::string(fields.Text(list.count.name))
                    : NumberDigits(count, list.count.width, list.count.name);
    for (const DraftPart& part : segments) {
      if (part.kind != kKinds[kind]) continue;
      lists += part.HeaderLengthText(list.subheader);
      lists += part.LengthText(list.data, part.DataLength(), part.otherData);
    }
  }
  return lists;
}

// What has less than its lengths say ends the file: behind it nothing would be found.
void Draft::RefuseShort() const {
  for (size_t i = 0; i < segments.size(); ++i) {
    const SurveyedPart* origin = segments[i].Origin();
    if (origin == nullptr || i + 1 == segments.size()) continue;
    const bool isShort = segments[i].StoredHeaderLength() < origin->headerLength ||
                         (!segments[i].otherData && segments[i].DataLength() < origin->dataLength);
    if (isShort && (segments[i + 1].Source() != Source() || segments[i + 1].HeaderLength() != 0))
      RefuseFile(origin->Title() +
                 " ends behind the file, so that nothing can follow it; --mend sets its length");
  }
}

void Draft::Finish() {
  const SurveyedPart before = file.Fields();
  if (!before.complete) return;
  RefuseShort();
  const uint64_t headerBytes = Source() != nullptr ? file.StoredHeaderLength() : 0;
  if (const auto first = before.Find(kListLayouts[0].count.name),
      last = before.Find(kFileUserArea.length.name);
      first && last &&
      (Source() == nullptr || Source()->Header().headerLength >= Source()->Header().fieldsEnd)) {
    const size_t at = file.At(*first), end = file.At(*last);
    const std::string lists = Lists();
    if (file.Header().compare(at, end - at, lists) != 0) file.Replace(at, end - at, lists);
  }
  if (Source() == nullptr) {
    file.PutNumber("HL", file.HeaderLength());
    return file.PutNumber("FL", Size());
  }
  AddTo("HL", static_cast<int64_t>(file.HeaderLength()) - static_cast<int64_t>(headerBytes));
  AddTo("FL", static_cast<int64_t>(Size()) - static_cast<int64_t>(Source()->file.Size()));
  if (Size() == Source()->file.Size() || mended) return;
  if (Source()->streamed)
    RefuseFile(
        "the file was streamed: its lengths stand at its end, where they would not be found; --mend "
        "puts them into its header");
  if (Source()->waits)
    RefuseFile("the lengths of its header are not known: they are all nines; --mend sets them");
}

// A length that is wrong stays so by as much: it is not what was asked to change.
void Draft::AddTo(const char* field, int64_t more) {
  const int64_t length = file.Fields().Number(field);
  if (more == 0 || length < 0 || IsPlaceholder(file.Fields().Text(field)) || length + more < 0) return;
  file.PutNumber(field, static_cast<uint64_t>(length + more));
}

uint64_t Draft::Size() const {
  uint64_t size = file.HeaderLength() + LengthOf(tail);
  for (const DraftPart& part : segments) size += part.HeaderLength() + part.DataLength();
  return size;
}

// ---------------------------------------------------------------- writing

// The stored bytes in place of those that are read for them, but for what changed.
std::string Draft::AsStored(uint64_t offset, uint64_t length) const {
  std::string stored(static_cast<size_t>(length), '\0');
  (void)Source()->file.ReadStored(offset, stored.data(), stored.size());
  const std::string now = file.Header(), before = DraftPart(*Source(), Source()->Header()).Header();
  for (size_t i = 0; i < std::min({stored.size(), now.size(), before.size()}); ++i) {
    if (now[i] != before[i]) stored[i] = now[i];
  }
  return stored;
}

// What replaces the header of a streamed file tells of the changes, too.
void Draft::PatchReplacement() {
  const uint64_t at = Source()->replacementAt, bytes = Source()->replacementBytes;
  const auto patch = [&](Pieces& pieces) {
    for (size_t i = 0; i < pieces.size(); ++i) {
      const Piece piece = pieces[i];
      if (piece.file != &Source()->file || piece.offset > at || piece.offset + piece.length < at + bytes)
        continue;
      const Piece parts[] = {{piece.file, piece.offset, at - piece.offset},
                             PieceOf(AsStored(at, bytes)),
                             {piece.file, at + bytes, piece.offset + piece.length - at - bytes}};
      pieces.erase(pieces.begin() + static_cast<ptrdiff_t>(i));
      pieces.insert(pieces.begin() + static_cast<ptrdiff_t>(i), std::begin(parts), std::end(parts));
      return;
    }
  };
  for (DraftPart& part : segments) patch(part.data);
  patch(tail);
}

void Draft::Write(PieceWriter& writer, std::vector<ContentHash>& hashes) {
  const bool isStored = Source() != nullptr && Source()->streamed && !mended;
  if (isStored) PatchReplacement();
  writer.Write(isStored ? AsStored(0, file.HeaderLength()) : file.Header());
  for (const DraftPart& part : segments) {
    writer.Write(part.Header());
    hashes.push_back(writer.Write(part.data));
  }
  (void)writer.Write(tail);
  writer.Finish();
}

}  // namespace core
