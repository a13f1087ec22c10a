#include "copy.h"

#include "comparing.h"
#include "nitffile.h"
#include "saving.h"

#include <cstdio>

namespace ntf {
namespace {

void TellNotCarried(const std::string &name, const NitfFile &file) {
  if (file.reservedExtensionCount == 0) return;
  std::fprintf(stderr, "ntf: %s: its %u reserved extension segments are not carried, though the header counts them\n",
               name.c_str(), file.reservedExtensionCount);
}

}  // namespace

Outcome Copy(const CopyOptions &options) {
  LocalHandle handle;
  if (Outcome failed = handle.Open(options.input)) return failed;
  if (Outcome taken = CheckOutput(options.output, options.force)) return taken;
  Outcome failed = SaveCompared(handle, options.output);
  if (!failed) TellNotCarried(options.input, *handle.Get());
  return failed;
}

}  // namespace ntf
