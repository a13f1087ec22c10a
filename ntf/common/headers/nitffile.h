// One NITF file in memory: the open source file, its header, a list of subheaders for each kind of segment, and the
// arithmetic that turns the header's length tables into positions. Bodies stay in the file.
#pragma once

#include "headers/dexsbhdr.h"
#include "headers/grsubhdr.h"
#include "headers/imsubhdr.h"
#include "headers/lbsubhdr.h"
#include "headers/length_tables.h"
#include "headers/ntfhdr.h"
#include "headers/strmfhdr.h"
#include "headers/txsubhdr.h"
#include "ksntfx.h"
#include "table/header_fault.h"
#include "table/header_notes.h"
#include "table/header_writer.h"
#include "table/segment_kind.h"

namespace ksntfx {

/** A node of a segment list. A segment's index is its position in the list of its kind, from 0. */
struct SegmentNode {
  void *subheader; /**< the kind's record */
  SegmentNode *next;
};

}  // namespace ksntfx

struct NitfFile {
  KsHandle fileHandle;
  ksntfx::HeaderNotes *notes; /**< null, or what receives the values that the strict interfaces refuse */
  std::uint32_t vectorRender; /**< object symbols are painted at once */
  std::uint32_t toneCheck;    /**< images of low levels only are spread over the full range */
  std::uint32_t fixedCanvas;  /**< the canvas is 2048 by 2048 */
  std::uint32_t nitf20Layout; /**< headers have the layout of NITF 2.0 */
  std::uint32_t longPlaces;   /**< positions are 64 bits wide, as the lengths of images may demand */
  std::uint32_t streamBytesConsumed;
  std::uint32_t streamHeaderLoaded;
  std::uint32_t streamBytesLeft;
  std::uint32_t headerValid;
  ksntfx::NitfHeader header;
  std::uint32_t backgroundColor;
  // The live counts grow when segments are appended; those of the file are what positions are computed from.
  std::uint32_t imageCount;
  std::uint32_t graphicCount;
  std::uint32_t imageCountInFile;
  std::uint32_t graphicCountInFile;
  std::uint32_t labelCount;
  std::uint32_t textCount;
  std::uint32_t labelCountInFile;
  std::uint32_t textCountInFile;
  std::uint32_t dataExtensionCount;
  std::uint32_t reservedExtensionCount;
  ksntfx::SegmentNode *imageList;
  ksntfx::SegmentNode *graphicList;
  ksntfx::SegmentNode *labelList;
  ksntfx::SegmentNode *textList;
  ksntfx::SegmentNode *dataExtensionList;
  ksntfx::HeaderFault fault; /**< of a load that failed at a field */
  std::uint32_t faultyKind;  /**< the SegmentKind of the subheader that a load failed at, or kFileHeaderFailed */
  std::uint32_t faultyIndex;
};

