#include "core/format/layout.h"

namespace core {
namespace {

constexpr LayoutRow kSecurityRows[] = {
    {"CLAS", 1, "Classification: T top secret, S secret, C confidential, R restricted, U unclassified",
     FieldForm::Extended},
    {"CLSY", 2, "Classification system: the country or organisation whose rules apply",
     FieldForm::Extended},
    {"CODE", 11, "Codewords", FieldForm::Extended},
    {"CTLH", 2, "Control and handling", FieldForm::Extended},
    {"REL", 20, "Releasing instructions: who may have it", FieldForm::Extended},
    {"DCTP", 2, "Declassification type: by date, event, or exempt", FieldForm::Extended},
    {"DCDT", 8, "Declassification date", FieldForm::Extended},
    {"DCXM", 4, "Declassification exemption", FieldForm::Extended},
    {"DG", 1, "Downgrade to this classification", FieldForm::Extended},
    {"DGDT", 8, "Downgrade date", FieldForm::Extended},
    {"CLTX", 43, "Classification text: more about it", FieldForm::Extended},
    {"CATP", 1, "Classification authority: O original, D derived, M from several sources",
     FieldForm::Extended},
    {"CAUT", 40, "Classification authority", FieldForm::Extended},
    {"CRSN", 1, "Reason for the classification", FieldForm::Extended},
    {"SRDT", 8, "Date of the classifying source", FieldForm::Extended},
    {"CTLN", 15, "Control number", FieldForm::Extended}};
constexpr LayoutRow kFileFrontRows[] = {
    {"FHDR", 4, "Name of the format: NITF or NSIF"},
    {"FVER", 5, "Version of the format"},
    {"CLEVEL", 2, "Complexity level that a reader needs", FieldForm::Number},
    {"STYPE", 4, "Standard type: BF01"},
    {"OSTAID", 10, "Station that made the file"},
    {"FDT", 14, "Date and time of the file, UTC"},
    {"FTITLE", 80, "Title of the file", FieldForm::Extended}};
constexpr LayoutRow kFileMiddleRows[] = {
    {"FSCOP", 5, "Copy number", FieldForm::Number},
    {"FSCPYS", 5, "Number of copies", FieldForm::Number},
    {"ENCRYP", 1, "Encryption: 0 for none", FieldForm::Number},
    {"FBKGC", 3, "Background colour: red, green, blue", FieldForm::Bytes},
    {"ONAME", 24, "Name of the originator", FieldForm::Extended},
    {"OPHONE", 18, "Telephone of the originator", FieldForm::Extended},
    {"FL", 12, "Length of the file in bytes", FieldForm::Number},
    {"HL", 6, "Length of the file header in bytes", FieldForm::Number}};
constexpr ListLayout kLists[] = {{{"NUMI", 3, "Number of images", FieldForm::Number},
                                  {"LISH", 6, "Length of the image's subheader", FieldForm::Number},
                                  {"LI", 10, "Length of the image's data", FieldForm::Number}},
                                 {{"NUMS", 3, "Number of graphics", FieldForm::Number},
                                  {"LSSH", 4, "Length of the graphic's subheader", FieldForm::Number},
                                  {"LS", 6, "Length of the graphic's data", FieldForm::Number}},
                                 {{"NUMT", 3, "Number of texts", FieldForm::Number},
                                  {"LTSH", 4, "Length of the text's subheader", FieldForm::Number},
                                  {"LT", 5, "Length of the text", FieldForm::Number}},
                                 {{"NUMDES", 3, "Number of data extensions", FieldForm::Number},
                                  {"LDSH", 4, "Length of the extension's subheader", FieldForm::Number},
                                  {"LD", 9, "Length of the extension's data", FieldForm::Number}},
                                 {{"NUMRES", 3, "Number of reserved extensions", FieldForm::Number},
                                  {"LRESH", 4, "Length of the extension's subheader", FieldForm::Number},
                                  {"LRE", 7, "Length of the extension's data", FieldForm::Number}}};
constexpr LayoutRow kImageFrontRows[] = {{"IM", 2, "Begins an image subheader"},
                                         {"IID1", 10, "Identification of the image"},
                                         {"IDATIM", 14, "Date and time of the image, UTC"},
                                         {"TGTID", 17, "Identification of the target"},
                                         {"IID2", 80, "Title of the image", FieldForm::Extended}};
constexpr LayoutRow kImageSizeRows[] = {
    {"ENCRYP", 1, "Encryption: 0 for none", FieldForm::Number},
    {"ISORCE", 42, "Source of the image", FieldForm::Extended},
    {"NROWS", 8, "Rows of pixels", FieldForm::Number},
    {"NCOLS", 8, "Columns of pixels", FieldForm::Number},
    {"PVTYPE", 3, "Samples: INT integers, B bits, SI signed integers, R reals, C complex numbers"},
    {"IREP", 8, "Representation: how bands make colours"},
    {"ICAT", 8, "Category: how the image came about"},
    {"ABPP", 2, "Significant bits of a sample", FieldForm::Number},
    {"PJUST", 1, "Where the significant bits stand: R right, L left"},
    {"ICORDS", 1, "Form of the corners: G, D geographic, N, S, U metric, blank for none"}};
constexpr LayoutRow kBandRows[] = {{"IREPBAND", 2, "What the band shows: R, G, B, M, LU, Y, Cb, Cr"},
                                   {"ISUBCAT", 6, "Subcategory of the band, such as a wavelength"},
                                   {"IFC", 1, "Filter condition: N"},
                                   {"IMFLT", 3, "Filter code, reserved"},
                                   {"NLUTS", 1, "Lookup tables of the band", FieldForm::Number}};
constexpr LayoutRow kImageBlocksRows[] = {
    {"ISYNC", 1, "Synchronisation code: 0", FieldForm::Number},
    {"IMODE", 1, "How bands interleave: B by block, P by pixel, R by row, S not at all"},
    {"NBPR", 4, "Blocks in a row of blocks", FieldForm::Number},
    {"NBPC", 4, "Blocks in a column of blocks", FieldForm::Number},
    {"NPPBH", 4, "Columns of pixels in a block", FieldForm::Number},
    {"NPPBV", 4, "Rows of pixels in a block", FieldForm::Number},
    {"NBPP", 2, "Stored bits of a sample", FieldForm::Number},
    {"IDLVL", 3, "Display level: higher ones lie above lower ones", FieldForm::Number},
    {"IALVL", 3, "Level of the segment that the image is attached to, 0 for none", FieldForm::Number},
    {"ILOC", 10, "Row and column from the place that it is attached to", FieldForm::Place},
    {"IMAG", 4, "Magnification of the original"}};
constexpr LayoutRow kGraphicFrontRows[] = {{"SY", 2, "Begins a graphic subheader"},
                                           {"SID", 10, "Identification of the graphic"},
                                           {"SNAME", 20, "Name of the graphic", FieldForm::Extended}};
constexpr LayoutRow kGraphicBodyRows[] = {
    {"ENCRYP", 1, "Encryption: 0 for none", FieldForm::Number},
    {"SFMT", 1, "Form of the graphic: C for CGM"},
    {"SSTRUCT", 13, "Reserved", FieldForm::Number},
    {"SDLVL", 3, "Display level: higher ones lie above lower ones", FieldForm::Number},
    {"SALVL", 3, "Level of the segment that the graphic is attached to, 0 for none", FieldForm::Number},
    {"SLOC", 10, "Row and column of the drawing's origin", FieldForm::Place},
    {"SBND1", 10, "Row and column of the bounds' upper left corner", FieldForm::Place},
    {"SCOLOR", 1, "Colour: C colour, M monochrome"},
    {"SBND2", 10, "Row and column of the bounds' lower right corner", FieldForm::Place},
    {"SRES", 2, "Reserved", FieldForm::Number}};
constexpr LayoutRow kTextFrontRows[] = {
    {"TE", 2, "Begins a text subheader"},
    {"TEXTID", 7, "Identification of the text"},
    {"TXTALVL", 3, "Level of the segment that the text belongs to", FieldForm::Number},
    {"TXTDT", 14, "Date and time of the text, UTC"},
    {"TXTITL", 80, "Title of the text", FieldForm::Extended}};
constexpr LayoutRow kTextBodyRows[] = {
    {"ENCRYP", 1, "Encryption: 0 for none", FieldForm::Number},
    {"TXTFMT", 3, "Form of the text: STA, UT1, U8S characters, MTF messages"}};
constexpr LayoutRow kExtensionFrontRows[] = {
    {"DE", 2, "Begins a data extension subheader"},
    {"DESID", 25, "Registered name of the extension"},
    {"DESVER", 2, "Version of the extension", FieldForm::Number}};
constexpr LayoutRow kOverflowRows[] = {
    {"DESOFLW", 6, "Area whose records overflowed"},
    {"DESITEM", 3, "Segment whose records overflowed, 0 for the file", FieldForm::Number}};
constexpr LayoutRow kXmlRows[] = {
    {"DESCRC", 5, "Check sum of the data, 99999 for none", FieldForm::Number},
    {"DESSHFT", 8, "Type of the data: XML", FieldForm::Extended},
    {"DESSHDT", 20, "Date and time of the data", FieldForm::Extended},
    {"DESSHRP", 40, "Who is responsible for the data", FieldForm::Extended},
    {"DESSHSI", 60, "Schema or standard that the data follows", FieldForm::Extended},
    {"DESSHSV", 10, "Version of that standard", FieldForm::Extended},
    {"DESSHSD", 20, "Date of that standard", FieldForm::Extended},
    {"DESSHTN", 120, "Target namespace of the XML", FieldForm::Extended},
    {"DESSHLPG", 125, "Polygon that the data is about", FieldForm::Extended},
    {"DESSHLPT", 25, "Point that the data is about", FieldForm::Extended},
    {"DESSHLI", 20, "Identifier of a location", FieldForm::Extended},
    {"DESSHLIN", 120, "Namespace of that identifier", FieldForm::Extended},
    {"DESSHABS", 200, "Abstract of the data", FieldForm::Extended}};
constexpr LayoutRow kReservedFrontRows[] = {{"RE", 2, "Begins a reserved extension subheader"},
                                            {"RESID", 25, "Registered name of the extension"},
                                            {"RESVER", 2, "Version of the extension", FieldForm::Number}};

}  // namespace

constexpr Layout kSecurityLayout = kSecurityRows;
constexpr Layout kFileFrontLayout = kFileFrontRows, kFileMiddleLayout = kFileMiddleRows;
constexpr std::span<const ListLayout> kListLayouts = kLists;
constexpr LayoutRow kReservedCountLayout = {"NUMX", 3, "Reserved, 000", FieldForm::Number};
constexpr Layout kImageFrontLayout = kImageFrontRows, kImageSizeLayout = kImageSizeRows;
constexpr LayoutRow kImageCornersLayout = {"IGEOLO", 60, "Corners of the image on earth"};
constexpr LayoutRow kCommentCountLayout = {"NICOM", 1, "Number of comments", FieldForm::Number};
constexpr LayoutRow kCommentLayout = {"ICOM", 80, "Comment", FieldForm::Extended};
constexpr LayoutRow kCompressionLayout = {
    "IC", 2,
    "Compression: NC none, C1 facsimile, C3 JPEG, C4 vector quantisation, C8 JPEG 2000; M… masked"};
constexpr LayoutRow kRateLayout = {"COMRAT", 4, "Rate of the compression"};
constexpr LayoutRow kBandCountLayout = {"NBANDS", 1, "Number of bands, 0 where XBANDS tells",
                                        FieldForm::Number};
constexpr LayoutRow kManyBandsLayout = {"XBANDS", 5, "Number of bands, from 10 on", FieldForm::Number};
constexpr LayoutRow kTableEntriesLayout = {"NELUT", 5, "Entries of each lookup table", FieldForm::Number};
constexpr LayoutRow kTableLayout = {"LUTD", 0, "Lookup table", FieldForm::Bytes};
constexpr Layout kBandLayout = kBandRows, kImageBlocksLayout = kImageBlocksRows;
constexpr Layout kGraphicFrontLayout = kGraphicFrontRows, kGraphicBodyLayout = kGraphicBodyRows;
constexpr Layout kTextFrontLayout = kTextFrontRows, kTextBodyLayout = kTextBodyRows;
constexpr Layout kExtensionFrontLayout = kExtensionFrontRows, kReservedFrontLayout = kReservedFrontRows;
constexpr Layout kOverflowLayout = kOverflowRows;
constexpr Layout kXmlLayout = kXmlRows;
constexpr LayoutRow kExtensionLengthLayout = {"DESSHL", 4, "Length of the extension's own fields",
                                              FieldForm::Number};
constexpr LayoutRow kExtensionFieldsLayout = {"DESSHF", 0, "The extension's own fields",
                                              FieldForm::Bytes};
constexpr LayoutRow kReservedLengthLayout = {"RESSHL", 4, "Length of the extension's own fields",
                                             FieldForm::Number};
constexpr LayoutRow kReservedFieldsLayout = {"RESSHF", 0, "The extension's own fields", FieldForm::Bytes};

constexpr const char* kLengthMeaning = "Length of the records and the field in front of them";
constexpr const char* kOverflowMeaning = "Data extension that holds what did not fit, 0 for none";
constexpr const char* kRecordsMeaning = "Tagged records";
constexpr AreaLayout AreaOf(const char* length, const char* overflow, const char* records) {
  return {{length, 5, kLengthMeaning, FieldForm::Number},
          {overflow, 3, kOverflowMeaning, FieldForm::Number},
          {records, 0, kRecordsMeaning, FieldForm::Bytes}};
}
constexpr AreaLayout kFileUserArea = AreaOf("UDHDL", "UDHOFL", "UDHD");
constexpr AreaLayout kFileArea = AreaOf("XHDL", "XHDLOFL", "XHD");
constexpr AreaLayout kImageUserArea = AreaOf("UDIDL", "UDOFL", "UDID");
constexpr AreaLayout kImageArea = AreaOf("IXSHDL", "IXSOFL", "IXSHD");
constexpr AreaLayout kGraphicArea = AreaOf("SXSHDL", "SXSOFL", "SXSHD");
constexpr AreaLayout kTextArea = AreaOf("TXSHDL", "TXSOFL", "TXSHD");

}  // namespace core
