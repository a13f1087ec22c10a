// The front of raw samples, with the streams that every build decodes: lossless, 12 bits, more than four components.
#include "samples_test.h"

#include "jpeg_builder.h"

namespace {

constexpr uint32_t kWidth = 53;
constexpr uint32_t kHeight = 41;

uint32_t Noise(uint32_t bits, uint32_t component, uint32_t x, uint32_t y) {
  const uint32_t hash = (x * 2654435761U ^ (y + 7 * component) * 2246822519U) * 3266489917U;
  return hash >> (32 - bits);
}

JpegSpec Spec(uint32_t bits, uint32_t components, bool lossless = true) {
  JpegSpec spec{.width = kWidth, .height = kHeight, .bits = bits, .lossless = lossless, .components = components};
  // The transform loses little of what is smooth.
  spec.sample = [=](uint32_t component, uint32_t x, uint32_t y) {
    return lossless ? Noise(bits, component, x, y) : (x * 20 + y * 11 + component * 300) << bits >> 12;
  };
  return spec;
}

/** The samples that went in, repeated where a component has fewer. */
Samples ExpectedSamples(const JpegSpec &spec) {
  Samples expected = {spec.height, spec.width};
  for (uint32_t i = 0; i < spec.components; ++i) {
    const JpegSampling size = JpegSizeOf(spec, i);
    const uint32_t across = (spec.width + size.across - 1) / size.across;
    const uint32_t down = (spec.height + size.down - 1) / size.down;
    std::vector<int64_t> &plane = expected.planes.emplace_back();
    for (uint32_t y = 0; y < spec.height; ++y) {
      for (uint32_t x = 0; x < spec.width; ++x) plane.push_back(spec.sample(i, x / across, y / down));
    }
  }
  return expected;
}

struct OwnCase {
  const char *name;
  JpegSpec spec;
  int64_t tolerance = 0;
};

OwnCase Form(const char *name, JpegSpec spec, std::vector<JpegSampling> sampling, bool eachAlone = false) {
  spec.sampling = std::move(sampling);
  spec.eachAlone = eachAlone;
  return {name, spec, spec.lossless ? 0 : 2};
}

using OwnSamplesTest = ServiceTestWith<OwnCase>;

TEST_P(OwnSamplesTest, AreThoseThatWentInInAnyWindow) {
  const auto &[name, spec, tolerance] = GetParam();
  const Bytes stream = EncodeJpeg(spec);
  PieceSource source = {stream};
  OpenedSamples opened;
  OpenedSamples pieces;
  ASSERT_EQ(OpenSamples(stream, &opened, {KS_SAMPLES_AS_STORED, 0}), SUCCESS);
  ASSERT_EQ(OpenPieces(&source, &pieces, {KS_SAMPLES_AS_STORED, 0}), SUCCESS);
  const KsSamplesInfo &info = *KsSamplesDescribe(opened.get());
  EXPECT_EQ(info.levels, 0u);
  EXPECT_EQ(info.components, spec.components);
  EXPECT_EQ(KsSamplesDescribeComponent(opened.get(), spec.components - 1)->bits, spec.bits);
  EXPECT_EQ(KsSamplesDescribeComponent(opened.get(), spec.components), nullptr);
  const Samples whole = ReadWhole(opened.get());
  const Samples expected = ExpectedSamples(spec);
  for (size_t i = 0; i < expected.planes.size(); ++i) {
    for (size_t at = 0; at < expected.planes[i].size(); ++at) {
      ASSERT_LE(std::abs(whole.planes[i][at] - expected.planes[i][at]), tolerance) << i << ", " << at;
    }
  }
  ASSERT_NO_FATAL_FAILURE(ExpectWindowsOf(opened.get(), whole, 0, 20));
  ASSERT_NO_FATAL_FAILURE(ExpectWindowsOf(pieces.get(), whole, 0, 10, 2));
}

INSTANTIATE_TEST_SUITE_P(Forms, OwnSamplesTest,
                         testing::Values(Form("2 bits", Spec(2, 1), {}), Form("16 bits", Spec(16, 1), {}),
                                         Form("13 bits of color", Spec(13, 3), {}),
                                         Form("scans of their own", Spec(16, 3), {}, true),
                                         Form("seven", Spec(9, 7), {}),
                                         Form("subsampled", Spec(12, 3), {{2, 2}, {1, 2}, {2, 1}}),
                                         Form("12 bits", Spec(12, 1, false), {}),
                                         Form("12 bits, subsampled", Spec(12, 4, false), {{2, 2}, {2, 2}, {1, 1}}),
                                         Form("six of 8 bits", Spec(8, 6, false), {})));

class SamplesTest : public ServiceTest {
 protected:
  const Bytes stream = EncodeJpeg(Spec(9, 2));
};

TEST_F(SamplesTest, GoToAnyContainerThatHoldsThem) {
  OpenedSamples opened;
  ASSERT_EQ(OpenSamples(stream, &opened), SUCCESS);
  const Samples whole = ReadWhole(opened.get());
  const KsSamplesWindow window = WholeWindow(opened.get());
  struct Holder {
    uint32_t container;
    uint32_t bytes;
    int32_t status;
  };
  const Holder holders[] = {{KS_SAMPLES_U8, 1, ERROR_BITS_PER_PIXEL},
                            {KS_SAMPLES_I8, 1, ERROR_BITS_PER_PIXEL},
                            {KS_SAMPLES_U16, 2, SUCCESS},
                            {KS_SAMPLES_I16, 2, SUCCESS},
                            {KS_SAMPLES_U32, 4, SUCCESS},
                            {KS_SAMPLES_I32, 4, SUCCESS},
                            {KS_SAMPLES_U64, 8, SUCCESS},
                            {KS_SAMPLES_I64, 8, SUCCESS},
                            {8, 8, ERROR_INVALID_VALUE}};
  for (const auto &[container, bytes, status] : holders) {
    // Bottom up, with a byte between pixels, and one in front of all, so that nothing is aligned.
    const int64_t step = bytes + 1;
    const int64_t row = 2 * kWidth * step;
    Bytes memory(static_cast<size_t>(1 + kHeight * row), 0xEE);
    const KsSamplesTarget target = {memory.data() + 1 + (kHeight - 1) * row, -row, 2 * step, step, container};
    ASSERT_EQ(KsSamplesRead(opened.get(), &window, nullptr, 0, &target), status) << container;
    for (size_t i = 0; status == SUCCESS && i < size_t{kWidth} * kHeight * 2; ++i) {
      uint64_t value = 0;
      std::memcpy(&value, memory.data() + 1 + i * static_cast<size_t>(step), bytes);
      const auto y = static_cast<uint32_t>(i / (2 * kWidth));
      ASSERT_EQ(static_cast<int64_t>(value), whole.At(i % 2, kHeight - 1 - y, static_cast<uint32_t>(i / 2 % kWidth)));
    }
  }
}

TEST_F(SamplesTest, LuminanceAndChrominanceBecomeColors) {
  JpegSpec spec = Spec(12, 3, false);
  constexpr uint32_t kYellowish[] = {3000, 1000, 2500};
  spec.sample = [&](uint32_t component, uint32_t, uint32_t) { return kYellowish[component]; };
  const Bytes color = EncodeJpeg(spec);
  OpenedSamples opened;
  ASSERT_EQ(OpenSamples(color, &opened), SUCCESS);
  EXPECT_EQ(KsSamplesDescribe(opened.get())->isConverted, 1u);
  // By the factors of BT.601, around the middle of 12 bits.
  const double expected[] = {3000 + 1.402 * 452, 3000 + 0.344136 * 1048 - 0.714136 * 452, 3000 - 1.772 * 1048};
  Samples pixel;
  ASSERT_EQ(ReadSamples(opened.get(), {7, 9, 1, 1, 0}, {2, 0, 1}, &pixel), SUCCESS);
  EXPECT_NEAR(static_cast<double>(pixel.planes[0][0]), expected[2], 3);
  EXPECT_NEAR(static_cast<double>(pixel.planes[1][0]), expected[0], 3);
  EXPECT_NEAR(static_cast<double>(pixel.planes[2][0]), expected[1], 3);
}

TEST_F(SamplesTest, WhatCantBeReadIsRefused) {
  OpenedSamples opened;
  ASSERT_EQ(OpenSamples(stream, &opened), SUCCESS);
  uint16_t sample = 0;
  const KsSamplesTarget target = {&sample, 2, 2, 2, KS_SAMPLES_U16};
  const auto read = [&](const KsSamplesWindow &window, std::vector<uint32_t> components) {
    return KsSamplesRead(opened.get(), &window, components.data(), static_cast<uint32_t>(components.size()), &target);
  };
  const std::vector<uint32_t> first = {0};
  EXPECT_EQ(read({kHeight - 1, kWidth - 1, 1, 1, 0}, first), SUCCESS);
  for (const KsSamplesWindow &window :
       {KsSamplesWindow{kHeight, 0, 1, 1, 0}, KsSamplesWindow{0, kWidth, 1, 1, 0}, KsSamplesWindow{1, 1, kHeight, 1, 0},
        KsSamplesWindow{1, 1, 1, UINT32_MAX, 0}, KsSamplesWindow{0, 0, 0, 1, 0}, KsSamplesWindow{0, 0, 1, 0, 0},
        KsSamplesWindow{0, 0, 1, 1, 1}, KsSamplesWindow{0, 0, 1, 1, UINT32_MAX}}) {
    EXPECT_EQ(read(window, first), ERROR_INVALID_VALUE);
  }
  EXPECT_EQ(read({0, 0, 1, 1, 0}, {2}), ERROR_INVALID_VALUE);
  const KsSamplesWindow window = {0, 0, 1, 1, 0};
  const KsSamplesTarget nowhere = {};
  EXPECT_EQ(KsSamplesRead(opened.get(), &window, first.data(), 0, &target), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsSamplesRead(opened.get(), &window, first.data(), 1, &nowhere), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsSamplesRead(opened.get(), nullptr, first.data(), 1, &target), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsSamplesRead(nullptr, &window, first.data(), 1, &target), ERROR_INVALID_VALUE);
  EXPECT_EQ(KsSamplesDescribe(nullptr), nullptr);
  const Bytes other = {'n', 'o', 't', 'h', 'i', 'n', 'g'};
  EXPECT_EQ(OpenSamples(other, &opened), ERROR_NOT_SUPPORTED);
  EXPECT_EQ(OpenSamples({}, &opened), ERROR_INVALID_VALUE);
}

TEST_F(SamplesTest, AReadThatFailsIsReported) {
  PieceSource source = {stream, 0};
  OpenedSamples opened;
  EXPECT_EQ(OpenPieces(&source, &opened), ERROR_FILE_READ);
}

/** Whatever is cut off or changed: a status, or samples. */
TEST_F(SamplesTest, DamageDoesNoHarm) {
  for (const JpegSpec &spec : {Spec(9, 2), Spec(12, 3, false)}) {
    const Bytes sound = EncodeJpeg(spec);
    for (size_t i = 0; i < sound.size(); ++i) {
      for (const int change : {0x00, 0x01, 0x80, 0xFF}) {
        Bytes damaged = sound;
        damaged[i] = static_cast<uint8_t>(damaged[i] ^ change);
        if (change == 0) damaged.resize(i);
        ReadDamaged(damaged);
      }
    }
  }
}

}  // namespace
