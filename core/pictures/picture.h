// Picture files written row by row.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>

#include "core/pictures/picture_writer.h"
#include "core/pictures/tiff_options.h"
#include "media/drawing/drawing.h"
#include "media/outcome.h"

namespace core {

enum class PictureForm { Png, Ppm, Jpeg, Tiff };
/// The form that a name's ending or the word "png", "ppm", "jpeg" or "tiff" asks for.
std::optional<PictureForm> PictureFormOf(std::string_view word);
/// The ending of a form's names.
const char* EndingOf(PictureForm form);

/// Begins a picture in an open file. `options` are those of TIFF. Where there is a core for it, rows are
/// written while the next ones are made: a failure may be told with a later row.
std::unique_ptr<PictureWriter> StartPicture(PictureForm form, std::FILE* file, uint32_t width,
                                            uint32_t height, const TiffOptions& options = {});

/// PNG, with `alpha` of rows of red, green, blue and alpha.
std::unique_ptr<PictureWriter> StartPng(std::FILE* file, uint32_t width, uint32_t height, bool alpha);
std::unique_ptr<PictureWriter> StartJpeg(std::FILE* file, uint32_t width, uint32_t height);
std::unique_ptr<PictureWriter> StartTiff(std::FILE* file, uint32_t width, uint32_t height,
                                         const TiffOptions& options);

/// Paints a drawing as PNG whose objects take `longerSide` pixels (0 as the drawing suggests). NotTaken
/// when the file does not take it; OverBudget for more painting than the drawing's bytes are worth.
media::Outcome PaintPng(const media::Drawing& drawing, int32_t longerSide, std::FILE* file);

}  // namespace core
