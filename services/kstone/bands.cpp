#include "kscore/bitmap.h"
#include "kscore/pixel_forms.h"

namespace {

constexpr uint32_t kMostBands = 4;

/** The bands that become the channels of a pixel. */
struct Channels {
  const KsBitmap *blue;
  const KsBitmap *green;
  const KsBitmap *red;
};

uint32_t CountBands(KsBitmap *const *bands) {
  uint32_t count = 0;
  while (count < kMostBands && bands[count] != nullptr) ++count;
  return count;
}

Status CheckBand(const KsBitmap *band, const KsBitmap *first) {
  const Status status = kscore::CheckPixels(band);
  if (status != SUCCESS) return status;
  if (band->bitsPerPixel != kscore::Index8::bits) return ERROR_BITS_PER_PIXEL;
  return band->width == first->width && band->height == first->height ? SUCCESS : ERROR_INVALID_VALUE;
}

Channels ChannelsOf(KsBitmap *const *bands, uint32_t count) {
  const KsBitmap *const last = bands[count - 1];
  if (count < 3) return {last, last, last};
  return {bands[count - 3], bands[count - 2], last};
}

void Interleave(KsBitmap &target, const Channels &channels) {
  kscore::MarkWritten(target);
  for (uint32_t y = 0; y < target.height; ++y) {
    const uint8_t *const blue = kscore::RowOf(*channels.blue, y);
    const uint8_t *const green = kscore::RowOf(*channels.green, y);
    const uint8_t *const red = kscore::RowOf(*channels.red, y);
    uint8_t *pixel = kscore::RowOf(target, y);
    for (uint32_t x = 0; x < target.width; ++x, pixel += 3) {
      pixel[0] = blue[x];
      pixel[1] = green[x];
      pixel[2] = red[x];
    }
  }
}

}  // namespace

int32_t KsBandsMerge(KsBitmap *target, KsBitmap *const *bands, uint32_t bitmapSize, uint32_t) {
  if (!kscore::IsBitmap(target) || bands == nullptr || bitmapSize != sizeof(KsBitmap)) return ERROR_INVALID_VALUE;
  const uint32_t count = CountBands(bands);
  if (count == 0) return ERROR_INVALID_VALUE;
  for (uint32_t i = 0; i < count; ++i) {
    const Status status = CheckBand(bands[i], bands[0]);
    if (status != SUCCESS) return status.Code();
  }
  KsBitmap merged;
  const int32_t status = KsBitmapCreate(&merged, sizeof merged, KS_BITMAP_OWN, bands[0]->width, bands[0]->height,
                                        kscore::Bgr24::bits, KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return status;
  Interleave(merged, ChannelsOf(bands, count));
  // Released only now: the target may be one of the bands.
  KsBitmapFree(target);
  *target = merged;
  return SUCCESS;
}
