#include "images/interleave.h"

#if defined(__GNUC__) && defined(__x86_64__)
#include <tmmintrin.h>
#endif

namespace ksntfx {

namespace {

/** As InterleaveRow, from pixel `x` on. It is quicker where the step is known when it is compiled. */
inline void InterleaveFrom(std::uint64_t x, std::uint8_t *pixels, std::uint32_t width, const BandRows &bands,
                           std::uint32_t step) {
  for (; x < width; ++x) {
    pixels[3 * x] = bands.blue[x * step];
    pixels[3 * x + 1] = bands.green[x * step];
    pixels[3 * x + 2] = bands.red[x * step];
  }
}

#if defined(__GNUC__) && defined(__x86_64__)

/** Where in sixteen bytes of the row, of the three that sixteen pixels are, each sample of a band goes. */
struct Places {
  alignas(16) std::int8_t of[3][16];
};

/** For a band that is the `first` byte of each pixel. What isn't of the band is left 0. */
constexpr Places PlacesOf(int first) {
  Places places{};
  for (int at = 0; at < 48; ++at) {
    places.of[at / 16][at % 16] = at % 3 == first ? static_cast<std::int8_t>(at / 3) : std::int8_t{-1};
  }
  return places;
}

/** Sixteen pixels at a time, of bands whose samples follow each other: how many were written. */
__attribute__((target("ssse3"))) std::uint32_t InterleaveSixteens(std::uint8_t *pixels, std::uint32_t width,
                                                                  const BandRows &bands) {
  static constexpr Places kPlaces[] = {PlacesOf(0), PlacesOf(1), PlacesOf(2)};
  const auto load = [](const void *from) { return _mm_loadu_si128(static_cast<const __m128i *>(from)); };
  std::uint32_t x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m128i blue = load(bands.blue + x);
    const __m128i green = load(bands.green + x);
    const __m128i red = load(bands.red + x);
    for (int part = 0; part < 3; ++part) {
      const __m128i mixed = _mm_or_si128(_mm_shuffle_epi8(blue, load(kPlaces[0].of[part])),
                                         _mm_or_si128(_mm_shuffle_epi8(green, load(kPlaces[1].of[part])),
                                                      _mm_shuffle_epi8(red, load(kPlaces[2].of[part]))));
      _mm_storeu_si128(reinterpret_cast<__m128i *>(pixels + std::uint64_t{3} * x + 16 * part), mixed);
    }
  }
  return x;
}

bool HasShuffle() {
  static const bool has = __builtin_cpu_supports("ssse3") != 0;
  return has;
}

#else

std::uint32_t InterleaveSixteens(std::uint8_t *, std::uint32_t, const BandRows &) {
  return 0;
}

bool HasShuffle() {
  return false;
}

#endif

}  // namespace

void InterleaveRow(std::uint8_t *pixels, std::uint32_t width, const BandRows &bands) {
  switch (bands.step) {
    case 1:
      return InterleaveFrom(HasShuffle() ? InterleaveSixteens(pixels, width, bands) : 0, pixels, width, bands, 1);
    case 3:
      return InterleaveFrom(0, pixels, width, bands, 3);
    default:
      return InterleaveFrom(0, pixels, width, bands, bands.step);
  }
}

}  // namespace ksntfx
