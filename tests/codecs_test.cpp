// Streams and their samples, held against the codec libraries' own programs where they are installed,
// against the whole picture for parts of it, and against what was encoded where nothing is lost.
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "media/codecs/facsimile.h"
#include "media/codecs/jpeg.h"
#include "media/codecs/jpeg2000.h"
#include "media/library.h"
#include "media/work.h"
#include "tests/support/encoders.h"
#include "tests/support/support.h"

namespace test {
namespace {

using media::Outcome;

media::Bytes BytesOf(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

// Interleaved 8-bit samples.
struct Decoded {
  uint32_t width = 0, height = 0, components = 0;
  std::string samples;

  Decoded Cut(const media::Window& window) const {
    Decoded cut = {window.width, window.height, components, {}};
    for (uint32_t y = 0; y < window.height; ++y)
      cut.samples += samples.substr((size_t{window.top + y} * width + window.left) * components,
                                    size_t{window.width} * components);
    return cut;
  }
  bool operator==(const Decoded&) const = default;
};

Outcome Take(const media::Source& source, const media::JpegRequest& request, Decoded& decoded) {
  decoded = {};
  return media::DecodeJpeg(
      source, request, [&](const media::RowForm& form, uint32_t y, const uint8_t* row) {
        EXPECT_EQ(y, decoded.samples.size() / std::max(1u, form.width * form.components));
        decoded.width = form.width;
        decoded.height = form.height;
        decoded.components = form.components;
        decoded.samples.append(reinterpret_cast<const char*>(row), size_t{form.width} * form.components);
        return Outcome::Ok;
      });
}

Outcome Take(const media::Source& source, const media::Jpeg2000Request& request, Decoded& decoded) {
  decoded = {};
  struct Part {
    media::Window place;
    std::string samples;
  };
  std::vector<Part> parts;
  const Outcome outcome = media::DecodeJpeg2000(source, request, [&](const media::CodestreamPart& part) {
    parts.push_back({part.place, {}});
    Part& kept = parts.back();
    decoded.components = static_cast<uint32_t>(part.planes.size());
    decoded.width = std::max(decoded.width, static_cast<uint32_t>(part.place.Right()));
    decoded.height = std::max(decoded.height, static_cast<uint32_t>(part.place.Bottom()));
    for (uint32_t y = 0; y < part.place.height; ++y) {
      for (uint32_t x = 0; x < part.place.width; ++x) {
        for (const media::Plane& plane : part.planes)
          kept.samples += static_cast<char>(plane.At(plane.Line(y), x));
      }
    }
    return Outcome::Ok;
  });
  decoded.samples.assign(size_t{decoded.width} * decoded.height * decoded.components, '\0');
  for (const Part& part : parts) {
    const size_t rowBytes = size_t{part.place.width} * decoded.components;
    for (uint32_t y = 0; y < part.place.height; ++y)
      part.samples.copy(&decoded.samples[(size_t{part.place.top + y} * decoded.width + part.place.left) *
                                         decoded.components],
                        rowBytes, rowBytes * y);
  }
  return outcome;
}

// A stream that is read piece by piece, of which bytes from a place on cannot be read.
media::Source Pieces(const std::string& stream, uint64_t broken = UINT64_MAX) {
  return {stream.size(), [&stream, broken](uint64_t at, uint8_t* to, size_t count) {
            std::memcpy(to, stream.data() + at, count);
            return at + count <= broken;
          }};
}

// A stream in memory, which gives the same piece by piece.
template <class Request>
Outcome Decode(const std::string& stream, const Request& request, Decoded& decoded) {
  Decoded pieces;
  const Outcome outcome = Take(BytesOf(stream), request, decoded);
  EXPECT_EQ(Take(Pieces(stream), request, pieces), outcome);
  EXPECT_TRUE(pieces == decoded);
  return outcome;
}

// What another program makes of a stream, as a portable anymap.
class Witness : public testing::Test {
 protected:
  static bool Has(const std::string& program) {
    return std::system(("command -v " + program + " >/dev/null").c_str()) == 0;
  }
  static Decoded Ask(const std::string& stream, const std::string& suffix, const std::string& command) {
    const TempFile source(stream, suffix), result("", ".ppm");
    const std::string &in = source.Path(), &out = result.Path();
    const std::string line = "in='" + in + "'; out='" + out + "'; " + command + " >/dev/null 2>&1";
    EXPECT_EQ(std::system(line.c_str()), 0) << line;
    std::ifstream file(out, std::ios::binary);
    std::string magic;
    Decoded decoded;
    uint32_t most = 0;
    while (file >> std::ws && file.peek() == '#') std::getline(file, magic);
    file >> magic;
    while (file >> std::ws && file.peek() == '#') std::getline(file, magic);
    file >> decoded.width >> decoded.height >> most;
    file.get();
    decoded.samples.assign(std::istreambuf_iterator<char>(file), {});
    decoded.components = static_cast<uint32_t>(
        decoded.samples.size() / std::max<size_t>(1, size_t{decoded.width} * decoded.height));
    return decoded;
  }
};

TEST_F(Witness, JpegDecodesAsItsLibrarysOwnProgramDoes) {
  if (!Has("djpeg")) GTEST_SKIP() << "djpeg is not installed";
  const std::string colour = EncodeJpeg(Samples(0, 0, 93, 61, {0, 1, 2}), 93, 61, 3);
  const std::string grey = EncodeJpeg(Samples(0, 0, 93, 61, {0}), 93, 61, 1);
  const std::string scans = EncodeJpeg(Samples(0, 0, 93, 61, {0, 1, 2}), 93, 61, 3, false, true);
  for (const std::string& stream : {colour, grey, scans}) {
    for (uint32_t reduce = 0; reduce <= 3; ++reduce) {
      media::JpegRequest request;
      request.reduce = reduce;
      request.colours = media::JpegColours::YccUnlessDeclared;
      Decoded decoded;
      ASSERT_EQ(Decode(stream, request, decoded), Outcome::Ok);
      const Decoded expected =
          Ask(stream, ".jpg",
              "djpeg -pnm -scale 1/" + std::to_string(1 << reduce) + " -outfile \"$out\" \"$in\"");
      EXPECT_EQ(decoded, expected) << reduce;
    }
  }
}

TEST_F(Witness, Jpeg2000DecodesAsItsLibrarysOwnProgramDoes) {
  if (!Has("opj_decompress")) GTEST_SKIP() << "opj_decompress is not installed";
  const std::string colour = EncodeJpeg2000(93, 61, {0, 1, 2});
  const std::string file = EncodeJpeg2000(93, 61, {0, 1, 2}, {.jp2 = true});
  for (uint32_t reduce = 0; reduce <= 3; ++reduce) {
    media::Jpeg2000Request request;
    request.reduce = reduce;
    Decoded decoded, unwrapped;
    ASSERT_EQ(Decode(colour, request, decoded), Outcome::Ok);
    const std::string command = "opj_decompress -r " + std::to_string(reduce) + " -i \"$in\" -o \"$out\"";
    EXPECT_EQ(decoded, Ask(colour, ".j2k", command)) << reduce;
    request.asStored = true;
    ASSERT_EQ(Decode(file, request, unwrapped), Outcome::Ok);
    EXPECT_EQ(unwrapped, Ask(file, ".jp2", command)) << reduce;
  }
}

TEST_F(Witness, FacsimileDecodesAsItsLibrarysOwnProgramsDo) {
  if (!Has("fax2tiff") || !Has("tiffcp")) GTEST_SKIP() << "fax2tiff or tiffcp is not installed";
  for (const bool twoDimensional : {false, true}) {
    const std::string data = EncodeFacsimile(96, 40, twoDimensional);
    std::string rows;
    const auto take = [&](uint32_t, std::span<const uint8_t> row) {
      for (const uint8_t eight : row) rows += static_cast<char>(~eight);
      return Outcome::Ok;
    };
    ASSERT_EQ(media::DecodeFacsimile(BytesOf(data), {96, 40, twoDimensional}, take), Outcome::Ok);
    const TempFile source(data, ".g3"), wrapped("", ".tif"), plain("", ".tif");
    const std::string line = "fax2tiff -M -m -X 96 -3 " + std::string(twoDimensional ? "-2" : "-1") +
                             " -o " + wrapped.Path() + " " + source.Path() +
                             " && tiffcp -c none -f msb2lsb -r 100 " + wrapped.Path() + " " +
                             plain.Path();
    ASSERT_EQ(std::system((line + " >/dev/null 2>&1").c_str()), 0) << line;
    // The rows of its one strip stand somewhere in the file.
    EXPECT_EQ(rows.size(), 40u * 12);
    EXPECT_NE(plain.Contents().find(rows), std::string::npos) << twoDimensional;
  }
}

TEST(Codecs, PartsAreTheSameAsThoseOfTheWhole) {
  const std::string jpeg = EncodeJpeg(Samples(0, 0, 93, 61, {0, 1, 2}), 93, 61, 3);
  for (const uint32_t reduce : {0u, 1u, 3u}) {
    media::JpegRequest request;
    request.reduce = reduce;
    Decoded whole, part;
    ASSERT_EQ(Decode(jpeg, request, whole), Outcome::Ok);
    EXPECT_EQ(whole.width, media::Reduced(93, reduce));
    request.top = 3;
    request.height = 4;
    request.width = 9;
    ASSERT_EQ(Decode(jpeg, request, part), Outcome::Ok);
    EXPECT_EQ(part, whole.Cut({0, 3, 9, 4})) << reduce;
    request.height = 400;
    ASSERT_EQ(Decode(jpeg, request, part), Outcome::Ok);
    EXPECT_EQ(part, whole.Cut({0, 3, 9, whole.height - 3})) << reduce;
  }
  const std::string codestream = EncodeJpeg2000(203, 161, {0, 1, 2});
  for (const uint32_t reduce : {0u, 1u, 2u}) {
    media::Jpeg2000Request request;
    request.reduce = reduce;
    Decoded whole, part;
    ASSERT_EQ(Decode(codestream, request, whole), Outcome::Ok);
    EXPECT_EQ(whole.height, media::Reduced(161, reduce));
    request.window = {40, 24, 101, 77};
    ASSERT_EQ(Decode(codestream, request, part), Outcome::Ok);
    EXPECT_EQ(part, whole.Cut({40u >> reduce, 24u >> reduce, media::Reduced(101, reduce),
                               media::Reduced(77, reduce)}))
        << reduce;
  }
}

// More than is decoded at once, of one tile.
TEST(Codecs, BytesThatCannotBeReadAreNoEnd) {
  const std::string jpeg = EncodeJpeg(Samples(0, 0, 700, 500, {0, 1, 2}), 700, 500, 3);
  const std::string codestream = EncodeJpeg2000(700, 500, {0, 1, 2});
  ASSERT_GT(std::min(jpeg.size(), codestream.size()), 70000u);
  Decoded decoded;
  EXPECT_EQ(Take(Pieces(jpeg, jpeg.size() - 100), media::JpegRequest{}, decoded), Outcome::BadData);
  EXPECT_EQ(Take(Pieces(jpeg, 10), media::JpegRequest{}, decoded), Outcome::NotRecognised);
  EXPECT_NE(Take(Pieces(codestream, 60000), media::Jpeg2000Request{}, decoded), Outcome::Ok);
  EXPECT_NE(Take(Pieces(codestream, 10), media::Jpeg2000Request{}, decoded), Outcome::Ok);
}

TEST(Codecs, ALargeCodestreamComesInParts) {
  const std::string codestream = EncodeJpeg2000(1500, 1603, {0});
  for (const uint32_t reduce : {0u, 1u}) {
    media::Jpeg2000Request request;
    request.reduce = reduce;
    Decoded whole, part;
    ASSERT_EQ(Decode(codestream, request, whole), Outcome::Ok);
    EXPECT_EQ(whole.height, media::Reduced(1603, reduce));
    request.window = {512, 1024, 256, 256};
    ASSERT_EQ(Decode(codestream, request, part), Outcome::Ok);
    EXPECT_EQ(part, whole.Cut({512u >> reduce, 1024u >> reduce, 256u >> reduce, 256u >> reduce}));
    if (reduce != 0) continue;
    Decoded expected = {1500, 1603, 1, Samples(0, 0, 1500, 1603, {0})};
    EXPECT_EQ(whole, expected) << "nothing is lost";
  }
}

TEST(Codecs, AFacsimileGivesItsRowsAndNoneThatDataDoNotReach) {
  for (const bool twoDimensional : {false, true}) {
    const std::string data = EncodeFacsimile(90, 40, twoDimensional);
    uint32_t rows = 0, wrong = 0;
    const auto take = [&](uint32_t y, std::span<const uint8_t> row) {
      for (uint32_t x = 0; x < 90; ++x) {
        const bool isBlack = (row[x / 8] >> (7 - x % 8) & 1) == 0;
        wrong += isBlack != IsBlack(static_cast<int>(x), static_cast<int>(y));
      }
      ++rows;
      return Outcome::Ok;
    };
    EXPECT_EQ(media::DecodeFacsimile(BytesOf(data), {90, 40, twoDimensional}, take), Outcome::Ok);
    EXPECT_EQ(rows, 40u);
    EXPECT_EQ(wrong, 0u);
    rows = 0;
    const std::string half = data.substr(0, data.size() / 2);
    EXPECT_EQ(media::DecodeFacsimile(BytesOf(half), {90, 40, twoDimensional}, take), Outcome::Ok);
    EXPECT_GT(rows, 5u);
    EXPECT_LT(rows, 40u);
  }
}

TEST(Codecs, WhatIsNotWorthItsWorkIsRefusedBeforeItIsDone) {
  std::string jpeg = EncodeJpeg(Samples(0, 0, 32, 32, {0}), 32, 32, 1);
  Decoded decoded;
  {
    const media::WorkLimit limit(0);
    media::CurrentWork().nanoseconds = 100;
    EXPECT_EQ(Decode(jpeg, media::JpegRequest(), decoded), Outcome::OverBudget);
  }
  const size_t frame = jpeg.find("\xFF\xC0");
  ASSERT_NE(frame, std::string::npos);
  jpeg.replace(frame + 5, 4, "\xFF\xFF\xFF\xFF");
  EXPECT_EQ(Decode(jpeg, media::JpegRequest(), decoded), Outcome::BadData);
  EXPECT_EQ(Decode(std::string("\xFF\xD8"), media::JpegRequest(), decoded), Outcome::NotRecognised);
  std::string codestream = EncodeJpeg2000(64, 64, {0});
  media::Jpeg2000Request request;
  request.reduce = 40;
  EXPECT_EQ(Decode(codestream, request, decoded), Outcome::BadData);
  codestream.replace(8, 8, std::string("\x7F\xFF\xFF\xFF\x7F\xFF\xFF\xFF"));
  EXPECT_NE(Decode(codestream, media::Jpeg2000Request(), decoded), Outcome::Ok);
}

// What a decoder passes over may be longer than what it reads at once.
TEST(Codecs, LongSegmentsOfJpegArePassedOver) {
  const std::string stream = BlockStream(0, 1, {0});
  std::string longer = stream.substr(0, 2);
  for (int i = 0; i < 20; ++i) longer += "\xFF\xED" + Big(65535, 2) + std::string(65533, 'x');
  longer += stream.substr(2);
  const media::Source source(longer.size(), [&](uint64_t at, uint8_t* to, size_t bytes) {
    longer.copy(reinterpret_cast<char*>(to), bytes, static_cast<size_t>(at));
    return true;
  });
  Decoded plain, passed;
  ASSERT_EQ(Take(BytesOf(stream), media::JpegRequest(), plain), Outcome::Ok);
  ASSERT_EQ(Take(source, media::JpegRequest(), passed), Outcome::Ok);
  EXPECT_TRUE(passed == plain);
}

TEST(Codecs, LibrariesAreLoadedOnceOrNotThere) {
  void* library = media::LoadLibrary("libm.so.6");
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(media::LoadLibrary("libm.so.6"), library);
  EXPECT_NE(media::FunctionOf(library, "cos"), nullptr);
  EXPECT_EQ(media::FunctionOf(library, "no such function"), nullptr);
  EXPECT_EQ(media::LoadLibrary("libnone.so.99"), nullptr);
  EXPECT_EQ(media::LoadPlugin("none.so"), nullptr);
  EXPECT_EQ(media::FunctionOf(nullptr, "cos"), nullptr);
}

}  // namespace
}  // namespace test
