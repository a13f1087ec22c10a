// The tables of the file header with the lengths of the subheaders and data of each kind of segment, and all that keeps
// them: reading, writing, growing, and the lengths of the file that follow from them.
#pragma once

#include "headers/file_header_record.h"
#include "internal/status.h"
#include "table/segment_kind.h"

namespace ksntfx {

class HeaderReader;
class HeaderWriter;

/** One length of each segment of a kind: its digits, and the tables that it goes into. */
struct LengthColumn {
  std::uint32_t width;
  bool nineIsUnknown;
  std::uint32_t *NitfHeader::*table;
  std::uint32_t *NitfHeader::*outTable; /**< null where the kind has none */
  bool writtenAsRead = false;           /**< and `outTable` follows */
};

/** Three digits count the segments of a kind. */
constexpr std::uint32_t kMostSegments = 999;

/** The segment lengths of one kind, which follow the kind's count in the header. */
struct LengthTable {
  std::uint32_t NitfHeader::*count; /**< entries in force */
  std::uint32_t NitfHeader::*held;  /**< entries that there is memory for: never less */
  LengthColumn subheader;
  LengthColumn data;
  std::uint64_t *NitfHeader::*longData = nullptr; /**< the lengths of the data as read, where they may be long */
};

inline constexpr LengthTable kImageLengths = {
    &NitfHeader::imageTableCount,
    &NitfHeader::imageTableHeld,
    {6, true, &NitfHeader::imageSubheaderLengths, &NitfHeader::imageSubheaderLengthsOut},
    {10, true, &NitfHeader::imageDataLengths, &NitfHeader::imageDataLengthsOut, true},
    &NitfHeader::imageDataLengthsLong};
inline constexpr LengthTable kGraphicLengths = {
    &NitfHeader::graphicTableCount,
    &NitfHeader::graphicTableHeld,
    {4, true, &NitfHeader::graphicSubheaderLengths, &NitfHeader::graphicSubheaderLengthsOut},
    {6, false, &NitfHeader::graphicDataLengths, &NitfHeader::graphicDataLengthsOut}};
inline constexpr LengthTable kLabelLengths = {
    &NitfHeader::labelTableCount,
    &NitfHeader::labelTableHeld,
    {4, true, &NitfHeader::labelSubheaderLengths, nullptr},
    {3, false, &NitfHeader::labelDataLengths, &NitfHeader::labelDataLengthsOut}};
inline constexpr LengthTable kTextLengths = {&NitfHeader::textTableCount,
                                             &NitfHeader::textTableHeld,
                                             {4, true, &NitfHeader::textSubheaderLengths, nullptr},
                                             {5, false, &NitfHeader::textDataLengths, &NitfHeader::textDataLengthsOut}};
inline constexpr LengthTable kDataExtensionLengths = {&NitfHeader::dataExtensionTableCount,
                                                      &NitfHeader::dataExtensionTableHeld,
                                                      {4, true, &NitfHeader::dataExtensionSubheaderLengths, nullptr},
                                                      {9, true, &NitfHeader::dataExtensionDataLengths, nullptr}};
inline constexpr LengthTable kReservedLengths = {&NitfHeader::reservedExtensionTableCount,
                                                 &NitfHeader::reservedExtensionTableHeld,
                                                 {4, false, &NitfHeader::reservedSubheaderLengths, nullptr},
                                                 {7, false, &NitfHeader::reservedDataLengths, nullptr}};

/** The tables of the kinds that have a list. */
const LengthTable &LengthsOf(SegmentKind kind);

/** One of the tables of a file header. */
using LengthArray = std::uint32_t *NitfHeader::*;

/** The entry of a kind's table; 0 where it has no such entry. */
std::uint32_t EntryOf(const NitfHeader &header, const LengthTable &lengths, LengthArray table, std::uint32_t index);

/**
 * Reads as many entries as the kind's count says; entries that a replay doesn't reach stay as they were. SUCCESS,
 * kBudgetSpent, ERROR_FILE_READ, or ERROR_NO_MEMORY, also for a count below 0.
 */
Status ReadLengths(HeaderReader &reader, const LengthTable &lengths);

/** Writes `rows` entries. What a table lacks is written as 0. */
Status WriteLengths(HeaderWriter &writer, const LengthTable &lengths, std::uint32_t rows);

/** Makes the lengths of the images' data that are written those that were read, for as many images as are listed. */
void WriteAsRead(NitfHeader *header, const LengthTable &lengths, std::uint32_t listed);

/** Releases all tables. */
void FreeLengths(NitfHeader *header);

/** Makes room for one entry more; the entries in force stay as they are. SUCCESS or ERROR_NO_MEMORY. */
Status GrowLengths(NitfHeader *header, const LengthTable &lengths);

/** Adds the lengths of a new segment, for which there is room, to the file header and to its own lengths. */
void AddLengths(NitfHeader *header, const LengthTable &lengths, std::uint32_t subheaderBytes, std::uint32_t dataBytes);

/** Adds to the length of a segment's subheader, and to the file's; a segment without an entry has no say. */
void ChangeSubheaderLength(NitfHeader *header, const LengthTable &lengths, std::uint32_t index, std::int32_t bytes);

/** Makes the length of a segment's data another one, and the file's with it; likewise. */
void ReplaceDataLength(NitfHeader *header, const LengthTable &lengths, std::uint32_t index, std::uint32_t bytes);

/** Adds to the length of the file wherever it is kept: FL as text, as read and as it is written. */
void ChangeFileLength(NitfHeader *header, std::int64_t bytes);

}  // namespace ksntfx
