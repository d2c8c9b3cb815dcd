#include "core/compare/compare_samples.h"

#include <cmath>
#include <complex>
#include <cstring>

#include "core/format/words.h"
#include "core/samples/rows.h"

namespace core {
namespace {

template <class Number>
Number NumberAt(const uint8_t* bytes) {
  Number number;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

uint64_t WholeAt(const uint8_t* bytes, uint32_t count) {
  switch (count) {
    case 1:
      return *bytes;
    case 2:
      return NumberAt<uint16_t>(bytes);
    case 4:
      return NumberAt<uint32_t>(bytes);
    default:
      return NumberAt<uint64_t>(bytes);
  }
}

int64_t SignedAt(const uint8_t* bytes, uint32_t count) {
  switch (count) {
    case 1:
      return NumberAt<int8_t>(bytes);
    case 2:
      return NumberAt<int16_t>(bytes);
    case 4:
      return NumberAt<int32_t>(bytes);
    default:
      return NumberAt<int64_t>(bytes);
  }
}

// How far two samples are from each other; no number where one of them is none.
double Distance(const SampleImage& form, const uint8_t* a, const uint8_t* b) {
  const uint32_t bytes = form.sampleBytes;
  switch (form.kind) {
    case SampleKind::Real:
      return bytes == 8 ? std::abs(NumberAt<double>(a) - NumberAt<double>(b))
                        : std::abs(double{NumberAt<float>(a)} - double{NumberAt<float>(b)});
    case SampleKind::Complex: {
      const std::complex<double> one(NumberAt<float>(a), NumberAt<float>(a + 4)),
          two(NumberAt<float>(b), NumberAt<float>(b + 4));
      return std::abs(one - two);
    }
    case SampleKind::Signed: {
      const int64_t one = SignedAt(a, bytes), two = SignedAt(b, bytes);
      return std::abs(static_cast<double>(one) - static_cast<double>(two));
    }
    default: {
      const uint64_t one = WholeAt(a, bytes), two = WholeAt(b, bytes);
      return static_cast<double>(one > two ? one - two : two - one);
    }
  }
}

bool HaveSameForm(const SampleImage& a, const SampleImage& b) {
  return a.width == b.width && a.height == b.height && a.bands == b.bands && a.kind == b.kind &&
         a.sampleBytes == b.sampleBytes;
}

void CompareRow(const SampleImage& form, const uint8_t* a, const uint8_t* b, SampleDifference& difference,
                double& sum) {
  const size_t count = size_t{form.width} * form.bands;
  difference.samples += count;
  if (std::memcmp(a, b, count * form.sampleBytes) == 0) return;
  for (size_t i = 0; i < count; ++i, a += form.sampleBytes, b += form.sampleBytes) {
    if (std::memcmp(a, b, form.sampleBytes) == 0) continue;
    const double distance = Distance(form, a, b);
    if (distance == 0) continue;
    ++difference.differing;
    if (std::isfinite(distance)) {
      difference.largest = std::max(difference.largest, distance);
      sum += distance;
    } else {
      ++difference.notNumbers;
    }
  }
}

SampleFault CompareRows(SampleRows& a, SampleRows& b, const SampleImage& form,
                        SampleDifference& difference) {
  double sum = 0;
  for (uint32_t y = 0; y < form.height; ++y) {
    const uint8_t *one = nullptr, *two = nullptr;
    if (SampleFault fault = a.Row(y, one); fault.Met()) return fault;
    if (SampleFault fault = b.Row(y, two); fault.Met()) return fault;
    CompareRow(form, one, two, difference, sum);
  }
  const uint64_t numbers = difference.samples - difference.notNumbers;
  difference.mean = numbers == 0 ? 0 : sum / static_cast<double>(numbers);
  return {};
}

}  // namespace

SampleDifference CompareSamples(const Survey& a, const SurveyedPart& first, const Survey& b,
                                const SurveyedPart& second) {
  SampleDifference difference;
  SampleRows one(a, first, {}), two(b, second, {});
  SampleImage form, other;
  SampleFault fault = one.Start(form);
  if (!fault.Met()) fault = two.Start(other);
  if (!fault.Met() && !HaveSameForm(form, other)) {
    difference.problem = "they have other sizes, bands or depths";
    return difference;
  }
  if (!fault.Met()) fault = CompareRows(one, two, form, difference);
  difference.problem = fault.words;
  return difference;
}

std::string WordsOf(const SampleDifference& samples) {
  const auto number = [](double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return std::string(text);
  };
  if (!samples.problem.empty()) return "its samples are not compared: " + Printable(samples.problem);
  if (samples.differing == 0) return "its samples are the same";
  std::string words = std::to_string(samples.differing) + " of " + std::to_string(samples.samples) +
                      " samples differ, by up to " + number(samples.largest) + ", by " +
                      number(samples.mean) + " on average";
  if (samples.notNumbers != 0)
    words += "; " + std::to_string(samples.notNumbers) + " are numbers in one of the two only";
  return words;
}

}  // namespace core
