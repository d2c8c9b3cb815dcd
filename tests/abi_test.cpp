// The documented record layouts against the declared ones.

#include "Common/Exchange.h"
#include "tests/support/support.h"

// Where pointers have four bytes: every offset and size of the documentation, as static assertions.
#include "documented_layout.inc"

namespace {

// Offsets of a record's fields where pointers have four bytes, as the documentation writes them.
std::string LayoutOf(PublicTable table, const char* name, size_t packedSize) {
  std::string text;
  size_t offset = 0;
  size_t pointers = 0;
  for (const PublicField& field : table) {
    const bool pair = field.kind == PublicKind::Location;
    const bool pointer = field.kind == PublicKind::String || field.kind == PublicKind::Pointer;
    const std::string fieldName = std::string(field.name) + (pair ? "row" : "");
    text += (text.empty() ? "" : ", ") + fieldName + " +" + std::to_string(offset);
    if (pair) text += ", " + std::string(field.name) + "column +" + std::to_string(offset + 4);
    offset += pointer ? 4 : SizeOf(field.kind);
    pointers += pointer;
  }
  EXPECT_EQ(offset + pointers * (sizeof(void*) - 4), packedSize) << name;
  return std::string("## ") + name + ", " + std::to_string(offset) + " bytes\n\n" + text + "\n";
}

TEST(AbiTest, RecordsAreLaidOutAsDocumented) {
  const std::string page = test::ReadFile(std::string(PROJECT_SOURCE_DIR) + "/docs/abi.md");
  for (const std::string& layout :
       {LayoutOf(PublicFileFields(), "NITFHeader", sizeof(NITFHeader)),
        LayoutOf(PublicImageFields(), "ImageHeader", sizeof(ImageHeader)),
        LayoutOf(PublicGraphicFields(), "GraphicHeader", sizeof(GraphicHeader)),
        LayoutOf(PublicTextFields(), "TextHeader", sizeof(TextHeader))}) {
    EXPECT_NE(page.find(layout), std::string::npos) << layout;
  }
}

TEST(AbiTest, FieldsStandAtTheirTablePlaces) {
  ImageHeader image = {};
  EXPECT_EQ(FindPlace(PublicImageFields(), &image, "ILOC").bytes,
            reinterpret_cast<uint8_t*>(&image) + offsetof(ImageHeader, ILOCrow));
  EXPECT_EQ(FindPlace(PublicImageFields(), &image, "TPXCD").bytes,
            reinterpret_cast<uint8_t*>(&image) + offsetof(ImageHeader, TPXCD));
  NITFHeader file = {};
  EXPECT_EQ(FindPlace(PublicFileFields(), &file, "FVER").bytes,
            reinterpret_cast<uint8_t*>(&file) + offsetof(NITFHeader, FVER));
}

}  // namespace
