// Every shorter way through pixels gives what the general one gives.
#include <random>

#include "hostkit/kernel/internal.h"
#include "hostkit/kernel/pixels_rows.h"
#include "media/shuffle.h"
#include "tests/support/objects.h"
#if !defined(_WIN32)
#include "core/pictures/box_scaler.h"
#endif

namespace {

using RowsTest = test::ModuleTest;
using Bytes = std::vector<uint8_t>;

Bytes RandomBytes(std::mt19937& random, size_t count) {
  Bytes bytes(count);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

struct Form {
  uint32_t depth, order;
  enum { Default, Random, None } palette;
};

constexpr Form kForms[] = {
    Form{1, kOrderRgb, Form::Default}, {1, kOrderRgb, Form::Random}, {4, kOrderRgb, Form::Random},
    {8, kOrderRgb, Form::Default},     {8, kOrderRgb, Form::Random}, {12, kOrderGrey, Form::None},
    {12, kOrderGrey, Form::Random},    {16, kOrderGrey, Form::None}, {16, kOrderGrey, Form::Random},
    {24, kOrderBgr, Form::None},       {24, kOrderRgb, Form::None},  {32, kOrderRgb, Form::None},
    {48, kOrderBgr, Form::None}};

TEST_F(RowsTest, RowsOfEveryFormAreReadAsByTheGeneralWay) {
  std::mt19937 random(1);
  constexpr uint32_t kWidth = 2100;
  for (const Form& form : kForms) {
    KernelBitmap bitmap;
    ASSERT_EQ(KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, kWidth, 3, form.depth, form.order,
                                   nullptr, kViewTopLeft, nullptr, 0),
              1);
    Bytes colours = RandomBytes(random, 4 * 256);
    if (form.palette == Form::Random && form.depth <= 8) {
      KernelPutColours(&bitmap, 0, 256, reinterpret_cast<KernelColour*>(colours.data()));
    } else if (form.palette == Form::Random) {
      bitmap.palette = reinterpret_cast<uintptr_t>(colours.data());
      bitmap.colourCount = 256;
    }
    const Bytes pixels = RandomBytes(random, bitmap.byteCount);
    KernelSetBitmapData(&bitmap, pixels.data(), static_cast<uint32_t>(pixels.size()));
    for (const uint64_t worth : {0u, 1u << 20}) {
      const hostkit::RowReader reader(bitmap, worth);
      for (const uint32_t first : {0u, 1u, 3u, 8u, 13u}) {
        for (const uint32_t count : {0u, 1u, 2u, 7u, 16u, 17u, 1025u, kWidth - 13}) {
          Bytes expected(3 * count + 1, 0xEE), read = expected;
          hostkit::RowToBgr(bitmap, hostkit::Row(bitmap, 1), first, count, expected.data());
          reader.Read(hostkit::Row(bitmap, 1), first, count, read.data());
          ASSERT_EQ(read, expected) << form.depth << " bits, " << count << " from " << first;
        }
      }
    }
    if (form.depth > 8) bitmap.palette = bitmap.colourCount = 0;
    KernelFreeBitmap(&bitmap);
  }
}

TEST_F(RowsTest, BandsAreInterleavedAndPixelsTurnedWhateverTheirNumber) {
  std::mt19937 random(2);
  const Bytes a = RandomBytes(random, 100), b = RandomBytes(random, 100), c = RandomBytes(random, 100);
  for (uint32_t count = 0; count <= 100; ++count) {
    Bytes pixels(3 * count + 1, 0xEE), swapped = pixels;
    media::Interleave(a.data(), b.data(), c.data(), count, pixels.data());
    media::SwapEnds(pixels.data(), count, swapped.data());
    for (uint32_t i = 0; i < count; ++i) {
      ASSERT_EQ(Bytes(&pixels[3 * i], &pixels[3 * i + 3]), (Bytes{a[i], b[i], c[i]}));
      ASSERT_EQ(Bytes(&swapped[3 * i], &swapped[3 * i + 3]), (Bytes{c[i], b[i], a[i]}));
    }
    EXPECT_EQ(pixels.back(), 0xEE);
    EXPECT_EQ(swapped.back(), 0xEE);
  }
}

TEST_F(RowsTest, BitsAreCopiedFromAndToAnyPosition) {
  std::mt19937 random(3);
  const auto bit = [](const Bytes& bytes, uint32_t n) { return bytes[n / 8] >> (7 - n % 8) & 1; };
  const Bytes source = RandomBytes(random, 20), before = RandomBytes(random, 20);
  for (int round = 0; round < 2000; ++round) {
    const uint32_t from = random() % 40, to = random() % 40, count = random() % 120;
    Bytes target = before;
    hostkit::CopyPixels(1, source.data(), from, target.data(), to, count);
    for (uint32_t n = 0; n < 160; ++n) {
      const bool copied = n >= to && n < to + count;
      ASSERT_EQ(bit(target, n), copied ? bit(source, from + n - to) : bit(before, n))
          << count << " bits from " << from << " to " << to;
    }
  }
}

TEST_F(RowsTest, TheNearestEntryIsFoundHoweverOftenItIsAsked) {
  std::mt19937 random(4);
  KernelBitmap bitmap;
  ASSERT_EQ(KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, 4, 4, 4, kOrderRgb, nullptr, kViewTopLeft,
                                 nullptr, 0),
            1);
  const Bytes colours = RandomBytes(random, 64);
  KernelPutColours(&bitmap, 0, 16, reinterpret_cast<const KernelColour*>(colours.data()));
  hostkit::NearestColour nearest(bitmap);
  for (int round = 0; round < 4000; ++round) {
    const Bytes colour = {static_cast<uint8_t>(random() % 64), static_cast<uint8_t>(random() % 4 * 80),
                          static_cast<uint8_t>(random() % 64)};
    const auto distance = [&](size_t entry) {
      int sum = 0;
      for (size_t i = 0; i < 3; ++i)
        sum += (colours[4 * entry + i] - colour[i]) * (colours[4 * entry + i] - colour[i]);
      return sum;
    };
    const size_t found = nearest.Find(colour[0], colour[1], colour[2]);
    for (size_t entry = 0; entry < 16; ++entry) ASSERT_LE(distance(found), distance(entry));
  }
  KernelFreeBitmap(&bitmap);
}

