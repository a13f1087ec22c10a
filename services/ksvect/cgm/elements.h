// The elements of a metafile, by their class and number in the binary encoding (ISO/IEC 8632-3).
#pragma once

namespace ksvect::cgm {

enum ElementClass : unsigned {
  kDelimiters,
  kMetafileDescriptors,
  kPictureDescriptors,
  kControls,
  kPrimitives,
  kAttributes,
  kEscapes,
  kExternals,
  kSegments,
  kApplicationStructures,
  kElementClasses
};

/** An element, by its class and its number there. */
struct ElementCode {
  unsigned group;
  unsigned number;

  bool operator==(const ElementCode &) const = default;
};

/** The numbers of a class have 7 bits. */
constexpr unsigned kElementNumbers = 128;

/** The length in a short header, and the first byte of a string, that say: a word with the length follows. */
constexpr unsigned kLongForm = 31;
constexpr unsigned kLongString = 255;
/** In such a word: another part follows this one. */
constexpr unsigned kMoreFollows = 0x8000;

/** The local precision of cells that means the precision of all colours. */
constexpr unsigned kLocalPrecision = 0;

enum DelimiterElement : unsigned {
  kNoOperation,
  kBeginMetafile,
  kEndMetafile,
  kBeginPicture,
  kBeginPictureBody,
  kEndPicture,
  kBeginSegment,
  kEndSegment,
  kBeginFigure,
  kEndFigure,
  kBeginProtectionRegion = 13,
  kEndProtectionRegion,
  kBeginCompoundLine,
  kEndCompoundLine,
  kBeginCompoundTextPath,
  kEndCompoundTextPath,
  kBeginTileArray,
  kEndTileArray
};

enum MetafileDescriptorElement : unsigned {
  kMetafileVersion = 1,
  kMetafileDescription,
  kVdcType,
  kIntegerPrecision,
  kRealPrecision,
  kIndexPrecision,
  kColorPrecision,
  kColorIndexPrecision,
  kMaximumColorIndex,
  kColorValueExtent,
  kMetafileElementList,
  kMetafileDefaultsReplacement,
  kFontList,
  kCharacterSetList,
  kCharacterCodingAnnouncer,
  kColorModel = 19
};

enum PictureDescriptorElement : unsigned {
  kScalingMode = 1,
  kColorSelectionMode,
  kLineWidthMode,
  kMarkerSizeMode,
  kEdgeWidthMode,
  kVdcExtent,
  kBackgroundColor
};

enum ControlElement : unsigned {
  kVdcIntegerPrecision = 1,
  kVdcRealPrecision,
  kAuxiliaryColor,
  kTransparency,
  kClipRectangle,
  kClipIndicator,
  kNewRegion = 10
};

enum PrimitiveElement : unsigned {
  kPolyline = 1,
  kDisjointPolyline,
  kPolymarker,
  kText,
  kRestrictedText,
  kAppendText,
  kPolygon,
  kPolygonSet,
  kCellArray,
  kGeneralizedDrawingPrimitive,
  kRectangle,
  kCircle,
  kCircularArc3Point,
  kCircularArc3PointClose,
  kCircularArcCenter,
  kCircularArcCenterClose,
  kEllipse,
  kEllipticalArc,
  kEllipticalArcClose,
  kCircularArcCenterReversed,
  kConnectingEdge,
  kPolybezier = 26
};

enum AttributeElement : unsigned {
  kLineBundleIndex = 1,
  kLineType,
  kLineWidth,
  kLineColor,
  kMarkerBundleIndex,
  kMarkerType,
  kMarkerSize,
  kMarkerColor,
  kTextBundleIndex,
  kTextFontIndex,
  kTextPrecision,
  kCharacterExpansionFactor,
  kCharacterSpacing,
  kTextColor,
  kCharacterHeight,
  kCharacterOrientation,
  kTextPath,
  kTextAlignment,
  kCharacterSetIndex,
  kAlternateCharacterSetIndex,
  kFillBundleIndex,
  kInteriorStyle,
  kFillColor,
  kHatchIndex,
  kPatternIndex,
  kEdgeBundleIndex,
  kEdgeType,
  kEdgeWidth,
  kEdgeColor,
  kEdgeVisibility,
  kFillReferencePoint,
  kPatternTable,
  kPatternSize,
  kColorTable,
  kAspectSourceFlags
};

}  // namespace ksvect::cgm
