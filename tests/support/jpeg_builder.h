// JPEG streams of the kinds that the common libraries don't write: lossless, 12 bits, and many components.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

struct JpegSampling {
  std::uint32_t across = 1;
  std::uint32_t down = 1;
};

/** The value of a component at one of its own samples. */
using JpegSample = std::function<std::uint32_t(std::uint32_t component, std::uint32_t x, std::uint32_t y)>;

struct JpegSpec {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  JpegSample sample = {};
  std::uint32_t bits = 8;
  bool lossless = true; /**< else sequential, with a transform that loses next to nothing */
  std::uint32_t components = 1;
  std::vector<JpegSampling> sampling = {}; /**< 1 by 1 for the components without one */
  std::uint32_t predictor = 1;
  std::uint32_t pointTransform = 0;
  std::uint32_t restartRows = 0; /**< rows of coded units from one restart to the next, 0 for none */
  bool eachAlone = false;        /**< a scan a component; more than four components always have that */
  bool wideQuantisation = false; /**< tables of 16 bits */
};

/** Samples of the component across and down. */
JpegSampling JpegSizeOf(const JpegSpec &spec, std::uint32_t component);

std::vector<std::uint8_t> EncodeJpeg(const JpegSpec &spec);
