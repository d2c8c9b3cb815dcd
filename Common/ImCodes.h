// Code tables of the image subheader.
#pragma once

#include <array>

#include "Common/Fields.h"

/// What reads a compression's data.
enum class ReaderFamily : uint8_t { None, Uncompressed, Facsimile, Jpeg, VectorQuantised };

inline constexpr CodeRow kPixelTypeRows[] = {{"I", 0, "INT"}, {"B", 1, "B"}};
inline constexpr CodeRow kRepresentationRows[] = {
    {"MONO", 0, "MONO"},   {"RGB/LUT", 2, "RGB/LUT"},   {"RGB", 1, "RGB"},
    {"MULTI", 3, "MULTI"}, {"NODISPLY", 4, "NODISPLY"}, {"NVECTOR", 5, "NVECTOR"},
    {"POLAR", 6, "POLAR"}, {"VPH", 7, "VPH"},           {"YCbCr601", 8, "YCbCr601"}};
inline constexpr CodeRow kJustificationRows[] = {{"L", 0, "L"}, {"R", 1, "R"}};
// One row for each compression: text, code, what reads the data, and whether a mask table stands in
// front.
struct CompressionRow {
  CodeRow code;
  ReaderFamily family;
  bool hasMaskTable;
};
using enum ReaderFamily;
inline constexpr CompressionRow kCompressionTable[] = {{{"NC", 0, "NC"}, Uncompressed, false},
                                                       {{"NM", 1, "NM"}, Uncompressed, true},
                                                       {{"C0", 2, "C0"}, None, false},
                                                       {{"C1", 3, "C1"}, Facsimile, false},
                                                       {{"C2", 4, "C2"}, None, false},
                                                       {{"C3", 5, "C3"}, Jpeg, false},
                                                       {{"C4", 6, "C4"}, VectorQuantised, false},
                                                       {{"C5", 7, "C5"}, Jpeg, false},
                                                       {{"C6", 8, "C6"}, Jpeg, false},
                                                       {{"C8", 9, "C8"}, Jpeg, false},
                                                       {{"I1", 10, "I1"}, Jpeg, false},
                                                       {{"M0", 11, "M0"}, None, true},
                                                       {{"M1", 12, "M1"}, Facsimile, true},
                                                       {{"M2", 13, "M2"}, None, false},
                                                       {{"M3", 14, "M3"}, Jpeg, true},
                                                       {{"M4", 15, "M4"}, VectorQuantised, true},
                                                       {{"M5", 16, "M5"}, Jpeg, true},
                                                       {{"M6", 17, "M6"}, Jpeg, false},
                                                       {{"M8", 18, "M8"}, Jpeg, false}};
inline constexpr auto kCompressionRows = [] {
  std::array<CodeRow, std::size(kCompressionTable)> rows{};
  for (size_t i = 0; i < rows.size(); ++i) rows[i] = kCompressionTable[i].code;
  return rows;
}();
inline constexpr CodeRow kImageModeRows[] = {{"B", 0, "B"}, {"P", 1, "P"}, {"R", 2, "R"}, {"S", 3, "S"}};
inline constexpr CodeRow kBiLevelRows[] = {{"1D", 0, "1D"}, {"2DS", 1, "2DS"}, {"2DH", 2, "2DH"}};
inline constexpr CodeRow kBandRows[] = {{"LU", 1, "LU"}, {"R", 2, "R"}, {"G", 3, "G"},   {"B", 4, "B"},
                                        {"M", 5, "M"},   {"Y", 6, "Y"}, {"Cb", 7, "Cb"}, {"Cr", 8, "Cr"}};

inline constexpr CodeTable kPixelTypes = {kPixelTypeRows, true};
inline constexpr CodeTable kRepresentations = {kRepresentationRows, true};
inline constexpr CodeTable kJustifications = {kJustificationRows, true};
inline constexpr CodeTable kCompressions = {kCompressionRows, false};
inline constexpr CodeTable kImageModes = {kImageModeRows, true};
inline constexpr CodeTable kBiLevelOptions = {kBiLevelRows, true};
inline constexpr CodeTable kBandCodes = {kBandRows, true};
