// The program's one door to the library's core: what it needs that the exports don't return. Nothing else of the
// program includes a header of the core.
#pragma once

#include "ksntfx.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ntf {

/** The kinds of segments, in file order. */
enum class SegmentKind : std::uint8_t { Image, Graphic, Label, Text, DataExtension };

/** A header of a file: that of a segment, or, without a kind, the file's own. */
struct HeaderChoice {
  std::optional<SegmentKind> kind{};
  std::uint32_t index = 0; /* of an existing segment */
};

enum class FieldContent : std::uint8_t { Text, Digits, Binary };

/** A header field. */
struct Field {
  std::string name;      /* the standard's name */
  std::string_view text; /* its bytes, at the field's width; valid while the file is unchanged */
  FieldContent content;
};

/** Where a load failed. */
struct LoadFault {
  HeaderChoice header;      /* its segment may not exist */
  std::string field;        /* the standard's name; empty if no field is at fault */
  std::string_view text;    /* its bytes; empty if they are not all in the file */
  std::uint64_t offset = 0; /* in the file */
};

/** Characters of each half of a location field: row and column. */
constexpr std::size_t kLocationHalf = 5;

/** The offsets of a header's fields, and its length, as its contents call for them. */
struct HeaderLayout {
  std::map<std::string, std::uint64_t> offsets; /* from the header's start */
  std::uint64_t length = 0;
};

/** The position and the length of a segment, by the file header's tables. */
struct SegmentPlace {
  std::uint64_t subheader = 0; /* offset in the file */
  std::uint32_t subheaderLength = 0;
  std::uint64_t data = 0; /* offset in the file */
  std::uint64_t dataLength = 0;
};

/** Numbers of the file header. */
struct FileNumbers {
  bool headerRead = false;
  bool isNitf20 = false;                  /* the headers have the layout of NITF 02.00 */
  std::uint64_t fileLength = 0;           /* FL */
  std::uint32_t headerLength = 0;         /* HL */
  std::uint32_t reservedExtensions = 0;   /* NUMRES */
  std::uint64_t reservedExtensionSum = 0; /* bytes of the reserved extension segments, with their subheaders */
};

struct ImageBand {
  std::string representation; /* IREPBAND */
  std::string_view subcategory;
  std::string_view filterCondition;
  std::string_view filterCode;
  std::uint32_t tables = 0;                  /* NLUTS */
  std::optional<std::uint32_t> tableEntries; /* NELUT */
};

/** Bytes of the mask table in front of TPXCD, and of each of its records. */
constexpr std::uint32_t kMaskHeaderBytes = 10;
constexpr std::uint32_t kMaskRecordBytes = 4;
/** The record of a block that is not in the file. */
constexpr std::uint32_t kBlockNotRecorded = 0xFFFFFFFF;

struct ImageMask {
  std::uint32_t dataOffset = 0;            /* IMDATOFF */
  std::uint32_t blockRecordLength = 0;     /* BMRLNTH */
  std::uint32_t padRecordLength = 0;       /* TMRLNTH */
  std::uint32_t padCodeBits = 0;           /* TPXCDLNTH */
  std::uint32_t padCodeBytes = 0;          /* of TPXCD */
  std::optional<std::string_view> padCode; /* TPXCD */
};

/** The numbers of an image subheader. */
struct ImageNumbers {
  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
  std::uint32_t blocksPerRow = 0;
  std::uint32_t blocksPerColumn = 0;
  std::uint32_t blockWidth = 0;
  std::uint32_t blockHeight = 0;
  std::uint32_t bands = 0;
  std::uint32_t bitsPerPixel = 0;
  std::uint32_t actualBits = 0;
  bool compressed = true;
  bool bandSequential = false;
  std::optional<ImageMask> mask{};
};

/** Where a segment lies in the stack of displayed segments. */
struct DisplayLevel {
  std::uint32_t level = 0;
  std::uint32_t attachment = 0;
};

enum class FieldChange : std::uint8_t { Stored, NoSuchField, Refused };

/** A file whose headers are in memory, seen through the core. A view: it is valid as long as its owner. */
class FileView {
 public:
  /** The file of an open handle. */
  explicit FileView(NitfHandle handle) : file(handle) {}

  // ---- segments
  std::uint32_t Count(SegmentKind kind) const;
  /** Segments in the source file; appended ones follow them. */
  std::uint32_t CountInSource(SegmentKind kind) const;
  bool Has(SegmentKind kind, std::uint32_t index) const;
  SegmentPlace Place(SegmentKind kind, std::uint32_t index) const;

