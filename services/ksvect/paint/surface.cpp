#include "ksvect/paint/surface.h"

#include <new>

#include <cairo.h>

namespace ksvect {
namespace {

cairo_t *ContextOf(void *context) {
  return static_cast<cairo_t *>(context);
}

cairo_surface_t *SurfaceOf(const void *pixels, cairo_format_t format, std::int32_t width, std::int32_t height,
                           std::int32_t rowBytes) {
  auto *const bytes = static_cast<unsigned char *>(const_cast<void *>(pixels));
  cairo_surface_t *const surface = cairo_image_surface_create_for_data(bytes, format, width, height, rowBytes);
  if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
  return surface;
}

}  // namespace

Surface::Surface(std::uint32_t *pixels, std::int32_t width, std::int32_t height, std::int32_t rowBytes)
    : canvas(SurfaceOf(pixels, CAIRO_FORMAT_RGB24, width, height, rowBytes)),
      context(cairo_create(static_cast<cairo_surface_t *>(canvas))) {
  cairo_set_antialias(ContextOf(context), CAIRO_ANTIALIAS_GRAY);
  cairo_set_line_cap(ContextOf(context), CAIRO_LINE_CAP_BUTT);
  cairo_set_miter_limit(ContextOf(context), kMiterLimit);
}

Surface::~Surface() {
  cairo_destroy(ContextOf(context));
  cairo_surface_destroy(static_cast<cairo_surface_t *>(canvas));
}

void Surface::MoveTo(Point point) {
  cairo_move_to(ContextOf(context), point.x, point.y);
}

void Surface::LineTo(Point point) {
  cairo_line_to(ContextOf(context), point.x, point.y);
}

void Surface::Close() {
  cairo_close_path(ContextOf(context));
}

void Surface::Rectangle(const KsRect &rectangle) {
  cairo_rectangle(ContextOf(context), rectangle.left, rectangle.top, rectangle.right - rectangle.left,
                  rectangle.bottom - rectangle.top);
}

void Surface::SetColor(Color color) {
  constexpr double kFull = 255;
  cairo_set_source_rgb(ContextOf(context), (color & 0xFF) / kFull, (color >> 8 & 0xFF) / kFull,
                       (color >> 16 & 0xFF) / kFull);
}

void Surface::Fill(Color color, bool byParity) {
  SetColor(color);
  cairo_set_fill_rule(ContextOf(context), byParity ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
  cairo_fill(ContextOf(context));
}

void Surface::Fill(const std::uint32_t *pixels, const KsRect &place, std::int32_t rowBytes, bool byParity) {
  cairo_surface_t *const source =
      SurfaceOf(pixels, CAIRO_FORMAT_ARGB32, place.right - place.left, place.bottom - place.top, rowBytes);
  cairo_set_source_surface(ContextOf(context), source, place.left, place.top);
  cairo_pattern_set_filter(cairo_get_source(ContextOf(context)), CAIRO_FILTER_NEAREST);
  cairo_set_fill_rule(ContextOf(context), byParity ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
  cairo_fill(ContextOf(context));
  SetColor(0);
  cairo_surface_destroy(source);
}

void Surface::Stroke(Color color, double width, Join join) {
  SetColor(color);
  cairo_set_line_width(ContextOf(context), width);
  cairo_set_line_join(ContextOf(context), join == Join::Round ? CAIRO_LINE_JOIN_ROUND : CAIRO_LINE_JOIN_MITER);
  cairo_stroke(ContextOf(context));
}

void Surface::Clip(const KsRect &rectangle) {
  cairo_reset_clip(ContextOf(context));
  Rectangle(rectangle);
  cairo_clip(ContextOf(context));
}

}  // namespace ksvect
