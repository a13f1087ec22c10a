// The objects of a file that are shown, sorted by display level, and what each one is attached to.
#pragma once

#include "headers/display_offset.h"
#include "headers/nitffile.h"
#include "internal/ksclasses_.h"

#include <span>
#include <utility>

namespace ksntfx {

/** What kind of segment an object of the display list is. */
enum DisplayKind : std::uint32_t { kDisplayImage = 0, kDisplayGraphic = 2, kDisplayLabel = 3 };

/** An entry of the display list. */
struct DisplayObject {
  std::uint32_t kind;
  std::uint32_t level; /**< IDLVL, SDLVL, LDLVL */
  std::uint32_t index; /**< among the segments of its kind */
};

/** What the walk along a chain of attachments needs of an object, whatever its kind. */
struct Attachment {
  std::uint32_t level;
  std::uint32_t attachedTo; /**< IALVL, SALVL, LALVL */
  DisplayOffset location;
};

/** The first object of each display level among the images or the graphics of a file. */
class FirstOfLevel {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  /** Includes `count` objects, from `first` on. False if out of memory. */
  bool Build(const Attachment *attachments, std::uint32_t first, std::uint32_t count);

  /** The number of the object in file order, or kNone. */
  std::uint32_t Find(std::uint32_t level) const;

 private:
  using Entry = std::pair<std::uint32_t, std::uint32_t>; /**< level and number */

  KsArray<Entry> sorted;
  std::uint32_t entries = 0;
};

/** All objects of a file that are shown. */
class DisplayList {
 public:
  /** Lists images, graphics and labels in file order, then sorts them by level. SUCCESS or ERROR_NO_MEMORY. */
  Status Build(const NitfFile *file);

  /** In the order in which they are drawn. */
  std::span<const DisplayObject> Objects() const { return {objects.Get(), listed}; }

  /**
   * The sum of the locations of everything that an object is attached to, without its own. A chain that would never end
   * ends before the object that it comes back to, which may be the one that it began with.
   */
  DisplayOffset OffsetOf(const DisplayObject &object);

  std::uint32_t images = 0;
  std::uint32_t graphics = 0;
  std::uint32_t labels = 0;

 private:
  struct Chain {
    std::uint32_t level;
    DisplayOffset offset;
    bool changed;
    bool closed;
  };

  template <class Record>
  void Append(const SegmentNode *node, std::uint32_t kind);
  void SortByLevel();

  std::uint32_t FileOrder(const DisplayObject &object) const;
  Chain Walk(std::uint32_t self, bool endsAtStart);
  bool Follow(Chain &chain, std::uint32_t number);
  void FollowFirsts(Chain &chain, const FirstOfLevel &kind);
  void FollowLabels(Chain &chain);

  KsArray<DisplayObject> objects;
  KsArray<Attachment> attachments; /**< in file order */
  KsArray<std::uint8_t> visited;   /**< in file order: 1 if the present walk has been there */
  FirstOfLevel firstImage;
  FirstOfLevel firstGraphic;
  std::uint32_t listed = 0;
};

}  // namespace ksntfx
