#include "images/overhang.h"

#include <algorithm>
#include <new>
#include <utility>

namespace ksntfx {

Status Overhang::Keep(KsBitmap *bitmap, std::uint64_t left, std::uint64_t top) {
  std::unique_ptr<Piece> *last = &first;
  while (*last != nullptr) last = &(*last)->next;
  last->reset(new (std::nothrow) Piece);
  if (*last == nullptr) return ERROR_NO_MEMORY;
  std::swap(*(*last)->bitmap.Get(), *bitmap);
  (*last)->left = left;
  (*last)->top = top;
  return SUCCESS;
}

Status Overhang::Draw(KsBitmap *strip, std::uint32_t column, std::uint32_t row, const ImagePart &part) const {
  for (const Piece *piece = first.get(); piece != nullptr; piece = piece->next.get()) {
    const std::uint64_t left = std::max(piece->left, part.left);
    const std::uint64_t top = std::max(piece->top, part.top);
    const std::uint64_t right = std::min(piece->left + piece->bitmap->width, part.left + part.width);
    const std::uint64_t bottom = std::min(piece->top + piece->bitmap->height, part.top + part.height);
    if (left >= right || top >= bottom) continue;
    const Status status = KsCombine(strip, static_cast<std::int32_t>(column + (left - part.left)),
                                    static_cast<std::int32_t>(row + (top - part.top)),
                                    static_cast<std::int32_t>(right - left), static_cast<std::int32_t>(bottom - top),
                                    piece->bitmap.operator->(), static_cast<std::int32_t>(left - piece->left),
                                    static_cast<std::int32_t>(top - piece->top), KS_COMBINE_COPY, 0);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

void Overhang::DropAbove(std::uint64_t top) {
  std::unique_ptr<Piece> *piece = &first;
  while (*piece != nullptr) {
    if ((*piece)->top + (*piece)->bitmap->height <= top) {
      *piece = std::move((*piece)->next);
    } else {
      piece = &(*piece)->next;
    }
  }
}

}  // namespace ksntfx
