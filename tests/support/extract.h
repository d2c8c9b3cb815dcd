// Samples of images that a test makes.
#pragma once

#include <gtest/gtest.h>

#include "tests/support/support.h"
#include "tools/orbntf/extract/samples.h"

namespace test {

using tool::SampleImage;

class ExtractTest : public test::ModuleTest {
 protected:
  static tool::ExtractFault Read(const NitfBuilder& file, SampleImage& image, uint32_t reduce = 0) {
    const test::TempFile nitf(file.Bytes());
    const tool::Survey survey(nitf.Path());
    return tool::ReadSamples(survey, *survey.Find(tool::PartKind::Image, 0), reduce, image);
  }
  static tool::ExtractFault Read(const ImageForm& form, const std::string& data, SampleImage& image,
                                 uint32_t reduce = 0) {
    return Read(NitfBuilder().Image(form, data), image, reduce);
  }
  static uint64_t At(const SampleImage& image, uint32_t x, uint32_t y, uint32_t band) {
    const uint8_t* from = image.Pixel(x, y) + size_t{band} * image.sampleBytes;
    uint64_t value = 0;
    for (uint32_t i = image.sampleBytes; i-- > 0;) value = value << 8 | from[i];
    return value;
  }
};

}  // namespace test
