// JPEG 2000 codestreams, facsimile and vector quantisation against the subheader.
#include "core/check/rule.h"
#include "core/format/blocks.h"
#include "core/format/file_source.h"
#include "media/codecs/facsimile.h"

namespace core {
namespace {

// ---------------------------------------------------------------- JPEG 2000

void AskBegin(Checking& checking, const SurveyedPart& part) {
  if (!HasCodestream(part)) return;
  if (!checking.CodestreamOf(part).begins)
    checking.FailAtByte(part, part.dataOffset, "the data is no JPEG 2000 codestream");
}

void AskWrapped(Checking& checking, const SurveyedPart& part) {
  if (checking.CodestreamOf(part).isWrapped)
    checking.FailAtByte(part, part.dataOffset, "the data is a JP2 file around a codestream");
}

void AskEnd(Checking& checking, const SurveyedPart& part) {
  const Codestream& stream = checking.CodestreamOf(part);
  if (stream.begins && !stream.ends)
    checking.FailAtByte(part, part.dataOffset, "the codestream does not end with its marker");
}

void AskSize(Checking& checking, const SurveyedPart& part) {
  const Codestream& stream = checking.CodestreamOf(part);
  if (!stream.begins) return;
  const bool isWide = static_cast<int64_t>(stream.width) != part.Number("NCOLS");
  if (isWide || static_cast<int64_t>(stream.height) != part.Number("NROWS"))
    checking.Fail(part, isWide ? "NCOLS" : "NROWS",
                  "the codestream has " + std::to_string(stream.width) + " x " +
                      std::to_string(stream.height) + " pixels");
}

// One block may be a codestream of any tiles.
void AskTiles(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  const Codestream& stream = checking.CodestreamOf(part);
  if (!stream.begins || !blocks.Known() || blocks.Count() == 1) return;
  const bool isWide = static_cast<int64_t>(stream.tileWidth) != blocks.width;
  if (isWide || static_cast<int64_t>(stream.tileHeight) != blocks.height)
    checking.Fail(part, isWide ? "NPPBH" : "NPPBV",
                  "tiles of " + std::to_string(stream.tileWidth) + " x " +
                      std::to_string(stream.tileHeight) + ", blocks of " + std::to_string(blocks.width) +
                      " x " + std::to_string(blocks.height));
}

void AskTileOffset(Checking& checking, const SurveyedPart& part) {
  if (checking.CodestreamOf(part).beginsElsewhere)
    checking.FailAtByte(part, part.dataOffset,
                        "the codestream's tiles do not begin at the image's corner");
}

void AskHeader(Checking& checking, const SurveyedPart& part) {
  const Codestream& stream = checking.CodestreamOf(part);
  if (!stream.begins || (stream.hasStyle && stream.hasQuantisation)) return;
  checking.FailAtByte(
      part, part.dataOffset,
      std::string("the main header has no ") + (stream.hasStyle ? "QCD" : "COD") + " segment");
}

void AskParts(Checking& checking, const SurveyedPart& part) {
  const Codestream& stream = checking.CodestreamOf(part);
  if (stream.begins && !stream.parts.words.empty())
    checking.FailAtByte(part, part.dataOffset + stream.parts.at, stream.parts.words);
}

void AskMissing(Checking& checking, const SurveyedPart& part) {
  const Codestream& stream = checking.CodestreamOf(part);
  if (!stream.begins || !stream.parts.words.empty() || stream.tilesMissing == 0) return;
  checking.FailAtByte(
      part, part.dataOffset,
      std::to_string(stream.tilesMissing) + " of " + Count(stream.Tiles(), "tile") + " have no part");
}

void AskComponents(Checking& checking, const SurveyedPart& part) {
  const Codestream& stream = checking.CodestreamOf(part);
  if (stream.begins && static_cast<int64_t>(stream.components) != part.Bands())
    checking.Fail(part, part.Has("XBANDS") ? "XBANDS" : "NBANDS",
                  Count(stream.components, "component") + " for " +
                      Count(static_cast<uint64_t>(part.Bands()), "band"));
}

void AskDepth(Checking& checking, const SurveyedPart& part) {
  const Codestream& stream = checking.CodestreamOf(part);
  if (!stream.begins || stream.most == 0) return;
  const auto significant = static_cast<uint64_t>(std::max<int64_t>(0, part.Number("ABPP")));
  if (stream.most != significant)
    checking.Fail(part, "ABPP",
                  Count(stream.most, "bit") + " where ABPP is " + Quoted(part.Text("ABPP")));
}

void AskLayers(Checking& checking, const SurveyedPart& part) {
  if (!HasCodestream(part)) return;
  for (const TaggedRecord& record : checking.Records(part)) {
    if (record.tag == "J2KLRA") return;
  }
  checking.Fail(part, "IC", "no J2KLRA record tells the layers of the codestream");
}

// What the record tells of this image: of one that was parsed its last fields.
void AskLayerCount(Checking& checking, const SurveyedPart& part) {
  const Codestream& stream = checking.CodestreamOf(part);
  if (!stream.begins || !stream.hasStyle) return;
  for (const TaggedRecord& record : checking.Records(part)) {
    if (TrimmedText(record.tag) != "J2KLRA") continue;
    for (const auto& [name, own, has, what] :
         {std::tuple{"NLAYERS_I", "NLAYERS_O", stream.layers, "layer"},
          {"NLEVELS_I", "NLEVELS_O", stream.levels, "level"}}) {
      const DecodedField* field = FindField(record.fields, name);
      if (field == nullptr) field = FindField(record.fields, own);
      const int64_t told = field != nullptr ? DigitsOf(field->text) : -1;
      if (told >= 0 && static_cast<uint64_t>(told) != has)
        return checking.FailAt(part, record.area, record.offset,
                               "the codestream has " + Count(has, what) + ", " + field->field->name +
                                   " of J2KLRA is " + field->text);
    }
  }
}

// ---------------------------------------------------------------- facsimile

void AskRows(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  constexpr int64_t kMostPixels = 1 << 28;  // far more than the standard has
  if (!part.complete || part.Text("IC") != "C1" || !blocks.Known() ||
      blocks.width * blocks.height > kMostPixels)
    return;
  const media::FacsimileForm form = {static_cast<uint32_t>(blocks.width),
                                     static_cast<uint32_t>(blocks.height),
                                     part.Trimmed("COMRAT") != "1D"};
  constexpr uint64_t kMostBytes = 1 << 28;  // of fill for the greater part
  const FileSource data(checking.survey.file, part.dataOffset, std::min(part.dataLength, kMostBytes));
  uint32_t rows = 0;
  // Rows behind the first that does not decode are not given, which is all that is asked here.
  (void)data.Checked(media::DecodeFacsimile(data.Get(), form, [&](uint32_t, std::span<const uint8_t>) {
    ++rows;
    return media::Outcome::Ok;
  }));
  if (rows != blocks.height)
    checking.FailAtByte(
        part, part.dataOffset,
        std::to_string(rows) + " rows decode, the block has " + std::to_string(blocks.height));
}

// ---------------------------------------------------------------- vector quantisation

struct VqFacts {
  uint64_t codeRows, codesPerRow, codeBits, tables;
};

bool IsQuantised(const SurveyedPart& part) { return part.complete && IsOneOf(part.Text("IC"), "C4|M4"); }

// The header of the data and of its lookup tables.
bool VqFactsOf(const Checking& checking, const SurveyedPart& part, VqFacts& facts) {
  constexpr size_t kHeader = 21;
  const uint64_t start = part.IsMasked() ? part.mask.bytes : 0;
  if (start > part.dataLength) return false;
  const std::string head = checking.survey.file.At(part.dataOffset + start,
                                                   std::min<uint64_t>(part.dataLength - start, kHeader));
  if (head.size() < kHeader) return false;
  facts = {BigNumber(head, 0, 4), BigNumber(head, 4, 4), BigNumber(head, 8, 1), BigNumber(head, 11, 2)};
  return true;
}

void AskCodes(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  VqFacts facts = {};
  if (!IsQuantised(part) || !blocks.Known()) return;
  if (!VqFactsOf(checking, part, facts))
    return checking.FailAtByte(part, part.dataOffset, "the data does not hold its header");
  const auto rows = static_cast<uint64_t>(blocks.height), columns = static_cast<uint64_t>(blocks.width);
  const bool fits = facts.codeRows != 0 && facts.codesPerRow != 0 && rows % facts.codeRows == 0 &&
                    columns % facts.codesPerRow == 0;
  if (!fits)
    checking.FailAtByte(part, part.dataOffset,
                        std::to_string(facts.codesPerRow) + " x " + std::to_string(facts.codeRows) +
                            " codes for blocks of " + std::to_string(columns) + " x " +
                            std::to_string(rows));
}

void AskVqTables(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  VqFacts facts = {};
  if (!IsQuantised(part) || !blocks.Known() || !VqFactsOf(checking, part, facts)) return;
  const auto rows = static_cast<uint64_t>(blocks.height), columns = static_cast<uint64_t>(blocks.width);
  const bool bits = facts.codeBits >= 1 && facts.codeBits <= 32;
  const bool fits = facts.codeRows == 0 || facts.codesPerRow == 0 ||
                    facts.tables == rows / facts.codeRows || facts.tables == columns / facts.codesPerRow;
  if (!bits || !fits)
    checking.FailAtByte(part, part.dataOffset,
                        std::to_string(facts.tables) + " lookup tables, codes of " +
                            std::to_string(facts.codeBits) + " bits");
}

constexpr const char kJ2k[] = "ISO/IEC 15444-1; BPJ2K01.10";
constexpr Rule kRules[] = {
    {"j2k.begin", Severity::Error, On::Image, "IC", kJ2k, "The data is a JPEG 2000 codestream.",
     AskBegin},
    {"j2k.wrapped", Severity::Warning, On::Image, "IC", kJ2k,
     "The data is a codestream alone, with no file format around it.", AskWrapped},
    {"j2k.header", Severity::Error, On::Image, "IC", "ISO/IEC 15444-1, A.3",
     "A codestream's main header has its coding style and its quantisation.", AskHeader},
    {"j2k.parts", Severity::Error, On::Image, "IC", "ISO/IEC 15444-1, A.4.2",
     "Tile parts follow one another to the end of the codestream.", AskParts},
    {"j2k.missing", Severity::Error, On::Image, "IC", "ISO/IEC 15444-1, A.4.2", "Every tile has a part.",
     AskMissing},
    {"j2k.offset", Severity::Error, On::Image, "NPPBH", kJ2k,
     "The codestream's tiles begin at the image's corner, as blocks do.", AskTileOffset},
    {"j2k.end", Severity::Error, On::Image, "IC", kJ2k, "A codestream ends with its marker.", AskEnd},
    {"j2k.size", Severity::Error, On::Image, "NCOLS", kJ2k, "The codestream has the size of the image.",
     AskSize},
    {"j2k.tiles", Severity::Error, On::Image, "NPPBH", kJ2k, "The codestream's tiles are the blocks.",
     AskTiles},
    {"j2k.components", Severity::Error, On::Image, "NBANDS", kJ2k,
     "The codestream has a component for each band.", AskComponents},
    {"j2k.depth", Severity::Error, On::Image, "ABPP", kJ2k,
     "The codestream has the depth of the samples.", AskDepth},
    {"j2k.layers", Severity::Note, On::Image, "IXSHD", "BPJ2K01.10, J2KLRA",
     "A record tells the layers of a codestream.", AskLayers},
    {"j2k.layers.count", Severity::Error, On::Image, "IXSHD", "BPJ2K01.10, J2KLRA",
     "The record tells the layers and levels that the codestream has.", AskLayerCount},
    {"fax.rows", Severity::Error, On::Image, "NROWS", "ITU-T T.4; MIL-STD-188-196",
     "A facsimile decodes to the rows of its block.", AskRows},
    {"vq.codes", Severity::Error, On::Image, "NPPBH", "MIL-STD-188-199, 5.2",
     "Blocks divide into the vectors that the codes stand for.", AskCodes},
    {"vq.tables", Severity::Error, On::Image, "IC", "MIL-STD-188-199, 5.2",
     "There is a lookup table for each row or column of a vector, and codes have 1 to 32 bits.",
     AskVqTables},
};

}  // namespace

const Rules kStreamRules = kRules;

}  // namespace core
