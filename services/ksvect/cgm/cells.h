// The colour lists of cell arrays and patterns.
#pragma once

#include "ksvect/cgm/values.h"

namespace ksvect::cgm {

struct CellLayout {
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
  unsigned bits = 0;       /**< of an index, or of a component of a direct colour */
  bool runs = false;       /**< rows are counts with a colour each; otherwise a colour for each cell */
  bool alignedRows = true; /**< rows begin at words */

  std::uint64_t Cells() const { return std::uint64_t{columns} * rows; }
};

/**
 * Reads columns, rows and the local precision, of which 0 means that of all colours. Fails the parameters, and
 * returns false, where there are no cells or the precision isn't one of the standard's.
 */
bool ReadLayout(Parameters &parameters, const Coding &coding, CellLayout &layout);

/** The bytes up to the end of cells that are no runs and begin at `position`. */
std::uint64_t EndOfCells(const CellLayout &layout, const Coding &coding, std::uint64_t position);

/** Reads all that is left: colours, or places in the colour table. Fails the parameters where cells are missing. */
std::vector<std::uint32_t> ReadCells(Parameters &parameters, const CellLayout &layout, const Coding &coding);

}  // namespace ksvect::cgm
