// Moving bytes between one and three in a pixel, sixteen at a step. None reads or writes beyond what is
// counted.
#pragma once

#include <cstddef>
#include <cstdint>

namespace media {

/// Each byte three times: grey to colour.
void TripleBytes(const uint8_t* grey, uint32_t count, uint8_t* pixels);
/// Pixels of three bytes the other way round: red, green, blue to blue, green, red and back.
void SwapEnds(const uint8_t* pixels, uint32_t count, uint8_t* swapped);
/// One byte of each of three rows in turn.
void Interleave(const uint8_t* first, const uint8_t* second, const uint8_t* third, uint32_t count,
                uint8_t* pixels);
/// Every second byte, from the second one on: the high bytes of little-endian samples.
void HighBytes(const uint8_t* words, uint32_t count, uint8_t* high);

/// Repeats the first bytes of some, `front` of them, up to the last one.
void RepeatFront(uint8_t* bytes, size_t front, size_t all);

}  // namespace media
