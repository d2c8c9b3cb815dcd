// Pictures of files by the published standard, held whole.
#pragma once

#include "core/view/view.h"
#include "tests/support/support.h"

namespace test {

struct Drawn {
  uint32_t width = 0, height = 0;
  std::vector<uint8_t> rgb;
  core::SampleFault fault;
  std::vector<core::LeftOut> missing;

  const uint8_t* At(uint64_t x, uint64_t y) const { return &rgb[3 * (y * width + x)]; }
};

inline Drawn Draw(const core::Survey& survey, const core::ViewRequest& request) {
  Drawn drawn;
  core::FileView view(survey, request);
  drawn.fault = view.Start();
  if (!drawn.fault.Met()) {
    drawn.width = view.Width();
    drawn.height = view.Height();
    drawn.fault = view.Draw([&](uint32_t y, const uint8_t* rgb) {
      EXPECT_EQ(y * drawn.width * 3, drawn.rgb.size());
      drawn.rgb.insert(drawn.rgb.end(), rgb, rgb + size_t{3} * drawn.width);
      return true;
    });
  }
  drawn.missing = view.Missing();
  return drawn;
}
inline Drawn Draw(const std::string& bytes, const core::ViewRequest& request = {}) {
  return Draw(core::Survey(std::string_view(bytes)), request);
}

}  // namespace test
