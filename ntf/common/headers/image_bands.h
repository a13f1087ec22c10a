// The band group of an image subheader: representation, subcategory, filter and lookup table of each band.
#pragma once

#include "headers/image_record.h"
#include "internal/status.h"

namespace ksntfx {

class HeaderReader;
class HeaderWriter;

/** The rows of the subheader's format that read and write the group. */
Status ReadBands(HeaderReader &reader);
Status WriteBands(HeaderWriter &writer);

/**
 * Replaces the arrays of the group by new ones, of zeros, for as many bands; lookup tables and their lengths stay.
 * Returns false without memory, with the old arrays in place.
 */
bool RenewBands(ImageSubheader *record, std::uint32_t bands);

/** Releases all arrays of the group. */
void FreeBands(ImageSubheader *record);

}  // namespace ksntfx
