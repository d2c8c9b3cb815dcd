// Uncompressed samples of any depth, put into the order of a mode.
#pragma once

#include "tests/support/builder.h"

namespace test {

/// A sample of a picture of `bits` that differs in every band.
uint64_t SampleOf(int x, int y, int band, int bits);
/// The data of an image of such samples of `significant` bits, stored in those of the form. Blocks begin
/// at whole bytes.
std::string PackSamples(const ImageForm& form, int significant);

}  // namespace test
