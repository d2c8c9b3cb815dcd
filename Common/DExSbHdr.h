// Data extension subheader (MIL-STD-2500C, table A-8(A)).
#pragma once

#include "Common/SharedFields.h"

struct DataExtensionSubheader {
  DataExtensionSubheader();

  /// Parses the subheader at the file's position, which is put back on success. 1, -7, -9 or -1.
  template <class Parser>
  Status ReadSubheader(Parser& parser) {
    return parser.Parse(*this);
  }

  uint32_t index = 0;
  Text<2> DE;
  Text<25> DESID;
  Text<2> DESVER;
  Security security;
  Text<6> DESOFLW;  ///< in TRE_OVERFLOW segments only, as DESITEM
  Text<3> DESITEM;
  Number<4> DESSHL;
  TrackedArray<char> DESSHF;  ///< DESSHL bytes and a terminator

  /// Every field in file order.
  static FieldTable<DataExtensionSubheader> Table();
};
