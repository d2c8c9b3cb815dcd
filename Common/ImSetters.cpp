// Setters of the image subheader whose effect goes beyond their field.
#include "Common/ImCodes.h"
#include "Common/ImSubHdr.h"
#include "Common/NtfHdr.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImSubHdr";

constexpr BandFields kFreshBand = {{}, {}, {"N"}, {"   "}, {}, {}};

}  // namespace

Status ImageSubheader::ChangeLength(const char* field, bool longer) {
  if (owner == nullptr || index >= owner->images.Count()) return Status::Success;
  const uint32_t bytes = FindRow<ImageSubheader>(Table(), field)->width;
  uint32_t& subheader = owner->images.current[index].subheader;
  const uint64_t length = owner->fileLength;
  const uint64_t changed = longer ? length + bytes : length - std::min<uint64_t>(length, bytes);
  if (Status s = owner->SetFileLength(changed); !Ok(s)) return s;
  subheader = longer ? subheader + bytes : subheader - std::min(subheader, bytes);
  return Status::Success;
}

Status ImageSubheader::SetCoordinates(const char* text) {
  if (text == nullptr || std::strlen(text) > 1) return Status::InvalidParameter;
  const bool before = HasCoordinates(), after = text[0] != ' ' && text[0] != 0;
  if (before != after) {
    if (Status s = ChangeLength("IGEOLO", after); !Ok(s)) return s;
  }
  return CopyTextField(ICORDS.text, 1, text);
}

Status ImageSubheader::SetCompression(const char* text) {
  const CodeRow* code = text != nullptr ? kCompressions.Find(text) : nullptr;
  if (code == nullptr) return Status::InvalidParameter;
  const auto next = static_cast<Compression>(code->code);
  const bool after = next != Compression::NC && next != Compression::NM;
  if (after != IsCompressed()) {
    if (Status s = ChangeLength("COMRAT", after); !Ok(s)) return s;
  }
  IC.code = code->code;
  return CopyTextField(IC.text, sizeof IC.text - 1, text);
}

Status ImageSubheader::SetCompressionRate(const char* text) {
  if (Status s = CopyTextField(COMRAT.text, sizeof COMRAT.text - 1, text); !Ok(s)) return s;
  const CodeRow* row = kBiLevelOptions.Find(COMRAT.text);
  biLevelOption = row != nullptr ? row->code : static_cast<uint32_t>(BiLevelOption::None);
  return Status::Success;
}

// An unchanged count keeps the bands, so that a record given back as it was taken changes nothing.
Status ImageSubheader::MakeBands(uint32_t count) {
  if (count != bands.size()) {
    TrackedArray<BandFields> fresh;
    if (Status s = fresh.Make(count, ORB_HERE); !Ok(s)) return s;
    for (BandFields& band : fresh) band = kFreshBand;
    bands.Swap(fresh);
  }
  bandCount = count;
  return Status::Success;
}

Status ImageSubheader::SetBandCount(int32_t count) {
  Number<1> next;
  if (Status s = FormatNumberField(next.text, 1, count); !Ok(s)) return s;
  next.value = static_cast<uint32_t>(count);
  if (Status s = MakeBands(std::max(next.value, LengthOf(XBANDS.text))); !Ok(s)) return s;
  NBANDS = next;
  return Status::Success;
}

Status ImageSubheader::SetExtendedBandCount(int32_t count) {
  Number<5> next;
  if (Status s = FormatNumberField(next.text, 5, count); !Ok(s)) return s;
  if (Status s = MakeBands(std::max(NBANDS.value, LengthOf(next.text))); !Ok(s)) return s;
  next.value = LengthOf(next.text);
  XBANDS = next;
  return Status::Success;
}

Status ImageSubheader::SetBandCode(uint32_t band, const char* text) {
  const CodeRow* code = text != nullptr ? kBandCodes.Find(text) : nullptr;
  if (band >= bands.size() || code == nullptr) return Status::InvalidParameter;
  bands[band].IREPBAND.code = code->code;
  return CopyTextField(bands[band].IREPBAND.text, 2, code->written);
}

Status ImageSubheader::SetCommentCount(int32_t count) {
  if (count > 0 && static_cast<uint32_t>(count) > comments.size()) return Status::InvalidParameter;
  return FormatNumberField(NICOM.text, 1, count);
}

Status ImageSubheader::SetComment(uint32_t comment, const char* text) {
  if (comment >= LengthOf(NICOM.text) || comment >= comments.size()) return Status::InvalidParameter;
  return CopyTextField(comments[comment].text, sizeof comments[comment].text - 1, text);
}

Status ImageSubheader::SetMagnification(const char* text) {
  if (Status s = CopyTextField(IMAG.text, sizeof IMAG.text - 1, text); !Ok(s)) return s;
  TakeMagnification();
  return Status::Success;
}

Status ImageSubheader::SetPadCode(const void* bytes) {
  if (bytes == nullptr) return Status::NoData;
  TrackedArray<uint8_t> fresh;
  if (Status s = fresh.Make(mask.PadCodeBytes(), ORB_HERE); !Ok(s)) return s;
  KernelCopyMemory(fresh.data(), bytes, fresh.size());
  mask.TPXCD.Swap(fresh);
  return Status::Success;
}