namespace ksntfx {

/** In the place of a kind: a load failed at the file header, or not at a header. */
constexpr std::uint32_t kFileHeaderFailed = 0xFFFFFFFF;

/** Gives an object its empty state. */
void NitfFileInit(NitfFile *file);

/** FreeObjects and the header's release. */
void NitfFileDestroy(NitfFile *file);

/**
 * Opens a file and reads all headers. On failure the object holds what was read so far and is to be destroyed:
 * ERROR_FILE_READ (also where there is no such file), ERROR_FILE_FORMAT, ERROR_INVALID_VALUE, ERROR_NO_MEMORY, or one
 * of NitfStatus.
 */
Status Load(NitfFile *file, const char16_t *name);

/** Copies the counts of segments and the background from the file header that was read. */
void CopyCounts(NitfFile *file);

/** Makes the nodes and records that the counts call for. SUCCESS or ERROR_NO_MEMORY. */
Status AllocateObjects(NitfFile *file);

/** Closes the source file and releases all lists and the header's tables; harmless on an empty object. */
void FreeObjects(NitfFile *file);

/** A node with a new record for the segment at `index`, in no list yet. Null without memory. */
SegmentNode *NewSegmentNode(NitfFile *file, SegmentKind kind, std::uint32_t index);

/** Puts a node behind the last one of its kind's list. */
void LinkSegmentNode(NitfFile *file, SegmentKind kind, SegmentNode *node);

/** Releases a node that is in no list, with its record and what that holds. Null is none. */
void ReleaseSegmentNode(SegmentKind kind, SegmentNode *node);

/** Puts the file behind the last segment of a kind, or of those before it: the new position. */
std::int64_t SeekEndOfImages(const NitfFile *file);
std::int64_t SeekEndOfGraphics(const NitfFile *file);
std::int64_t SeekEndOfLabels(const NitfFile *file);
std::int64_t SeekEndOfTexts(const NitfFile *file);

/** Puts the file on the first byte of a segment's subheader. */
void SeekImage(const NitfFile *file, std::int32_t index);
void SeekGraphic(const NitfFile *file, std::int32_t index);
void SeekLabel(const NitfFile *file, std::int32_t index);
void SeekText(const NitfFile *file, std::int32_t index);
void SeekDataExtension(const NitfFile *file, std::int32_t index);

/** Puts the file on the first byte of a segment's body: its position. */
std::int64_t SeekSegmentData(const NitfFile *file, SegmentKind kind, std::uint32_t index);

/** The nodes of a kind that have a subheader. */
std::uint32_t CountImages(const NitfFile *file);
std::uint32_t CountGraphics(const NitfFile *file);
std::uint32_t CountLabels(const NitfFile *file);
std::uint32_t CountTexts(const NitfFile *file);
std::uint32_t CountSegments(const NitfFile *file, SegmentKind kind);

/** The segments of a kind that the source file holds; those behind them are in memory alone. */
std::uint32_t CountInFile(const NitfFile *file, SegmentKind kind);

/** The body length of a segment of the source file, 0 where the table has no such entry. */
std::uint32_t DataLength(const NitfFile *file, SegmentKind kind, std::uint32_t index);
std::uint32_t SubheaderLength(const NitfFile *file, SegmentKind kind, std::uint32_t index);
std::uint32_t TextDataLength(const NitfFile *file, std::uint32_t index);
/** The body length in full, which for an image may be more than DataLength can say. */
std::uint64_t LongDataLength(const NitfFile *file, SegmentKind kind, std::uint32_t index);

/** The position of the first segment of a kind, behind those of the kinds before it. */
std::uint64_t StartOfKind(const NitfFile *file, SegmentKind kind);

/**
 * The position behind the last segment of a kind in the source file, or of the kinds before it. Unless the file has
 * `longPlaces`, it wraps at 32 bits, like all positions.
 */
std::uint64_t EndOfKind(const NitfFile *file, SegmentKind kind);

/**
 * Reads a header from the file's position. A length or size of a file header or an image subheader that is given as
 * unknown makes it read once more, from the copy in the stream file header near the end of the file, which `stream`
 * holds for all headers of a load. A subheader leaves the position as it was. SUCCESS, ERROR_FILE_READ,
 * ERROR_FILE_FORMAT, ERROR_NO_MEMORY, one of NitfStatus (after a message box where the table says so), or the failure
 * of ReadStreamFileHeader.
 */
Status ReadFileHeader(NitfFile *file, StreamFileHeader *stream);
Status ReadSubheader(NitfFile *file, SegmentKind kind, void *record, StreamFileHeader *stream);

/** Where a header of the file is written. */
HeaderSink SinkFor(const NitfFile *file, KsHandle out);

/** The format of a kind's subheaders in a file. */
const HeaderTable &SubheaderTable(const NitfFile *file, SegmentKind kind);

/** The record of a segment, or null. */
void *FindSubheader(const NitfFile *file, SegmentKind kind, std::uint32_t index);
ImageSubheader *FindImage(const NitfFile *file, std::uint32_t index);
GraphicSubheader *FindGraphic(const NitfFile *file, std::uint32_t index);
LabelSubheader *FindLabel(const NitfFile *file, std::uint32_t index);
TextSubheader *FindText(const NitfFile *file, std::uint32_t index);
DataExtensionSubheader *FindDataExtension(const NitfFile *file, std::uint32_t index);

/** A NitfFile that lives in a scope. */
class LocalNitfFile {
 public:
  LocalNitfFile() { NitfFileInit(&file); }
  LocalNitfFile(const LocalNitfFile &) = delete;
  LocalNitfFile &operator=(const LocalNitfFile &) = delete;
  ~LocalNitfFile() { NitfFileDestroy(&file); }

  NitfFile *Get() { return &file; }
  NitfFile *operator->() { return &file; }

 private:
  NitfFile file;
};

}  // namespace ksntfx
