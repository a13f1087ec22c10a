// The data of a segment that a record holds in memory, until a save writes them.
#pragma once

#include "internal/status.h"

#include <cstdint>

namespace ksntfx {

/**
 * Puts a copy of `length` bytes, with a zero behind it, in the place of a block that a record holds. SUCCESS;
 * ERROR_NO_MEMORY leaves none.
 */
Status CopyIntoMemory(char **held, const void *data, std::uint32_t length);

/** Makes a copy of `length` bytes what a save writes for the record's segment. As CopyIntoMemory. */
template <class Record>
Status HoldInMemory(Record *record, const void *data, std::uint32_t length) {
  record->memoryBytes = 0;
  const Status status = CopyIntoMemory(&record->memoryData, data, length);
  if (status != SUCCESS) return status;
  record->memoryBytes = length;
  record->hasMemoryData = 1;
  return SUCCESS;
}

}  // namespace ksntfx
