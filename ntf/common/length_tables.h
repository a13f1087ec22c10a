// The tables of the file header that tell how long the subheaders and data of each kind of segment are.
#pragma once

#include "ntfhdr.h"

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
};

inline constexpr LengthTable kImageLengths = {
    &NitfHeader::imageTableCount,
    &NitfHeader::imageTableHeld,
    {6, true, &NitfHeader::imageSubheaderLengths, &NitfHeader::imageSubheaderLengthsOut},
    {10, true, &NitfHeader::imageDataLengths, &NitfHeader::imageDataLengthsOut, true}};
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
