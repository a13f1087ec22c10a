// The texts of the image subheader that stand for numbers: IC, IREP, IREPBAND, IMODE, COMRAT.
#pragma once

#include "imsubhdr.h"

#include <algorithm>
#include <string_view>

/** A text of the format and the number that stands for it. A field matches by its first characters. */
struct ImageCode {
  std::string_view text;
  std::uint32_t value;
};

inline constexpr ImageCode kCompressions[] = {{"NC", kNC}, {"NM", kNM}, {"C0", kC0}, {"C1", kC1}, {"C2", kC2},
                                              {"C3", kC3}, {"C4", kC4}, {"C5", kC5}, {"C6", kC6}, {"C8", kC8},
                                              {"I1", kI1}, {"M0", kM0}, {"M1", kM1}, {"M2", kM2}, {"M3", kM3},
                                              {"M4", kM4}, {"M5", kM5}, {"M6", kM6}, {"M8", kM8}};

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
