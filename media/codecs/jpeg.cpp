// 8-bit decoding through libjpeg, and which decoder a stream takes.
#include "media/codecs/jpeg.h"

#include <algorithm>
#include <vector>

#include "media/codecs/jpeg_codec.h"
#include "media/work.h"

namespace media {
namespace {

constexpr uint64_t kMaxPixelsPerByte = 4096;  // no JPEG stream packs more pixels into a byte
constexpr uint64_t kMaxCoefficientBytes = 96 << 20;
constexpr uint64_t kWorkPerSample = 5, kWorkPerScanSample = 4;  // nanoseconds
constexpr uint32_t kMostReduce = 3;                             // libjpeg scales down to an eighth

// Three components stay as they are, or are converted where they are luminance and colour differences.
void ChooseColourSpace(jpeg_decompress_struct& codec, const JpegFrame& frame, JpegColours colours) {
  if (codec.num_components == 1) {
    codec.jpeg_color_space = codec.out_color_space = JCS_GRAYSCALE;
  } else if (codec.num_components != 3 || colours == JpegColours::AsStored) {
    codec.jpeg_color_space = codec.out_color_space = JCS_UNKNOWN;
  } else {
    if (!frame.declaresColour)
      codec.jpeg_color_space = colours == JpegColours::RgbUnlessDeclared ? JCS_RGB : JCS_YCbCr;
    codec.out_color_space = JCS_RGB;
  }
}

// Limits a decoder's work: a stream of countless empty scans costs a pass over the picture each.
struct ScanLimit {
  jpeg_progress_mgr manager;
  int scan;
  uint64_t samples;
  bool exceeded;
};
void LimitScans(j_common_ptr codec) {
  constexpr int kMaxScans = 200;
  if (!codec->is_decompressor) return;
  auto& limit = *reinterpret_cast<ScanLimit*>(codec->progress);
  const int scan = reinterpret_cast<j_decompress_ptr>(codec)->input_scan_number;
  if (scan == limit.scan) return;
  limit.scan = scan;
  limit.exceeded = !media::Spend(kWorkPerScanSample * limit.samples);
  if (scan > kMaxScans || limit.exceeded) ReturnJpegError(codec);
}

// Whether the decoder, which then keeps all coefficients, would take too much memory.
bool NeedsTooMuch(jpeg_decompress_struct& codec) {
  if (!jpeg_has_multiple_scans(&codec)) return false;
  uint64_t bytes = 0;
  for (int c = 0; c < codec.num_components; ++c) {
    const jpeg_component_info& component = codec.comp_info[c];
    bytes += uint64_t{component.width_in_blocks} * component.height_in_blocks * sizeof(JBLOCK);
  }
  return bytes > kMaxCoefficientBytes;
}

// A source as libjpeg reads it.
struct SourceManager {
  jpeg_source_mgr manager;  // first: libjpeg knows it by this alone
  const Source& source;
  uint64_t at;
  std::vector<uint8_t>& buffer;
};
void StartSource(j_decompress_ptr) {}
boolean FillFromSource(j_decompress_ptr codec) {
  static const JOCTET kEnd[] = {0xFF, JPEG_EOI};
  auto& from = *reinterpret_cast<SourceManager*>(codec->src);
  const auto count =
      static_cast<size_t>(std::min<uint64_t>(from.buffer.size(), from.source.Size() - from.at));
  if (count != 0 && !from.source.Read(from.at, from.buffer.data(), count))
    ReturnJpegError(reinterpret_cast<j_common_ptr>(codec));
  from.at += count;
  from.manager.next_input_byte = count != 0 ? from.buffer.data() : kEnd;
  from.manager.bytes_in_buffer = count != 0 ? count : sizeof kEnd;
  return TRUE;
}
void SkipInSource(j_decompress_ptr codec, long count) {
  auto& from = *reinterpret_cast<SourceManager*>(codec->src);
  if (count <= 0) return;
  const size_t held = std::min(from.manager.bytes_in_buffer, static_cast<size_t>(count));
  from.manager.next_input_byte += held;
  from.manager.bytes_in_buffer -= held;
  from.at = std::min(from.at + (static_cast<size_t>(count) - held), from.source.Size());
}

// Whether the stream is the one that was found by its frame header.
bool IsOf(const jpeg_decompress_struct& codec, const JpegFrame& frame) {
  return codec.image_width == frame.width && codec.image_height == frame.height &&
         codec.num_components == static_cast<int>(frame.components) &&
         codec.data_precision == frame.precision;
}

bool IsNarrow(const JpegFrame& frame) {
  // libjpeg finds no more than four components in its scans.
  return frame.precision == 8 && !frame.IsLossless() && frame.components <= 4;
}

// Weighs a stream, fill bytes in front of it left out.
Outcome Weigh(const Source& stream, JpegFrame& frame) {
  if (!FindJpegFrame(stream, frame)) return Outcome::NotRecognised;
  const uint64_t pixels = uint64_t{frame.width} * frame.height;
  if (pixels / kMaxPixelsPerByte > stream.Size()) return Outcome::BadData;
  return Spend(kWorkPerSample * pixels * frame.components) ? Outcome::Ok : Outcome::OverBudget;
}

// The wanted rows and columns of a stream that is decoded whole.
Outcome DecodeWhole(const Source& source, const JpegFrame& frame, const JpegRequest& request,
                    const TakeRow& take) {
  std::vector<uint8_t> held;
  Bytes bytes = source.Memory();
  if (bytes.empty()) {
    if (source.Size() > INT32_MAX) return Outcome::NoMemory;
    held.resize(static_cast<size_t>(source.Size()));
    if (!source.Read(0, held.data(), held.size())) return Outcome::BadData;
    bytes = held;
  }
  return DecodeWideJpeg(bytes, frame, [&](const RowForm& form, uint32_t y, const uint8_t* row) {
    if (y < request.top || (request.height != 0 && y - request.top >= request.height)) return Outcome::Ok;
    RowForm wanted = form;
    if (request.width != 0) wanted.width = std::min(form.width, request.width);
    wanted.height = form.height - std::min(form.height, request.top);
    if (request.height != 0) wanted.height = std::min(wanted.height, request.height);
    return take(wanted, y - request.top, row);
  });
}

}  // namespace

// libjpeg's errors jump back into the call that met them; nothing with a destructor lives in between.
struct JpegRows::State {
  explicit State(const Source& stream) : source(stream), piece(stream.Memory().empty() ? kPiece : 0) {
    codec.err = Silent(errors);
  }
  ~State() { jpeg_destroy_decompress(&codec); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  Outcome Failed() const { return limit.exceeded ? Outcome::OverBudget : Outcome::BadData; }
  Outcome Start(const JpegFrame& frame, JpegColours colours, uint32_t reduce) {
    if (setjmp(errors.jump) != 0) return Failed();
    jpeg_create_decompress(&codec);
    if (const Bytes memory = source.Memory(); !memory.empty()) {
      jpeg_mem_src(&codec, memory.data(), static_cast<unsigned long>(memory.size()));
    } else {
      codec.src = &manager.manager;
    }
    jpeg_read_header(&codec, TRUE);
    if (!IsOf(codec, frame)) return Outcome::BadData;
    if (NeedsTooMuch(codec)) return Outcome::OverBudget;
    codec.progress = &limit.manager;
    ChooseColourSpace(codec, frame, colours);
    codec.scale_num = 1;
    codec.scale_denom = 1u << reduce;
    jpeg_start_decompress(&codec);
    return Outcome::Ok;
  }

  static constexpr size_t kPiece = 64 << 10;
  Source source;
  std::vector<uint8_t> piece, buffer;
  SourceManager manager = {
      {nullptr, 0, StartSource, FillFromSource, SkipInSource, jpeg_resync_to_restart, StartSource},
      source,
      0,
      piece};
  jpeg_decompress_struct codec{};
  JpegErrors errors;
  ScanLimit limit{};
  RowForm form{};
};

JpegRows::JpegRows() = default;
JpegRows::~JpegRows() = default;
const RowForm& JpegRows::Form() const { return state_->form; }
uint32_t JpegRows::Position() const { return state_->codec.output_scanline; }

Outcome JpegRows::Start(const Source& source, JpegColours colours, uint32_t reduce) {
  const Source stream = WithoutFill(source);
  JpegFrame frame;
  if (const Outcome weighed = Weigh(stream, frame); weighed != Outcome::Ok) return weighed;
  if (reduce > kMostReduce || !IsNarrow(frame)) return Outcome::Unsupported;
  state_ = std::make_unique<State>(stream);
  state_->buffer.resize(size_t{frame.width} * frame.components);
  state_->limit = {
      {&LimitScans, 0, 0, 0, 0}, 0, uint64_t{frame.width} * frame.height * frame.components, false};
  const Outcome outcome = state_->Start(frame, colours, reduce);
  const jpeg_decompress_struct& codec = state_->codec;
  state_->form = {codec.output_width, codec.output_height, static_cast<uint32_t>(codec.output_components),
                  8};
  return outcome;
}

Outcome JpegRows::Skip(uint32_t rows) {
  if (setjmp(state_->errors.jump) != 0) return state_->Failed();
  if (rows != 0) (void)jpeg_skip_scanlines(&state_->codec, rows);
  return Outcome::Ok;
}

Outcome JpegRows::Next(const uint8_t*& row) {
  if (setjmp(state_->errors.jump) != 0) return state_->Failed();
  JSAMPROW to = state_->buffer.data();
  jpeg_read_scanlines(&state_->codec, &to, 1);
  row = to;
  return Outcome::Ok;
}

Outcome JpegRows::Finish() {
  if (setjmp(state_->errors.jump) != 0) return state_->Failed();
  if (Position() == state_->codec.output_height) jpeg_finish_decompress(&state_->codec);
  return Outcome::Ok;
}

bool JpegRows::Guessed() const { return state_->errors.manager.num_warnings != 0; }

namespace {

// The wanted rows of a stream of the usual kind.
Outcome DecodeNarrow(const Source& source, const JpegRequest& request, const TakeRow& take) {
  JpegRows rows;
  if (const Outcome outcome = rows.Start(source, request.colours, request.reduce); outcome != Outcome::Ok)
    return outcome;
  const RowForm& all = rows.Form();
  const uint32_t end =
      request.height == 0
          ? all.height
          : static_cast<uint32_t>(std::min<uint64_t>(all.height, uint64_t{request.top} + request.height));
  const RowForm form = {request.width == 0 ? all.width : std::min(all.width, request.width),
                        end - std::min(end, request.top), all.components, 8};
  if (request.top < end) {
    if (const Outcome outcome = rows.Skip(request.top); outcome != Outcome::Ok) return outcome;
  }
  while (rows.Position() < end) {
    const uint8_t* row = nullptr;
    if (const Outcome outcome = rows.Next(row); outcome != Outcome::Ok) return outcome;
    if (const Outcome taken = take(form, rows.Position() - 1 - request.top, row); taken != Outcome::Ok)
      return taken;
  }
  if (request.readsEnd) {
    if (const Outcome outcome = rows.Finish(); outcome != Outcome::Ok) return outcome;
  }
  return request.isStrict && rows.Guessed() ? Outcome::BadData : Outcome::Ok;
}

}  // namespace

Outcome DecodeJpeg(const Source& source, const JpegRequest& request, const TakeRow& take) {
  const Source stream = WithoutFill(source);
  JpegFrame frame;
  if (!FindJpegFrame(stream, frame)) return Outcome::NotRecognised;
  if (IsNarrow(frame)) return DecodeNarrow(stream, request, take);
  if (const Outcome weighed = Weigh(stream, frame); weighed != Outcome::Ok) return weighed;
  return request.reduce != 0 ? Outcome::Unsupported : DecodeWhole(stream, frame, request, take);
}

}  // namespace media
