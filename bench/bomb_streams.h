// Compressed streams that ask for much.
#pragma once

#include <string>

#include "tests/support/builder.h"
#include "tests/support/codec_streams.h"

namespace bomb {

/// A codestream of one tile-part without data: `side` pixels in tiles of `tile`, and precincts of a size
/// unless that is 0.
inline std::string Codestream(uint32_t side, uint32_t tile, uint32_t components, uint8_t precinct = 0) {
  using test::Big;
  std::string stream = Big(0xFF4FFF51, 4) + Big(38 + 3 * components, 2) + Big(0, 2);
  for (const uint32_t value : {side, side, 0u, 0u, tile, tile, 0u, 0u}) stream += Big(value, 4);
  stream += Big(components, 2);
  for (uint32_t c = 0; c < components; ++c) stream += Big(0x070101, 3);
  const std::string precincts(precinct != 0 ? 6 : 0, static_cast<char>(precinct));
  stream += Big(0xFF52, 2) + Big(12 + precincts.size(), 2) + Big(precinct != 0, 1) + Big(0, 1) +
            Big(1, 2) + Big(0, 1) + Big(5, 1) + Big(0x0000, 2) + Big(0, 1) + Big(1, 1) + precincts;
  stream += Big(0xFF5C, 2) + Big(19, 2) + Big(0x40, 1) + std::string(16, '\x48');
  return stream + Big(0xFF90, 2) + Big(10, 2) + Big(0, 2) + Big(14, 4) + Big(0x0001, 2) + Big(0xFF93, 2) +
         Big(0xFFD9, 2);
}

/// A square as JPEG 2000.
inline std::string EncodeJpeg2000(int side) {
  return test::MakeJpeg2000(side, side, 1, {}, [](int x, int y, int) { return (x / 32 ^ y / 32) & 255; });
}

/// A square of one grey as progressive JPEG, or with so many scans of nothing.
inline std::string EncodeProgressive(int side, int components, int scans) {
  return test::MakeJpeg({.width = side,
                         .height = side,
                         .components = components,
                         .progressive = scans == 0,
                         .scans = scans},
                        [](int, int, int) { return 90; });
}

}  // namespace bomb
