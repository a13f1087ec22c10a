// The file header (MIL-STD-2500C, table A-1): its format.
#pragma once

#include "headers/file_header_record.h"

namespace ksntfx {

/** The format of the file header. */
extern const HeaderTable kFileHeaderTable;

/** Gives a header the values of a new file. Whatever it held is forgotten. */
void NitfHeaderInit(NitfHeader *header);

/** Releases tables and data, and sets each pointer to null; may be called twice. */
void NitfHeaderFree(NitfHeader *header);

}  // namespace ksntfx
