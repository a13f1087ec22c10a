// The text subheader (MIL-STD-2500C, table A-6). The text itself stays in the file.
#pragma once

#include "table/security_fields.h"

struct NitfFile;

namespace ksntfx {

struct TextSubheader {
  char *memoryData;          /**< the text of an appended segment, with a terminator */
  std::uint32_t memoryBytes; /**< bytes of `memoryData` */
  std::uint32_t hasMemoryData;
  std::uint32_t headerRead;
  std::uint32_t attachmentLevel;
  char TEXTID[11];
  char TE[3];
  char TXTDT[15];
  char TXTALVL[4];
  char TXTITL[81];
  SecurityFields security; /**< TSCLAS to TSCTLN */
  char ENCRYP[2];
  char TXTFMT[4];
  char TXSHDL[6];
  char TXSOFL[4];
  char *extendedData; /**< TXSHD */
  std::uint32_t extendedDataHeld;
  NitfFile *file;
  std::uint32_t index;
};

/** The format of the text subheader. */
extern const HeaderTable kTextTable;

/** Gives every member its default. Whatever the record held is forgotten. */
void TextSubheaderInit(TextSubheader *record, NitfFile *file);

/** Releases what the record points to; may be called twice. */
void TextSubheaderFree(TextSubheader *record);

/**
 * Gives the record a copy of a text, with a terminator behind it, which is what a save writes. SUCCESS; NITF_NULL_DATA
 * for null and ERROR_NO_MEMORY leave what it held.
 */
Status TextSubheaderSetData(TextSubheader *record, const void *data, std::uint32_t length);

}  // namespace ksntfx
