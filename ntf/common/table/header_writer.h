// The walk that writes a header from its format table.
#pragma once

#include "table/header_table.h"
#include "table/segment_kind.h"

#include <functional>
#include <string>
#include <utility>

namespace ksntfx {

/** Places in the output that a later step of a save comes back to, and what it needs to know. */
struct HeaderMarks {
  std::uint32_t fileLengthField = 0; /**< where FL stands */
  std::uint32_t imageLengths = 0;    /**< where the first LISH stands */
  std::uint32_t maskBytes = 0;       /**< of the mask table that the last image subheader came with */
};

/** Where the bytes of a header go. */
struct HeaderSink {
  KsHandle out = KS_INVALID_HANDLE;
  std::string *memory = nullptr; /**< collects the bytes; then `out` is not used */
  bool nitf20 = false;           /**< the header has the layout of NITF 2.0 */
  bool isWide = false;           /**< the header may hold what the strict interfaces refuse */
  CountsOfKinds listed{};        /**< the segments of each kind, which the file header counts */
  HeaderMarks marks{};
};

/** One header on its way into a file. Every call gives SUCCESS or ERROR_FILE_WRITE. */
class HeaderWriter {
 public:
  /** Writes at the output's position. */
  HeaderWriter(HeaderSink &output, const void *sourceRecord) : sink(output), record(sourceRecord) {}

  /** Writes all rows in order: SUCCESS, or the first failure. */
  Status Write(const HeaderTable &table);

  /** Takes the name of a field and how many bytes stand before it. */
  using Visitor = std::function<void(const std::string &name, std::uint64_t offset)>;
  /** Writes nothing, and tells the visitor where each field would stand. Groups are not visited. */
  void OnlyVisit(Visitor visitor) { visit = std::move(visitor); }

  /** Writes a text at a field's width, with `fill` in front of it, or behind it where that is a blank. */
  Status Text(const char *text, std::uint32_t width, char fill);
  /** Writes a number with zeros in front. One with more digits than the field keeps its first digits. */
  Status Number(std::int64_t value, std::uint32_t width);
  /** Writes bytes as they are; null stands for zeros. */
  Status Bytes(const void *bytes, std::uint64_t count);
  /** Writes the low `bytes` bytes of a number, the highest first. */
  Status BigEndian(std::uint32_t value, std::uint32_t bytes);

  template <class Record>
  const Record &As() const {
    return *static_cast<const Record *>(record);
  }
  HeaderSink &Sink() const { return sink; }
  bool Nitf20() const { return sink.nitf20; }
  /** Bytes written so far. */
  std::uint64_t Written() const { return written; }

 private:
  Status WriteRows(std::span<const HeaderRow> rows, const char *base, char fill, const HeaderRow *group);
  Status WriteRow(const HeaderRow &row, const char *base, char fill, const HeaderRow *group);
  Status Zeros(std::uint64_t count);
  void HoldText(const char *text, std::uint32_t width, char fill);
  Status WriteData(const HeaderRow &row, const char *base);

  HeaderSink &sink;
  const void *record;
  std::uint64_t written = 0;
  Visitor visit;
};

/** Visits the fields of a header as they would be written, counted from its start, and returns the header's length. */
std::uint64_t VisitFields(const HeaderTable &table, const void *record, HeaderSink sink,
                          const HeaderWriter::Visitor &visitor);

}  // namespace ksntfx
