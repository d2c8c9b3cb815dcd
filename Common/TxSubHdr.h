// Text subheader (MIL-STD-2500C, table A-6).
#pragma once

#include "Common/AppendedData.h"
#include "Common/SharedFields.h"

struct TextSubheader {
  TextSubheader();

  /// Parses the subheader at the file's position, which is put back on success. 1, -7, -9 or -1.
  template <class Parser>
  Status ReadSubheader(Parser& parser) {
    return parser.Parse(*this);
  }
  /// Keeps a copy of a caller's text: -814 for null, -1.
  Status SetTextData(const void* bytes, uint32_t count);

  uint32_t index = 0;
  AppendedData appended;  ///< text that a caller appended, without a terminator

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
