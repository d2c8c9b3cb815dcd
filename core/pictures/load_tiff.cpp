// Pictures of TIFF files at their own depth.
#include <algorithm>
#include <cstring>

#include "core/pictures/load.h"
#include "media/codecs/tiff_memory.h"

namespace core {
namespace {

// Rows of 16-bit samples, grey or colour, that stand in strips with their samples side by side.
media::Outcome ReadDeepRows(TIFF* tiff, Picture& picture, uint16_t samples) {
  std::vector<uint8_t> row(static_cast<size_t>(TIFFScanlineSize(tiff)));
  const size_t wanted = size_t{picture.width} * picture.channels * 2;
  if (row.size() < size_t{picture.width} * samples * 2) return media::Outcome::BadData;
  picture.samples.resize(wanted * picture.height);
  uint8_t* out = picture.samples.data();
  for (uint32_t y = 0; y < picture.height; ++y) {
    if (TIFFReadScanline(tiff, row.data(), y, 0) != 1) return media::Outcome::BadData;
    for (size_t x = 0; x < picture.width; ++x) {
      for (size_t c = 0; c < picture.channels; ++c, out += 2) {
        uint16_t value;  // in host order
        std::memcpy(&value, &row[2 * (x * samples + c)], sizeof value);
        out[0] = static_cast<uint8_t>(value >> 8);
        out[1] = static_cast<uint8_t>(value);
      }
    }
  }
  return media::Outcome::Ok;
}

// Everything else as libtiff shows it, in 8 bits.
media::Outcome ReadShownPixels(TIFF* tiff, Picture& picture) {
  std::vector<uint32_t> pixels(size_t{picture.width} * picture.height);
  if (TIFFReadRGBAImageOriented(tiff, picture.width, picture.height, pixels.data(), ORIENTATION_TOPLEFT,
                                1) != 1)
    return media::Outcome::BadData;
  picture.bits = 8;
  bool hasAlpha = false;
  picture.samples.reserve(pixels.size() * (picture.channels + 1));
  for (const uint32_t pixel : pixels) {
    const uint32_t parts[] = {TIFFGetR(pixel), TIFFGetG(pixel), TIFFGetB(pixel)};
    for (uint32_t c = 0; c < picture.channels; ++c)
      picture.samples.push_back(static_cast<uint8_t>(parts[c]));
    hasAlpha = hasAlpha || TIFFGetA(pixel) != 255;
  }
  if (!hasAlpha) return media::Outcome::Ok;
  // What libtiff gives is multiplied by its alpha: white shines through the rest.
  for (size_t i = 0; i < pixels.size(); ++i) {
    for (uint32_t c = 0; c < picture.channels; ++c)
      picture.samples[i * picture.channels + c] = static_cast<uint8_t>(
          std::min(255u, picture.samples[i * picture.channels + c] + 255 - TIFFGetA(pixels[i])));
  }
  picture.lostAlpha = true;
  return media::Outcome::Ok;
}

struct TiffForm {
  uint16_t bits, samples, photometric, planar, format;
};

// What of a file its picture leaves out, so that it is not stored as it is.
std::string WhyNotLossless(TIFF* tiff, const TiffForm& form) {
  const bool isColour = form.photometric == PHOTOMETRIC_RGB;
  const bool isGrey =
      form.photometric == PHOTOMETRIC_MINISBLACK || form.photometric == PHOTOMETRIC_MINISWHITE;
  if (TIFFNumberOfDirectories(tiff) > 1) return "it has several pages, of which one would be stored";
  if (form.format != SAMPLEFORMAT_UINT && form.format != SAMPLEFORMAT_VOID)
    return "its samples are not unsigned whole numbers";
  if (form.bits > 8 && (form.bits != 16 || TIFFIsTiled(tiff) != 0 || form.planar != PLANARCONFIG_CONTIG ||
                        form.photometric == PHOTOMETRIC_MINISWHITE))
    return "its samples of " + std::to_string(form.bits) +
           " bits stand in tiles, in planes or in other ways that are not taken";
  if (!isColour && !isGrey && form.photometric != PHOTOMETRIC_PALETTE &&
      form.photometric != PHOTOMETRIC_YCBCR)
    return "its colours are neither grey nor red, green and blue";
  uint16_t extras = 0;
  uint16_t* kinds = nullptr;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &extras, &kinds);
  const bool alpha = extras == 1 && kinds != nullptr &&
                     (kinds[0] == EXTRASAMPLE_ASSOCALPHA || kinds[0] == EXTRASAMPLE_UNASSALPHA);
  const int bands = isColour ? 3 : 1;
  if ((isColour || isGrey) && form.samples - (alpha ? 1 : 0) > bands)
    return "it has " + std::to_string(form.samples) + " bands, of which " + std::to_string(bands) +
           " would be stored";
  return "";
}

}  // namespace

media::Outcome LoadTiff(const std::string& bytes, Picture& picture) {
  const std::string_view mark = std::string_view(bytes).substr(0, 4);
  using namespace std::string_view_literals;
  if (mark != "II*\0"sv && mark != "MM\0*"sv && mark != "II+\0"sv && mark != "MM\0+"sv)
    return media::Outcome::NotRecognised;
  media::TiffSource source{bytes};
  const media::TiffPtr tiff = media::OpenTiff(source);
  if (tiff == nullptr) return media::Outcome::BadData;
  uint16_t bits = 1, samples = 1, photometric = PHOTOMETRIC_MINISBLACK, planar = PLANARCONFIG_CONTIG;
  uint16_t format = SAMPLEFORMAT_UINT;
  TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &picture.width);
  TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &picture.height);
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, &samples);
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_PLANARCONFIG, &planar);
  TIFFGetField(tiff.get(), TIFFTAG_PHOTOMETRIC, &photometric);
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLEFORMAT, &format);
  picture.whyNotLossless = WhyNotLossless(tiff.get(), {bits, samples, photometric, planar, format});
  if (bits > 16 || format == SAMPLEFORMAT_IEEEFP || format >= SAMPLEFORMAT_COMPLEXINT) {
    picture.refusal =
        "TIFF samples of " + std::to_string(bits) + " bits" +
        (format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_INT ? "" : ", real or complex") +
        " are not taken: 1 to 16 bits, whole numbers";
    return media::Outcome::Unsupported;
  }
  if (!IsTakeable(picture)) return media::Outcome::NoMemory;
  const bool grey = photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
  picture.channels = grey ? 1 : 3;
  picture.bits = bits == 16 ? 16 : 8;
  const bool plain = photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_RGB;
  const bool deep = bits == 16 && plain && samples >= picture.channels && planar == PLANARCONFIG_CONTIG &&
                    TIFFIsTiled(tiff.get()) == 0;
  if (!deep) return ReadShownPixels(tiff.get(), picture);
  picture.lostAlpha = samples > picture.channels;
  return ReadDeepRows(tiff.get(), picture, samples);
}

}  // namespace core