#if !defined(_WIN32)
TEST_F(RowsTest, SquaresAreAveragedToTheirEdges) {
  std::mt19937 random(5);
  for (const uint32_t factor : {1u, 2u, 3u, 7u, 64u, 65u}) {
    constexpr uint32_t kWidth = 71, kHeight = 67;
    const Bytes bgr = RandomBytes(random, size_t{3} * kWidth * kHeight);
    core::BoxScaler scaler(kWidth, kHeight, factor);
    uint32_t made = 0;
    for (uint32_t y = 0; y < kHeight; ++y) {
      const uint8_t* row = scaler.Take(&bgr[size_t{3} * kWidth * y]);
      ASSERT_EQ(row != nullptr, (y + 1) % factor == 0 || y + 1 == kHeight);
      if (row == nullptr) continue;
      for (uint32_t x = 0; x < scaler.Width(); ++x) {
        for (uint32_t c = 0; c < 3; ++c) {
          uint32_t sum = 0, pixels = 0;
          for (uint32_t v = made * factor; v <= y; ++v) {
            for (uint32_t u = x * factor; u < std::min(kWidth, (x + 1) * factor); ++u, ++pixels)
              sum += bgr[size_t{3} * (kWidth * v + u) + c];
          }
          ASSERT_EQ(row[3 * x + c], (sum + pixels / 2) / pixels) << factor;
        }
      }
      ++made;
    }
    EXPECT_EQ(made, scaler.Height());
  }
}
#endif

// Steps in every direction and length, among them those that end at and cross the end of what is held.
TEST_F(RowsTest, FilesAreReadTrulyInAnyOrder) {
  std::mt19937 random(6);
  const Bytes bytes = RandomBytes(random, 700000);
  const test::TempFile file(std::string(bytes.begin(), bytes.end()));
  const int32_t handle = KernelOpen(file.Wide(), kOpenRead, kPermissionRead);
  ASSERT_NE(handle, kNoFile);
  Bytes buffer(100000);
  int64_t position = 0;
  for (int round = 0; round < 4000; ++round) {
    const uint32_t lengths[] = {1, 7, 256, 1024, 16384, 16385, 65536, 90000};
    const uint32_t count = lengths[random() % 8];
    const int64_t steps[] = {position, position - 2 * int64_t{count}, position + 200000,
                             static_cast<int64_t>(random() % bytes.size())};
    position = std::clamp<int64_t>(steps[random() % 4], 0, static_cast<int64_t>(bytes.size()));
    ASSERT_EQ(KernelSeek(handle, position, kSeekStart), position);
    const auto there = std::min<size_t>(count, bytes.size() - static_cast<size_t>(position));
    ASSERT_EQ(KernelRead(handle, buffer.data(), count), there);
    ASSERT_TRUE(std::equal(buffer.begin(), buffer.begin() + static_cast<ptrdiff_t>(there),
                           bytes.begin() + static_cast<ptrdiff_t>(position)));
    position += static_cast<int64_t>(there);
  }
  EXPECT_EQ(KernelClose(handle), 1);
}

}  // namespace
