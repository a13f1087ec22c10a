#include "load_headers.h"

#include "input_file.h"

namespace ntf {

Outcome LoadHeaders(const std::string &fileName, LoadedFile &file) {
  if (Outcome unreadable = CheckInput(fileName)) return unreadable;
  const WideName name = Widen(fileName);
  return OutcomeOf(fileName, file.Load(name.get()));
}

}  // namespace ntf
