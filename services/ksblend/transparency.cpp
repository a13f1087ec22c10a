#include "ksblend/transparency.h"

#include "kscore/pixel_forms.h"

namespace ksblend {
namespace {

using kscore::Bgr;

constexpr std::uint32_t kNoValue = 0xFFFFFFFF;

/** The one value of `Form` that has the colour, or none for a gray form and a colour that is no gray. */
template <class Form>
std::uint32_t ValueOf(Bgr color) {
  if constexpr (!kscore::kHasLevels<Form>) return color;
  const std::uint32_t level = kscore::BlueOf(color);
  if (color != kscore::BgrOfGray(level)) return kNoValue;
  return Form::bits == kscore::Gray12::bits ? kscore::Gray12Of(level) : kscore::Gray16Of(level);
}

template <class Form>
constexpr bool kIsIndex = Form::bits <= kscore::kDeepestPalette;

}  // namespace

template <class Form>
struct Transparency::Runs {
  static bool IsTransparent(const Transparency &test, std::uint32_t pixel) {
    if constexpr (kIsIndex<Form>) {
      return test.levels[pixel];
    } else {
      return pixel == test.value;
    }
  }

  static std::uint64_t Find(const Transparency &test, const std::uint8_t *row, std::uint64_t x, std::uint64_t end,
                            bool transparent) {
    while (x < end && IsTransparent(test, Form::Value(row, x)) == transparent) ++x;
    return x;
  }
};

bool Transparency::Prepare(const KsBitmap &source, Bgr color) {
  const auto prepare = [&](auto form) {
    using Form = decltype(form);
    findRunEnd = Runs<Form>::Find;
    if constexpr (kIsIndex<Form>) {
      kscore::ShownColors shown;
      kscore::FillShownColors(source, shown);
      for (std::uint32_t i = 0; i < kscore::kLevelCount; ++i) levels[i] = shown[i] == color;
    } else {
      value = ValueOf<Form>(color);
    }
    return true;
  };
  return kscore::WithForm(source.bitsPerPixel, prepare, false);
}

}  // namespace ksblend
