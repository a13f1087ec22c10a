// The texts of the image subheader that stand for numbers: IREP, IREPBAND, IMODE, COMRAT. Those of IC are kinds of
// images.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ksntfx {

/** PVTYPE: unsigned integers, bits, signed integers, IEEE 754 numbers, pairs of these. */
enum PixelValueType : std::uint32_t { kInteger, kBilevel, kSigned, kReal, kComplex };

/** IREP. */
enum ImageRepresentation : std::uint32_t { kMono, kRgb, kRgbLut, kMulti, kNoDisplay, kVector, kPolar, kVph, kYCbCr601 };

/** IREPBAND. */
enum BandRepresentation : std::uint32_t {
  kBandNone,
  kBandLut,
  kBandRed,
  kBandGreen,
  kBandBlue,
  kBandMono,
  kBandY,
  kBandCb,
  kBandCr
};

/** IMODE: how blocks and bands lie in the data. */
enum ImageMode : std::uint32_t { kBlockInterleaved, kPixelInterleaved, kRowInterleaved, kBandSequential };

/** COMRAT of bi-level images. */
enum RateKind : std::uint32_t { kRate1D, kRate2DS, kRate2DH, kRateOther };

/** A text of the format and the number that stands for it. A field matches by its first characters. */
struct ImageCode {
  std::string_view text;
  std::uint32_t value;
};

// In the order of their numbers.
inline constexpr ImageCode kPixelValueTypes[] = {
    {"INT", kInteger}, {"B  ", kBilevel}, {"SI ", kSigned}, {"R  ", kReal}, {"C  ", kComplex}};

/** The first of these: all that the strict interfaces support. */
inline constexpr std::size_t kStrictPixelValueTypes = 2;

// In the order of comparison: "RGB/LUT" begins with "RGB".
inline constexpr ImageCode kRepresentations[] = {
    {"MONO", kMono},      {"RGB/LUT", kRgbLut}, {"RGB", kRgb}, {"MULTI", kMulti},      {"NODISPLY", kNoDisplay},
    {"NVECTOR", kVector}, {"POLAR", kPolar},    {"VPH", kVph}, {"YCbCr601", kYCbCr601}};

inline constexpr ImageCode kBandRepresentations[] = {{"LU", kBandLut}, {"R", kBandRed},  {"G", kBandGreen},
                                                     {"B", kBandBlue}, {"M", kBandMono}, {"Y", kBandY},
                                                     {"Cb", kBandCb},  {"Cr", kBandCr}};

inline constexpr ImageCode kModes[] = {
    {"B", kBlockInterleaved}, {"P", kPixelInterleaved}, {"R", kRowInterleaved}, {"S", kBandSequential}};

inline constexpr ImageCode kRates[] = {{"1D", kRate1D}, {"2DS", kRate2DS}, {"2DH", kRate2DH}};

/** Sets `value` to the first code that the text begins with; false where there is none. */
template <std::size_t count>
bool DecodeImageCode(const ImageCode (&codes)[count], std::string_view text, std::uint32_t *value) {
  const ImageCode *code =
      std::find_if(codes, codes + count, [&](const ImageCode &entry) { return text.starts_with(entry.text); });
  if (code == codes + count) return false;
  *value = code->value;
  return true;
}

/** The text of a number; empty for one without a text. */
template <std::size_t count>
std::string_view ImageCodeText(const ImageCode (&codes)[count], std::uint32_t value) {
  const ImageCode *code =
      std::find_if(codes, codes + count, [&](const ImageCode &entry) { return entry.value == value; });
  return code == codes + count ? std::string_view() : code->text;
}

}  // namespace ksntfx
