#include "vq_builder.h"

#include "bit_writer.h"

namespace {

void PutHeader(Bytes &bytes, const VqSpec &spec) {
  PutBigEndian(bytes, spec.codeRows, 4);
  PutBigEndian(bytes, spec.codesPerRow, 4);
  PutBigEndian(bytes, spec.codeBits, 1);
  PutBigEndian(bytes, 1, 2);  // algorithm
  PutBigEndian(bytes, spec.tables, 2);
  PutBigEndian(bytes, 0, 2);  // parameter offset records
  PutBigEndian(bytes, 6, 4);  // offset of the lookup records
  PutBigEndian(bytes, 14, 2);
}

void PutRecord(Bytes &bytes, const VqSpec &spec, std::uint32_t table) {
  const std::uint64_t entries = spec.entries.value_or(static_cast<std::uint32_t>(spec.kernels.size()));
  PutBigEndian(bytes, table + 1, 2);
  // Only the first table's number of entries is in force.
  PutBigEndian(bytes, table == 0 ? entries : 0xDEAD, 4);
  PutBigEndian(bytes, spec.kernelHeight, 2);
  PutBigEndian(bytes, 8, 2);
  PutBigEndian(bytes, entries * spec.kernelHeight * table, 4);
}

void PutTable(Bytes &bytes, const VqSpec &spec, std::uint32_t table) {
  for (const Bytes &kernel : spec.kernels) {
    const auto from = kernel.begin() + static_cast<std::ptrdiff_t>(std::size_t{table} * spec.kernelHeight);
    bytes.insert(bytes.end(), from, from + spec.kernelHeight);
  }
}

}  // namespace

Bytes EncodeVq(const VqSpec &spec) {
  Bytes bytes;
  PutHeader(bytes, spec);
  for (std::uint32_t table = 0; table < spec.tables; ++table) PutRecord(bytes, spec, table);
  for (std::uint32_t table = 0; table < spec.tables; ++table) PutTable(bytes, spec, table);
  BitWriter stream(bytes);
  for (const std::uint32_t code : spec.codes) stream.Put(code, spec.codeBits);
  return bytes;
}
