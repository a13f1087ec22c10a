#include "ksvect/cgm/profile.h"

#include <algorithm>
#include <iterator>

namespace ksvect::cgm {
namespace {

constexpr ElementCode kProfile[] = {
    {kDelimiters, kBeginMetafile},
    {kDelimiters, kEndMetafile},
    {kDelimiters, kBeginPicture},
    {kDelimiters, kBeginPictureBody},
    {kDelimiters, kEndPicture},
    {kMetafileDescriptors, kMetafileVersion},
    {kMetafileDescriptors, kMetafileDescription},
    {kMetafileDescriptors, kMetafileElementList},
    {kMetafileDescriptors, kFontList},
    {kPictureDescriptors, kColorSelectionMode},
    {kPictureDescriptors, kLineWidthMode},
    {kPictureDescriptors, kEdgeWidthMode},
    {kPictureDescriptors, kVdcExtent},
    {kControls, kAuxiliaryColor},
    {kControls, kTransparency},
    {kPrimitives, kPolyline},
    {kPrimitives, kText},
    {kPrimitives, kPolygon},
    {kPrimitives, kRectangle},
    {kPrimitives, kCircle},
    {kPrimitives, kCircularArcCenter},
    {kPrimitives, kCircularArcCenterClose},
    {kPrimitives, kEllipse},
    {kPrimitives, kEllipticalArc},
    {kPrimitives, kEllipticalArcClose},
    {kAttributes, kLineType},
    {kAttributes, kLineWidth},
    {kAttributes, kLineColor},
    {kAttributes, kTextFontIndex},
    {kAttributes, kTextColor},
    {kAttributes, kCharacterHeight},
    {kAttributes, kCharacterOrientation},
    {kAttributes, kInteriorStyle},
    {kAttributes, kFillColor},
    {kAttributes, kHatchIndex},
    {kAttributes, kEdgeType},
    {kAttributes, kEdgeWidth},
    {kAttributes, kEdgeColor},
    {kAttributes, kEdgeVisibility},
};

}  // namespace

bool IsInProfile(ElementCode code) {
  return std::ranges::find(kProfile, code) != std::end(kProfile);
}

}  // namespace ksvect::cgm
