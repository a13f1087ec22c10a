// The door that the fuzzer knocks at.
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  FuzzOne({data, size});
  return 0;
}
