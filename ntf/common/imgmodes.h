// Uncompressed image data: the block layouts of the four image modes (MIL-STD-2500C, 5.4.2.1 and 5.4.2.2) and packed
// bi-level blocks.
#pragma once

#include "blocks.h"

#include <memory>

/**
 * Makes the reader for an image of IC NC or NM, by its PVTYPE, bands and depth. `source` must outlive it. SUCCESS,
 * ERROR_NOT_SUPPORTED for samples that make no picture, ERROR_NO_MEMORY.
 */
std::int32_t MakeBlockReader(const ImageSource &source, std::unique_ptr<BlockReader> *reader);

/** A reader for packed bi-level blocks, PVTYPE B, or null without memory. */
std::unique_ptr<BlockReader> MakeBilevelReader(const ImageSource &source);
