// Uncompressed picture files: Netpbm (PBM, PGM, PPM, PAM) and arrays (.npy).
#include <bit>
#include <cctype>
#include <cstring>

#include "core/format/part.h"
#include "core/pictures/raster.h"

namespace core {
namespace {

// How the samples of such a file lie.
struct Lie {
  uint64_t at = 0;
  bool isBig = true;      // numbers begin with their high byte
  bool isPlanar = false;  // bands lie one behind the other
  bool isPacked = false;  // single bits, rows begin on a byte
  bool isInverse = false;
  uint32_t most = 0;  // Netpbm: the greatest value where it is not that of all bits; it is scaled
  bool isText = false;
};

class PlainRaster : public Raster {
 public:
  PlainRaster(const FileBytes& file, const RasterForm& form, const Lie& lie) : file_(file), lie_(lie) {
    form_ = form;
    RequireSize(form_);
    if (!lie_.isText &&
        file.Size() - std::min(file.Size(), lie_.at) < RowBytes() * form_.height * Planes())
      throw PictureError("it ends too early");
  }

  void Read(const TakePiece& take) override {
    if (lie_.isText) textAt_ = lie_.at;
    std::string row;
    std::vector<uint8_t> samples;
    for (uint32_t plane = 0; plane < Planes(); ++plane) {
      for (uint32_t y = 0; y < form_.height; ++y) {
        if (lie_.isText) {
          TakeTextRow(row);
        } else {
          row.resize(static_cast<size_t>(RowBytes()));
          if (!file_.Read(lie_.at + (uint64_t{plane} * form_.height + y) * RowBytes(), row.data(),
                          row.size()))
            throw PictureError("it ends too early");
        }
        Unpack(row, samples);
        take({0, y, form_.width, 1, plane, lie_.isPlanar ? 1 : form_.bands, samples.data()});
      }
    }
  }

 private:
  uint32_t Planes() const { return lie_.isPlanar ? form_.bands : 1; }
  uint64_t RowSamples() const { return uint64_t{form_.width} * (lie_.isPlanar ? 1 : form_.bands); }
  uint64_t RowBytes() const {
    return lie_.isPacked ? (uint64_t{form_.width} + 7) / 8 : RowSamples() * form_.sampleBytes;
  }

  // Decimal numbers with white space and comments between them; of single bits digits without any.
  void TakeTextRow(std::string& row) {
    row.clear();
    for (uint64_t i = 0; i < RowSamples(); ++i) {
      const uint32_t value = NextNumber();
      if (form_.sampleBytes == 2) row += static_cast<char>(value >> 8);
      row += static_cast<char>(value);
    }
  }
  int Byte() {
    if (textAt_ - windowAt_ >= window_.size()) {
      windowAt_ = textAt_;
      window_ = file_.At(textAt_, 64 << 10);
    }
    return window_.empty() ? -1 : static_cast<uint8_t>(window_[static_cast<size_t>(textAt_ - windowAt_)]);
  }
  uint32_t NextNumber() {
    int byte = Byte();
    while (byte >= 0 && (std::isspace(byte) != 0 || byte == '#')) {
      while (byte == '#' && Byte() >= 0 && Byte() != '\n') ++textAt_;
      ++textAt_;
      byte = Byte();
    }
    if (byte < '0' || byte > '9') throw PictureError("it ends too early, or holds what is no number");
    uint32_t value = 0;
    for (int digits = 0; byte >= '0' && byte <= '9' && digits < 6; ++digits) {
      value = value * 10 + static_cast<uint32_t>(byte - '0');
      ++textAt_;
      byte = Byte();
      if (form_.bits == 1) break;
    }
    return value;
  }

  void Unpack(const std::string& row, std::vector<uint8_t>& samples) const {
    const size_t bytes = form_.sampleBytes, count = static_cast<size_t>(RowSamples());
    samples.resize(count * bytes);
    if (lie_.isPacked) {
      for (size_t x = 0; x < count; ++x)
        samples[x] = static_cast<uint8_t>((static_cast<uint8_t>(row[x / 8]) >> (7 - x % 8) & 1) ^
                                          (lie_.isInverse ? 1 : 0));
      return;
    }
    std::memcpy(samples.data(), row.data(), samples.size());
    const bool isHostBig = std::endian::native == std::endian::big;
    // The two parts of a complex number are numbers of their own.
    const size_t number = form_.kind == SampleKind::Complex ? bytes / 2 : bytes;
    if (number > 1 && lie_.isBig != isHostBig) {
      for (size_t i = 0; i < samples.size(); i += number)
        std::reverse(samples.begin() + static_cast<ptrdiff_t>(i),
                     samples.begin() + static_cast<ptrdiff_t>(i + number));
    }
    if (lie_.isInverse) {
      for (uint8_t& sample : samples) sample ^= 1;
    }
    if (lie_.most != 0) Scale(samples);
  }

