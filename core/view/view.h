// A file's picture: the composite of its segments, or one image of it, as rows of red, green and blue.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/format/places.h"
#include "core/view/image_painter.h"

namespace core {

/// What is wanted of a file's picture.
struct ViewRequest {
  /// A part of the picture in its rows and columns; rows or columns of 0 go as far as it does.
  uint64_t row = 0, column = 0, rows = 0, columns = 0;
  uint32_t scale = 1;             ///< squares of so many pixels are averaged to one
  uint32_t size = 0;              ///< in place of it: the longer side's pixels, never more than there are
  bool fast = false;              ///< smaller pictures take nearest pixels and the codecs' own reductions
  std::optional<uint32_t> image;  ///< this image alone, its upper left corner at (0, 0)
  std::vector<uint32_t> bands;    ///< one or three that are shown, from 0; empty for the image's own
  Stretch stretch;
};

/// A segment that is not in a picture, or not all of it.
struct LeftOut {
  std::string segment, words;
};

/// Draws a picture by the published standard (MIL-STD-2500C, 5.3): segments by display level at the
/// places that they are attached to, on the file's background colour.
class FileView {
 public:
  /// The survey and the request stay where they are.
  FileView(const Survey& survey, const ViewRequest& request);
  ~FileView();
  FileView(const FileView&) = delete;
  FileView& operator=(const FileView&) = delete;

  /// Finds the picture's size. Invalid for a part that is not on it, or a file without a picture.
  SampleFault Start();
  /// Of all of the picture, and of what is drawn.
  uint64_t FullWidth() const;
  uint64_t FullHeight() const;
  uint32_t Width() const;
  uint32_t Height() const;
  /// Of the full picture, those that are made for it.
  uint64_t PixelsToMake() const;

  /// Receives rows, the top one first; false ends the drawing as Stopped.
  using TakeRow = std::function<bool(uint32_t y, const uint8_t* rgb)>;
  /// Draws. ReadError.
  SampleFault Draw(const TakeRow& take);
  /// What could not be drawn and left its place empty.
  const std::vector<LeftOut>& Missing() const;

 private:
  class Drawer;
  std::unique_ptr<Drawer> drawer_;
};

}  // namespace core
