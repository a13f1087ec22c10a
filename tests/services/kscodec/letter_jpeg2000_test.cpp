// JPEG 2000: components that a file names beside the stream.
#include "codec_test.h"
#include "jpeg2000_encoder.h"

namespace {

struct NamedCase {
  const char *name;
  Jpeg2000Spec spec;
  std::uint32_t flags;
  std::array<std::uint8_t, 3> color; /**< red, green, blue */
};

class NamedComponents : public testing::TestWithParam<NamedCase> {};

/** Components 0 to 2 are 150, 128 and 100: Cr, Cb and Y, or blue, green and red. */
TEST_P(NamedComponents, AreTakenUnlessTheStreamKnowsBetter) {
  Jpeg2000Spec spec = GetParam().spec;
  spec.components.resize(3);
  spec.width = spec.height = 16;
  const Bytes stream = EncodeJpeg2000(spec, {std::vector<std::int32_t>(256, 150), std::vector<std::int32_t>(256, 128),
                                             std::vector<std::int32_t>(256, 100)});
  KsLoadOptions options;
  KsLoadOptionsInit(&options, sizeof options);
  options.loadFlags = KS_LOAD_BANDS | KS_LOAD_NAMED_BANDS | GetParam().flags;
  for (std::uint32_t band = 0; band < 3; ++band) options.bands[band] = 2 - band;
  KsLocalBitmap bitmap;
  ASSERT_EQ(
      KsLoadMemory(stream.data(), bitmap.Get(), sizeof(KsBitmap), 0, KS_ORDER_CODEC, stream.size(), &options, nullptr),
      SUCCESS);
  for (std::size_t channel = 0; channel < 3; ++channel) {
    EXPECT_NEAR(bitmap->pixels[2 - channel], GetParam().color[channel], 1) << channel;
  }
}

// Y 100, Cb 128, Cr 150: red is 100 + 1.402 * 22, green 100 - 0.714 * 22, blue 100.
constexpr std::array<std::uint8_t, 3> kConverted = {131, 84, 100};
constexpr std::array<std::uint8_t, 3> kInOrder = {150, 128, 100};
constexpr std::array<std::uint8_t, 3> kByName = {100, 128, 150};

INSTANTIATE_TEST_SUITE_P(
    Jpeg2000, NamedComponents,
    testing::Values(NamedCase{"bareYCbCr", {}, KS_LOAD_YCBCR, kConverted}, NamedCase{"bareRgb", {}, 0, kByName},
                    NamedCase{"mixedYCbCr", {.mixes = true}, KS_LOAD_YCBCR, kInOrder},
                    NamedCase{"mixedRgb", {.mixes = true}, 0, kByName},
                    NamedCase{"boxedYCbCr", {.isJp2 = true, .space = OPJ_CLRSPC_SYCC}, KS_LOAD_YCBCR, kConverted},
                    NamedCase{"boxedRgb", {.isJp2 = true, .space = OPJ_CLRSPC_SRGB}, KS_LOAD_YCBCR, kInOrder},
                    NamedCase{"boxedRgbByName", {.isJp2 = true, .space = OPJ_CLRSPC_SRGB}, 0, kByName}),
    [](const auto &given) { return std::string(given.param.name); });

}  // namespace
