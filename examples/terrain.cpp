#include "terrain.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

struct Stop {
  double at;
  Rgb color;
};

template <std::size_t count>
Rgb AlongStops(const std::array<Stop, count> &stops, double at) {
  if (at <= stops.front().at) return stops.front().color;
  for (std::size_t i = 1; i < count; ++i) {
    if (at > stops[i].at) continue;
    return Mix(stops[i - 1].color, stops[i].color, (at - stops[i - 1].at) / (stops[i].at - stops[i - 1].at));
  }
  return stops.back().color;
}

/** A number from 0 to 1 that looks random, for each corner of a grid. */
double Corner(std::int32_t x, std::int32_t y, std::uint32_t seed) {
  std::uint32_t bits = static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U ^ seed;
  bits = (bits ^ bits >> 15) * 0x2C1B3C6DU;
  bits = (bits ^ bits >> 12) * 0x297A2D39U;
  return static_cast<double>(bits ^ bits >> 15) / 4294967295.0;
}

/** The corners' numbers, blended smoothly in between. */
double Noise(double x, double y, std::uint32_t seed) {
  const double left = std::floor(x), top = std::floor(y);
  const auto column = static_cast<std::int32_t>(left), row = static_cast<std::int32_t>(top);
  const auto ease = [](double t) { return t * t * t * (t * (t * 6 - 15) + 10); };
  const double right = ease(x - left), down = ease(y - top);
  const double above = std::lerp(Corner(column, row, seed), Corner(column + 1, row, seed), right);
  const double below = std::lerp(Corner(column, row + 1, seed), Corner(column + 1, row + 1, seed), right);
  return std::lerp(above, below, down);
}

/** Octaves of noise, each half as large and half as strong, from 0 to 1. With ridges they fold at their middle. */
double Octaves(double x, double y, int count, std::uint32_t seed, bool ridges) {
  double sum = 0, strength = 0.5, whole = 0;
  for (int octave = 0; octave < count; ++octave) {
    const double value = Noise(x, y, seed + static_cast<std::uint32_t>(octave) * 7919U);
    sum += strength * (ridges ? 1 - std::abs(2 * value - 1) : value);
    whole += strength;
    strength *= 0.5;
    // Turned between octaves, so that the grid doesn't show.
    const double turned = 1.6 * x - 1.2 * y;
    y = 1.2 * x + 1.6 * y + 17.3;
    x = turned + 5.1;
  }
  return sum / whole;
}

struct Fall {
  double east;
  double south;
};

Fall FallAt(double x, double y, double step) {
  constexpr double kSteepness = 62;
  return {(HeightAt(x + step, y) - HeightAt(x - step, y)) / (2 * step) * kSteepness,
          (HeightAt(x, y + step) - HeightAt(x, y - step)) / (2 * step) * kSteepness};
}

constexpr std::array<Stop, 4> kSea{
    {{-0.55, {16, 42, 78}}, {-0.22, {24, 74, 118}}, {-0.05, {52, 128, 160}}, {0.0, {124, 190, 190}}}};
constexpr std::array<Stop, 8> kLand{{{0.0, {222, 206, 160}},
                                     {0.025, {168, 178, 108}},
                                     {0.12, {92, 138, 72}},
                                     {0.3, {70, 112, 62}},
                                     {0.46, {132, 124, 82}},
                                     {0.62, {148, 122, 98}},
                                     {0.8, {188, 176, 166}},
                                     {0.95, {248, 249, 252}}}};
constexpr std::array<Stop, 6> kHeat{{{0.0, {8, 4, 24}},
                                     {0.22, {74, 14, 96}},
                                     {0.45, {176, 44, 92}},
                                     {0.66, {240, 104, 54}},
                                     {0.86, {252, 196, 84}},
                                     {1.0, {254, 250, 214}}}};

}  // namespace

Rgb Mix(const Rgb &from, const Rgb &to, double part) {
  return {std::lerp(from.red, to.red, part), std::lerp(from.green, to.green, part),
          std::lerp(from.blue, to.blue, part)};
}

double Smooth(double low, double high, double value) {
  const double t = std::clamp((value - low) / (high - low), 0.0, 1.0);
  return t * t * (3 - 2 * t);
}

double HeightAt(double x, double y) {
  const double bentX = x + 80 * (Octaves(x / 150, y / 150, 3, 11, false) - 0.5);
  const double bentY = y + 80 * (Octaves(x / 150, y / 150, 3, 23, false) - 0.5);
  const double shape = Octaves(bentX / 230, bentY / 230, 5, 5, false);
  // Along the diagonals, so that the ranges don't follow the edges of the map.
  const double peaks = Octaves((bentX + bentY) / 170, (bentY - bentX) / 130, 5, 43, true);
  const double fromMiddle = std::hypot((x - 330) / 390, (y - 215) / 280);
  const double ground = 1.75 * (shape - 0.5) + 0.34 - 0.62 * fromMiddle * fromMiddle;
  return ground + Smooth(-0.05, 0.4, ground) * 0.9 * (peaks - 0.52);
}

double LightAt(double x, double y, double step) {
  const Fall fall = FallAt(x, y, step);
  const double length = std::sqrt(fall.east * fall.east + fall.south * fall.south + 1);
  return std::clamp((0.52 * fall.east + 0.52 * fall.south + 0.68) / length, 0.0, 1.0);
}

double SlopeAt(double x, double y, double step) {
  const Fall fall = FallAt(x, y, step);
  return 1 - 1 / std::sqrt(fall.east * fall.east + fall.south * fall.south + 1);
}

Rgb MapColor(double x, double y) {
  const double height = HeightAt(x, y);
  const Rgb color = height < 0 ? AlongStops(kSea, height) : AlongStops(kLand, height);
  const double light = LightAt(x, y, 1.3);
  const double shade = height < 0 ? std::lerp(1.0, 0.66 + 0.5 * light, 0.35) : 0.42 + 0.86 * light;
  return {color.red * shade, color.green * shade, color.blue * std::lerp(shade, 1.0, 0.08)};
}

Rgb InfraredColor(double x, double y) {
  const double height = HeightAt(x, y);
  if (height < 0) return Mix({34, 52, 70}, {10, 16, 34}, Smooth(0, 0.3, -height));
  const double plants = Smooth(0.01, 0.08, height) * (1 - Smooth(0.36, 0.62, height));
  const Rgb color = Mix(Mix({126, 150, 156}, {226, 238, 240}, Smooth(0.6, 0.9, height)), {206, 44, 62}, plants);
  const double shade = 0.4 + 0.88 * LightAt(x, y, 1.0);
  return {color.red * shade, color.green * shade, color.blue * shade};
}

Rgb HeatColor(double part) {
  return AlongStops(kHeat, part);
}
