// The rules of images: subheaders, blocks, mask tables and streams.
#include <filesystem>
#include <fstream>

#include "core/check/check_file.h"
#include "tests/support/encoders.h"
#include "tests/support/sound.h"
#include "tests/support/support.h"
#include "tests/support/vq.h"

namespace {

using test::Broken;
using test::Change;
using test::ChangeImage;
using test::ImageForm;
using test::MaskForm;
using test::NitfBuilder;
using test::Other;
using namespace std::string_literals;

constexpr int kSide = 32;

class CheckImagesTest : public test::ModuleTest {};

std::string Bytes(size_t count) { return std::string(count, 'p'); }
std::function<std::string()> Pixels(size_t count) {
  return [count] { return Bytes(count); };
}

// Corners on earth, and records beside them.
Broken Corners(const std::string& rule, const std::string& form, const std::string& corners,
               const std::string& records = "") {
  return Change(rule, [=](NitfBuilder& file) {
    test::Record& image = file.images[0].subheader;
    image.Set("ICORDS", form).InsertAfter("ICORDS", "IGEOLO", corners);
    if (!records.empty())
      image.Set("IXSHDL", static_cast<int64_t>(3 + records.size()))
          .InsertAfter("IXSHDL", "IXS", "000" + records);
  });
}

TEST_F(CheckImagesTest, Subheaders) {
  const std::string square = "520000N0100000E520000N0110000E510000N0110000E510000N0100000E";
  const std::string block =
      "BLOCKA001230100000"
      "00008" +
      std::string(22, '0') + "-20.000000+030.000000-20.000000+031.000000-21.000000+031.000000" +
      "-21.000000+030.000000010.0";
  test::ExpectBroken({
      ChangeImage("image.size", "NROWS", "00000000"),
      ChangeImage("image.category", "ICAT", "NONESUCH"),
      Corners("image.icords", "Q", square),
      Corners("image.corners", "G", "9" + square.substr(1)),
      Corners("image.corners.crossed", "G",
              square.substr(0, 15) + square.substr(30, 15) + square.substr(15, 15) + square.substr(45)),
      Corners("image.corners.records", "G", square, block),
      Other("image.compression", {.compression = "ZZ"}, Pixels(64)),
      Other("image.rate", {.compression = "M1", .rate = "3D"},
            [] {
              return test::MaskBytes({{0}, {}, -1}) + "x";
            }),
      ChangeImage("image.isync", "ISYNC", "1"),
      ChangeImage("image.magnification", "IMAG", "0.0"),
      ChangeImage("image.magnification", "IMAG", "/3"),
  });
  for (const char* magnification : {"/2", "2.0", "/128", "1"}) {
    const Broken sound = ChangeImage("", "IMAG", magnification);
    EXPECT_EQ(test::RulesBroken(sound.file()), std::set<std::string>()) << magnification;
  }
}

TEST_F(CheckImagesTest, SamplesAndBands) {
  const ImageForm palette{
      .representation = "RGB/LUT", .bandCodes = {"LU"}, .lookup = Bytes(768), .lookupTables = 3};
  const auto with = [&palette](size_t bytes, int tables) {
    ImageForm form = palette;
    form.lookup = Bytes(bytes);
    form.lookupTables = tables;
    return form;
  };
  ImageForm grey = with(0, 1), signedTable = with(256, 1), many = with(5 * 256, 5);
  grey.representation = signedTable.representation = many.representation = "MONO";
  signedTable.pixelType = "SI";
  const ImageForm colours{.bands = 3, .representation = "RGB", .bandCodes = {"R", "G", "B"}};
  test::ExpectBroken({
      ChangeImage("pixel.type", "PVTYPE", "X"),
      Other("pixel.depth", {.bits = 10}, Pixels(80)),
      ChangeImage("pixel.significant", "ABPP", "09"),
      ChangeImage("pixel.justification", "PJUST", "X"),
      ChangeImage("pixel.representation", "IREP", "XYZ"),
      ChangeImage("pixel.bands", "IREP", "RGB"),
      {"pixel.bands.count",
       [] {
         NitfBuilder file = test::SoundWith({.bands = 5, .representation = "MULTI"}, Bytes(320));
         file.images[0].subheader.Set("NBANDS", "0").InsertAfter("NBANDS", "XBANDS", "00005");
         return file.Bytes();
       }},
      Other("pixel.bands.codes", {.bands = 3, .representation = "RGB", .bandCodes = {"R", "G", "G"}},
            Pixels(192)),
      ChangeImage("pixel.bands.codes", "IREPBAND0", "R"),
      Other("table.count", many, Pixels(64)),
      Other("table.palette", with(256, 1), Pixels(64)),
      Other("table.entries", grey, Pixels(64)),
      Other("table.values", with(384, 3), Pixels(64)),
      Other("table.type", signedTable, Pixels(64)),
      ChangeImage("table.missing", "IREPBAND0", "LU"),
      ChangeImage("band.filter", "IFC0", "Q"),
  });
  EXPECT_EQ(test::RulesBroken(test::SoundWith(palette, Bytes(64)).Bytes()), std::set<std::string>());
  EXPECT_EQ(test::RulesBroken(test::SoundWith(colours, Bytes(192)).Bytes()), std::set<std::string>());
}

TEST_F(CheckImagesTest, Blocks) {
  test::ExpectBroken({
      ChangeImage("block.mode", "IMODE", "X"),
      ChangeImage("block.sequential", "IMODE", "S"),
      ChangeImage("block.cover", "NROWS", "00000009"),
      ChangeImage("block.cover", "NCOLS", "00000009"),
      ChangeImage("block.zero", "NPPBH", "0000"),
      Change("block.side",
             [](NitfBuilder& file) {
               file.images[0].subheader.Set("NPPBH", 9000).Set("IC", "NM");
               file.images[0].data = test::MaskBytes({{0xFFFFFFFF}, {}, -1});
             }),
      Other("block.length", {}, Pixels(63)),
      Other("block.length", {.width = 16, .bits = 12}, Pixels(193)),
  });
  EXPECT_EQ(test::RulesBroken(test::SoundWith({.width = 16, .bits = 12}, Bytes(192)).Bytes()),
            std::set<std::string>());
}

TEST_F(CheckImagesTest, MaskTables) {
  const auto masked = [](const std::string& rule, const std::string& data, ImageForm form = {}) {
    form.blocksAcross = 2;
    form.compression = "NM";
    return Other(rule, form, [=] { return data; });
  };
  const std::string sound = test::MaskBytes({{0, 64}, {}, -1});
  std::string far = sound, odd = sound;
  far[3] = static_cast<char>(far[3] + 4);
  odd[5] = 3;
  const std::string wide = "\0\0\0\x0B\0\0\0\0\0\x05x"s;
  test::ExpectBroken({
      masked("mask.table", sound.substr(0, 12)),
      masked("mask.records", test::MaskBytes({{0, 128, 128, 256}, {}, -1}) + Bytes(256),
             {.bands = 2, .representation = "MULTI"}),
      masked("mask.offset", far + Bytes(132)),
      masked("mask.lengths", odd + Bytes(128)),
      masked("mask.code", wide + Bytes(128)),
      masked("mask.inside", test::MaskBytes({{0, 900}, {}, -1}) + Bytes(128)),
      masked("mask.inside", test::MaskBytes({{0, 64}, {}, -1}) + Bytes(127)),
      masked("mask.overlap", test::MaskBytes({{0, 10}, {}, -1}) + Bytes(128)),
      masked("mask.pads", test::MaskBytes({{0, 64}, {0xFFFFFFFFu, 10}, 0}) + Bytes(128)),
  });
  const MaskForm whole{{0xFFFFFFFF, 0}, {0xFFFFFFFF, 0}, 0};
  EXPECT_EQ(test::RulesBroken(masked("", test::MaskBytes(whole) + Bytes(64)).file()),
            std::set<std::string>());
}

// ---------------------------------------------------------------- streams

ImageForm Form(const std::string& compression, const std::string& rate, int bands = 1) {
  ImageForm form{
      .width = kSide, .height = kSide, .bands = bands, .compression = compression, .rate = rate};
  if (bands == 3) {
    form.representation = "RGB";
    form.bandCodes = {"R", "G", "B"};
    form.mode = "P";
  }
  return form;
}

// A JPEG stream with the application segment of the format, and another segment behind it.
std::string Jpeg(int components = 1, int side = kSide, const std::string& segment = "") {
  const std::string samples =
      test::Samples(0, 0, side, side, components == 3 ? std::vector{0, 1, 2} : std::vector{0});
  const std::string stream = test::EncodeJpeg(samples, side, side, components, components == 3);
  return stream.substr(0, 2) + "\xFF\xE6\0\x07NITF\0"s + segment + stream.substr(2);
}

std::string Without(std::string stream, const std::string& marker) {
  for (size_t at = stream.find(marker); at != std::string::npos; at = stream.find(marker))
    stream.erase(at, 2 + static_cast<size_t>(static_cast<uint8_t>(stream[at + 2]) * 256 +
                                             static_cast<uint8_t>(stream[at + 3])));
  return stream;
}

// One with restart markers, and with the first two of them exchanged.
std::string Restarting() {
  const std::string stream = test::MakeJpeg({.width = kSide, .height = kSide, .restart = 2},
                                            [](int x, int y, int) { return test::Sample(x, y, 0); });
  return stream.substr(0, 2) + "\xFF\xE6\0\x07NITF\0"s + stream.substr(2);
}
std::string Swapped(std::string stream) {
  const size_t first = stream.find("\xFF\xD0"), second = stream.find("\xFF\xD1");
  std::swap(stream[first + 1], stream[second + 1]);
  return stream;
}

TEST_F(CheckImagesTest, JpegStreams) {
  const auto jpeg = [](const std::string& rule, const std::string& data, int bands = 1) {
    return Other(rule, Form("C3", "00.0", bands), [=] { return data; });
  };
  const std::string sound = Jpeg();
  ImageForm byBlock = Form("C3", "00.0", 3), two = Form("I1", "00.0"), deep = Form("C3", "00.0"),
            tables = Form("C3", "00.0");
  byBlock.mode = "B";
  two.blocksAcross = 2;
  deep.bits = 12;
  tables.lookupTables = 1;
  tables.lookup = Bytes(256);
  test::ExpectBroken({
      jpeg("jpeg.begin", "xx" + sound),
      jpeg("jpeg.begin", ""),
      jpeg("jpeg.end", sound.substr(0, sound.size() - 2)),
      jpeg("jpeg.count", sound + sound),
      jpeg("jpeg.size", Jpeg(1, 2 * kSide)),
      jpeg("jpeg.components", Jpeg(3)),
      Other("jpeg.precision", deep, [=] { return sound; }),
      Other("jpeg.process", Form("C5", "00.0"), [=] { return sound; }),
      jpeg("jpeg.tables", Without(sound, "\xFF\xC4")),
      jpeg("jpeg.tables", Without(sound, "\xFF\xDB")),
      jpeg("jpeg.restarts", Jpeg(1, kSide, "\xFF\xDD\0\x04\0\x01"s)),
      jpeg("jpeg.restarts.order", Swapped(Restarting())),
      jpeg("jpeg.codes", sound.substr(0, sound.size() - 100) + "\xFF\xD9"),
      jpeg("jpeg.undecoded", sound + std::string((8 << 20) + 1, '\0')),
      jpeg("jpeg.application", Without(sound, "\xFF\xE6")),
      Other("block.colour", byBlock, [] { return Jpeg(3); }),
      Other("block.downsampled", two, [=] { return sound + sound; }),
      Other("table.compression", tables, [=] { return sound; }),
  });
  EXPECT_EQ(test::RulesBroken(jpeg("", "\xFF\xFF" + sound).file()), std::set<std::string>())
      << "fill bytes";
  EXPECT_EQ(test::RulesBroken(jpeg("", sound + "\xFF\0\0"s).file()), std::set<std::string>())
      << "fill behind it";
  EXPECT_EQ(test::RulesBroken(jpeg("", Jpeg(3), 3).file()), std::set<std::string>());
}

// The data is longer than what is held of a file at once; the middle of it is a hole.
TEST_F(CheckImagesTest, AStreamOfMoreThanAGibibyteIsWalkedToItsEnd) {
  constexpr uint64_t kHole = (uint64_t{1} << 30) + (64 << 20);
  const std::string sound = Jpeg();
  const test::TempFile file(NitfBuilder().Image(Form("C3", "00.0"), sound).Bytes());
  std::string bytes = file.Contents();
  {
    const core::Survey survey(file.Path());
    for (const auto& [name, grown] :
         {std::pair("LI1", sound.size() + kHole), {"FL", bytes.size() + kHole}}) {
      const auto field = survey.Header().Find(name);
      ASSERT_TRUE(field.has_value()) << name;
      std::string digits = std::to_string(grown);
      digits.insert(0, field->text.size() - digits.size(), '0');
      bytes.replace(field->offset, digits.size(), digits);
    }
  }
  std::filesystem::resize_file(file.Path(), bytes.size() - 2);
  std::fstream out(file.Path(), std::ios::in | std::ios::out | std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size() - 2));
  out.seekp(static_cast<std::streamoff>(bytes.size() - 2 + kHole));
  out.write("\xFF\xD9", 2);
  out.close();
  ASSERT_TRUE(out.good());
  const core::Survey survey(file.Path());
  std::set<std::string> rules;
  for (const core::Finding& finding : core::FindFaults(survey, core::RecordDefinitions()))
    rules.insert(finding.rule->id);
  // Such a length takes the highest level.
  EXPECT_EQ(rules, (std::set<std::string>{"level.size", "jpeg.undecoded"}));
}

