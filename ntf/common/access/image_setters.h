// The setters of an image subheader. Each keeps the text of a field and the number decoded from it in step, and carries
// what changes of the subheader's length into the file header.
#pragma once

#include "headers/image_record.h"
#include "internal/status.h"

namespace ksntfx {

// Each returns SUCCESS, or ERROR_INVALID_VALUE with nothing changed for a value that the field doesn't have.

/** IREP, which must begin with one of its values. */
Status ImageSetRepresentation(ImageSubheader *record, const char *text);

/** PVTYPE, INT or B, by its first letter. */
Status ImageSetPixelValueType(ImageSubheader *record, const char *text);

/** PJUST, L or R. */
Status ImageSetJustification(ImageSubheader *record, const char *text);

/** IMODE: B, P, R or S. */
Status ImageSetMode(ImageSubheader *record, const char *text);

/** ICORDS. Its going to or from a blank takes IGEOLO into the subheader or out of it, and the lengths follow. */
Status ImageSetCoordinates(ImageSubheader *record, const char *text);

/** IC, exactly one of its values. COMRAT coming or going with it changes the lengths. */
Status ImageSetCompression(ImageSubheader *record, const char *text);

/** COMRAT, of up to four characters. */
Status ImageSetRate(ImageSubheader *record, const char *text);

/** IMAG. */
Status ImageSetMagnification(ImageSubheader *record, const char *text);

/** ILOC: the sign first, of five characters each; a number with more has its digits at 0. Always SUCCESS. */
void ImageSetLocation(ImageSubheader *record, std::int32_t row, std::int32_t column);

/**
 * NBANDS, 0 where XBANDS is to count: makes the band group anew, for as many bands as the greater of the two numbers
 * says, without representation, subcategory, filter and lookup tables. ERROR_INVALID_VALUE above 99999, and
 * ERROR_NO_MEMORY, leave all as it was.
 */
Status ImageSetBandCount(ImageSubheader *record, std::uint32_t count);

/** IREPBAND of a band; a blank one can't be set. ERROR_INVALID_VALUE also for a band behind the last. */
Status ImageSetBandRepresentation(ImageSubheader *record, std::uint32_t band, const char *text);

/** TPXCD, as many bytes as `padCodeBits` calls for. ERROR_NO_MEMORY leaves none. */
Status ImageSetPadCode(ImageSubheader *record, const void *code);

}  // namespace ksntfx
