/* Lists the images of a file of any version, and writes the samples of one as they are stored: samples FILE [N OUT] */
#include <ksntfx_reader.h>
#include <stdio.h>
#include <stdlib.h>

static void ListImages(NitfReader *reader) {
  for (uint32_t index = 0; index < NitfReaderCount(reader, NITF_SEGMENT_IMAGE); ++index) {
    NitfImageShape shape;
    if (NitfReaderGetImage(reader, index, &shape) == SUCCESS) {
      printf("image %u: %llu x %llu, %u bands of %u bits, %s\n", index, (unsigned long long)shape.columns,
             (unsigned long long)shape.rows, shape.bands, shape.bits, shape.compression);
    } else {
      printf("%s\n", NitfReaderProblem(reader));
    }
  }
  for (uint32_t index = 0; index < NitfReaderNoteCount(reader); ++index) {
    NitfNote note;
    if (NitfReaderGetNote(reader, index, &note) == SUCCESS) printf("note: %s\n", note.text);
  }
}

static int32_t WriteSamples(NitfReader *reader, uint32_t image, FILE *out) {
  NitfImageShape shape;
  int32_t status = NitfReaderGetImage(reader, image, &shape);
  if (status != SUCCESS) return status;
  const uint64_t pixelBytes = (uint64_t)shape.bands * shape.sampleBytes;
  const uint64_t rowBytes = shape.columns * pixelBytes;
  uint8_t *const rows = malloc(rowBytes * shape.blockRows);
  if (rows == NULL) return ERROR_NO_MEMORY;
  /* All bands of a pixel side by side, a row of blocks at a time. */
  const NitfSampleTarget target = {rows, (int64_t)rowBytes, (int64_t)pixelBytes, shape.sampleBytes};
  for (uint64_t row = 0; row < shape.rows && status == SUCCESS; row += shape.blockRows) {
    const uint64_t left = shape.rows - row;
    const NitfWindow window = {row, 0, left < shape.blockRows ? left : shape.blockRows, shape.columns};
    status = NitfReaderReadSamples(reader, image, &window, NULL, 0, &target);
    if (status == SUCCESS && fwrite(rows, rowBytes, window.rows, out) != window.rows) status = ERROR_FILE_WRITE;
  }
  free(rows);
  return status;
}

int main(int argc, char **argv) {
  if (argc != 2 && argc != 4) return 2;
  NitfReader *reader = NULL;
  int32_t status = NitfReaderOpen(argv[1], &reader);
  if (status == SUCCESS && argc == 2) ListImages(reader);
  if (status == SUCCESS && argc == 4) {
    FILE *const out = fopen(argv[3], "wb");
    status = out == NULL ? ERROR_FILE_WRITE : WriteSamples(reader, (uint32_t)atoi(argv[2]), out);
    if (out != NULL && fclose(out) != 0 && status == SUCCESS) status = ERROR_FILE_WRITE;
  }
  if (status != SUCCESS) fprintf(stderr, "%s: %s (status %d)\n", argv[1], NitfReaderProblem(reader), (int)status);
  NitfReaderClose(reader);
  return status == SUCCESS ? 0 : 1;
}
