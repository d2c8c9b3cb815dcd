// Graphic subheader (MIL-STD-2500C, table A-5).
#pragma once

#include "Common/AppendedData.h"
#include "Common/SharedFields.h"
#include "host/vector.h"

/// A vector drawing, freed with its owner.
class OwnedDrawing : NonCopyable {
 public:
  OwnedDrawing() { Initialise(); }
  ~OwnedDrawing() { Free(); }

  void Free() {
    if (VectorIsEmpty(&handle) == 0) (void)VectorFree(&handle);
  }
  /// Frees what is held and starts an empty drawing.
  void Restart() {
    Free();
    Initialise();
  }

  VectorHandle handle{};

 private:
  void Initialise() {
    handle.flags = kVectorHandleFlags;
    (void)VectorInitialise(&handle);
    handle.flags2 = kVectorHandleFlags2;
  }
};

struct GraphicSubheader {
  GraphicSubheader();

  /// Parses the subheader at the file's position, which is put back on success. 1, -7, -9 or -1.
  template <class Parser>
  Status ReadSubheader(Parser& parser) {
    return parser.Parse(*this);
  }
  /// Keeps a copy of the CGM bytes of an appended or replaced drawing; -814 for null, -1.
  Status SetGraphicData(const void* bytes, uint32_t count);

  /// Whether SFMT names a form ("C", "O", "B").
  bool HasForm(char form) const { return SFMT.text[0] == form; }

  uint32_t index = 0;
  OwnedDrawing drawing;
  bool handleGiven = false;  ///< a caller holds the drawing's handle, so it stays loaded
  AppendedData appended;     ///< CGM bytes of an appended or replaced drawing

  Text<2> SY;
  Text<10> SID;
  Text<20> SNAME;
  Security security;
  Text<1> ENCRYP;
  Text<1> SFMT;
  Text<13> SSTRUCT;
  Number<3> SDLVL;
  Number<3> SALVL;
  Location SLOC;
  Location SBND1;  ///< its first number counts with the columns, its second with the rows
  Text<1> SCOLOR;
  Location SBND2;
  Text<2> SRES1;
  ExtendedData extended;  ///< SXSHDL, SXSOFL, SXSHD

  /// Every field in file order.
  static FieldTable<GraphicSubheader> Table();
};
