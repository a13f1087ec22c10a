// Elements that set how a metafile is written, and what its picture shows.
#include "ksvect/cgm/handlers.h"

namespace ksvect::cgm {
namespace {

struct RealRow {
  std::int32_t fixed;
  std::int32_t firstBits;
  std::int32_t secondBits;
  RealForm form;
};
constexpr RealRow kRealForms[] = {
    {0, 9, 23, RealForm::Float32},
    {0, 12, 52, RealForm::Float64},
    {1, 16, 16, RealForm::Fixed32},
    {1, 32, 32, RealForm::Fixed64},
};

constexpr std::int32_t kVdcInteger = 0;
constexpr std::int32_t kVdcReal = 1;
constexpr std::int32_t kIndexedColors = 0;
constexpr std::int32_t kDirectColors = 1;
constexpr std::int32_t kRgb = 1;
constexpr std::int32_t kCmyk = 4;
constexpr std::int32_t kRgbRelated = 5;
constexpr std::int32_t kMetricScaling = 1;

/** Whole bytes only. */
void ReadPrecision(Parameters &parameters, unsigned &bytes) {
  const std::int32_t bits = parameters.Integer();
  if (bits != 8 && bits != 16 && bits != 24 && bits != 32) parameters.Fail(SkipReason::BadValue);
  if (parameters.Good()) bytes = static_cast<unsigned>(bits) / 8;
}

/** Floating or fixed, and the bits of both parts. */
void ReadRealForm(Parameters &parameters, RealForm &form) {
  const std::int32_t fixed = parameters.Enumeration();
  const std::int32_t firstBits = parameters.Integer();
  const std::int32_t secondBits = parameters.Integer();
  for (const RealRow &row : kRealForms) {
    if (row.fixed != fixed || row.firstBits != firstBits || row.secondBits != secondBits) continue;
    if (parameters.Good()) form = row.form;
    return;
  }
  parameters.Fail(SkipReason::BadValue);
}

template <unsigned Coding::*precision>
void SetPrecision(Picture &picture, Parameters &parameters) {
  ReadPrecision(parameters, picture.coding.*precision);
}

template <RealForm Coding::*form>
void SetRealForm(Picture &picture, Parameters &parameters) {
  ReadRealForm(parameters, picture.coding.*form);
}

template <SizeMode Attributes::*mode>
void SetSizeMode(Picture &picture, Parameters &parameters) {
  const std::int32_t value = parameters.Enumeration();
  if (value < 0 || value > static_cast<std::int32_t>(SizeMode::Millimeters)) parameters.Fail(SkipReason::BadValue);
  if (parameters.Good()) picture.attributes.*mode = static_cast<SizeMode>(value);
}

void SetVdcType(Picture &picture, Parameters &parameters) {
  const std::int32_t type = parameters.Enumeration();
  if (type != kVdcInteger && type != kVdcReal) parameters.Fail(SkipReason::BadValue);
  if (parameters.Good()) picture.coding.vdcIsReal = type == kVdcReal;
}

/** The models of CIE have components that are no whole numbers, and are not supported. */
void SetColorModel(Picture &picture, Parameters &parameters) {
  const std::int32_t model = parameters.Index();
  if (model != kRgb && model != kCmyk && model != kRgbRelated) parameters.Fail(SkipReason::BadValue);
  if (parameters.Good()) picture.coding.colorModel = model == kCmyk ? ColorModel::Cmyk : ColorModel::Rgb;
}

void SetScalingMode(Picture &picture, Parameters &parameters) {
  const std::int32_t mode = parameters.Enumeration();
  if (parameters.Good()) picture.isMetric = mode == kMetricScaling;
}

void SetColorExtent(Picture &picture, Parameters &parameters) {
  ColorExtent extent;
  extent.least = parameters.ColorComponents();
  extent.greatest = parameters.ColorComponents();
  if (parameters.Good()) picture.coding.colorExtent = extent;
}

void SetFonts(Picture &picture, Parameters &parameters) {
  std::vector<Font> fonts;
  while (parameters.BytesLeft() > 0) fonts.push_back(FontOfName(parameters.String()));
  if (parameters.Good()) picture.fonts = std::move(fonts);
}

void SetCharacterSets(Picture &picture, Parameters &parameters) {
  std::vector<bool> sets;
  while (parameters.BytesLeft() > 0) {
    parameters.Enumeration();
    sets.push_back(DesignatesUtf8(parameters.String()));
  }
  if (parameters.Good()) picture.utf8Sets = std::move(sets);
}

void SetColorSelection(Picture &picture, Parameters &parameters) {
  const std::int32_t mode = parameters.Enumeration();
  if (mode != kIndexedColors && mode != kDirectColors) parameters.Fail(SkipReason::BadValue);
  if (parameters.Good()) picture.coding.directColor = mode == kDirectColors;
}

void SetExtent(Picture &picture, Parameters &parameters) {
  const Point first = parameters.Point();
  const Point second = parameters.Point();
  if (parameters.Good()) picture.SetExtent(first, second);
}

/** The background is the first colour of the table, too. */
void SetBackground(Picture &picture, Parameters &parameters) {
  const Color color = parameters.DirectColor();
  if (!parameters.Good()) return;
  picture.drawing.hasBackground = true;
  picture.drawing.background = color;
  picture.colors.Set(0, color);
}

constexpr HandlerRow kRows[] = {
    {kMetafileDescriptors, kVdcType, SetVdcType},
    {kMetafileDescriptors, kIntegerPrecision, SetPrecision<&Coding::integerBytes>},
    {kMetafileDescriptors, kRealPrecision, SetRealForm<&Coding::real>},
    {kMetafileDescriptors, kIndexPrecision, SetPrecision<&Coding::indexBytes>},
    {kMetafileDescriptors, kColorPrecision, SetPrecision<&Coding::colorBytes>},
    {kMetafileDescriptors, kColorIndexPrecision, SetPrecision<&Coding::colorIndexBytes>},
    {kMetafileDescriptors, kColorValueExtent, SetColorExtent},
    {kMetafileDescriptors, kColorModel, SetColorModel},
    {kMetafileDescriptors, kFontList, SetFonts},
    {kMetafileDescriptors, kCharacterSetList, SetCharacterSets},
    {kPictureDescriptors, kScalingMode, SetScalingMode},
    {kPictureDescriptors, kColorSelectionMode, SetColorSelection},
    {kPictureDescriptors, kLineWidthMode, SetSizeMode<&Attributes::lineWidthMode>},
    {kPictureDescriptors, kMarkerSizeMode, SetSizeMode<&Attributes::markerSizeMode>},
    {kPictureDescriptors, kEdgeWidthMode, SetSizeMode<&Attributes::edgeWidthMode>},
    {kPictureDescriptors, kVdcExtent, SetExtent},
    {kPictureDescriptors, kBackgroundColor, SetBackground},
    {kControls, kVdcIntegerPrecision, SetPrecision<&Coding::vdcIntegerBytes>},
    {kControls, kVdcRealPrecision, SetRealForm<&Coding::vdcReal>},
};

}  // namespace

std::span<const HandlerRow> DescriptorHandlers() {
  return kRows;
}

}  // namespace ksvect::cgm
