// What stands in front of vector-quantised codes (MIL-STD-188-199): a header, and a record for each lookup table.
#pragma once

#include "table/binary_table.h"

namespace ksntfx {

/** The header of vector-quantised data, 21 bytes in the file. */
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

/** The description of a lookup table, 14 bytes in the file. */
struct VqLookupRecord {
  std::uint16_t table;
  std::uint32_t entries; /**< that of the first table counts for all of them */
  std::uint16_t valuesPerEntry;
  std::uint16_t bitsPerValue;
  std::uint32_t offset;
};

inline constexpr BinaryRow kVqHeaderRows[] = {
    BinaryNumber(NITF_MEMBER(VqHeader, codeRows)),      BinaryNumber(NITF_MEMBER(VqHeader, codesPerRow)),
    BinaryNumber(NITF_MEMBER(VqHeader, codeBits)),      BinaryNumber(NITF_MEMBER(VqHeader, algorithm)),
    BinaryNumber(NITF_MEMBER(VqHeader, lookupRecords)), BinaryNumber(NITF_MEMBER(VqHeader, parameterRecords)),
    BinaryNumber(NITF_MEMBER(VqHeader, lookupOffset)),  BinaryNumber(NITF_MEMBER(VqHeader, lookupRecordLength)),
};
static_assert(BytesOf(kVqHeaderRows) == 21);

inline constexpr BinaryRow kVqLookupRows[] = {
    BinaryNumber(NITF_MEMBER(VqLookupRecord, table)),          BinaryNumber(NITF_MEMBER(VqLookupRecord, entries)),
    BinaryNumber(NITF_MEMBER(VqLookupRecord, valuesPerEntry)), BinaryNumber(NITF_MEMBER(VqLookupRecord, bitsPerValue)),
    BinaryNumber(NITF_MEMBER(VqLookupRecord, offset)),
};
static_assert(BytesOf(kVqLookupRows) == 14);

}  // namespace ksntfx
