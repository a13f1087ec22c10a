// Makes vector-quantised image data, number by number, without the library under test.
#pragma once

#include "nitf_builder.h"

/** Vector-quantised data. Numbers that are given beside what follows from the others stand for damage. */
struct VqSpec {
  std::uint32_t codeRows = 1;
  std::uint32_t codesPerRow = 1;
  std::uint32_t codeBits = 12;
  std::uint32_t kernelHeight = 4;
  std::uint32_t tables = 4;               /**< each gives a kernel height of values to every kernel */
  std::vector<Bytes> kernels{};           /**< the values of each kernel, row by row: tables x kernelHeight */
  std::vector<std::uint32_t> codes{};     /**< of all recorded blocks, one after the other */
  std::optional<std::uint32_t> entries{}; /**< told in the first record; the number of kernels where not given */
};

/** The data behind the mask table: header, lookup records, lookup tables, codes. */
Bytes EncodeVq(const VqSpec &spec);
