// Vector-quantised image data (MIL-STD-188-199): each small kernel of pixels is a code, and the codebook in front of
// the codes gives the kernel's pixels. All numbers of the format are big-endian.
#pragma once

#include "handlimg.h"

/** What the data begin with, 21 bytes in the file. */
struct VqHeader {
  std::uint32_t codeRows;    /**< rows of codes in a block */
  std::uint32_t codesPerRow; /**< codes in such a row */
  std::uint8_t codeBits;     /**< bits of a code */
  std::uint16_t algorithm;
  std::uint16_t lookupRecords; /**< lookup tables, each with a VqLookupRecord */
  std::uint16_t parameterRecords;
  std::uint32_t lookupOffset;
  std::uint16_t lookupRecordLength;
};

/** What is told of a lookup table, 14 bytes in the file. */
struct VqLookupRecord {
  std::uint16_t table;
  std::uint32_t entries; /**< that of the first table counts for all of them */
  std::uint16_t valuesPerEntry;
  std::uint16_t bitsPerValue;
  std::uint32_t offset;
};

constexpr std::uint64_t kVqHeaderBytes = 21;
constexpr std::uint64_t kVqLookupRecordBytes = 14;

/**
 * Puts a file that stands at the image data mask table of an image behind it; an IC without that table moves nothing.
 * The table in the subheader stays in force. SUCCESS, or ERROR_FILE_READ where the file ends before the table does.
 */
std::int32_t SkipMaskTable(const NitfFile *file, const ImageSubheader &image);

/** Reads the header from the file's position: SUCCESS, or ERROR_FILE_READ with a header of zeros. */
std::int32_t ReadVqHeader(const NitfFile *file, VqHeader *header);

/**
 * Reads the records of all lookup tables, which follow the header, into `records`, an array of `header.lookupRecords`.
 * SUCCESS or ERROR_FILE_READ.
 */
std::int32_t ReadVqLookupRecords(const NitfFile *file, const VqHeader &header, VqLookupRecord *records);

/**
 * Decodes a vector-quantised image into `target`, which it creates: with the extent of the recorded blocks from the
 * image's corner on, 8 bits and the image's palette. Blocks that are not recorded are black. On failure `target` is
 * empty: ERROR_NOT_SUPPORTED for other depths than 8 bits, ERROR_FILE_FORMAT for a header that gives no kernel or a
 * code without an entry, ERROR_FILE_READ, ERROR_NO_MEMORY.
 */
std::int32_t DecodeVqImage(const ImageSource &source, KsBitmap *target);

/** Decodes the image through a strip of that bitmap, with the same results; they show before the first part. */
std::int32_t DecodeVqInParts(const ImageSource &source, ImagePartSink &sink);