  void Scale(std::vector<uint8_t>& samples) const {
    const uint32_t full = (1u << form_.bits) - 1;
    for (size_t i = 0; i < samples.size(); i += form_.sampleBytes) {
      uint16_t value = samples[i];
      if (form_.sampleBytes == 2) std::memcpy(&value, &samples[i], 2);
      value = static_cast<uint16_t>(uint64_t{std::min<uint32_t>(value, lie_.most)} * full / lie_.most);
      if (form_.sampleBytes == 2) {
        std::memcpy(&samples[i], &value, 2);
      } else {
        samples[i] = static_cast<uint8_t>(value);
      }
    }
  }

  const FileBytes& file_;
  const Lie lie_;
  uint64_t textAt_ = 0, windowAt_ = 0;
  std::string window_;
};

// ---------------------------------------------------------------- Netpbm

// A number of the header; white space and comments stand in front of it.
uint32_t TakeNumber(const std::string& bytes, size_t& at) {
  while (at < bytes.size() && (std::isspace(static_cast<uint8_t>(bytes[at])) != 0 || bytes[at] == '#')) {
    if (bytes[at] == '#') at = std::min(bytes.find('\n', at), bytes.size());
    if (at < bytes.size()) ++at;
  }
  const size_t first = at;
  while (at < bytes.size() && bytes[at] >= '0' && bytes[at] <= '9') ++at;
  const int64_t value = DigitsOf(std::string_view(bytes).substr(first, at - first));
  if (value < 0 || value > INT32_MAX) throw PictureError("its header does not parse");
  return static_cast<uint32_t>(value);
}

void TakeDepth(uint32_t most, RasterForm& form, Lie& lie) {
  if (most == 0 || most > 65535) throw PictureError("its greatest value is not one of 1 to 65535");
  form.bits = static_cast<uint32_t>(std::bit_width(most));
  // What is no power of two less one fills the range of its bytes.
  if (most != (1u << form.bits) - 1) {
    form.bits = most > 255 ? 16 : 8;
    lie.most = most;
  }
  form.sampleBytes = most > 255 ? 2 : 1;
}

// "WIDTH 4" lines up to ENDHDR.
void TakePamHeader(const std::string& bytes, RasterForm& form, Lie& lie) {
  uint32_t most = 0, depth = 0;
  std::string type;
  for (size_t at = 3; at < bytes.size();) {
    const size_t end = bytes.find('\n', at);
    if (end == std::string::npos) break;
    const std::string line = bytes.substr(at, end - at);
    at = end + 1;
    if (line == "ENDHDR") {
      lie.at = at;
      break;
    }
    const size_t space = line.find(' ');
    const std::string key = line.substr(0, space),
                      value = space == std::string::npos ? "" : line.substr(space + 1);
    const auto number = static_cast<uint32_t>(std::clamp<int64_t>(DigitsOf(value), 0, INT32_MAX));
    if (key == "WIDTH") form.width = number;
    if (key == "HEIGHT") form.height = number;
    if (key == "DEPTH") depth = number;
    if (key == "MAXVAL") most = number;
    if (key == "TUPLTYPE") type = value;
  }
  if (lie.at == 0) throw PictureError("its header does not end");
  form.bands = depth;
  form.hasAlpha = type.size() > 6 && type.compare(type.size() - 6, 6, "_ALPHA") == 0;
  form.isColour = type.rfind("RGB", 0) == 0 && depth >= 3;
  TakeDepth(most, form, lie);
}

// ---------------------------------------------------------------- arrays

// The text of a key of the header's dictionary, up to a comma outside parentheses.
std::string ValueOf(const std::string& header, const std::string& key) {
  const size_t found = header.find("'" + key + "'");
  size_t at = found == std::string::npos ? found : header.find(':', found);
  if (at == std::string::npos) throw PictureError(".npy: its header has no " + key);
  int depth = 0;
  std::string value;
  for (++at; at < header.size() && !(depth == 0 && (header[at] == ',' || header[at] == '}')); ++at) {
    depth += header[at] == '(' ? 1 : header[at] == ')' ? -1 : 0;
    if (header[at] != ' ') value += header[at];
  }
  return value;
}

void TakeType(const std::string& type, RasterForm& form, Lie& lie) {
  struct Known {
    std::string_view name;
    SampleKind kind;
    uint32_t bits;
  };
  constexpr Known kKnown[] = {{"b1", SampleKind::Unsigned, 1},  {"u1", SampleKind::Unsigned, 8},
                              {"u2", SampleKind::Unsigned, 16}, {"u4", SampleKind::Unsigned, 32},
                              {"u8", SampleKind::Unsigned, 64}, {"i1", SampleKind::Signed, 8},
                              {"i2", SampleKind::Signed, 16},   {"i4", SampleKind::Signed, 32},
                              {"i8", SampleKind::Signed, 64},   {"f4", SampleKind::Real, 32},
                              {"f8", SampleKind::Real, 64},     {"c8", SampleKind::Complex, 64}};
  if (type.size() != 5 || type[0] != '\'' || type[4] != '\'')
    throw PictureError(".npy: elements of type " + type + " are not taken");
  lie.isBig = type[1] == '>';
  for (const Known& known : kKnown) {
    if (type.substr(2, 2) != known.name) continue;
    form.kind = known.kind;
    form.bits = known.bits;
    form.sampleBytes = PieceBytes(known.bits);
    return;
  }
  throw PictureError(
      ".npy: elements of type " + type +
      " are not taken: bool, whole numbers of 8 to 64 bits, reals of 32 and 64, complex of 64");
}

// (rows, columns) or (bands, rows, columns).
void TakeShape(const std::string& text, RasterForm& form) {
  std::vector<int64_t> sides;
  for (size_t at = 1; at < text.size() && text[at] != ')';) {
    const size_t end = text.find_first_of(",)", at);
    if (end == std::string::npos) break;
    sides.push_back(DigitsOf(std::string_view(text).substr(at, end - at)));
    at = text[end] == ',' ? end + 1 : end;
  }
  if (sides.size() == 2) sides.insert(sides.begin(), 1);
  for (const int64_t side : sides) {
    if (side < 1 || side >= 100000000) throw PictureError(".npy: its shape is empty or too large");
  }
  if (sides.size() != 3)
    throw PictureError(".npy: its shape is neither (rows, columns) nor (bands, rows, columns)");
  form.bands = static_cast<uint32_t>(sides[0]);
  form.height = static_cast<uint32_t>(sides[1]);
  form.width = static_cast<uint32_t>(sides[2]);
}

}  // namespace

std::unique_ptr<Raster> OpenNetpbm(const FileBytes& file) {
  const std::string bytes = file.At(0, 64 << 10);
  if (bytes.size() < 3 || bytes[0] != 'P' || bytes[1] < '1' || bytes[1] > '7' ||
      std::isspace(static_cast<uint8_t>(bytes[2])) == 0)
    return nullptr;
  RasterForm form;
  Lie lie;
  const char kind = bytes[1];
  if (kind == '7') {
    TakePamHeader(bytes, form, lie);
    return std::make_unique<PlainRaster>(file, form, lie);
  }
  size_t at = 2;
  form.width = TakeNumber(bytes, at);
  form.height = TakeNumber(bytes, at);
  form.isColour = kind == '3' || kind == '6';
  form.bands = form.isColour ? 3 : 1;
  lie.isText = kind <= '3';
  if (kind == '1' || kind == '4') {
    form.bits = 1;
    lie.isPacked = kind == '4';
    lie.isInverse = true;  // 1 is black there
  } else {
    TakeDepth(TakeNumber(bytes, at), form, lie);
  }
  lie.at = at + 1;  // one white space
  return std::make_unique<PlainRaster>(file, form, lie);
}

std::unique_ptr<Raster> OpenNpy(const FileBytes& file) {
  const std::string front = file.At(0, 12);
  if (front.size() < 12 || front.compare(0, 6, "\x93NUMPY") != 0) return nullptr;
  const bool isLong = front[6] >= 2;
  const auto byte = [&](size_t at) { return static_cast<uint64_t>(static_cast<uint8_t>(front[at])); };
  const uint64_t length = byte(8) | byte(9) << 8 | (isLong ? byte(10) << 16 | byte(11) << 24 : 0);
  RasterForm form;
  Lie lie;
  lie.at = (isLong ? 12 : 10) + length;
  if (length > 1 << 20) throw PictureError(".npy: its header is too long");
  const std::string header = file.At(isLong ? 12 : 10, length);
  if (ValueOf(header, "fortran_order") != "False")
    throw PictureError(".npy: its columns lie together (fortran_order), its rows have to");
  TakeType(ValueOf(header, "descr"), form, lie);
  TakeShape(ValueOf(header, "shape"), form);
  lie.isPlanar = form.bands > 1;
  return std::make_unique<PlainRaster>(file, form, lie);
}

}  // namespace core
