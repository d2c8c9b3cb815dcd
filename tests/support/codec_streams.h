// Compressed streams made with the codecs' own encoders, for tests and benchmarks.
#pragma once

#include <functional>
#include <string>

namespace test {

/// The sample of a component at a pixel.
using SampleAt = std::function<int(int x, int y, int component)>;

struct JpegForm {
  int width, height, components = 1;
  /// Three components as they are without a word of what they are, as red, green and blue, or converted
  /// to luminance and differences at half the size, which the stream says.
  enum { AsTheyAre, Rgb, Converted } colours = AsTheyAre;
  bool progressive = false;
  int scans = 0;  ///< of a bit of a coefficient each, in place of the usual ones
  int quality = 75;
  unsigned restart = 0;  ///< MCUs of an interval; 0 for none
};
std::string MakeJpeg(const JpegForm& form, const SampleAt& sample);

struct Jpeg2000Form {
  int precision = 8;
  bool jp2 = false;      ///< a JP2 file around the codestream
  int chromaStep = 1;    ///< subsampling of the second and third component
  bool declared = true;  ///< a JP2 file says sRGB, else nothing
  int tile = 0;          ///< side of the tiles; 0 for one
};
std::string MakeJpeg2000(int width, int height, int components, const Jpeg2000Form& form,
                         const SampleAt& sample);

/// Group 3 rows, black where a sample is not 0. The TIFF file around them stays where a path is given.
std::string MakeFacsimile(int width, int height, bool twoDimensional, const SampleAt& sample,
                          const std::string& path = "");

}  // namespace test
