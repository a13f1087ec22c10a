#include "copy.h"

#include "comparing.h"
#include "saving.h"

#include <cstdio>

namespace ntf {
namespace {

void WarnOfSegmentsLeftOut(const std::string &name, const FileView &file) {
  const std::uint32_t count = file.Numbers().reservedExtensions;
  if (count == 0) return;
  std::fprintf(stderr,
               "ntf: %s: warning: its %u reserved extension segments are not copied, although the header counts them\n",
               name.c_str(), count);
}

}  // namespace

Outcome Copy(const CopyOptions &options) {
  LocalHandle handle;
  if (Outcome failed = handle.Open(options.input)) return failed;
  if (Outcome taken = CheckOutput(options.output, options.force)) return taken;
  Outcome failed = SaveCompared(handle, options.output);
  if (!failed) WarnOfSegmentsLeftOut(options.input, handle.View());
  return failed;
}

}  // namespace ntf
