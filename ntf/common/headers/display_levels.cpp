#include "headers/display_levels.h"

#include <algorithm>

namespace ksntfx {

namespace {

template <class Record>
void AddLevels(const SegmentNode *node, DisplayLevels *levels) {
  for (; node != nullptr; node = node->next) {
    if (node->subheader == nullptr) continue;
    const std::uint32_t level = static_cast<const Record *>(node->subheader)->displayLevel;
    levels->lowest = levels->any ? std::min(levels->lowest, level) : level;
    levels->highest = levels->any ? std::max(levels->highest, level) : level;
    levels->any = true;
  }
}

}  // namespace

DisplayLevels LevelsOf(const NitfFile *file) {
  DisplayLevels levels = {false, 0, 0};
  AddLevels<ImageSubheader>(file->imageList, &levels);
  AddLevels<GraphicSubheader>(file->graphicList, &levels);
  AddLevels<LabelSubheader>(file->labelList, &levels);
  return levels;
}

}  // namespace ksntfx
