// Fills a bitmap with a colour and tells the bytes of its first pixel.
#include <cstdio>
#include <kskernel.h>

int main() {
  KsBitmap bitmap;
  int32_t status =
      KsBitmapCreate(&bitmap, sizeof bitmap, KS_BITMAP_OWN, 16, 16, 24, KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  if (status == SUCCESS) status = KsBitmapFill(&bitmap, 0xD0A040);
  if (status == SUCCESS) {
    const uint8_t *const pixel = bitmap.pixels;
    std::printf("blue %d, green %d, red %d\n", pixel[0], pixel[1], pixel[2]);
  }
  KsBitmapFree(&bitmap);
  return status == SUCCESS ? 0 : 1;
}
