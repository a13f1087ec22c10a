// The bands of an image that are shown.
#pragma once

#include "headers/image_record.h"

namespace ksntfx {

/** The bands that feed the red, green and blue channel. */
struct BandOrder {
  std::uint32_t first;
  std::uint32_t second;
  std::uint32_t third;
};

/**
 * Chooses the bands for display by their IREPBAND. `order` comes with the numbers that are used where only some of the
 * bands R, G and B are tagged. A choice that is not three different bands is also stored in the record's
 * `displayBands`.
 */
void ChooseBands(ImageSubheader &image, BandOrder *order);

/** Finds the first band with each of three IREPBAND values; false where one is missing. */
bool FindTaggedBands(const ImageSubheader &image, const BandOrder &tags, BandOrder *order);

}  // namespace ksntfx
