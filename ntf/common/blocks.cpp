#include "blocks.h"

#include "imgmodes.h"

BlockRows::~BlockRows() {
  if (target != nullptr) KsBitmapRelease(target, 1, 1);
}

std::int32_t BlockRows::Create(KsBitmap *imageTarget, const ImageSubheader &image, const BlockGrid &grid,
                               std::uint32_t depth) {
  const std::int32_t access = KsBitmapAccess(imageTarget, 0);
  if (access != SUCCESS) return access;
  target = imageTarget;
  if (depth == target->bitsPerPixel && depth % 8 == 0) return SUCCESS;
  const std::int32_t status = KsBitmapCreate(block.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, grid.width, grid.height,
                                             depth, KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return status;
  if (depth == target->bitsPerPixel) {
    block->order = target->order;
  } else {
    SetImagePalette(block.Get(), image);
  }
  return SUCCESS;
}

void BlockRows::Begin(std::int32_t blockLeft, std::int32_t blockTop) {
  left = blockLeft;
  top = blockTop;
  if (!IsDirect()) KsBitmapClear(block.Get());
}

std::uint8_t *BlockRows::Row(std::uint32_t row) {
  if (!IsDirect()) return block->pixels + std::uint64_t{row} * block->bytesPerLine;
  return target->pixels + (static_cast<std::uint64_t>(top) + row) * target->bytesPerLine +
         static_cast<std::uint64_t>(left) * (target->bitsPerPixel / 8);
}

std::int32_t BlockRows::End() {
  if (IsDirect()) return SUCCESS;
  return KsCombine(target, left, top, static_cast<std::int32_t>(block->width), static_cast<std::int32_t>(block->height),
                   block.Get(), 0, 0, 288, 0);
}
