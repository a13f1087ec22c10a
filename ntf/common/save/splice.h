// A file made from the bytes of another one: whatever is not replaced stays as it is, byte for byte.
#pragma once

#include "headers/nitffile.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ksntfx {

/**
 * The bytes of an open file with changes. Offsets count in that file; changed ranges must be within it and must not
 * overlap. Memory is bounded by the inserted bytes, not by the file.
 */
class Splice {
 public:
  /** Without changes, a copy of the whole file. `file` must stay open. */
  explicit Splice(KsHandle file);

  /** Replaces as many bytes as `bytes` has. */
  void Replace(std::uint64_t offset, std::string bytes);
  /** Inserts bytes in front of the byte at `offset`. Insertions at one offset keep their order. */
  void Insert(std::uint64_t offset, std::string bytes);
  /** The same without a copy: `bytes` must stay where they are. */
  void InsertHeld(std::uint64_t offset, std::string_view bytes);

  /** The length of the new file. */
  std::uint64_t Length() const;

  /** Writes the new file at the position of `out`. SUCCESS, ERROR_FILE_READ, ERROR_FILE_WRITE or ERROR_NO_MEMORY. */
  Status WriteTo(KsHandle out) const;

  /** Reads `bytes` bytes of the new file from `offset` on. SUCCESS or ERROR_FILE_READ. */
  Status Read(std::uint64_t offset, char *buffer, std::uint64_t bytes) const;

  /** Reads a written file and compares all of it. SUCCESS, ERROR_FILE_READ, or ERROR_FILE_WRITE if it differs. */
  Status CompareWith(KsHandle written) const;

 private:
  struct Change {
    std::uint64_t offset;
    std::uint64_t removed; /* bytes of the file */
    std::string owned;
    std::string_view held;
    std::string_view Bytes() const { return held.empty() ? std::string_view(owned) : held; }
  };

  void Add(Change change);
  /** Visits the new file in order, as runs of the source and as bytes in memory, until a visit fails. */
  template <class VisitRun, class VisitBytes>
  Status Walk(const VisitRun &visitRun, const VisitBytes &visitBytes) const;

  KsHandle source;
  std::uint64_t sourceBytes;
  std::vector<Change> changes; /* by offset */
};

/**
 * Puts the segments that were added in memory to `added` behind those of `file`, kind by kind. In the header of `file`
 * only the counts, the length tables, FL and HL change. `added` must outlive the splice.
 *
 * SUCCESS, or without any change to `splice`:
 * - NITF_TOO_MANY_SEGMENTS: more than 999 of a kind
 * - ERROR_INVALID_VALUE: HL or FL would not fit its field; `*field` names it, as it does the count above
 * - ERROR_FILE_FORMAT: HL is less than the header's length
 * - ERROR_FILE_READ: the file ends before its segments do
 * - ERROR_NOT_SUPPORTED: lengths are in a stream file header, which this doesn't change
 */
Status SpliceSegments(const NitfFile *file, const NitfFile *added, Splice *splice, std::string_view *field);

}  // namespace ksntfx
