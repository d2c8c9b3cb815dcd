// Checked arithmetic on sizes that come from a file.
#pragma once

#include <cstdint>

/// Largest side of a canvas or a segment bitmap, in pixels.
inline constexpr uint64_t kMaxSide = INT32_MAX;

/// A size computed step by step whose overflow sticks, so that a formula is tested once at its end.
class CheckedSize {
 public:
  constexpr CheckedSize(uint64_t value) : value_(value) {}  // NOLINT: reads like a number

  constexpr CheckedSize operator*(CheckedSize other) const {
    CheckedSize result(0);
    result.overflowed_ =
        __builtin_mul_overflow(value_, other.value_, &result.value_) || overflowed_ || other.overflowed_;
    return result;
  }
  constexpr CheckedSize operator+(CheckedSize other) const {
    CheckedSize result(0);
    result.overflowed_ =
        __builtin_add_overflow(value_, other.value_, &result.value_) || overflowed_ || other.overflowed_;
    return result;
  }
  constexpr bool Within(uint64_t limit) const { return !overflowed_ && value_ <= limit; }
  /// Meaningful only when Within some limit.
  constexpr uint64_t Value() const { return value_; }

 private:
  uint64_t value_;
  bool overflowed_ = false;
};

/// The value, or the largest 32-bit number when it is greater.
constexpr uint32_t Saturate32(uint64_t value) {
  return value > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(value);
}
