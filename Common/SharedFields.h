// Parts that several header records have alike: the security fields and the extended data.
#pragma once

#include "Common/FieldRows.h"

/// The sixteen security fields (MIL-STD-2500C, tables A-1, A-3, A-5, A-6, A-8(A)). Arrays hold what
/// setters accept; the file's fields are narrower where the table below says so.
struct Security {
  Text<1> CLAS;
  Text<2> CLSY;
  Text<40> CODE;
  Text<40> CTLH;
  Text<40> REL;
  Text<2> DCTP;
  Text<8> DCDT;
  Text<4> DCXM;
  Text<1> DG;
  Text<8> DGDT;
  Text<43> CLTX;
  Text<1> CATP;
  Text<40> CAUT;
  Text<1> CRSN;
  Text<8> SRDT;
  Text<20> CTLN;
};

/// -9 unless the classification is one of "C", "R", "S", "T", "U".
inline Status AcceptClassification(Security& security) {
  const char letter = security.CLAS.text[0];
  return letter != 0 && std::string_view("CRSTU").find(letter) != std::string_view::npos
             ? Status::Success
             : Status::BadStructure;
}

inline constexpr std::array<FieldRow<Security>, 16> kSecurityRows = {
    Field<&Security::CLAS>("CLAS").Starts("U").Accept(&AcceptClassification),
    Field<&Security::CLSY>("CLSY").Blank(),
    Field<&Security::CODE, 11>("CODE").Blank(),
    Field<&Security::CTLH, 2>("CTLH").Blank(),
    Field<&Security::REL, 20>("REL").Blank(),
    Field<&Security::DCTP>("DCTP").Blank(),
    Field<&Security::DCDT>("DCDT").Blank().Set(SetAs::Date),
    Field<&Security::DCXM>("DCXM").Blank(),
    Field<&Security::DG>("DG").Blank(),
    Field<&Security::DGDT>("DGDT").Blank().Set(SetAs::Date),
    Field<&Security::CLTX>("CLTX").Blank(),
    Field<&Security::CATP>("CATP").Blank(),
    Field<&Security::CAUT>("CAUT").Blank(),
    Field<&Security::CRSN>("CRSN").Blank(),
    Field<&Security::SRDT>("SRDT").Blank().Set(SetAs::Date),
    Field<&Security::CTLN, 15>("CTLN").Blank(),
};

/// How a record's security fields differ from the others'.
struct SecurityForm {
  const char* prefix;       ///< front of the mnemonics
  const char* classPrefix;  ///< front of the classification's mnemonic
  char fill = 0;            ///< what the writer pads with, 0 as the table
  char classFill = 0;       ///< the same for the classification
  bool validated = true;    ///< whether the parse judges the classification
  bool blank = true;        ///< whether a fresh record has "U" and spaces, or nothing
  bool narrow = false;      ///< whether setters take no more than the file's width
};

/// A record's security rows.
template <class R, Security R::*Part>
constexpr std::array<FieldRow<R>, 16> SecurityRows(const SecurityForm& form) {
  auto rows = LiftRows<R, Part, kSecurityRows>(std::make_index_sequence<16>{});
  for (auto& row : rows) {
    row.prefix = form.prefix;
    row.fill = form.fill;
    row.blank = row.blank && form.blank;
    if (form.narrow) row.capacity = row.width;
  }
  rows[0].prefix = form.classPrefix;
  rows[0].fill = form.classFill;
  if (!form.blank) rows[0].initial = "";
  if (!form.validated) rows[0].accept = nullptr;
  return rows;
}

/// Extended data of a header: a length of 5 digits that counts the 3-digit overflow field behind it and
/// the tagged records. Both are absent when the length is 0.
struct ExtendedData {
  Number<5> length;
  Text<3> overflow;
  TrackedArray<char> bytes;  ///< length - 3 bytes and a terminator
  uint32_t recordCount = 0;

  static constexpr uint32_t kOverflowWidth = 3;

  /// The bytes without their terminator.
  std::string_view Data() const {
    return bytes.size() == 0 ? std::string_view() : std::string_view(bytes.data(), bytes.size() - 1);
  }
  /// Replaces the bytes by (length - 3) of a caller's: -814 for null, -13 for a length below 3, -1.
  Status SetBytes(const void* from);
};

/// What a parse does with a length of 1 or 2, which its own overflow field does not fit into.
enum class ShortLength { Refuse, TakeAsZero };

Status AcceptExtendedLength(ExtendedData& data, ShortLength rule);
Status ReadExtendedBytes(ExtendedData& data, FieldReader& reader);
Status WriteExtendedBytes(const ExtendedData& data, FieldWriter& writer);

template <ShortLength kRule>
inline constexpr std::array<FieldRow<ExtendedData>, 2> kExtendedRows = {
    Field<&ExtendedData::length>("").Fill('0').SetNumber(true).MeasuresOverflow().Accept(
        [](ExtendedData& data) { return AcceptExtendedLength(data, kRule); }),
    Field<&ExtendedData::overflow>("")
        .Fill('0')
        .SetNumber()
        .When([](const ExtendedData& data) { return data.length.value != 0; })
        .Then(&ReadExtendedBytes, &WriteExtendedBytes),
};

/// A record's two rows of extended data.
template <class R, ExtendedData R::*Part, ShortLength kRule = ShortLength::Refuse>
constexpr std::array<FieldRow<R>, 2> ExtendedRows(const char* lengthName, const char* overflowName) {
  auto rows = LiftRows<R, Part, kExtendedRows<kRule>>(std::make_index_sequence<2>{});
  rows[0].name = lengthName;
  rows[1].name = overflowName;
  return rows;
}
