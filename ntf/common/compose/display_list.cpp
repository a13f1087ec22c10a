#include "compose/display_list.h"

#include <algorithm>

namespace ksntfx {

namespace {

template <class Record>
Attachment AttachmentOf(const Record &record) {
  return {record.displayLevel, record.attachmentLevel, {record.locationRow, record.locationColumn}};
}

}  // namespace

bool FirstOfLevel::Build(const Attachment *attachments, std::uint32_t first, std::uint32_t count) {
  entries = count;
  if (count == 0) return true;
  if (!sorted.Allocate(count)) return false;
  for (std::uint32_t at = 0; at < count; ++at) sorted[at] = {attachments[first + at].level, first + at};
  std::sort(sorted.Get(), sorted.Get() + count);
  return true;
}

std::uint32_t FirstOfLevel::Find(std::uint32_t level) const {
  const Entry *const begin = sorted.Get();
  const Entry *const end = begin + entries;
  const Entry *const found = std::lower_bound(begin, end, Entry{level, 0});
  return found == end || found->first != level ? kNone : found->second;
}

Status DisplayList::Build(const NitfFile *file) {
  images = CountImages(file);
  graphics = CountGraphics(file);
  labels = CountLabels(file);
  const std::uint32_t count = images + graphics + labels;
  if (count == 0) return SUCCESS;
  if (!objects.Allocate(count) || !attachments.Allocate(count) || !visited.Allocate(count)) return ERROR_NO_MEMORY;
  Append<ImageSubheader>(file->imageList, kDisplayImage);
  Append<GraphicSubheader>(file->graphicList, kDisplayGraphic);
  Append<LabelSubheader>(file->labelList, kDisplayLabel);
  const bool found =
      firstImage.Build(attachments.Get(), 0, images) && firstGraphic.Build(attachments.Get(), images, graphics);
  if (!found) return ERROR_NO_MEMORY;
  SortByLevel();
  return SUCCESS;
}

template <class Record>
void DisplayList::Append(const SegmentNode *node, std::uint32_t kind) {
  for (std::uint32_t index = 0; node != nullptr; node = node->next, ++index) {
    if (node->subheader == nullptr) continue;
    attachments[listed] = AttachmentOf(*static_cast<const Record *>(node->subheader));
    objects[listed] = {kind, attachments[listed].level, index};
    ++listed;
  }
}

/**
 * An exchange sort, on purpose: objects of equal level are drawn in the order that it leaves them in, which is not
 * that of the file if a lower level follows them.
 */
void DisplayList::SortByLevel() {
  for (std::uint32_t i = 0; i + 1 < listed; ++i) {
    for (std::uint32_t j = i + 1; j < listed; ++j) {
      if (objects[i].level > objects[j].level) std::swap(objects[i], objects[j]);
    }
  }
}

std::uint32_t DisplayList::FileOrder(const DisplayObject &object) const {
  const std::uint32_t before = object.kind == kDisplayImage     ? 0
                               : object.kind == kDisplayGraphic ? images
                                                                : images + graphics;
  return before + object.index;
}

DisplayOffset DisplayList::OffsetOf(const DisplayObject &object) {
  const std::uint32_t self = FileOrder(object);
  const Chain whole = Walk(self, false);
  return whole.closed ? Walk(self, true).offset : whole.offset;
}

/**
 * Walks from the object `self` on. What is next depends on the level and on the kind that is searched, so a walk that
 * meets an object twice has no end; one that passes its start may have, if objects share a level.
 */
DisplayList::Chain DisplayList::Walk(std::uint32_t self, bool endsAtStart) {
  std::fill_n(visited.Get(), listed, std::uint8_t{0});
  visited[self] = endsAtStart ? 1 : 0;
  Chain chain{attachments[self].attachedTo, {0, 0}, false, false};
  do {
    chain.changed = false;
    FollowFirsts(chain, firstImage);
    FollowFirsts(chain, firstGraphic);
    FollowLabels(chain);
  } while (chain.changed && !chain.closed);
  return chain;
}

/** Adds the object to the chain if it is the one that the chain is attached to. */
bool DisplayList::Follow(Chain &chain, std::uint32_t number) {
  const Attachment &object = attachments[number];
  if (object.level != chain.level) return false;
  if (visited[number] != 0) {
    chain.closed = true;
    return false;
  }
  visited[number] = 1;
  chain.offset = {Add(chain.offset.row, object.location.row), Add(chain.offset.column, object.location.column)};
  chain.level = object.attachedTo;
  chain.changed = true;
  return true;
}

/** Follows the chain through images or graphics, to the first one of its level each time. */
void DisplayList::FollowFirsts(Chain &chain, const FirstOfLevel &kind) {
  std::uint32_t number = kind.Find(chain.level);
  while (number != FirstOfLevel::kNone && Follow(chain, number)) number = kind.Find(chain.level);
}

/** Follows it through the labels: after a match the search continues behind it, before it starts again. */
void DisplayList::FollowLabels(Chain &chain) {
  bool matched = true;
  while (matched && !chain.closed) {
    matched = false;
    for (std::uint32_t step = 0; step < labels && !chain.closed; ++step) {
      if (Follow(chain, images + graphics + step)) matched = true;
    }
  }
}

}  // namespace ksntfx
