#include "load_headers.h"

#include "input_file.h"

namespace ntf {

Outcome LoadHeaders(const std::string &fileName, NitfFile &file) {
  if (Outcome unreadable = CheckInput(fileName)) return unreadable;
  const WideName name = Widen(fileName);
  const std::int32_t status = Load(&file, name.get());
  return OutcomeOf(fileName, status);
}

}  // namespace ntf
