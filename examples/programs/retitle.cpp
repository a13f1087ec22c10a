// Gives a text of a NITF file another title and saves the file: retitle scene.ntf "A title" titled.ntf
#include <cstdio>
#include <ksntfx.h>

int main(int argc, char **argv) {
  if (argc != 4) return 2;
  NitfHandle file = nullptr;
  int32_t status = K_NITFCreateA(&file, argv[1]);
  NitfTextHeaderInfo header = {};
  if (status == SUCCESS) status = K_NITFGetTextHeader(file, 0, &header);
  if (status == SUCCESS) {
    NitfTextHeaderInfo changed = header;
    changed.TXTITL = argv[2];
    status = K_NITFSetTextHeader(file, 0, &changed);
    K_NITFFreeTextHeader(&header);
  }
  if (status == SUCCESS) status = K_NITFSaveFileA(file, argv[3]);
  if (file != nullptr) K_NITFDestroy(&file);
  if (status != SUCCESS) std::fprintf(stderr, "%s: status %d\n", argv[1], status);
  return status == SUCCESS ? 0 : 1;
}
