// How headers are laid out and what their fields mean (MIL-STD-2500C, tables ). The module
// knows the same on its own: what reads by these tables can disagree with what it writes.
#pragma once

#include <cstdint>
#include <span>

namespace core {

/// What a field holds: characters of the basic set (BCS-A) or of the extended one (ECS-A, Latin-1),
/// digits (BCS-N positive integers), a row and a column of five characters each, or bytes.
enum class FieldForm : uint8_t { Basic, Extended, Number, Place, Bytes };

/// A field: its mnemonic, its bytes, its meaning for people, and what it holds.
struct LayoutRow {
  const char* name;
  uint16_t width;
  const char* meaning;
  FieldForm form = FieldForm::Basic;
};
using Layout = std::span<const LayoutRow>;

/// The fields of classification, each behind its header's prefix: FS, IS, SS, TS, DES or RES. The first
/// one of extensions is DECLAS or RECLAS.
extern const Layout kSecurityLayout;

// The file header: its front, what stands between the classification and the lists of lengths, and the
// lists.
extern const Layout kFileFrontLayout, kFileMiddleLayout;

/// How the file header lists the segments of a kind: count, length of a subheader, length of its data.
struct ListLayout {
  LayoutRow count, subheader, data;
};
extern const std::span<const ListLayout>
    kListLayouts;                             ///< in file order: images, graphics, (NUMX), texts, …
extern const LayoutRow kReservedCountLayout;  ///< NUMX, behind the graphics

// An image subheader, in the runs between which its size varies.
extern const Layout kImageFrontLayout, kImageSizeLayout;
extern const LayoutRow kImageCornersLayout, kCommentCountLayout, kCommentLayout, kCompressionLayout,
    kRateLayout, kBandCountLayout, kManyBandsLayout, kTableEntriesLayout, kTableLayout;
extern const Layout kBandLayout, kImageBlocksLayout;

extern const Layout kGraphicFrontLayout, kGraphicBodyLayout, kTextFrontLayout, kTextBodyLayout;
extern const Layout kExtensionFrontLayout, kReservedFrontLayout, kOverflowLayout;
/// The own fields of XML_DATA_CONTENT (STDI-0002): all of them, the first eight, or the first.
extern const Layout kXmlLayout;
extern const LayoutRow kExtensionLengthLayout, kExtensionFieldsLayout, kReservedLengthLayout,
    kReservedFieldsLayout;

/// Extended data: the length, the overflow field and the records, of a header's areas.
struct AreaLayout {
  LayoutRow length, overflow, records;
};
extern const AreaLayout kFileUserArea, kFileArea, kImageUserArea, kImageArea, kGraphicArea, kTextArea;

}  // namespace core
