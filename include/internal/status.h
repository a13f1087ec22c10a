// The result of an operation within the libraries. The exports return its number.
#pragma once

#include "kskernel.h"

#include <compare>
#include <cstdint>

#ifdef KS_TRACE_STATUS
#include <cstdio>
#include <cstdlib>
#endif

/**
 * SUCCESS, or why an operation failed: a KsStatus or a value of the format's own. A dropped one doesn't compile.
 *
 * In the debug build (KS_TRACE_STATUS), and with the environment variable KS_TRACE_STATUS set, each failure that arises
 * is printed on stderr with its file and line; one that is passed on is not printed again.
 */
class [[nodiscard]] Status {
 public:
#ifdef KS_TRACE_STATUS
  // Implicit, so that a function returns the plain value.
  Status(std::int32_t value, const char *file = __builtin_FILE(), int line = __builtin_LINE()) : code(value) {
    static const bool traced = std::getenv("KS_TRACE_STATUS") != nullptr;
    if (traced && value < SUCCESS) std::fprintf(stderr, "%s:%d: status %d\n", file, line, value);
  }
#else
  constexpr Status(std::int32_t value) : code(value) {}
#endif

  /** The number, for an export. */
  [[nodiscard]] constexpr std::int32_t Code() const {
    return code;
  }

  friend constexpr bool operator==(const Status &status, std::int32_t value) {
    return status.code == value;
  }
  friend constexpr auto operator<=>(const Status &status, std::int32_t value) {
    return status.code <=> value;
  }

 private:
  std::int32_t code;
};
