// Copies of quantised data are whole, or none.
#include "program_test.h"
#include "vq_builder.h"

namespace {

using CopyOfQuantisedData = ProgramTest;

/** A masked image of one block, whose rows of codes are `codesPerRow` times 12 bits. */
Bytes Quantised(std::uint32_t codesPerRow, std::size_t bytesBehind) {
  VqSpec spec{.codeRows = 2, .codesPerRow = codesPerRow, .codeBits = 12, .kernelHeight = 1, .tables = 1};
  spec.kernels = {{1}, {2}};
  spec.codes = std::vector<std::uint32_t>(2 * std::size_t{codesPerRow}, 1);
  ImageSpec image{.rows = 2, .columns = codesPerRow, .compression = "M4", .mask = MaskSpec{{0}, {}, {}}};
  image.data = EncodeVq(spec);
  image.data.resize(image.data.size() + bytesBehind, 0xAA);
  return NitfBuilder().Image(image).Build();
}

TEST_F(CopyOfQuantisedData, EndsBehindTheLastCodeAndNotBefore) {
  WriteFile(PathOf("whole.ntf"), Quantised(4, 3));
  EXPECT_EQ(Run({"copy", "whole.ntf", "copy.ntf"}).exitCode, 0);
  EXPECT_EQ(ReadFile(PathOf("copy.ntf")).size() + 3, Quantised(4, 3).size());
  // Three codes are 36 bits, of which a save carries 32, row by row.
  WriteFile(PathOf("odd.ntf"), Quantised(3, 0));
  const ProgramRun run = Run({"copy", "odd.ntf", "cut.ntf"});
  EXPECT_NE(run.exitCode, 0);
  EXPECT_NE(run.errors.find("image 0 differs"), std::string::npos) << run.errors;
  EXPECT_TRUE(ReadFile(PathOf("cut.ntf")).empty());
}

}  // namespace
