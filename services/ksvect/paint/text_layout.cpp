#include "ksvect/paint/text_layout.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace ksvect {
namespace {

/** Measures of a font that isn't there, in heights of a capital. */
constexpr double kGuessedAdvance = 0.6;
constexpr double kGuessedTop = 0.9;
constexpr double kGuessedBottom = -0.2;
constexpr double kGuessedCap = 0.7;

constexpr std::size_t kGlyphsOfMark = 256;

/** The bits of the first byte of a sequence, by the number of bytes that follow. */
struct Lead {
  unsigned char mask;
  unsigned char value;
};
constexpr Lead kLeads[] = {{0x80, 0x00}, {0xE0, 0xC0}, {0xF0, 0xE0}, {0xF8, 0xF0}};

/** The length of the sequence at the beginning of `text`, and its character; 0 where it is none. */
std::size_t Decode(std::string_view text, char32_t &character) {
  const auto first = static_cast<unsigned char>(text[0]);
  std::size_t following = 0;
  while (following < std::size(kLeads) && (first & kLeads[following].mask) != kLeads[following].value) ++following;
  if (following == std::size(kLeads) || following >= text.size()) return 0;
  character = first & static_cast<unsigned char>(~kLeads[following].mask);
  for (std::size_t i = 1; i <= following; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0) != 0x80) return 0;
    character = character << 6 | (byte & 0x3F);
  }
  return following + 1;
}

bool IsShown(char32_t character) {
  return character >= U' ' && !(character >= 0x7F && character < 0xA0);
}

/** Lays characters out in a row or a column. */
class Typesetter {
 public:
  Typesetter(const TextStyle &textStyle, Layout &target) : style(textStyle), layout(target) {
    if (layout.font == nullptr) return;
    layout.size = {style.expansion > 0 ? style.expansion : 1, 1};
    top = layout.font->top;
    bottom = layout.font->bottom;
    cap = layout.font->cap;
  }

  void Set(const std::u32string &characters) {
    if (style.path == TextPath::Right || style.path == TextPath::Left) {
      SetRow(characters);
    } else {
      SetColumn(characters);
    }
    Align();
  }

 private:
  double AdvanceOf(char32_t character) const {
    const double advance = layout.font != nullptr ? layout.font->GlyphOf(character).advance : kGuessedAdvance;
    return advance * layout.size.x;
  }

  void SetRow(const std::u32string &characters) {
    double width = 0;
    for (const char32_t character : characters) {
      if (!layout.characters.empty()) width += style.spacing;
      const double advance = AdvanceOf(character);
      layout.characters.push_back({character, {style.path == TextPath::Left ? -width - advance : width, 0}});
      width += advance;
    }
    if (style.path == TextPath::Left) {
      for (Layout::Placed &placed : layout.characters) placed.origin.x += width;
    }
    layout.box = {{0, bottom}, {width, top}};
  }

  void SetColumn(const std::u32string &characters) {
    const double step = top - bottom + style.spacing;
    double width = 0;
    for (const char32_t character : characters) width = std::max(width, AdvanceOf(character));
    const double last = characters.empty() ? 0 : step * static_cast<double>(characters.size() - 1);
    for (std::size_t i = 0; i < characters.size(); ++i) {
      const auto number = static_cast<double>(i);
      const double y = style.path == TextPath::Up ? step * number : last - step * number;
      layout.characters.push_back({characters[i], {(width - AdvanceOf(characters[i])) / 2, y}});
    }
    highest = last;
    layout.box = {{0, bottom}, {width, last + top}};
  }

  double AcrossPart() const {
    switch (style.across) {
      case AlignAcross::Left:
        return 0;
      case AlignAcross::Center:
        return 0.5;
      case AlignAcross::Right:
        return 1;
      case AlignAcross::Continuous:
        return style.acrossPart;
      default:
        if (style.path == TextPath::Right) return 0;
        return style.path == TextPath::Left ? 1 : 0.5;
    }
  }

