// Text subheader (MIL-STD-2500C, table A-6).
#pragma once

#include "Common/SharedFields.h"

struct NitfFile;
struct StreamingFileHeader;

struct TextSubheader {
  TextSubheader();

  void SetOwner(NitfFile& document, uint32_t position) {
    owner = &document;
    index = position;
  }
  /// Parses the subheader at the file's position, which is put back on success. 1, -7, -9 or -1.
  Status ReadSubheader(NitfFile& document, StreamingFileHeader& streaming, ReadMode mode);
  /// Keeps a copy of a caller's text: -814 for null, -1.
  Status SetTextData(const void* bytes, uint32_t count);

  NitfFile* owner = nullptr;
  uint32_t index = 0;
  bool loaded = false;      ///< TE was accepted
  KernelBuffer<char> text;  ///< appended text and a terminator
  bool hasText = false;

  Text<2> TE;
  Text<10> TEXTID;  ///< 7 in the file
  Number<3> TXTALVL;
  Text<14> TXTDT;
  Text<80> TXTITL;
  Security security;
  Text<1> ENCRYP;
  Text<3> TXTFMT;
  ExtendedData extended;  ///< TXSHDL, TXSOFL, TXSHD

  /// Every field in file order.
  static FieldTable<TextSubheader> Table();
};
