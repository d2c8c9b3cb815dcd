// Picture files written row by row.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

struct VectorHandle;

namespace tool {

enum class PictureForm { Png, Ppm, Jpeg, Tiff };
/// The form that a name's ending or the word "png", "ppm", "jpeg" or "tiff" asks for.
std::optional<PictureForm> PictureFormOf(std::string_view word);
/// The ending of a form's names.
const char* EndingOf(PictureForm form);

/// Writes 24-bit RGB rows, top row first, into an open file; TIFF goes back in it.
class PictureWriter {
 public:
  virtual ~PictureWriter() = default;
  /// False when the file does not take it; nothing further is written.
  virtual bool PutRow(const uint8_t* rgb) = 0;
  /// False when the picture is incomplete.
  virtual bool Finish() = 0;

  static std::unique_ptr<PictureWriter> Start(PictureForm form, std::FILE* file, uint32_t width,
                                              uint32_t height);
};

/// PNG, with `alpha` of rows of red, green, blue and alpha.
std::unique_ptr<PictureWriter> StartPng(std::FILE* file, uint32_t width, uint32_t height, bool alpha);
std::unique_ptr<PictureWriter> StartJpeg(std::FILE* file, uint32_t width, uint32_t height);
std::unique_ptr<PictureWriter> StartTiff(std::FILE* file, uint32_t width, uint32_t height);

/// Paints a drawing as PNG whose objects take `longerSide` pixels (0 as the drawing suggests). 1;
/// ORB_SHORT_WRITE when the file does not take it; the host's status.
int32_t PaintPng(const VectorHandle& drawing, int32_t longerSide, std::FILE* file);

/// Averages squares of N x N pixels; squares cut by an edge average what there is.
class BoxScaler {
 public:
  BoxScaler(uint32_t width, uint32_t height, uint32_t factor);
  uint32_t Width() const { return (width_ + factor_ - 1) / factor_; }
  uint32_t Height() const { return (height_ + factor_ - 1) / factor_; }
  /// Takes a row of blue, green, red pixels; returns the finished RGB row or null.
  const uint8_t* Take(const uint8_t* bgr);

 private:
  static constexpr uint32_t kMostShort = 64;  // the factor up to which sums stay short

  template <class Sum>
  void Add(const uint8_t* bgr, std::vector<Sum>& sums);
  template <class Total, class Sum>
  void Average(std::vector<Sum>& sums);

  uint32_t width_, height_, factor_;
  uint32_t rowsTaken_ = 0, rowsHeld_ = 0;
  std::vector<uint16_t> shortSums_;  // of the rows held, blue, green and red a column
  std::vector<uint32_t> longSums_;
  std::vector<uint8_t> rgb_;
};

}  // namespace tool
