// Cairo, which is loaded when something is first painted or measured: what few commands need costs the
// others nothing.
#pragma once

#include <cairo-svg.h>

// clang-format off
// The functions that are called of it, without the front of their names.
#define MEDIA_CAIRO_CALLS(call) \
  call(arc) call(clip) call(close_path) call(create) call(destroy) call(fill) \
  call(font_extents) call(get_source) call(image_surface_create) \
  call(image_surface_create_for_data) call(image_surface_get_data) \
  call(image_surface_get_height) call(image_surface_get_stride) call(image_surface_get_width) \
  call(line_to) call(matrix_init) call(matrix_invert) call(move_to) call(new_path) \
  call(new_sub_path) call(pattern_set_extend) call(pattern_set_filter) \
  call(pattern_set_matrix) call(recording_surface_create) call(rectangle) call(restore) \
  call(save) call(select_font_face) call(set_antialias) call(set_dash) call(set_fill_rule) \
  call(set_font_matrix) call(set_font_size) call(set_line_width) call(set_source_rgb) \
  call(set_source_surface) call(show_text) call(status) call(stroke) call(stroke_preserve) \
  call(surface_destroy) call(surface_finish) call(surface_flush) call(surface_mark_dirty) \
  call(surface_status) call(svg_surface_create) call(text_extents) call(text_path)
// clang-format on

namespace media {

/// Its functions.
struct CairoLibrary {
#define MEDIA_CAIRO_MEMBER(name) decltype(&::cairo_##name) name = nullptr;
  MEDIA_CAIRO_CALLS(MEDIA_CAIRO_MEMBER)
#undef MEDIA_CAIRO_MEMBER
};

/// Whether it is there.
bool HasCairo();
/// The library, loaded once. Throws std::bad_alloc where there is no memory for it, or where it is not
/// there.
const CairoLibrary& Cairo();

}  // namespace media