// A codestream beside the record that tells its layers.
Broken Codestream(const std::string& rule, const std::string& data, ImageForm form = Form("C8", "N080"),
                  int told = 1, int levels = 5) {
  return {rule, [=] {
            NitfBuilder file = test::SoundWith(form, data);
            std::string record = "J2KLRA" + test::Digits(11 + 12 * told, 5) + "0" +
                                 test::Digits(levels, 2) + "00001" + test::Digits(told, 3);
            for (int layer = 0; layer < told; ++layer) record += test::Digits(layer, 3) + "08.000000";
            if (told > 0)
              file.images[0]
                  .subheader.Set("IXSHDL", static_cast<int64_t>(3 + record.size()))
                  .InsertAfter("IXSHDL", "IXS", "000" + record);
            return file.Bytes();
          }};
}

// Codestreams with another marker, with a tile part that is longer than all, with tiles of half the
// width, of which the second is not there, with tiles that begin in front of the image, and with another
// layer.
std::string Renamed(std::string stream, const std::string& marker, char code) {
  stream[stream.find(marker) + 1] = code;
  return stream;
}
std::string LongPart(std::string stream) {
  stream[stream.find("\xFF\x90") + 7] = '\x7F';
  return stream;
}
std::string Narrow(std::string stream) { return stream.replace(24, 4, test::Big(kSide / 2, 4)); }
std::string Moved(std::string stream) {
  for (const size_t at : {size_t{8}, size_t{16}})
    stream.replace(at, 4, test::Big(at == 8 ? kSide + 8 : 8, 4));
  return stream.replace(24, 4, test::Big(kSide + 8, 4));
}
std::string Layered(std::string stream) {
  stream[stream.find("\xFF\x52") + 7] = 2;
  return stream;
}

