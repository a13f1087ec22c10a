#include "row_sum.h"

namespace {

/** Adds a row to the sum that the request carried. Rows out of order make it another one. */
std::int32_t AddRow(std::uint64_t, KsBitmap *canvas, void *row, std::uint32_t, std::uint32_t index, std::uint32_t,
                    std::uint64_t userData) {
  constexpr std::uint64_t kPrime = 1099511628211U;
  auto &result = *reinterpret_cast<RowSum *>(userData);  // NOLINT(performance-no-int-to-ptr): the request carries it so
  const auto *bytes = static_cast<const std::uint8_t *>(row);
  for (std::uint32_t i = 0; i < canvas->bytesPerLine; ++i) result.sum = (result.sum ^ bytes[i]) * kPrime;
  result.sum = (result.sum ^ index) * kPrime;
  ++result.rows;
  return SUCCESS;
}

}  // namespace

RowSum SumRows(const char16_t *name, std::uint32_t bits, std::uint32_t loadFlags) {
  RowSum result;
  FilterTargetInfo target{};
  target.bitsPerPixel = bits;
  KsLoadOptions options{};
  options.loadFlags = loadFlags;
  FilterLoadRecord request{};
  request.fileName = name;
  request.targetInfo = &target;
  request.rowCallback = AddRow;
  request.rowUserData = reinterpret_cast<std::uintptr_t>(&result);
  request.loadOptions = &options;
  request.loadFromMemory = KsLoadMemory;
  request.setRedirect = KsSetRedirect;
  request.requiredEntry = [] {};
  result.status = fltLoad(&request);
  return result;
}
