// JPEG (ISO/IEC 10918-1): frames, decoding and encoding.
#pragma once

#include <memory>
#include <string>

#include "media/codecs/source.h"

namespace media {

/// The frame header of a JPEG stream.
struct JpegFrame {
  uint8_t marker;  ///< SOF0 (0xC0) to SOF15
  uint8_t precision;
  uint32_t width, height, components;
  bool declaresColour;  ///< JFIF or Adobe segment
  uint64_t end;         ///< where the segment behind the frame header begins
  bool IsLossless() const { return marker == 0xC3 || marker == 0xC7 || marker == 0xCB; }
  bool IsProgressive() const { return marker == 0xC2 || marker == 0xC6 || marker == 0xCA; }
};
bool FindJpegFrame(const Source& source, JpegFrame& frame);

/// Fill bytes may stand in front of any marker (ISO/IEC 10918-1, B.1.1.2), which decoders do not expect
/// in front of the first.
Source WithoutFill(const Source& source);

enum class JpegColours {
  AsStored,           ///< components as they are coded
  RgbUnlessDeclared,  ///< three components are red, green and blue unless the stream itself says
                      ///< otherwise
  YccUnlessDeclared,  ///< … luminance and colour differences, which are converted
};
struct JpegRequest {
  JpegColours colours = JpegColours::AsStored;
  uint32_t reduce = 0;  ///< 8-bit streams: 0 to 3
  uint32_t width = 0;   ///< of the (reduced) picture that are wanted at the most, 0 for all
  uint32_t height = 0;
  uint32_t top = 0;       ///< rows in front of it are passed over
  bool readsEnd = false;  ///< what follows the last row must be sound as well
  bool isStrict = false;  ///< what the decoder guesses, where codes are wrong, is BadData
};

/// Decodes a stream of any precision that this build can, weighed before memory is taken. Three
/// components that are converted come as red, green, blue. OverBudget; NoMemory; Unsupported; BadData.
/// Throws std::bad_alloc.
Outcome DecodeJpeg(const Source& source, const JpegRequest& request, const TakeRow& take);

/// Decodes an 8-bit stream row by row as they are asked for, from the top down.
class JpegRows {
 public:
  /// Weighs the stream and reads its header. Unsupported for one that is not of this kind; else as
  /// DecodeJpeg. Throws std::bad_alloc.
  Outcome Start(const Source& source, JpegColours colours, uint32_t reduce);
  JpegRows();
  ~JpegRows();
  JpegRows(const JpegRows&) = delete;
  JpegRows& operator=(const JpegRows&) = delete;

  /// Of every row.
  const RowForm& Form() const;
  /// The next row, from 0.
  uint32_t Position() const;
  Outcome Skip(uint32_t rows);
  /// Gives a row until the next call.
  Outcome Next(const uint8_t*& row);
  /// Whether what follows the last row is sound.
  Outcome Finish();
  /// Whether some of it was guessed.
  bool Guessed() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Whether 12-bit and lossless streams, and those of more than four components, decode in this build.
bool HasWideJpeg();

/// What DecodeJpeg does with the streams that libjpeg does not decode, which are in memory. `take` gets
/// all rows.
Outcome DecodeWideJpeg(Bytes bytes, const JpegFrame& frame, const TakeRow& take);

struct JpegPlan {
  uint32_t width, height;
  bool isGrey;
  bool storesRgb;      ///< colour as red, green, blue components instead of luminance and differences
  int quality;         ///< 1 to 100
  bool isYcc = false;  ///< what is given are luminance and differences, in this order, which are stored
};
/// Encodes rows of grey, or of blue, green and red. Throws std::bad_alloc.
Outcome EncodeJpeg(const JpegPlan& plan, const std::function<const uint8_t*(uint32_t y)>& row,
                   std::string& bytes);

/// Encodes one band of 12 bits, row after row. Unsupported where this build has no codec for it. Throws
/// std::bad_alloc.
Outcome EncodeWideJpeg(const JpegPlan& plan, const uint16_t* samples, std::string& bytes);

}  // namespace media