  /** The height that comes to lie at the text's position, where the lowest base line has 0. */
  double HeightAtPosition() const {
    switch (style.upwards) {
      case AlignUp::Top:
        return layout.box.high.y;
      case AlignUp::Cap:
        return highest + cap;
      case AlignUp::Half:
        return (highest + cap) / 2;
      case AlignUp::Base:
        return 0;
      case AlignUp::Bottom:
        return layout.box.low.y;
      case AlignUp::Continuous:
        return layout.box.low.y + (layout.box.high.y - layout.box.low.y) * style.upwardsPart;
      default:
        return style.path == TextPath::Down ? layout.box.high.y : 0;
    }
  }

  void Align() {
    const Point anchor = {layout.box.high.x * AcrossPart(), HeightAtPosition()};
    for (Layout::Placed &placed : layout.characters) placed.origin = placed.origin - anchor;
    layout.box = {layout.box.low - anchor, layout.box.high - anchor};
  }

  const TextStyle &style;
  Layout &layout;
  double top = kGuessedTop;
  double bottom = kGuessedBottom;
  double cap = kGuessedCap;
  double highest = 0;  // base line
};

/** The frame of a text's characters in the drawing. */
Affine FrameOf(const Text &text, const TextStyle &style) {
  const double length = LengthOf(style.up);
  const bool known = std::isnormal(length) && std::isnormal(LengthOf(style.along));
  const double scale = known ? style.height / length : style.height;
  return {text.position, (known ? style.along : Point{1, 0}) * scale, (known ? style.up : Point{0, 1}) * scale};
}

/** Narrows a text that is wider than its box along its path. */
void Restrict(const Text &text, const TextStyle &style, Layout &layout) {
  const auto narrow = [](Point &vector, double length, double room) {
    if (length > room && room > 0) vector = vector * (room / length);
  };
  const Point size = layout.box.high - layout.box.low;
  if (style.path == TextPath::Right || style.path == TextPath::Left) {
    narrow(layout.toDrawing.x, size.x * LengthOf(layout.toDrawing.x), text.extent.x);
  } else {
    narrow(layout.toDrawing.y, size.y * LengthOf(layout.toDrawing.y), text.extent.y);
  }
}

/** The characters of UTF-8; an invalid byte is a character of its own. */
std::u32string CharactersOf(std::string_view text) {
  std::u32string characters;
  while (!text.empty()) {
    char32_t character = static_cast<unsigned char>(text[0]);
    const std::size_t length = std::max(Decode(text, character), std::size_t{1});
    if (IsShown(character)) characters.push_back(character);
    text.remove_prefix(length);
  }
  return characters;
}

}  // namespace

Layout LayoutOf(const Text &text, const TextStyle &style) {
  Layout layout;
  layout.font = FindFont(style.family, style.bold, style.oblique);
  Typesetter(style, layout).Set(CharactersOf(text.text));
  layout.toDrawing = FrameOf(text, style);
  if (text.restricted) Restrict(text, style, layout);
  return layout;
}

void AddGlyphs(const Layout &layout, const Affine &toCanvas, Color color, const KsRect &clip, Tiles &tiles) {
  if (layout.font == nullptr) return;
  Mark mark;
  mark.color = color;
  mark.byParity = false;
  mark.clip = clip;
  std::size_t glyphs = 0;
  for (const Layout::Placed &placed : layout.characters) {
    const Path &outline = layout.font->GlyphOf(placed.character).outline;
    for (std::size_t i = 0; i < outline.contours.size(); ++i) {
      mark.path.Begin(true);
      for (const Point point : outline.PointsOf(i)) {
        const Point inFrame = placed.origin + Point{point.x * layout.size.x, point.y * layout.size.y};
        mark.path.Add(toCanvas(layout.toDrawing(inFrame)));
      }
    }
    if (++glyphs % kGlyphsOfMark != 0) continue;
    Mark full = mark;
    mark.path = {};
    tiles.Add(std::move(full));
  }
  tiles.Add(std::move(mark));
}

std::array<Point, 4> CornersOf(const Layout &layout) {
  const Box &box = layout.box;
  const Affine &frame = layout.toDrawing;
  return {{frame(box.low), frame({box.high.x, box.low.y}), frame(box.high), frame({box.low.x, box.high.y})}};
}

}  // namespace ksvect
