// The record of an image subheader: each field as text and, where something computes with it, as a number.
#pragma once

#include "headers/image_codes.h"
#include "headers/image_kinds.h"
#include "table/security_fields.h"

struct NitfFile;

namespace ksntfx {

/** The widest and highest block that NPPBH and NPPBV can tell, and the one that they may (MIL-STD-2500C, table A-3). */
constexpr std::uint32_t kWidestBlockField = 9999;
constexpr std::uint32_t kWidestBlock = 8192;

/** The highest level that IDLVL can tell. */
constexpr std::uint32_t kHighestLevel = 999;

struct ImageSubheader {
  char scratch[256];
  std::uint32_t *lut; /**< entries of 0x00RRGGBB; the last band's table wins */
  std::uint32_t lutCount;
  std::uint32_t headerRead;
  std::uint32_t rows;
  std::uint32_t columns;
  std::uint32_t pixelValueType; /**< 0 INT, 1 B */
  std::uint32_t representation;
  std::uint32_t actualBits;
  std::uint32_t rightJustified;
  std::uint32_t compression;
  std::uint32_t bandField; /**< NBANDS as read: 0 where the count stands in XBANDS */
  std::uint32_t bandCount; /**< the count in force */
  std::uint32_t mode;
  std::uint32_t commentCount;
  std::uint32_t blocksPerRow;
  std::uint32_t blocksPerColumn;
  std::uint32_t blockWidth;  /**< NPPBH, or `columns` where that is 0 */
  std::uint32_t blockHeight; /**< NPPBV, or `rows` where that is 0 */
  std::uint32_t bitsPerPixel;
  std::uint32_t displayLevel;
  std::uint32_t attachmentLevel;
  std::int32_t locationRow;
  std::int32_t locationColumn;
  double magnification;         /**< IMAG as a factor */
  std::uint32_t maskDataOffset; /**< IMDATOFF */
  std::uint16_t blockMaskLength;
  std::uint16_t padMaskLength;
  std::uint16_t padCodeBits;
  std::uint32_t rateKind;

  char IM[3];
  char IID1[11];
  char IDATIM[15];
  char TGTID[18];
  char IID2[81];
  SecurityFields security; /**< ISCLAS to ISCTLN */
  char ENCRYP[2];
  char ISORCE[43];
  char NROWS[9];
  char NCOLS[9];
  char PVTYPE[4];
  char IREP[9];
  char ICAT[9];
  char ABPP[3];
  char PJUST[2];
  char ICORDS[2];
  char IGEOLO[61];
  char NICOM[2];
  char (*comments)[81]; /**< ICOMn */
  std::uint32_t commentsHeld;
  char IC[3];
  char COMRAT[5];
  char NBANDS[2];
  char XBANDS[6];
  std::uint32_t bandsHeld; /**< entries of the arrays below; may be less than `bandCount` in a damaged replay */
  std::uint32_t *bandRepresentation; /**< owns the block that all arrays of the band group but the last share */
  char (*bandSubcategories)[7];      /**< ISUBCATn */
  char (*bandFilterConditions)[2];   /**< IFCn */
  char (*bandFilterCodes)[4];        /**< IMFLTn */
  std::uint32_t *bandLutCounts;      /**< NLUTSn */
  std::uint32_t *bandLutEntries;     /**< NELUTn, `bandsHeld` entries; null while no band has a table */
  char ISYNC[2];
  char IMODE[2];
  char NBPR[5];
  char NBPC[5];
  char NPPBH[5];
  char NPPBV[5];
  char NBPP[3];
  char IDLVL[4];
  char IALVL[4];
  char ILOC[11];
  char IMAG[5];
  char UDIDL[6];
  char UDOFL[4];
  char *userData; /**< UDID */
  std::uint32_t userDataHeld;
  char IXSHDL[6];
  char IXSOFL[4];
  char *extendedData; /**< IXSHD */
  std::uint32_t extendedDataHeld;
  std::uint32_t maskEntries;    /**< entries of `blockMask` and of `padMask`, where they are there */
  std::uint8_t (*blockMask)[4]; /**< BMR in the file's byte order; one entry of zeros more */
  std::uint8_t (*padMask)[4];   /**< TMR, likewise */
  std::uint8_t *padCode;        /**< TPXCD */
  std::uint32_t padCodeHeld;    /**< bytes of `padCode`, whatever TPXCDLNTH says */
  std::uint32_t subheaderBytesRead;
  std::uint32_t maskBytesRead;  /**< of the mask table behind the subheader */
  std::int32_t displayBands[3]; /**< -1 until the bands for display were chosen */
  char *memoryData;             /**< compressed image of an appended segment */
  std::uint32_t memoryBytes;    /**< bytes of `memoryData` */
  std::uint32_t hasMemoryData;
  NitfFile *file;
  std::uint32_t index;
};

/** The IREPBAND of a band; kBandNone where the record holds none. */
inline std::uint32_t BandTag(const ImageSubheader &image, std::uint32_t band) {
  return band < image.bandsHeld ? image.bandRepresentation[band] : static_cast<std::uint32_t>(kBandNone);
}

/** The row of the image's IC. */
inline const ImageKind &KindOf(const ImageSubheader &image) {
  return ImageKindOf(image.compression);
}

}  // namespace ksntfx