TEST_F(CheckImagesTest, Codestreams) {
  const std::string sound = test::EncodeJpeg2000(kSide, kSide, {0});
  ImageForm two = Form("C8", "N080"), deep = Form("C8", "N080");
  two.blocksAcross = 2;
  deep.bits = 16;
  deep.significantBits = 12;
  test::ExpectBroken({
      Codestream("j2k.begin", "jP" + sound),
      Codestream("j2k.end", sound.substr(0, sound.size() - 2)),
      Codestream("j2k.size", test::EncodeJpeg2000(kSide, 2 * kSide, {0})),
      Codestream("j2k.tiles", test::EncodeJpeg2000(2 * kSide, kSide, {0}), two),
      Codestream("j2k.components", test::EncodeJpeg2000(kSide, kSide, {0, 1, 2})),
      Codestream("j2k.depth", sound, deep),
      Codestream("j2k.wrapped", test::EncodeJpeg2000(kSide, kSide, {0}, {.jp2 = true})),
      Codestream("j2k.header", Renamed(sound, "\xFF\x5C", '\x64')),
      Codestream("j2k.parts", LongPart(sound)),
      Codestream("j2k.missing", Narrow(sound)),
      Codestream("j2k.offset", Moved(sound)),
      Codestream("j2k.layers.count", Layered(sound)),
      Codestream("j2k.layers", sound, Form("C8", "N080"), 0),
      Codestream("image.rate", sound, Form("C8", "fast")),
  });
  EXPECT_EQ(test::RulesBroken(Codestream("", sound).file()), std::set<std::string>());
  EXPECT_EQ(test::RulesBroken(Codestream("", sound + "\0"s).file()), std::set<std::string>())
      << "fill behind it";
}

