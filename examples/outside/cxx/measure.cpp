// Tells how large the picture of a NITF file is: measure scene.ntf
#include <cstdio>
#include <ksntfx.h>

int main(int argc, char **argv) {
  if (argc != 2) return 2;
  NitfHandle file = nullptr;
  int32_t status = K_NITFCreateA(&file, argv[1]);
  KsBitmap picture;
  KsBitmapInit(&picture, sizeof picture, 0, 0, 0);
  if (status == SUCCESS) status = K_NtfRenderBitmap(&picture, file);
  if (status == SUCCESS) std::printf("%u x %u by Ksntfx %s\n", picture.width, picture.height, KSNTFX_VERSION);
  KsBitmapFree(&picture);
  if (file != nullptr) K_NITFDestroy(&file);
  if (status != SUCCESS) std::fprintf(stderr, "%s: status %d\n", argv[1], status);
  return status == SUCCESS ? 0 : 1;
}
