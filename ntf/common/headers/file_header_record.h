// The record of a file header: its texts, and the lengths of all segments.
#pragma once

#include "table/security_fields.h"

namespace ksntfx {

/**
 * The file header. A length table as read describes the source file and keeps its values; its `Out` twin starts as a
 * copy and describes the file that a save writes. A table has memory for `...TableHeld` entries, of which
 * `...TableCount` are in force: a caller may lower the count, and raise it again.
 */
struct NitfHeader {
  std::uint32_t valid; /**< 1 once a magic was accepted */
  char scratchText[256];
  std::uint32_t complianceLevel;
  std::uint32_t backgroundColorValue; /**< the bytes of FBKGC, the first one lowest */
  std::uint32_t fileLength;
  std::uint32_t headerLength; /**< HL: where the first segment of the source file stands */
  std::uint32_t headerLengthOut;
  std::uint32_t imageTableCount;
  std::uint32_t imageTableHeld;
  std::uint32_t *imageSubheaderLengths;
  std::uint32_t *imageSubheaderLengthsOut;
  std::uint32_t *imageDataLengths;
  std::uint32_t fileLengthOut;
  std::uint32_t *imageDataLengthsOut;
  std::uint32_t graphicTableCount;
  std::uint32_t graphicTableHeld;
  std::uint32_t *graphicSubheaderLengths;
  std::uint32_t *graphicSubheaderLengthsOut;
  std::uint32_t *graphicDataLengths;
  std::uint32_t *graphicDataLengthsOut;
  std::uint32_t labelTableCount;
  std::uint32_t labelTableHeld;
  std::uint32_t *labelSubheaderLengths;
  std::uint32_t *labelDataLengths;
  std::uint32_t *labelDataLengthsOut;
  std::uint32_t textTableCount;
  std::uint32_t textTableHeld;
  std::uint32_t *textSubheaderLengths;
  std::uint32_t *textDataLengths;
  std::uint32_t *textDataLengthsOut;
  std::uint32_t dataExtensionTableCount;
  std::uint32_t dataExtensionTableHeld;
  std::uint32_t *dataExtensionSubheaderLengths;
  std::uint32_t *dataExtensionDataLengths;
  std::uint32_t reservedExtensionTableCount;
  std::uint32_t reservedExtensionTableHeld;
  std::uint32_t *reservedSubheaderLengths;
  std::uint32_t *reservedDataLengths;

  char FHDR[5];
  char FVER[6];
  char CLEVEL[3];
  char STYPE[5];
  char OSTAID[11];
  char FDT[15];
  char FTITLE[81];
  SecurityFields security; /**< FSCLAS to FSCTLN */
  char FSCOP[6];
  char FSCPYS[6];
  char ENCRYP[2];
  char FBKGC[4];
  char ONAME[28];
  char OPHONE[19];
  char FL[13];
  char HL[7];
  char NUMI[4];
  char NUMS[4];
  char NUMDES[4];
  char NUMX[4];
  char NUMT[4];
  char NUML[4];
  char NUMRES[4];
  char UDHDL[6];
  char UDHOFL[4];
  char XHDL[6];
  char XHDLOFL[4];
  char *userHeaderData; /**< UDHD with a NUL behind it; null while UDHDL is 0 */
  std::uint32_t userHeaderDataHeld;
  char *extendedHeaderData; /**< XHD, likewise */
  std::uint32_t extendedHeaderDataHeld;
  std::uint64_t *imageDataLengthsLong; /**< as read, in full; null without images */
  std::uint32_t imageLengthsCut;       /**< some LI is more than 32 bits can tell */
};

}  // namespace ksntfx
