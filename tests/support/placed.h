// Images with records that tell where they lie.
#pragma once

#include <functional>

#include "core/place/placed.h"
#include "tests/support/sound.h"

namespace test {

using AskImage =
    std::function<void(const core::SurveyedPart&, const std::vector<core::TaggedRecord>& records)>;
/// The model of an image of 8 x 8 with records and corners, in a file with records of its own.
inline core::Placed ModelOf(const std::string& records, const std::string& icords = "",
                            const std::string& igeolo = "", const std::string& ofFile = "",
                            const AskImage& ask = nullptr) {
  static const core::RecordDefinitions definitions;
  NitfBuilder file = SoundFile();
  Record& image = file.images[0].subheader;
  if (!icords.empty()) image.Set("ICORDS", icords).InsertAfter("ICORDS", "IGEOLO", igeolo);
  const auto put = [](Record& header, const std::string& length, const std::string& area,
                      const std::string& bytes) {
    if (!bytes.empty())
      header.Set(length, static_cast<int64_t>(3 + bytes.size())).InsertAfter(length, area, "000" + bytes);
  };
  put(image, "IXSHDL", "IXS", records);
  put(file.header, "XHDL", "XHD", ofFile);
  const std::string bytes = file.Bytes();
  const core::Survey survey{std::string_view(bytes)};
  const core::SurveyedPart& asked = *survey.Find(core::PartKind::Image, 0);
  if (ask) ask(asked, RecordsOf(asked, definitions));
  return PlaceOf(asked, survey.Header(), definitions);
}

}  // namespace test
