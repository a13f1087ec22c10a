// The kinds of segments that a file lists.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ksntfx {

/** The kinds of segments that have a list, in file order. */
enum class SegmentKind : std::uint8_t { Image, Graphic, Label, Text, DataExtension };

inline constexpr std::array kSegmentKinds = {SegmentKind::Image, SegmentKind::Graphic, SegmentKind::Label,
                                             SegmentKind::Text, SegmentKind::DataExtension};

/** A number for each kind. */
class CountsOfKinds {
 public:
  std::uint32_t &operator[](SegmentKind kind) { return counts[static_cast<std::size_t>(kind)]; }
  std::uint32_t operator[](SegmentKind kind) const { return counts[static_cast<std::size_t>(kind)]; }

 private:
  std::array<std::uint32_t, kSegmentKinds.size()> counts{};
};

}  // namespace ksntfx
