// The image subheader (MIL-STD-2500C, table A-3) and the image data mask table behind it (table A-3(A)).
#pragma once

#include "headertable.h"

/** IC, in the order of its stored numbers. */
enum ImageCompression : std::uint32_t {
  kNC,
  kNM,
  kC0,
  kC1,
  kC2,
  kC3,
  kC4,
  kC5,
  kC6,
  kC8,
  kI1,
  kM0,
  kM1,
  kM2,
  kM3,
  kM4,
  kM5,
  kM6,
  kM8,
  kUnknownCompression
};

/** IREP. */
enum ImageRepresentation : std::uint32_t { kMono, kRgb, kRgbLut, kMulti, kNoDisplay, kVector, kPolar, kVph, kYCbCr601 };

/** IREPBAND. */
enum BandRepresentation : std::uint32_t {
  kBandNone,
  kBandLut,
  kBandRed,
  kBandGreen,
  kBandBlue,
  kBandMono,
  kBandY,
  kBandCb,
  kBandCr
};

/** IMODE: how blocks and bands lie in the data. */
enum ImageMode : std::uint32_t { kBlockInterleaved, kPixelInterleaved, kRowInterleaved, kBandSequential };

/** COMRAT of bi-level images. */
enum RateKind : std::uint32_t { kRate1D, kRate2DS, kRate2DH, kRateOther };

/** The widest and highest block that NPPBH and NPPBV can tell, and the one that they may (MIL-STD-2500C, table A-3). */
constexpr std::uint32_t kWidestBlockField = 9999;
constexpr std::uint32_t kWidestBlock = 8192;

/** The highest level that IDLVL can tell. */
constexpr std::uint32_t kHighestLevel = 999;

/** Bytes of the mask table in front of TPXCD: IMDATOFF, BMRLNTH, TMRLNTH, TPXCDLNTH. */
constexpr std::uint32_t kMaskHeaderBytes = 4 + 2 + 2 + 2;

/** An entry of BMR or TMR that says: not recorded. */
constexpr std::uint32_t kNotRecorded = 0xFFFFFFFF;

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
  char IXSHDL[6];
  char IXSOFL[4];
  char *extendedData;           /**< IXSHD */
  std::uint32_t maskEntries;    /**< entries of `blockMask` and of `padMask`, where they are there */
  std::uint8_t (*blockMask)[4]; /**< BMR in the file's byte order; one entry of zeros more */
  std::uint8_t (*padMask)[4];   /**< TMR, likewise */
  std::uint8_t *padCode;        /**< TPXCD */
  std::int32_t displayBands[3]; /**< -1 until the bands for display were chosen */
  char *memoryData;             /**< compressed image of an appended segment */
  std::uint32_t memoryBytes;    /**< bytes of `memoryData` */
  std::uint32_t hasMemoryData;
  NitfFile *file;
  std::uint32_t index;
};

/** The format of the image subheader with its mask table. */
extern const HeaderTable kImageTable;

/** Gives every member its default. Whatever the record held is forgotten. */
void ImageSubheaderInit(ImageSubheader *record, NitfFile *file);

/** Releases what the record points to, and sets the pointers to null; may be called twice. */
void ImageSubheaderFree(ImageSubheader *record);

/**
 * Makes the arrays of the band group anew, of zeros, for as many bands; lookup tables and their lengths stay. False
 * without memory, with the old arrays in place.
 */
bool RenewBands(ImageSubheader *record, std::uint32_t bands);

/**
 * Reads the subheader from the file's position, and puts the position back. A size that is given as unknown makes it
 * read once more from the replacement data of the stream file header. SUCCESS, ERROR_FILE_READ, ERROR_FILE_FORMAT,
 * NITF_UNSUPPORTED_PVTYPE and NITF_UNSUPPORTED_BPP (both after a message box), ERROR_NO_MEMORY.
 */
std::int32_t ImageSubheaderRead(ImageSubheader *record, NitfFile &file, StreamFileHeader &stream, bool replay);

/** IMAG as a factor: a slash and a number is one part in so many, anything else a decimal fraction. */
double ParseMagnification(std::string_view text);

/** Whether a mask table stands in front of the image data of an IC. */
bool HasMaskTable(std::uint32_t compression);

/** Whether the data of an image are codes of kernels. */
inline bool IsVectorQuantised(const ImageSubheader &image) {
  return image.compression == kC4 || image.compression == kM4;
}

/** The text of a stored IREPBAND; empty for a number without one. */
std::string_view BandRepresentationText(std::uint32_t representation);

/** The IREPBAND of a band; kBandNone where the record holds none. */
inline std::uint32_t BandTag(const ImageSubheader &image, std::uint32_t band) {
  return band < image.bandsHeld ? image.bandRepresentation[band] : static_cast<std::uint32_t>(kBandNone);
}

/** Bytes of the mask table in front of the image data, 0 for an IC without one. */
std::uint64_t MaskTableBytes(const ImageSubheader &image);

/** Bytes of TPXCD. */
inline std::uint32_t PadCodeBytes(const ImageSubheader &image) {
  return (image.padCodeBits + 7U) / 8U;
}

// ---- setters
// Each keeps the text of a field and the number decoded from it in step. SUCCESS, or ERROR_INVALID_VALUE for what the
// field doesn't take, with nothing changed.

/** IREP, which must begin with one of its values. */
std::int32_t ImageSetRepresentation(ImageSubheader *record, const char *text);

/** PVTYPE, INT or B, by its first letter. */
std::int32_t ImageSetPixelValueType(ImageSubheader *record, const char *text);

/** PJUST, L or R. */
std::int32_t ImageSetJustification(ImageSubheader *record, const char *text);

/** IMODE: B, P, R or S. */
std::int32_t ImageSetMode(ImageSubheader *record, const char *text);

/** ICORDS. Its going to or from a blank takes IGEOLO into the subheader or out of it, and the lengths follow. */
std::int32_t ImageSetCoordinates(ImageSubheader *record, const char *text);

/** IC, exactly one of its values. COMRAT coming or going with it changes the lengths. */
std::int32_t ImageSetCompression(ImageSubheader *record, const char *text);

/** COMRAT, of up to four characters. */
std::int32_t ImageSetRate(ImageSubheader *record, const char *text);

/** IMAG. */
std::int32_t ImageSetMagnification(ImageSubheader *record, const char *text);

/** ILOC: the sign first, of five characters each; a number with more has its digits at 0. Always SUCCESS. */
std::int32_t ImageSetLocation(ImageSubheader *record, std::int32_t row, std::int32_t column);

/**
 * NBANDS, 0 where XBANDS is to count: makes the band group anew, for as many bands as the greater of the two numbers
 * says, without representation, subcategory, filter and lookup tables. ERROR_INVALID_VALUE above 99999, and
 * ERROR_NO_MEMORY, leave all as it was.
 */
std::int32_t ImageSetBandCount(ImageSubheader *record, std::uint32_t count);

/** IREPBAND of a band; a blank one can't be set. ERROR_INVALID_VALUE also for a band behind the last. */
std::int32_t ImageSetBandRepresentation(ImageSubheader *record, std::uint32_t band, const char *text);

/** TPXCD, as many bytes as `padCodeBits` calls for. ERROR_NO_MEMORY leaves none. */
std::int32_t ImageSetPadCode(ImageSubheader *record, const void *code);
