#include "load_headers.h"

#include "input_file.h"
#include "load_fault.h"

namespace ntf {

Outcome LoadHeaders(const std::string &fileName, LoadedFile &file, Door door) {
  if (Outcome unreadable = CheckInput(fileName)) return unreadable;
  const std::u16string name = Widen(fileName);
  const std::int32_t status = file.Load(name.c_str(), door);
  return status == SUCCESS ? Outcome() : LoadProblem(fileName, file.View(), status);
}

}  // namespace ntf
