// The table in front of masked image data.
#include <algorithm>

#include "core/check/rule.h"
#include "core/format/blocks.h"

namespace core {
namespace {

constexpr uint64_t kHead = 10;

bool HasMask(const SurveyedPart& part) {
  return part.complete && part.IsMasked() && part.mask.bytes != 0;
}

void AskTable(Checking& checking, const SurveyedPart& part) {
  if (!part.complete || !part.IsMasked() || part.mask.complete || part.mask.unread) return;
  checking.FailAtByte(part, part.dataOffset,
                      "the data of " + std::to_string(part.dataLength) +
                          " bytes does not hold its mask table of " +
                          std::to_string(std::max(part.mask.bytes, kHead)));
}

uint64_t TableBytes(const SurveyedMask& mask, uint64_t records) {
  const uint64_t tables = (mask.blockLength != 0) + (mask.padLength != 0);
  return kHead + mask.padCode.size() + 4 * tables * records;
}

// The records that the table has room for up to the data.
void AskCount(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  if (!HasMask(part) || !part.mask.complete || part.mask.dataOffset == part.mask.bytes) return;
  const auto count = static_cast<uint64_t>(blocks.Count());
  const uint64_t other = blocks.sequential ? count : count * static_cast<uint64_t>(blocks.bands);
  if (blocks.bands > 1 && part.mask.dataOffset == TableBytes(part.mask, other))
    checking.FailAtByte(
        part, part.dataOffset,
        "the table has a record for each block " +
            std::string(blocks.sequential ? "and not for each of its bands" : "of each band"));
}

void AskDataOffset(Checking& checking, const SurveyedPart& part) {
  const SurveyedMask& mask = part.mask;
  const Blocks blocks(part);
  if (!HasMask(part) || !mask.complete || mask.dataOffset == mask.bytes) return;
  const auto count = static_cast<uint64_t>(blocks.Count());
  const uint64_t other = blocks.sequential ? count : count * static_cast<uint64_t>(blocks.bands);
  if (blocks.bands > 1 && mask.dataOffset == TableBytes(mask, other)) return;
  checking.FailAtByte(part, part.dataOffset,
                      "IMDATOFF is " + std::to_string(mask.dataOffset) + ", the table takes " +
                          std::to_string(mask.bytes));
}

void AskLengths(Checking& checking, const SurveyedPart& part) {
  const SurveyedMask& mask = part.mask;
  if (!HasMask(part)) return;
  for (const auto& [length, name] :
       {std::pair{mask.blockLength, "BMRLNTH"}, {mask.padLength, "TMRLNTH"}}) {
    if (length != 0 && length != 4)
      checking.FailAtByte(part, part.dataOffset + 4, std::string(name) + " is " + std::to_string(length));
  }
}

void AskPadCode(Checking& checking, const SurveyedPart& part) {
  const int64_t bits = part.Number("NBPP"), code = part.mask.padBits;
  if (!HasMask(part) || bits < 1) return;
  const int64_t whole = (bits + 7) / 8 * 8;
  const bool fits = code == 0 || code == bits || code == whole;
  if (!fits || (part.mask.padLength != 0 && code == 0))
    checking.FailAtByte(
        part, part.dataOffset + 8,
        "the pad pixel code has " + std::to_string(code) + " bits where NBPP is " + std::to_string(bits));
}

std::vector<uint32_t> Stored(const std::vector<uint32_t>& records) {
  std::vector<uint32_t> stored;
  std::copy_if(records.begin(), records.end(), std::back_inserter(stored),
               [](uint32_t record) { return record != kNoRecord; });
  return stored;
}

// Where the n-th record of blocks or pads stands in the file.
uint64_t RecordByte(const SurveyedPart& part, bool isPad, size_t n) {
  const SurveyedMask& mask = part.mask;
  return part.dataOffset + kHead + mask.padCode.size() + 4 * ((isPad ? mask.blocks.size() : 0) + n);
}

// At the first record of a value, with its block and the record's name.
void FailAtRecord(Checking& checking, const SurveyedPart& part, const std::string& name, uint32_t value,
                  const std::string& words) {
  const bool isPad = name == "TMR";
  const std::vector<uint32_t>& records = isPad ? part.mask.pads : part.mask.blocks;
  const auto n = static_cast<size_t>(std::find(records.begin(), records.end(), value) - records.begin());
  checking.FailAt(part, name + std::to_string(n), RecordByte(part, isPad, n),
                  "block " + std::to_string(n) + words);
}

void AskInside(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  const uint64_t least = part.Text("IC") == "NM" && blocks.Known() ? blocks.BlockBytes() : 1;
  const uint64_t room = part.dataLength - std::min<uint64_t>(part.dataLength, part.mask.dataOffset);
  for (const auto* records : {&part.mask.blocks, &part.mask.pads}) {
    for (const uint32_t record : Stored(*records)) {
      if (record < room && least <= room - record) continue;
      return FailAtRecord(checking, part, *records == part.mask.blocks ? "BMR" : "TMR", record,
                          " begins at " + std::to_string(record) + " of " + Count(room, "byte"));
    }
  }
}

// Blocks rise; uncompressed ones have all their bytes to themselves.
void AskOverlap(Checking& checking, const SurveyedPart& part) {
  const Blocks blocks(part);
  const std::vector<uint32_t> stored = Stored(part.mask.blocks);
  const uint64_t least = part.Text("IC") == "NM" && blocks.Known() ? blocks.BlockBytes() : 1;
  for (size_t i = 1; i < stored.size(); ++i) {
    if (stored[i] >= stored[i - 1] + least) continue;
    return FailAtRecord(
        checking, part, "BMR", stored[i],
        " at " + std::to_string(stored[i]) + " lies in the one at " + std::to_string(stored[i - 1]));
  }
}

// Pad records are those of the blocks that hold pad pixels.
void AskPads(Checking& checking, const SurveyedPart& part) {
  const SurveyedMask& mask = part.mask;
  if (mask.blocks.empty()) return;
  for (size_t i = 0; i < mask.pads.size() && i < mask.blocks.size(); ++i) {
    if (mask.pads[i] == kNoRecord || mask.pads[i] == mask.blocks[i]) continue;
    return checking.FailAt(
        part, "TMR" + std::to_string(i), RecordByte(part, true, i),
        "the pad record of block " + std::to_string(i) + " is not where the block begins");
  }
}

constexpr const char kTable[] = "MIL-STD-2500C, table A-3(A)";
constexpr Rule kRules[] = {
    {"mask.table", Severity::Error, On::Image, "IC", kTable, "Masked data begins with its mask table.",
     AskTable},
    {"mask.records", Severity::Error, On::Image, "BMRnnn", kTable,
     "There is a record for every block, and of IMODE S for every block of every band.", AskCount},
    {"mask.offset", Severity::Error, On::Image, "IMDATOFF", kTable,
     "The blocks begin where the mask table ends.", AskDataOffset},
    {"mask.lengths", Severity::Error, On::Image, "BMRLNTH", kTable,
     "Records take 4 bytes, or there are none.", AskLengths},
    {"mask.code", Severity::Error, On::Image, "TPXCD", kTable,
     "The pad pixel code has the depth of a sample, and is there where pad records are.", AskPadCode},
    {"mask.inside", Severity::Error, On::Image, "BMRnnn", kTable, "Blocks lie inside the data.",
     AskInside},
    {"mask.overlap", Severity::Error, On::Image, "BMRnnn", kTable,
     "Blocks follow one another and share no byte.", AskOverlap},
    {"mask.pads", Severity::Warning, On::Image, "TMRnnn", kTable,
     "A pad record is the offset of its block.", AskPads},
};

}  // namespace

const Rules kMaskRules = kRules;

}  // namespace core