  // ---- headers
  /** Where the load failed that made this view. */
  LoadFault Fault() const;
  FileNumbers Numbers() const;
  /** Visits all fields that a header has, in file order. The fields of bands and masks are not among them. */
  void ListFields(const HeaderChoice &header, const std::function<void(const Field &)> &visit) const;
  /** The text of a field; empty if the header doesn't have it. */
  std::string FieldText(const HeaderChoice &header, std::string_view name) const;
  HeaderLayout Layout(const HeaderChoice &header) const;
  /** Stores a value in a field in memory; FBKGC requires three bytes. */
  FieldChange Store(const HeaderChoice &header, const std::string &name, const std::string &value) const;

  // ---- images and graphics
  ImageNumbers Image(std::uint32_t index) const;
  std::vector<ImageBand> ImageBands(std::uint32_t index) const;
  std::vector<std::string_view> ImageComments(std::uint32_t index) const;
  /** The block mask records: offsets into the image data, or kBlockNotRecorded. */
  std::vector<std::uint32_t> BlockOffsets(std::uint32_t index) const;
  DisplayLevel LevelOf(SegmentKind kind, std::uint32_t index) const;

  /** Decodes an image into an empty bitmap: whole blocks at the segment's own depth. A status. */
  std::int32_t DecodeImage(std::uint32_t index, KsBitmap *target) const;
  /** The pixels that a graphic covers, without the width of its lines, relative to its attachment. A status. */
  std::int32_t PlaceGraphic(std::uint32_t index, KsRect *place) const;
  /** Draws a graphic, its attachment's origin at `row` and `column`. A status. */
  std::int32_t DrawGraphic(std::uint32_t index, KsDeviceContext *context, std::int32_t row, std::int32_t column) const;

  // ---- bytes of the source file
  std::uint64_t SourceBytes() const;
  /** Reads up to `bytes` bytes at an offset, and returns how many there were. */
  std::uint64_t ReadAt(std::uint64_t offset, void *buffer, std::uint64_t bytes) const;
  /** Reads the data of a segment. A status. */
  std::int32_t ReadData(SegmentKind kind, std::uint32_t index, std::string &data) const;

 private:
  friend class FileRewrite;
  NitfFile *file;
};

/** The bytes of an opened file with changes: all others are carried as they are. */
class FileRewrite {
 public:
  /** Without changes, a copy. The file must outlive the object. */
  explicit FileRewrite(const FileView &file);
  ~FileRewrite();
  FileRewrite(const FileRewrite &) = delete;
  FileRewrite &operator=(const FileRewrite &) = delete;

  /** Replaces as many bytes as `bytes` has. Replaced ranges must not overlap. */
  void Replace(std::uint64_t offset, const std::string &bytes);
  /**
   * Puts the segments that were added in memory to another file behind those of this one. A status; after a failure
   * `field` is the header field that can't hold its value, if there is one. `added` must outlive the object.
   */
  std::int32_t Append(const FileView &added, std::string &field);

  /** Writes the file as `name`. A status. */
  std::int32_t Write(const char16_t *name) const;
  /** Reads the written file, and compares all of it. A status. */
  std::int32_t Compare(const char16_t *name) const;

 private:
  struct Held;
  FileView source;
  std::unique_ptr<Held> held;
};

/** Which files are accepted. */
enum class Door {
  Wide,  /* files of every version; what isn't valid in them is noted */
  Strict /* files that the interfaces of ksntfx.h accept */
};

/** Something that isn't valid in a file, or missing. */
struct FileNote {
  HeaderChoice header;
  std::string field; /* the standard's name; empty for a whole segment */
  std::uint64_t offset = 0;
  std::string words;     /* the whole note, with segment, field and value */
  std::string fault;     /* what is wrong with the field or the segment */
  bool isUnread = false; /* the segment's subheader can't be read */
};

/** A file that is opened for its headers alone. */
class LoadedFile {
 public:
  LoadedFile();
  ~LoadedFile();
  LoadedFile(const LoadedFile &) = delete;
  LoadedFile &operator=(const LoadedFile &) = delete;

  /** Reads all headers; called once. A status: after a failure the view holds what was read up to it. */
  std::int32_t Load(const char16_t *name, Door door);
  FileView View() const;
  /** After a load through the wide door. */
  std::vector<FileNote> Notes() const;

 private:
  struct Held;
  std::unique_ptr<Held> held;
};

}  // namespace ntf
