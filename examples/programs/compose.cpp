// Draws a NITF file into a PNG picture: compose scene.ntf scene.png
#include <cstdio>
#include <ksntfx.h>

#include <png.h>

int main(int argc, char **argv) {
  if (argc != 3) return 2;
  NitfHandle file = nullptr;
  int32_t status = K_NITFCreateA(&file, argv[1]);
  KsBitmap picture;
  KsBitmapInit(&picture, sizeof picture, 0, 0, 0);
  if (status == SUCCESS) status = K_NtfRenderBitmap(&picture, file);
  if (status == SUCCESS) {
    png_image png = {};
    png.version = PNG_IMAGE_VERSION;
    png.width = picture.width;
    png.height = picture.height;
    png.format = PNG_FORMAT_BGR;
    const auto rowBytes = static_cast<png_int_32>(picture.bytesPerLine);
    if (png_image_write_to_file(&png, argv[2], 0, picture.pixels, rowBytes, nullptr) == 0) status = ERROR_FILE_WRITE;
  }
  KsBitmapFree(&picture);
  if (file != nullptr) K_NITFDestroy(&file);
  if (status != SUCCESS) std::fprintf(stderr, "%s: status %d\n", argv[1], status);
  return status == SUCCESS ? 0 : 1;
}
