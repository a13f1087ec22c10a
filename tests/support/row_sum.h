// Composing without taking memory of one's own: where memory runs out, or many threads compose, only the library
// counts.
#pragma once

#include "ksntfx.h"

#include <cstdint>

/** What fltLoad gave, and the rows that it delivered as a number. */
struct RowSum {
  std::int32_t status = 0;
  std::uint32_t rows = 0;
  std::uint64_t sum = 0;

  bool operator==(const RowSum &) const = default;
};

/** Composes a file on a canvas of `bits`. */
RowSum SumRows(const char16_t *name, std::uint32_t bits, std::uint32_t loadFlags = 0);
