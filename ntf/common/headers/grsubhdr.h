// The graphic subheader (MIL-STD-2500C, table A-5; in the 2.0 layout the symbol subheader).
#pragma once

#include "table/security_fields.h"

struct NitfFile;

namespace ksntfx {

struct GraphicSubheader {
  KsVector vector;           /**< the drawing, once it was drawn or asked for */
  char *memoryData;          /**< encoded drawing of an appended segment */
  std::uint32_t memoryBytes; /**< bytes of `memoryData` */
  std::uint32_t hasMemoryData;
  std::uint32_t headerRead;
  char SID[11];
  std::uint32_t displayLevel;
  std::uint32_t bitsPerPixel; /**< NBPP of the 2.0 layout */
  std::uint32_t attachmentLevel;
  std::int32_t locationRow;
  std::int32_t locationColumn;
  std::int32_t firstBound[2];  /**< SBND1: left edge, top edge */
  std::int32_t secondBound[2]; /**< SBND2: right edge, bottom edge; SLOC2 in the 2.0 layout */
  char SY[3];
  char SNAME[21];
  SecurityFields security; /**< SSCLAS to SSCTLN */
  char ENCRYP[2];
  char SFMT[2];
  char SSTRUCT[14];
  char SDLVL[4];
  char SALVL[4];
  char SLOC[11];
  char SBND1[11];
  char SCOLOR[2];
  char SBND2[11];
  char SRES2[3];
  char SXSHDL[6];
  char SXSOFL[4];
  char NLIPS[5];
  char NPIXPL[5];
  char NWDTH[5];
  char NBPP[2];
  char SNUM[7];
  char SROT[4];
  char NELUT[4];
  std::uint32_t lutEntries;
  char *extendedData; /**< SXSHD */
  std::uint32_t extendedDataHeld;
  std::uint32_t *lut; /**< `lutEntries` entries of 0x00RRGGBB */
  NitfFile *file;
  std::uint32_t index;
};

/** Makes `vector` an empty drawing with the settings that graphic segments are loaded under. */
void PrepareVector(KsVector *vector);

/** The format of the graphic subheader. */
extern const HeaderTable kGraphicTable;

/** Gives every member its default. Whatever the record held is forgotten. */
void GraphicSubheaderInit(GraphicSubheader *record, NitfFile *file);

/** Releases what the record points to; may be called twice. */
void GraphicSubheaderFree(GraphicSubheader *record);

/**
 * Gives the record a copy of an encoded drawing, which is what a save writes. SUCCESS; ERROR_NO_MEMORY leaves what it
 * held.
 */
Status GraphicSetData(GraphicSubheader *record, const void *data, std::uint32_t length);

// ---- setters: the text of a field and its numbers in step; always SUCCESS

/** SLOC: the sign first, of five characters each; a number with more has its digits at 0. */
void GraphicSetLocation(GraphicSubheader *record, std::int32_t row, std::int32_t column);

/** SBND1 and SBND2, of five characters each; a number with more leaves its half at 0. */
void GraphicSetBound1(GraphicSubheader *record, std::int32_t first, std::int32_t second);
void GraphicSetBound2(GraphicSubheader *record, std::int32_t first, std::int32_t second);

}  // namespace ksntfx
