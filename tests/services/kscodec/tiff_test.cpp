// TIFF files written strip by strip, and read back with libtiff.
#include "../service_test.h"
#include "kstiff.h"

#include <algorithm>
#include <memory>

#include <tiffio.h>

namespace {

/** A file in memory, which may be full. */
struct MemoryTarget {
  Bytes file{};
  uint64_t room = UINT64_MAX;
  uint64_t writesAfterFailure = 0;
  bool hasFailed = false;

  static int64_t Write(void *user, uint64_t offset, const void *buffer, uint64_t bytes) {
    auto &target = *static_cast<MemoryTarget *>(user);
    EXPECT_LE(offset, target.file.size()) << "a gap";
    if (target.hasFailed) ++target.writesAfterFailure;
    target.hasFailed = offset + bytes > target.room;
    if (target.hasFailed) return -1;
    target.file.resize(std::max<uint64_t>(target.file.size(), offset + bytes));
    std::memcpy(target.file.data() + offset, buffer, bytes);
    return static_cast<int64_t>(bytes);
  }
};

struct CloseFile {
  void operator()(KsTiff *file) const { KsTiffClose(file); }
};
using OpenFile = std::unique_ptr<KsTiff, CloseFile>;

int32_t Open(MemoryTarget *memory, const KsTiffShape &shape, OpenFile *file) {
  const KsTiffTarget target = {MemoryTarget::Write, memory};
  KsTiff *opened = nullptr;
  const int32_t status = KsTiffOpen(&target, &shape, &opened);
  EXPECT_EQ(opened != nullptr, status == SUCCESS);
  file->reset(opened);
  return status;
}

/** 13 x 7 pixels in strips of 3 rows, of which the last one has one. */
KsTiffShape Shape(uint32_t samples, uint32_t bits, uint32_t format) {
  KsTiffShape shape = {};
  shape.rows = 7;
  shape.columns = 13;
  shape.samples = samples;
  shape.bits = bits;
  shape.sampleFormat = format;
  shape.rowsPerStrip = 3;
  return shape;
}

/** The samples of a plane. */
Bytes Plane(const KsTiffShape &shape, uint32_t plane) {
  const uint32_t samples = shape.isSeparate != 0 ? 1 : shape.samples;
  return RandomBytes(shape.rows * shape.columns * samples * (shape.bits / 8), plane + 1);
}

/** Writes all strips, the last ones first. */
int32_t WriteAll(KsTiff *file, const KsTiffShape &shape) {
  const uint32_t planes = shape.isSeparate != 0 ? shape.samples : 1;
  for (uint32_t plane = planes; plane-- > 0;) {
    const Bytes samples = Plane(shape, plane);
    const uint64_t rowBytes = samples.size() / shape.rows;
    for (uint64_t strip = (shape.rows + shape.rowsPerStrip - 1) / shape.rowsPerStrip; strip-- > 0;) {
      // A strip of its own size, so that a look beyond it is seen.
      const uint64_t first = strip * shape.rowsPerStrip;
      const uint64_t rows = std::min(shape.rowsPerStrip, shape.rows - first);
      const auto from = samples.begin() + static_cast<std::ptrdiff_t>(first * rowBytes);
      const Bytes part(from, from + static_cast<std::ptrdiff_t>(rows * rowBytes));
      const int32_t status = KsTiffWriteStrip(file, plane, strip, part.data());
      if (status != SUCCESS) return status;
      EXPECT_EQ(Bytes(from, from + static_cast<std::ptrdiff_t>(rows * rowBytes)), part) << "samples were changed";
    }
  }
  return KsTiffFinish(file);
}

struct CloseTiff {
  void operator()(TIFF *tiff) const { TIFFClose(tiff); }
};

/** The planes of a file, one after the other. */
Bytes ReadBack(const Bytes &file, const KsTiffShape &shape) {
  const TemporaryFolder folder;
  WriteFile(folder.Path("a.tif"), file);
  const std::unique_ptr<TIFF, CloseTiff> tiff(TIFFOpen(folder.Path("a.tif").c_str(), "r"));
  Bytes samples;
  if (tiff == nullptr) return samples;
  const uint32_t planes = shape.isSeparate != 0 ? shape.samples : 1;
  for (uint32_t plane = 0; plane < planes; ++plane) {
    for (uint32_t row = 0; row < shape.rows; ++row) {
      Bytes line(static_cast<size_t>(TIFFScanlineSize(tiff.get())));
      EXPECT_EQ(TIFFReadScanline(tiff.get(), line.data(), row, static_cast<uint16_t>(plane)), 1);
      samples.insert(samples.end(), line.begin(), line.end());
    }
  }
  return samples;
}

struct TypeCase {
  uint32_t samples;
  uint32_t bits;
  uint32_t format;
};

class TiffType : public ServiceTestWith<TypeCase> {};

TEST_P(TiffType, IsReadBackWhateverItsLayout) {
  for (uint32_t variant = 0; variant < 4; ++variant) {
    KsTiffShape shape = Shape(GetParam().samples, GetParam().bits, GetParam().format);
    shape.isSeparate = variant & 1;
    shape.compression = variant >> 1;
    MemoryTarget target;
    OpenFile file;
    ASSERT_EQ(Open(&target, shape, &file), SUCCESS);
    ASSERT_EQ(WriteAll(file.get(), shape), SUCCESS);
    file.reset();
    Bytes planes;
    for (uint32_t plane = 0; plane < (shape.isSeparate != 0 ? shape.samples : 1); ++plane) {
      const Bytes one = Plane(shape, plane);
      planes.insert(planes.end(), one.begin(), one.end());
    }
    EXPECT_EQ(ReadBack(target.file, shape), planes) << variant;
  }
}

INSTANTIATE_TEST_SUITE_P(Services, TiffType,
                         testing::Values(TypeCase{1, 8, KS_TIFF_UNSIGNED}, TypeCase{3, 16, KS_TIFF_UNSIGNED},
                                         TypeCase{2, 32, KS_TIFF_SIGNED}, TypeCase{1, 64, KS_TIFF_UNSIGNED},
                                         TypeCase{300, 8, KS_TIFF_SIGNED}, TypeCase{2, 32, KS_TIFF_REAL},
                                         TypeCase{1, 64, KS_TIFF_REAL}, TypeCase{2, 64, KS_TIFF_COMPLEX}));

using Tiff = ServiceTest;

TEST_F(Tiff, AFullTargetIsReportedAndLeftAlone) {
  const KsTiffShape shape = Shape(3, 8, KS_TIFF_UNSIGNED);
  MemoryTarget whole;
  OpenFile file;
  ASSERT_EQ(Open(&whole, shape, &file), SUCCESS);
  ASSERT_EQ(WriteAll(file.get(), shape), SUCCESS);
  for (uint64_t room = 0; room < whole.file.size(); ++room) {
    MemoryTarget target;
    target.room = room;
    const int32_t opened = Open(&target, shape, &file);
    EXPECT_EQ(opened == SUCCESS ? WriteAll(file.get(), shape) : opened, ERROR_FILE_WRITE) << room;
    file.reset();
    EXPECT_EQ(target.writesAfterFailure, 0U) << room;
  }
}

TEST_F(Tiff, PlacesHave64BitsIfTheSamplesNeedThem) {
  KsTiffShape shape = Shape(1, 8, KS_TIFF_UNSIGNED);
  shape.columns = 1 << 16;
  constexpr Bytes::value_type kClassic = 42;
  constexpr Bytes::value_type kBig = 43;
  for (const auto &[rows, version] : {std::pair{65000U, kClassic}, std::pair{65536U, kBig}}) {
    shape.rows = rows;
    shape.rowsPerStrip = 100;
    MemoryTarget target;
    OpenFile file;
    ASSERT_EQ(Open(&target, shape, &file), SUCCESS);
    ASSERT_GE(target.file.size(), 8U);
    EXPECT_EQ(target.file[2], version) << rows;
  }
}

TEST_F(Tiff, ImpossibleShapesAndStripsAreRefused) {
  const KsTiffShape sound = Shape(3, 16, KS_TIFF_UNSIGNED);
  std::vector<KsTiffShape> shapes(10, sound);
  shapes[0].rows = 0;
  shapes[1].columns = uint64_t{1} << 32;
  shapes[2].samples = 65536;
  shapes[3].bits = 12;
  shapes[4].sampleFormat = KS_TIFF_REAL;
  shapes[5].rowsPerStrip = 0;
  shapes[6].colors = KS_TIFF_PALETTE;
  shapes[7].compression = 2;
  shapes[8].colors = KS_TIFF_RGB;
  shapes[8].samples = 2;
  shapes[9].rows = shapes[9].columns = shapes[9].rowsPerStrip = UINT32_MAX;
  MemoryTarget target;
  OpenFile file;
  for (const KsTiffShape &shape : shapes) {
    EXPECT_EQ(Open(&target, shape, &file), ERROR_INVALID_VALUE) << &shape - shapes.data();
  }
  EXPECT_TRUE(target.file.empty());
  ASSERT_EQ(Open(&target, sound, &file), SUCCESS);
  const Bytes strip(sound.columns * 6 * 3);
  EXPECT_EQ(KsTiffWriteStrip(file.get(), 1, 0, strip.data()), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsTiffWriteStrip(file.get(), 0, 3, strip.data()), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsTiffFinish(file.get()), SUCCESS);
  EXPECT_EQ(KsTiffFinish(file.get()), ERROR_INVALID_VALUE);
}

}  // namespace
