// Headers of segments that are made anew, from the tables of fields.
#pragma once

#include "core/edit/draft.h"

namespace core {

/// A band of an image.
struct BandForm {
  std::string representation, subcategory;  ///< IREPBAND, ISUBCAT
  std::vector<std::string> tables;          ///< lookup tables, all of one length
};

/// How the pixels of an image are stored; texts as their fields have them, without the blanks.
struct ImageForm {
  uint64_t rows = 1, columns = 1;
  std::string pixelType = "INT", representation = "MONO", category = "VIS";
  uint32_t significantBits = 8, bits = 8;  ///< ABPP, NBPP
  std::string compression = "NC", rate;    ///< IC, COMRAT
  std::vector<BandForm> bands = {{"M", "", {}}};
  char mode = 'B';
  uint64_t blocksAcross = 1, blocksDown = 1;
  uint64_t blockWidth = 1, blockHeight = 1;
};

std::string NewFileHeader();
std::string NewImageHeader(const ImageForm& form);
std::string NewGraphicHeader();
std::string NewTextHeader();
/// Of a registered name, which the format tells how many fields of its own it has.
std::string NewExtensionHeader(const std::string& name, uint32_t version);
/// Of what overflows from an area of a part, classified as that part is.
std::string OverflowHeader(const DraftPart& part, const std::string& area, size_t item);

/// Describes the pixels of an image anew; with `isAnother` also what they mean: IREP, ICAT and its bands'
/// representation. All other fields stay.
void DescribePixels(DraftPart& image, const ImageForm& form, bool isAnother);

}  // namespace core