TEST_F(CheckImagesTest, ProfilesOfCodestreams) {
  const auto broken = [](const std::string& stream, const char* rate, const char* profile) {
    return test::RulesBroken(Codestream("", stream, Form("C8", rate), 2).file(), profile);
  };
  const std::string one = test::EncodeJpeg2000(kSide, kSide, {0});
  const auto alone = [](const char* rule) { return std::set<std::string>{rule}; };
  EXPECT_EQ(test::RulesBroken(Codestream("", one).file(), "npje"), alone("profile.layers"));
  std::string stream = Layered(one);
  EXPECT_EQ(broken(stream, "N080", "npje"), std::set<std::string>());
  EXPECT_EQ(broken(stream, "00.0", "npje"), alone("profile.rate"));
  EXPECT_EQ(broken(stream, "N080", "epje"), alone("profile.progression"));
  stream[stream.find("\xFF\x52") + 9] = 3;
  const std::string shallow = Codestream("", stream, Form("C8", "N080"), 2, 3).file();
  EXPECT_EQ(test::RulesBroken(shallow, "tpje"), alone("profile.levels"));
  ImageForm four = Form("C8", "N080");
  four.blocksAcross = four.blocksDown = 2;
  const std::string tiled = Layered(test::EncodeJpeg2000(2 * kSide, 2 * kSide, {0}, {.tile = kSide}));
  EXPECT_EQ(test::RulesBroken(Codestream("", tiled, four, 2).file(), "npje"), alone("profile.tiles"));
}

