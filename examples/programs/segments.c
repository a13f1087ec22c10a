/* Prints the texts of a NITF file, and where its drawings lie and what they hold: segments scene.ntf */
#include <ksntfx.h>
#include <stdio.h>
#include <stdlib.h>

static int32_t PrintText(NitfHandle file, uint32_t index) {
  NitfTextHeaderInfo header = {0};
  uint32_t size = 0;
  int32_t status = K_NITFGetTextHeader(file, index, &header);
  if (status == SUCCESS) status = K_NITFGetTextSegment(file, index, NULL, &size);
  char *const text = malloc((size_t)size + 1); /* a zero byte follows the text */
  if (text == NULL) status = ERROR_NO_MEMORY;
  if (status == SUCCESS) status = K_NITFGetTextSegment(file, index, text, NULL);
  if (status == SUCCESS) printf("text %u, \"%s\":\n%s\n", index, header.TXTITL, text);
  free(text);
  K_NITFFreeTextHeader(&header);
  return status;
}

static int32_t PrintDrawing(NitfHandle file, uint32_t index) {
  NitfGraphicHeaderInfo header = {0};
  const int32_t status = K_NITFGetGraphicHeader(file, index, &header);
  if (status != SUCCESS) return status;
  printf("drawing %u at level %u", index, header.SDLVL);
  K_NITFFreeGraphicHeader(&header);
  const KsVector *const drawing = K_NITFGetVectorHandle(file, index); /* belongs to the file */
  KsRect bounds;
  if (drawing == NULL || KsVectorBounds(drawing, 0, &bounds, 0) != SUCCESS) {
    printf(": nothing to draw\n");
  } else {
    printf(": %d x %d pixels\n", (int)(bounds.right - bounds.left), (int)(bounds.bottom - bounds.top));
  }
  return SUCCESS;
}

int main(int argc, char **argv) {
  if (argc != 2) return 2;
  NitfHandle file = NULL;
  int32_t status = K_NITFCreateA(&file, argv[1]);
  const int32_t texts = K_NITFGetTextHeaderCount(file);
  const int32_t drawings = K_NITFGetGraphicHeaderCount(file);
  for (int32_t i = 0; i < texts && status == SUCCESS; ++i) status = PrintText(file, (uint32_t)i);
  for (int32_t i = 0; i < drawings && status == SUCCESS; ++i) status = PrintDrawing(file, (uint32_t)i);
  if (file != NULL) K_NITFDestroy(&file);
  if (status != SUCCESS) fprintf(stderr, "%s: status %d\n", argv[1], (int)status);
  return status == SUCCESS ? 0 : 1;
}
