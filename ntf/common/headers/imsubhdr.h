// The image subheader (MIL-STD-2500C, table A-3): its format. The mask table behind it has a room of its own.
#pragma once

#include "headers/image_record.h"

namespace ksntfx {

/** The format of the image subheader with its mask table. */
extern const HeaderTable kImageTable;

/** Gives every member its default. Whatever the record held is forgotten. */
void ImageSubheaderInit(ImageSubheader *record, NitfFile *file);

/** Releases what the record points to, and sets the pointers to null; may be called twice. */
void ImageSubheaderFree(ImageSubheader *record);

/** IMAG as a factor: a slash and a number is one part in so many, anything else a decimal fraction. */
double ParseMagnification(std::string_view text);

/** The text of a stored IREPBAND; empty for a number without one. */
std::string_view BandRepresentationText(std::uint32_t representation);

}  // namespace ksntfx