TEST_F(CheckImagesTest, FacsimileAndVectorQuantisation) {
  ImageForm fax = Form("C1", "1D  "), wide = fax;
  fax.bits = wide.bits = 1;
  fax.pixelType = wide.pixelType = "B";
  wide.width = 2568;
  const auto quantised = [](const std::string& rule, size_t at, char byte) {
    const test::VqForm form;
    ImageForm image = test::VqImage(form, "C4", 1, 1);
    image.rate = "0.75";
    return Other(rule, image, [=] {
      std::string data = test::VqData(form);
      data[at] = byte;
      return data;
    });
  };
  test::ExpectBroken({
      Other("fax.rows", fax, [] { return test::EncodeFacsimile(kSide, kSide / 2, false); }),
      {"block.facsimile",
       [=] {
         NitfBuilder file = test::SoundWith(wide, test::EncodeFacsimile(2568, kSide, false));
         file.header.Set("CLEVEL", "05");
         return file.Bytes();
       }},
      quantised("vq.codes", 3, 5),
      quantised("vq.tables", 12, 3),
  });
  EXPECT_EQ(test::RulesBroken(quantised("", 3, 4).file()), std::set<std::string>());
  EXPECT_EQ(test::RulesBroken(test::SoundWith(fax, test::EncodeFacsimile(kSide, kSide, false)).Bytes()),
            std::set<std::string>());
}

}  // namespace
