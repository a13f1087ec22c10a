#include "ksblend/gray_rows.h"

#if defined(__GNUC__) && defined(__x86_64__)
#include <tmmintrin.h>
#endif

namespace ksblend {

#if defined(__GNUC__) && defined(__x86_64__)

namespace {

/** For each of three times sixteen bytes, the gray that goes there. */
struct Places {
  alignas(16) std::int8_t of[3][16];
};

constexpr Places kPlaces = [] {
  Places places{};
  for (int at = 0; at < 48; ++at) places.of[at / 16][at % 16] = static_cast<std::int8_t>(at / 3);
  return places;
}();

__attribute__((target("ssse3"))) __m128i Load(const void *from) {
  return _mm_loadu_si128(static_cast<const __m128i *>(from));
}

template <unsigned bytes>
__attribute__((target("ssse3"))) std::uint64_t PutSixteens(std::uint8_t *pixels, const std::uint8_t *grays,
                                                           std::uint64_t count) {
  std::uint64_t done = 0;
  for (; done + 16 <= count; done += 16, grays += 16 * bytes, pixels += 48) {
    __m128i shown = Load(grays);
    if constexpr (bytes == 2) {
      shown = _mm_packus_epi16(_mm_srli_epi16(shown, 8), _mm_srli_epi16(Load(grays + 16), 8));
    }
    for (int part = 0; part < 3; ++part) {
      _mm_storeu_si128(reinterpret_cast<__m128i *>(pixels + 16 * part),
                       _mm_shuffle_epi8(shown, Load(kPlaces.of[part])));
    }
  }
  return done;
}

}  // namespace

template <unsigned bytes>
std::uint64_t PutGrays(std::uint8_t *pixels, const std::uint8_t *grays, std::uint64_t count) {
  static const bool canShuffle = __builtin_cpu_supports("ssse3") != 0;
  return canShuffle ? PutSixteens<bytes>(pixels, grays, count) : 0;
}

#else

template <unsigned bytes>
std::uint64_t PutGrays(std::uint8_t *, const std::uint8_t *, std::uint64_t) {
  return 0;
}

#endif

template std::uint64_t PutGrays<1>(std::uint8_t *, const std::uint8_t *, std::uint64_t);
template std::uint64_t PutGrays<2>(std::uint8_t *, const std::uint8_t *, std::uint64_t);

}  // namespace ksblend
