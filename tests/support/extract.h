// Samples of images that a test makes.
#pragma once

#include <gtest/gtest.h>

#include "core/samples/samples.h"
#include "tests/support/support.h"
#include "tools/orbntf/tool.h"

namespace test {

using core::SampleImage;

class ExtractTest : public test::ModuleTest {
 protected:
  static core::SampleFault Read(const NitfBuilder& file, SampleImage& image, uint32_t reduce = 0) {
    const test::TempFile nitf(file.Bytes());
    const core::Survey survey(nitf.Path());
    return core::ReadSamples(survey, *survey.Find(core::PartKind::Image, 0), reduce, image);
  }
  static core::SampleFault Read(const ImageForm& form, const std::string& data, SampleImage& image,
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
