#include "ksvect/objects.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <initializer_list>

namespace ksvect {
namespace {

/** More points than this make no sensible drawing, and their count none to trust. */
constexpr std::uint32_t kMostPoints = 1U << 24;

bool AreNumbers(std::initializer_list<double> values) {
  return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

LineStyle LineOf(const KsVectorPen &pen) {
  const Dash dash = pen.style == KS_PEN_SOLID ? Dash::Solid : Dash::Dash;
  return {{static_cast<double>(pen.width), false}, dash, pen.color & 0xFFFFFFU};
}

/** An area has its pen around it and its brush inside. */
Style AreaStyle(const KsVectorPen &pen, const KsVectorBrush &brush) {
  Style style;
  style.line = style.edge = LineOf(pen);
  style.edgeVisible = true;
  style.fill.interior = brush.solid == 1 ? Interior::Solid : Interior::Empty;
  style.fill.color = brush.color & 0xFFFFFFU;
  return style;
}

void Add(Drawing &drawing, Shape shape, const Style &style) {
  const std::uint32_t number = StyleNumber(drawing, style);
  CurrentLayer(drawing).objects.push_back({std::move(shape), number});
}

Status AddLine(Drawing &drawing, const KsVectorLine &line) {
  if (!AreNumbers({line.first.x, line.first.y, line.second.x, line.second.y})) return ERROR_INVALID_VALUE;
  Style style;
  style.line = LineOf(line.pen);
  Add(drawing, Polyline{{{line.first.x, line.first.y}, {line.second.x, line.second.y}}}, style);
  return SUCCESS;
}

Status AddOval(Drawing &drawing, const KsVectorOval &oval) {
  if (!AreNumbers({oval.first.x, oval.first.y, oval.second.x, oval.second.y})) return ERROR_INVALID_VALUE;
  Ellipse ellipse;
  ellipse.center = {(oval.first.x + oval.second.x) / 2, (oval.first.y + oval.second.y) / 2};
  ellipse.first = {std::abs(oval.second.x - oval.first.x) / 2, 0};
  ellipse.second = {0, std::abs(oval.second.y - oval.first.y) / 2};
  Add(drawing, ellipse, AreaStyle(oval.pen, oval.brush));
  return SUCCESS;
}

Status AddPolygon(Drawing &drawing, const KsVectorPolygon &record) {
  if (record.points == nullptr || record.count == 0 || record.count > kMostPoints) return ERROR_INVALID_VALUE;
  Polygon polygon;
  polygon.points.reserve(record.count);
  for (std::uint32_t i = 0; i < record.count; ++i) {
    KsVectorVertex vertex;
    std::memcpy(&vertex, record.points + i, sizeof vertex);
    if (!AreNumbers({vertex.x, vertex.y})) return ERROR_INVALID_VALUE;
    polygon.points.push_back({vertex.x, vertex.y});
  }
  Add(drawing, std::move(polygon), AreaStyle(record.pen, record.brush));
  return SUCCESS;
}

Status AddBox(Drawing &drawing, const KsVectorBox &box) {
  if (!AreNumbers({box.corner.x, box.corner.y, box.width, box.height})) return ERROR_INVALID_VALUE;
  const Point corner = {box.corner.x, box.corner.y};
  Add(drawing, Rectangle{corner, corner + Point{box.width, box.height}}, AreaStyle(box.pen, box.brush));
  return SUCCESS;
}

/** Copies a record of `kind`, which may be unaligned, and has `add` make an object of it. */
template <class Record>
Status Take(Drawing &drawing, std::uint32_t kind, const void *description, Status (*add)(Drawing &, const Record &)) {
  Record record;
  std::memcpy(&record.structureSize, description, sizeof record.structureSize);
  if (record.structureSize != sizeof record) return ERROR_INVALID_VALUE;
  std::memcpy(static_cast<void *>(&record), description, sizeof record);
  return record.kind == kind ? add(drawing, record) : ERROR_INVALID_VALUE;
}

}  // namespace

Status AddDescribed(Drawing &drawing, std::uint32_t kind, const void *description) {
  switch (kind) {
    case KS_VECTOR_LINE:
      return Take(drawing, kind, description, AddLine);
    case KS_VECTOR_OVAL:
      return Take(drawing, kind, description, AddOval);
    case KS_VECTOR_POLYGON:
      return Take(drawing, kind, description, AddPolygon);
    case KS_VECTOR_BOX:
      return Take(drawing, kind, description, AddBox);
    default:
      return ERROR_INVALID_VALUE;
  }
}

}  // namespace ksvect
