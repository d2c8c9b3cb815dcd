#include "tests/support/random_files.h"

#include <algorithm>

#include "tests/support/encoders.h"
#include "tests/support/metafile.h"
#include "tests/support/samples.h"
#include "tests/support/vq.h"

namespace test {
namespace {

class FileMaker {
 public:
  explicit FileMaker(std::mt19937& random) : random_(random) {}

  RandomFile Make() {
    const int images = Below(4) == 0 ? 2 + Below(2) : 1;
    for (int i = 0; i < images; ++i) AddImage(i + 1);
    if (Below(6) == 0) AddGraphic(images + 1);
    if (Below(3) == 0) file_.header.Set("FBKGC", "\x20\x90\xF0");
    made_.bytes = file_.Bytes();
    return std::move(made_);
  }

 private:
  int Below(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
  template <class T>
  T OneOf(std::initializer_list<T> values) {
    return *(values.begin() + Below(static_cast<int>(values.size())));
  }

  void AddImage(int level) {
    ImageForm form;
    std::string data;
    switch (Below(10)) {
      case 0:
        std::tie(form, data) = Jpeg();
        break;
      case 1:
        std::tie(form, data) = Jpeg2000();
        break;
      case 2:
        std::tie(form, data) = Facsimile();
        break;
      case 3:
        std::tie(form, data) = Vectors();
        break;
      default:
        std::tie(form, data) = Plain();
    }
    made_.family += (made_.family.empty() ? "" : ", ") + form.compression + " " + form.mode + " " +
                    form.pixelType + " " + std::to_string(form.bits) + " x " +
                    std::to_string(form.bands) + " " + form.representation;
    form.level = level;
    form.attachment = level > 1 && Below(2) == 0 ? 1 : 0;
    if (level > 1 || Below(4) == 0) form.location = Digits(Below(20), 5) + Digits(Below(30), 5);
    Record record = ImageRecord(form);
    // The last blocks are more than the image.
    if (Below(3) == 0 && form.compression[0] != 'C') Cut(form, record);
    file_.Image(record, data);
  }

  void Cut(const ImageForm& form, Record& record) {
    made_.hasFill = true;
    record.Set("NROWS", form.height * form.blocksDown - Below(form.height));
    record.Set("NCOLS", form.width * form.blocksAcross - Below(form.width));
  }

  std::pair<ImageForm, std::string> Plain() {
    ImageForm form{.width = 3 + Below(30),
                   .height = 2 + Below(20),
                   .blocksAcross = 1 + Below(3),
                   .blocksDown = 1 + Below(3)};
    form.bands = OneOf({1, 1, 1, 3, 3, 2, 4});
    form.bits = form.bands == 1 ? OneOf({8, 8, 8, 16, 12, 1, 32}) : OneOf({8, 8, 8, 16, 12, 5});
    if (form.bits == 1) form.pixelType = "B";
    form.mode = form.bands == 1 ? "B" : OneOf<const char*>({"B", "P", "R", "S"});
    form.representation = form.bands == 1   ? "MONO"
                          : form.bands == 3 ? OneOf<const char*>({"RGB", "YCbCr601"})
                                            : "MULTI";
    if (form.bands == 3) {
      form.bandCodes = form.representation == "RGB" ? std::vector<std::string>{"R", "G", "B"}
                                                    : std::vector<std::string>{"Y", "Cb", "Cr"};
      made_.hasDifferences = made_.hasDifferences || form.representation != "RGB";
    }
    if (form.bits == 16 && Below(2) == 0) form.significantBits = 11;
    if ((form.bits == 16 || form.bits == 32) && Below(4) == 0)
      form.pixelType = form.bits == 32 ? "R" : "SI";
    made_.isPixelwise = made_.isPixelwise || (form.mode == "P" && form.bands > 2);
    made_.isDeep = made_.isDeep || form.pixelType == "SI" || form.pixelType == "R" ||
                   (form.bands > 1 && form.bits > 8) || form.bits == 32;
    made_.isOdd = made_.isOdd || form.bits == 5 || form.bands == 2 || form.bands == 4 ||
                  (form.bits == 12 && form.bands == 1 && form.width % 2 != 0) ||
                  (form.bits == 12 && form.blocksAcross * form.blocksDown > 1);
    const int significant = form.significantBits == 0 ? form.bits : form.significantBits;
    std::string data = PackSamples(form, significant);
    if (form.bits == 8 && form.mode != "S" && Below(4) == 0) return Masked(form, data);
    return {form, data};
  }

  // Blocks of bytes of which some are left out, with or without a pad pixel code.
  std::pair<ImageForm, std::string> Masked(ImageForm form, const std::string& data) {
    const auto blockBytes = static_cast<size_t>(form.width * form.height * form.bands);
    MaskForm mask;
    std::string kept;
    for (int block = 0; block < form.blocksAcross * form.blocksDown; ++block) {
      const bool isStored = block == 0 || Below(3) != 0;
      mask.blocks.push_back(isStored ? static_cast<uint32_t>(kept.size()) : 0xFFFFFFFF);
      if (isStored) kept += data.substr(static_cast<size_t>(block) * blockBytes, blockBytes);
    }
    if (Below(2) == 0) mask.padCode = 5;
    made_.hasAbsence = true;
    form.compression = "NM";
    return {form, MaskBytes(mask) + kept};
  }

  std::pair<ImageForm, std::string> Jpeg() {
    const int across = 1 + Below(2), down = 1 + Below(2);
    const bool isColour = Below(2) == 0;
    const std::vector<int> bands = isColour ? std::vector{0, 1, 2} : std::vector{0};
    ImageForm form =
        BlockForm("C3", across, down, isColour ? 3 : 1, isColour ? "RGB" : "MONO", isColour ? "P" : "B");
    if (isColour) form.bandCodes = {"R", "G", "B"};
    std::string data;
    for (int block = 0; block < across * down; ++block)
      data += BlockStream(block, across, bands, isColour);
    return {form, data};
  }

  std::pair<ImageForm, std::string> Jpeg2000() {
    const bool isColour = Below(2) == 0;
    const std::vector<int> bands = isColour ? std::vector{0, 1, 2} : std::vector{0};
    ImageForm form = BlockForm("C8", 1, 1, isColour ? 3 : 1, isColour ? "RGB" : "MONO");
    if (isColour) form.bandCodes = {"R", "G", "B"};
    form.width = 40 + Below(90);
    form.height = 30 + Below(90);
    return {form, EncodeJpeg2000(form.width, form.height, bands, {.tile = Below(2) == 0 ? 32 : 0})};
  }

  std::pair<ImageForm, std::string> Facsimile() {
    const bool isTwoDimensional = Below(2) == 0;
    ImageForm form = BlockForm("C1", 1, 1, 1, "MONO");
    form.bits = 1;
    form.pixelType = "B";
    form.rate = isTwoDimensional ? "2DS" : "1D";
    return {form, EncodeFacsimile(kSide, kSide, isTwoDimensional)};
  }

  std::pair<ImageForm, std::string> Vectors() {
    const VqForm form{.bands = Below(2) == 0 ? 3 : 1, .stored = {true, true}};
    ImageForm image = VqImage(form, "C4", 2, 1);
    return {image, VqData(form)};
  }

  void AddGraphic(int level) {
    Record record = GraphicRecord();
    record.Set("SDLVL", level)
        .Set("SLOC", "0000500008")
        .Set("SBND1", "0000500008")
        .Set("SBND2", "0003500048");
    file_.Graphic(record, Metafile(Element(5, 22, I({1})) + Element(5, 23, "\xE0\x10\x60") +
                                   Element(4, 12, I({15, -15, 12})) + Element(4, 1, I({0, 0, 30, -25}))));
    made_.hasGraphic = true;
    made_.family += ", graphic";
  }

  std::mt19937& random_;
  NitfBuilder file_;
  RandomFile made_;
};

}  // namespace

RandomFile MakeRandomFile(std::mt19937& random) { return FileMaker(random).Make(); }

}  // namespace test
