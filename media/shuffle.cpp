#include "media/shuffle.h"

#include <algorithm>
#include <cstring>

// Built for the processor's byte shuffle where it has one; CMake says how, if this compiler can.
#ifndef MEDIA_CLONES
#define MEDIA_CLONES
#endif

namespace media {
namespace {

typedef uint8_t Vector __attribute__((vector_size(16)));

inline Vector Load(const uint8_t* bytes) {
  Vector vector;
  std::memcpy(&vector, bytes, sizeof vector);
  return vector;
}
inline void Store(uint8_t* bytes, Vector vector) { std::memcpy(bytes, &vector, sizeof vector); }

}  // namespace

MEDIA_CLONES
void TripleBytes(const uint8_t* grey, uint32_t count, uint8_t* pixels) {
  for (; count >= 16; count -= 16, grey += 16, pixels += 48) {
    const Vector in = Load(grey);
    Store(pixels, __builtin_shufflevector(in, in, 0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5));
    Store(pixels + 16, __builtin_shufflevector(in, in, 5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10));
    Store(pixels + 32, __builtin_shufflevector(in, in, 10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14,
                                               15, 15, 15));
  }
  for (; count > 0; --count, ++grey, pixels += 3) std::memset(pixels, *grey, 3);
}

MEDIA_CLONES
void SwapEnds(const uint8_t* pixels, uint32_t count, uint8_t* swapped) {
  // Five pixels at a step; the sixteenth byte is written again by the next one.
  for (; count >= 6; count -= 5, pixels += 15, swapped += 15) {
    const Vector in = Load(pixels);
    Store(swapped, __builtin_shufflevector(in, in, 2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15));
  }
  for (; count > 0; --count, pixels += 3, swapped += 3) {
    swapped[0] = pixels[2];
    swapped[1] = pixels[1];
    swapped[2] = pixels[0];
  }
}

MEDIA_CLONES
void Interleave(const uint8_t* first, const uint8_t* second, const uint8_t* third, uint32_t count,
                uint8_t* pixels) {
  uint32_t i = 0;
  for (; count - i >= 16; i += 16, pixels += 48) {
    const Vector a = Load(first + i), b = Load(second + i), c = Load(third + i);
    // Two rows first, with gaps that the third one fills.
    const Vector ab = __builtin_shufflevector(a, b, 0, 16, 0, 1, 17, 0, 2, 18, 0, 3, 19, 0, 4, 20, 0, 5);
    const Vector ba =
        __builtin_shufflevector(a, b, 21, 0, 6, 22, 0, 7, 23, 0, 8, 24, 0, 9, 25, 0, 10, 26);
    const Vector bb =
        __builtin_shufflevector(a, b, 0, 11, 27, 0, 12, 28, 0, 13, 29, 0, 14, 30, 0, 15, 31, 0);
    Store(pixels,
          __builtin_shufflevector(ab, c, 0, 1, 16, 3, 4, 17, 6, 7, 18, 9, 10, 19, 12, 13, 20, 15));
    Store(pixels + 16,
          __builtin_shufflevector(ba, c, 0, 21, 2, 3, 22, 5, 6, 23, 8, 9, 24, 11, 12, 25, 14, 15));
    Store(pixels + 32,
          __builtin_shufflevector(bb, c, 26, 1, 2, 27, 4, 5, 28, 7, 8, 29, 10, 11, 30, 13, 14, 31));
  }
  for (; i < count; ++i, pixels += 3) {
    pixels[0] = first[i];
    pixels[1] = second[i];
    pixels[2] = third[i];
  }
}

MEDIA_CLONES
void HighBytes(const uint8_t* words, uint32_t count, uint8_t* high) {
  for (; count >= 16; count -= 16, words += 32, high += 16) {
    Store(high, __builtin_shufflevector(Load(words), Load(words + 16), 1, 3, 5, 7, 9, 11, 13, 15, 17, 19,
                                        21, 23, 25, 27, 29, 31));
  }
  for (; count > 0; --count, words += 2, ++high) *high = words[1];
}

void RepeatFront(uint8_t* bytes, size_t front, size_t all) {
  // What is there already is copied behind itself.
  for (size_t filled = front; filled < all;) {
    const size_t count = std::min(filled, all - filled);
    std::memcpy(bytes + filled, bytes, count);
    filled += count;
  }
}

}  // namespace media
