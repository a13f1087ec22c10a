// The label subheader, which only the 2.0 layout has (MIL-STD-2500A, table A-10).
#pragma once

#include "table/security_fields.h"

struct NitfFile;

namespace ksntfx {

struct LabelSubheader {
  char *memoryData;
  std::uint32_t memoryBytes; /**< bytes of `memoryData` */
  std::uint32_t hasMemoryData;
  std::uint32_t headerRead;
  std::uint32_t cellWidth;  /**< LCW */
  std::uint32_t cellHeight; /**< LCH */
  std::uint32_t displayLevel;
  std::uint32_t attachmentLevel;
  std::int32_t locationRow;
  std::int32_t locationColumn;
  std::uint32_t textColor;       /**< LTC, red in the low byte */
  std::uint32_t backgroundColor; /**< LBC, red in the low byte; 0 is transparent */
  char LA[3];
  char LID[11];
  SecurityFields security; /**< LSCLAS to LSCTLN */
  char ENCRYP[2];
  char LFS[2];
  char LCW[3];
  char LCH[3];
  char LDLVL[4];
  char LALVL[4];
  char LLOC[11];
  char LTC[4];
  char LBC[4];
  char LXSHDL[6];
  char LXSOFL[4];
  char *extendedData; /**< LXSHD */
  std::uint32_t extendedDataHeld;
  NitfFile *file;
  std::uint32_t index;
};

/** The format of the label subheader. */
extern const HeaderTable kLabelTable;

/** Gives every member its default. Whatever the record held is forgotten. */
void LabelSubheaderInit(LabelSubheader *record, NitfFile *file);

/**
 * Stores a location, in pixels, as numbers and as the text LLOC: five characters each, the sign first. Always SUCCESS.
 */
void LabelSetLocation(LabelSubheader *record, std::int32_t row, std::int32_t column);

/** Releases what the record points to; may be called twice. */
void LabelSubheaderFree(LabelSubheader *record);

}  // namespace ksntfx
