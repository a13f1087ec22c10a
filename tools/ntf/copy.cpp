#include "copy.h"

#include "load_headers.h"
#include "rewriting.h"
#include "saving.h"

namespace ntf {

Outcome Copy(const CopyOptions &options) {
  LoadedFile loaded;
  if (Outcome failed = LoadHeaders(options.input, loaded, options.door)) return failed;
  if (Outcome taken = CheckOutput(options.output, options.force)) return taken;
  const FileView file = loaded.View();
  WarnOfLength(options.input, file);
  return SaveRewritten(options.input, file, FileRewrite(file), options.output);
}

}  // namespace ntf
