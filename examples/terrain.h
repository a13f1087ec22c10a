// An island that nobody has seen: heights, light and colours for the sample file. The same on every run.
#pragma once

#include <cstdint>

struct Rgb {
  double red;
  double green;
  double blue;
};

Rgb Mix(const Rgb &from, const Rgb &to, double part);

/** 0 up to `low`, 1 from `high`, and a soft way between. */
double Smooth(double low, double high, double value);

/** Height above the sea, about -1 to 1, at a place in pixels of the map. */
double HeightAt(double x, double y);

/** Light on the ground from the north-west, 0 to 1, at a place whose ground falls as seen over `step` pixels. */
double LightAt(double x, double y, double step);

/** How steep the ground is: 0 level, 1 very steep. */
double SlopeAt(double x, double y, double step);

/** As a map shows it: colours by height, and the relief shaded. */
Rgb MapColor(double x, double y);

/** As a sensor beyond the red end of the light shows it: plants are red. */
Rgb InfraredColor(double x, double y);

/** Fire from black over red and yellow to white; `part` is 0 to 1. */
Rgb HeatColor(double part);
