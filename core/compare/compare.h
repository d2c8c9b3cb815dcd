// What differs between two files.
#pragma once

#include "core/compare/compare_samples.h"
#include "core/compare/differences.h"
#include "core/format/records.h"

namespace core {

struct Comparison {
  std::vector<TextDifference> fields, records;
  std::vector<DataDifference> segments;
  std::vector<SampleDifference> samples;  ///< of images whose data differs

  bool Differs() const { return !fields.empty() || !records.empty() || !segments.empty(); }
};
/// Compares every byte of two files: those that no field, record or segment names are named by where
/// they are. Segments are matched by likeness in their order, so that one that was removed or added is
/// one difference. Throws ReadError.
Comparison Compare(const Survey& a, const Survey& b, const RecordDefinitions& definitions);

}  // namespace core
