/* Counts the segments of a NITF file: segments scene.ntf */
#include <ksntfx.h>
#include <stdio.h>

int main(int argc, char **argv) {
  if (argc != 2) return 2;
  NitfHandle file = NULL;
  const int32_t status = K_NITFCreateA(&file, argv[1]);
  if (status == SUCCESS) {
    printf("%d images, %d graphics, %d texts\n", (int)K_NITFGetImageHeaderCount(file),
           (int)K_NITFGetGraphicHeaderCount(file), (int)K_NITFGetTextHeaderCount(file));
  } else {
    fprintf(stderr, "%s: status %d\n", argv[1], (int)status);
  }
  if (file != NULL) K_NITFDestroy(&file);
  return status == SUCCESS ? 0 : 1;
}
