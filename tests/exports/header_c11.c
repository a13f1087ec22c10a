/* The public header is C: what a C program gets of the packed records is what the library has. */
#include "ksntfx.h"

#include <stddef.h>

_Static_assert(sizeof(NitfHeaderInfo) == 358, "no gap between the members");
_Static_assert(sizeof(NitfImageHeaderInfo) == 420, "no gap between the members");
_Static_assert(sizeof(NitfGraphicHeaderInfo) == 228, "no gap between the members");
_Static_assert(sizeof(NitfTextHeaderInfo) == 198, "no gap between the members");
_Static_assert(offsetof(NitfHeaderInfo, FVER) == 354, "the place of the last member");
_Static_assert(offsetof(NitfImageHeaderInfo, TPXCD) == 412, "the place of the last member");

int32_t RenameFile(NitfHandle handle, char *title);

int32_t RenameFile(NitfHandle handle, char *title) {
  NitfHeaderInfo header = {0};
  int32_t status = K_NITFGetNITFHeader(handle, &header);
  if (status == SUCCESS) {
    char *const before = header.FTITLE;
    header.FTITLE = title;
    status = K_NITFSetNITFHeader(handle, &header);
    header.FTITLE = before;
  }
  K_NITFFreeNITFHeader(&header);
  return status;
}
