// How a picture is to be stored, and what it became.
#pragma once

#include <array>

#include "core/edit/block_store.h"
#include "core/edit/corners.h"

namespace core {

/// How a picture is stored.
struct StoreOptions {
  enum class Way { Plain, Jpeg, Jpeg2000 };
  Way way = Way::Plain;
  int quality = 85;       ///< of JPEG, 1 to 100
  double rate = 0;        ///< of JPEG 2000, bits a sample; 0 for numerically lossless
  uint32_t block = 0;     ///< side of a block; 0 for one block, and of 1024 where a side exceeds 8192
  char mode = 0;          ///< B, P, R or S; 0 for B
  bool isMasked = false;  ///< blocks of pad pixels alone are left out
  bool isAsIs = false;    ///< the stream of a JPEG or JPEG 2000 file itself
  std::optional<std::array<uint8_t, 3>> background;  ///< what shines through transparent pixels
  std::optional<uint64_t>
      pad;          ///< bits of samples that are no data, where the picture does not say itself
  char icords = 0;  ///< the form of the corners: G, D, N, S or U; 0 for that of the picture's places
  uint32_t page = UINT32_MAX;       ///< of a TIFF file; UINT32_MAX for the only one
  uint64_t mostBytes = 9999999998;  ///< of a segment: larger pictures are split by rows
};

/// An image segment that a picture became, or one of several below each other.
struct StoredImage {
  ImageForm form;
  Pieces data;
  uint32_t top = 0;         ///< of its first row in the picture
  std::string layers = {};  ///< the data of a J2KLRA record; empty for none
  CornerFields corners = {};
};

}  // namespace core
