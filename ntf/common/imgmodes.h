// Uncompressed image data: the block layouts of the four image modes (MIL-STD-2500C, 5.4.2.1 and 5.4.2.2) and packed
// bi-level blocks.
#pragma once

#include "blocks.h"

/** What reads the blocks of an image, by its bands, depth and PVTYPE; each is an answer of its own where it makes none.
 */
using BlockWork = std::function<std::int32_t(BlockReader &reader)>;

/**
 * Does `work` with the reader for an image of IC NC or NM: its result, or ERROR_NOT_SUPPORTED for samples that make no
 * picture.
 */
std::int32_t WithBlockReader(const ImageSource &source, const BlockWork &work);

/** The same for packed bi-level blocks, PVTYPE B. */
std::int32_t WithBilevelReader(const ImageSource &source, const BlockWork &work);
