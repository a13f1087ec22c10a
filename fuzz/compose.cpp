// A whole file: headers, every decoder that its segments call for, composition, delivery of rows.
#include "row_sum.h"
#include "target.h"

#include <filesystem>

void FuzzOne(Input input) {
  static constexpr std::uint32_t kDepths[] = {24, 8, 32};
  KsSetBitmapLimit(kBitmapLimit);
  const std::string path = TemporaryPath("input.ntf");
  WriteInput(path, input);
  // The last byte of the file chooses among depths and flags.
  const std::uint8_t choice = input.empty() ? 0 : input.back();
  std::uint32_t flags = (choice & 0x40) != 0 ? NITF_LOAD_TONE_CHECK : 0;
  if ((choice & 0x80) != 0) flags |= NITF_LOAD_VECTOR_RENDER;
  const std::u16string name = std::filesystem::path(path).u16string();
  const RowSum picture = SumRows(name.c_str(), kDepths[choice % 3], flags);
  Require(picture.status == SUCCESS || picture.status < 0, "a load gives SUCCESS or a negative status");
  Require(picture.status == SUCCESS || picture.rows == 0, "a load that fails delivers nothing");
}
