#include "headers/image_kinds.h"

#include <algorithm>
#include <iterator>

namespace ksntfx {

namespace {

using enum ImageLayout;

/** In the order of ImageCompression. The tables of M2, M6 and M8 are part of their streams' own format. */
constexpr ImageKind kKinds[] = {
    {.text = "NC", .compression = kNC, .layout = PlainBlocks, .hasRate = false, .hasMaskTable = false},
    {.text = "NM", .compression = kNM, .layout = PlainBlocks, .hasRate = false, .hasMaskTable = true},
    {.text = "C0", .compression = kC0, .layout = None, .hasRate = true, .hasMaskTable = false},
    {.text = "C1", .compression = kC1, .layout = BilevelStream, .hasRate = true, .hasMaskTable = false},
    {.text = "C2", .compression = kC2, .layout = None, .hasRate = true, .hasMaskTable = false},
    {.text = "C3", .compression = kC3, .layout = Tiles, .hasRate = true, .hasMaskTable = false},
    {.text = "C4", .compression = kC4, .layout = VectorQuantised, .hasRate = true, .hasMaskTable = false},
    {.text = "C5", .compression = kC5, .layout = Tiles, .hasRate = true, .hasMaskTable = false},
    {.text = "C6", .compression = kC6, .layout = Tiles, .hasRate = true, .hasMaskTable = false},
    {.text = "C8", .compression = kC8, .layout = OneStream, .hasRate = true, .hasMaskTable = false},
    {.text = "I1", .compression = kI1, .layout = Tiles, .hasRate = true, .hasMaskTable = false, .isReduced = true},
    {.text = "M0", .compression = kM0, .layout = None, .hasRate = true, .hasMaskTable = true},
    {.text = "M1", .compression = kM1, .layout = BilevelStream, .hasRate = true, .hasMaskTable = true},
    {.text = "M2", .compression = kM2, .layout = None, .hasRate = true, .hasMaskTable = false},
    {.text = "M3", .compression = kM3, .layout = Tiles, .hasRate = true, .hasMaskTable = true},
    {.text = "M4", .compression = kM4, .layout = VectorQuantised, .hasRate = true, .hasMaskTable = true},
    {.text = "M5", .compression = kM5, .layout = Tiles, .hasRate = true, .hasMaskTable = true},
    {.text = "M6", .compression = kM6, .layout = Tiles, .hasRate = true, .hasMaskTable = false},
    {.text = "M8", .compression = kM8, .layout = OneStream, .hasRate = true, .hasMaskTable = false},
    {.text = "", .compression = kUnknownCompression, .layout = None, .hasRate = true, .hasMaskTable = false},
    {.text = "CD", .compression = kCD, .layout = OneStream, .hasRate = true, .hasMaskTable = false},
    {.text = "MD", .compression = kMD, .layout = OneStream, .hasRate = true, .hasMaskTable = false},
};
static_assert(std::size(kKinds) == kMD + 1);

}  // namespace

const ImageKind &ImageKindOf(std::uint32_t compression) {
  return kKinds[compression < std::size(kKinds) ? compression : kUnknownCompression];
}

bool HasSamples(const ImageKind &kind) {
  return kind.layout != ImageLayout::None && kind.compression != kC6 && kind.compression != kM6;
}

const ImageKind *FindImageKind(std::string_view text, bool isWide) {
  const auto matches = [&](const ImageKind &kind) { return !kind.text.empty() && text.starts_with(kind.text); };
  const ImageKind *const end = isWide ? std::end(kKinds) : std::begin(kKinds) + kUnknownCompression;
  const ImageKind *const kind = std::find_if(std::begin(kKinds), end, matches);
  return kind == end ? nullptr : kind;
}

}  // namespace ksntfx
