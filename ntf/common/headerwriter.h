// The walk that writes a header from its format table.
#pragma once

#include "headertable.h"

#include <functional>
#include <string>
#include <utility>

class KNitfSaveFile;

/** One header on its way into a file. Every call gives SUCCESS or ERROR_FILE_WRITE. */
class HeaderWriter {
 public:
  /** Writes at the output's position. `save` takes what later steps of a save need to know. */
  HeaderWriter(KNitfSaveFile &saving, KsHandle output, NitfFile &source, const void *sourceRecord);

  /** Writes all rows in order: SUCCESS, or the first failure. */
  std::int32_t Write(const HeaderTable &table);

  /** Takes the name of a field and how many bytes stand before it. */
  using Visitor = std::function<void(const std::string &name, std::uint64_t offset)>;
  /** Writes nothing, and tells the visitor where each field would stand. Groups are not visited. */
  void OnlyVisit(Visitor visitor) { visit = std::move(visitor); }

  /** Writes a text at a field's width, with `fill` in front of it, or behind it where that is a blank. */
  std::int32_t Text(const char *text, std::uint32_t width, char fill);
  /** Writes a number with zeros in front. One with more digits than the field keeps its first digits. */
  std::int32_t Number(std::int64_t value, std::uint32_t width);
  /** Writes bytes as they are; null stands for zeros. */
  std::int32_t Bytes(const void *bytes, std::uint64_t count);
  /** Writes the low `bytes` bytes of a number, the highest first. */
  std::int32_t BigEndian(std::uint32_t value, std::uint32_t bytes);

  template <class Record>
  const Record &As() const {
    return *static_cast<const Record *>(record);
  }
  NitfFile &File() const { return file; }
  KNitfSaveFile &Save() const { return save; }
  bool Nitf20() const { return nitf20; }
  /** Writes the 2.0 layout, whatever the file says. */
  void Use20() { nitf20 = true; }
  /** Bytes written so far. */
  std::uint64_t Written() const { return written; }

 private:
  std::int32_t WriteRows(std::span<const HeaderRow> rows, const char *base, char fill, const HeaderRow *group);
  std::int32_t WriteRow(const HeaderRow &row, const char *base, char fill, const HeaderRow *group);
  std::int32_t Zeros(std::uint64_t count);
  std::int32_t WriteData(const HeaderRow &row, const char *base);

  KNitfSaveFile &save;
  KsHandle out;
  NitfFile &file;
  const void *record;
  bool nitf20;
  std::uint64_t written = 0;
  Visitor visit;
};

/** Tells where the fields of a header stand, counted from its start: the header's length. */
std::uint64_t VisitFields(const HeaderTable &table, const void *record, NitfFile &file,
                          const HeaderWriter::Visitor &visitor);
