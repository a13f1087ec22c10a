#include "standard_output.h"

#include "kskernel.h"

#include <cerrno>
#include <cstdio>

namespace ntf {
namespace {

Outcome Failure() {
  return SystemProblem("standard output", errno, ERROR_FILE_WRITE);
}

}  // namespace

Outcome PrintOutput(std::string_view text) {
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? Outcome() : Failure();
}

Outcome FlushOutput() {
  return std::fflush(stdout) == 0 ? Outcome() : Failure();
}

}  // namespace ntf
