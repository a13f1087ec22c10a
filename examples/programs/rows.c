/* Writes the picture of a NITF file as PPM, a row at a time, through the filter entries: rows scene.ntf scene.ppm */
#include <ksntfx.h>
#include <stdio.h>

/* One row of the picture, blue, green and red; `rowUserData` is the last argument of all calls. */
static int32_t WriteRow(uint64_t rowContext, KsBitmap *canvas, void *row, uint32_t rowFlags, uint32_t rowIndex,
                        uint32_t rowCount, uint64_t rowUserData) {
  FILE *const out = (FILE *)(uintptr_t)rowUserData;
  const uint8_t *pixel = row;
  (void)rowContext, (void)rowIndex, (void)rowCount;
  if ((rowFlags & NITF_ROW_FIRST) != 0) fprintf(out, "P6\n%u %u\n255\n", canvas->width, canvas->height);
  for (uint32_t x = 0; x < canvas->width; ++x, pixel += 3) {
    const uint8_t rgb[3] = {pixel[2], pixel[1], pixel[0]};
    if (fwrite(rgb, 1, 3, out) != 3) return ERROR_FILE_WRITE; /* ends the load, and is its result */
  }
  return SUCCESS;
}

/* The framework asks for an entry that is never called. */
static void Nothing(void) {}

int main(int argc, char **argv) {
  if (argc != 3) return 2;
  char16_t *const name = KsToWide(argv[1]);
  KsLoadOptions options;
  KsLoadOptionsInit(&options, sizeof options);

  KsFileInfo size = {0};
  FilterInfoRecord info = {0};
  info.fileName = name;
  info.inputHandle = KS_INVALID_HANDLE;
  info.fileInfo = &size;
  info.loadOptions = &options;
  int32_t status = name == NULL ? ERROR_NO_FILE : fltInfo(&info);
  if (status == SUCCESS) printf("%u x %u pixels\n", size.width, size.height);

  FILE *const out = status == SUCCESS ? fopen(argv[2], "wb") : NULL;
  if (status == SUCCESS && out == NULL) status = ERROR_FILE_WRITE;
  if (status == SUCCESS) {
    const FilterTargetInfo target = {.bitsPerPixel = 24};
    static FilterLoadRecord request; /* 2368 bytes, cleared */
    request.fileName = name;
    request.targetInfo = &target;
    request.rowCallback = WriteRow;
    request.rowUserData = (uint64_t)(uintptr_t)out;
    request.loadOptions = &options;
    request.loadFromMemory = KsLoadMemory;
    request.setRedirect = KsSetRedirect;
    request.requiredEntry = Nothing;
    status = fltLoad(&request);
  }
  if (out != NULL && fclose(out) != 0 && status == SUCCESS) status = ERROR_FILE_WRITE;
  KsToWideFree(name);
  if (status != SUCCESS) fprintf(stderr, "%s: status %d\n", argv[1], (int)status);
  return status == SUCCESS ? 0 : 1;
}
