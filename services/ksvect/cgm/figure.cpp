#include "ksvect/cgm/figure.h"

#include "ksvect/cgm/curves.h"

#include <utility>

namespace ksvect::cgm {
namespace {

/** The last edge of a set leads back to the beginning, whatever it says. */
EdgeFlag Closed(EdgeFlag flag) {
  if (flag == EdgeFlag::Visible) return EdgeFlag::CloseVisible;
  return flag == EdgeFlag::Invisible ? EdgeFlag::CloseInvisible : flag;
}

}  // namespace

bool Figure::Add(const Shape &shape) {
  if (const auto *line = std::get_if<Polyline>(&shape)) {
    AddLine(line->points);
  } else if (const auto *lines = std::get_if<DisjointPolyline>(&shape)) {
    for (std::size_t i = 0; i + 1 < lines->points.size(); i += 2) AddLine({lines->points[i], lines->points[i + 1]});
  } else if (const auto *polygon = std::get_if<Polygon>(&shape)) {
    AddArea(polygon->points);
  } else if (const auto *set = std::get_if<PolygonSet>(&shape)) {
    AddSet(*set);
  } else if (const auto *box = std::get_if<Rectangle>(&shape)) {
    AddArea({box->first, {box->second.x, box->first.y}, box->second, {box->first.x, box->second.y}});
  } else if (const auto *arc = std::get_if<Ellipse>(&shape)) {
    AddArc(*arc);
  } else {
    return false;
  }
  return true;
}

void Figure::NewRegion() {
  if (area.points.size() > regionStart) {
    area.flags.back() = area.points.back() == area.points[regionStart]
                            ? EdgeFlag::CloseVisible
                            : Joint(EdgeFlag::CloseVisible, EdgeFlag::CloseInvisible);
  }
  regionStart = area.points.size();
  connected = false;
}

PolygonSet Figure::Finish() {
  NewRegion();
  regionStart = 0;
  return std::exchange(area, {});
}

void Figure::AddLine(const std::vector<Point> &points) {
  if (points.empty()) return;
  if (area.points.size() > regionStart && area.points.back() != points.front()) {
    area.flags.back() = Joint(EdgeFlag::Visible, EdgeFlag::Invisible);
  }
  connected = false;
  area.points.insert(area.points.end(), points.begin(), points.end());
  area.flags.resize(area.points.size(), EdgeFlag::Visible);
}

void Figure::AddArea(const std::vector<Point> &points) {
  NewRegion();
  AddLine(points);
  connected = true;
  NewRegion();
}

void Figure::AddArc(const Ellipse &arc) {
  std::vector<Point> points;
  AppendArc(points, arc);
  if (arc.closure == Closure::Pie) points.push_back(arc.center);
  if (arc.closure == Closure::Open) {
    AddLine(points);
  } else {
    AddArea(points);
  }
}

void Figure::AddSet(const PolygonSet &set) {
  NewRegion();
  area.points.insert(area.points.end(), set.points.begin(), set.points.end());
  area.flags.insert(area.flags.end(), set.flags.begin(), set.flags.end());
  if (!set.flags.empty()) area.flags.back() = Closed(area.flags.back());
  regionStart = area.points.size();
}

EdgeFlag Figure::Joint(EdgeFlag visible, EdgeFlag invisible) {
  return connected ? visible : invisible;
}

}  // namespace ksvect::cgm
