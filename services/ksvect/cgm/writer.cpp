#include "ksvect/cgm/writer.h"

#include "ksvect/cgm/encoder.h"
#include "ksvect/cgm/shape_writer.h"
#include "ksvect/cgm/style_writer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>

namespace ksvect {
namespace {

using cgm::Encoder;
using cgm::Forms;
using cgm::VdcForm;

constexpr std::string_view kMetafileName = "Ksntfx";
constexpr std::string_view kPictureName = "Picture 1";
/** The strings that the profile requires in a description; what uses more than the profile doesn't claim it. */
constexpr std::string_view kProfileDescription = "\"ProfileId:MIL-STD-2301A\" \"ProfileEd:1\" ";
constexpr std::string_view kDescription = "\"ColourClass:colour\" \"Source:Ksntfx\" \"Date:";

constexpr std::uint32_t kVersion = 1;
/** The first one that knows modes to change within a picture. */
constexpr std::uint32_t kVersionOfModeChanges = 3;

/** The class of the shorthands of the element list, each of which means many elements. */
constexpr int kShorthand = -1;
constexpr int kDrawingPlusControlSet = 1;
constexpr int kVersion3Set = 5;

constexpr unsigned kVdcReal = 1;
constexpr unsigned kFloating = 0;
constexpr unsigned kBitsOfExponent = 12;
constexpr unsigned kBitsOfFraction = 52;
constexpr unsigned kLongIntegerBits = 32;

/** Character sets: types, and the ends of the escape sequences that designate them. */
constexpr unsigned k94Characters = 0;
constexpr unsigned k96Characters = 1;
constexpr unsigned kCompleteCode = 4;
constexpr std::string_view kAscii = "B";
constexpr std::string_view kLatin1 = "A";
constexpr std::string_view kUtf8 = "/I";
constexpr unsigned kBasic8Bit = 1;
constexpr int kLatin1Index = 2;

/** Below this, whole parts fit into 16 bits. */
constexpr double kFixedLimit = 32767;
/** The least side of a drawing that a 65536th of a unit is small enough for. */
constexpr double kLeastFixedSide = 16;

/** An element from beginning to end, with parameters that a function writes. */
template <typename Write>
void WriteElement(Encoder &encoder, cgm::ElementCode code, Write write) {
  const std::size_t parameters = encoder.Begin(code);
  write();
  encoder.End(parameters);
}

void WriteElement(Encoder &encoder, cgm::ElementCode code) {
  encoder.End(encoder.Begin(code));
}

/** Writes a drawing twice: as a survey of what it needs, and in the forms chosen by that. */
class MetafileWriter {
 public:
  MetafileWriter(const Drawing &source, const Box *bounds, std::string_view today, std::vector<std::uint8_t> &bytes)
      : drawing(source), date(today), data(bytes), hasExtent(source.hasExtent || bounds != nullptr) {
    if (hasExtent) extent = drawing.hasExtent ? drawing.extent : *bounds;
  }

  Status Write() {
    Encoder survey(data, {VdcForm::Float64, true, true, true, true});
    cgm::StyleWriter styles(survey, drawing, {});
    WriteObjects(survey, styles);
    if (hasExtent && !AddExtent(survey)) return ERROR_NOT_SUPPORTED;
    if (!survey.Seen().encodable) return ERROR_NOT_SUPPORTED;
    Forms forms = FormsFor(survey.Seen());
    forms.profile = IsProfile(forms, survey.Seen(), styles);
    data.clear();
    WriteAll(forms, survey.Seen(), styles);
    return SUCCESS;
  }

 private:
  /** Adds the extent to the survey. That of the bounds is rounded outwards where that spares a whole drawing reals. */
  bool AddExtent(Encoder &survey) {
    if (!drawing.hasExtent && IsWhole(survey.Seen())) {
      extent = {{std::floor(extent.low.x), std::floor(extent.low.y)},
                {std::ceil(extent.high.x), std::ceil(extent.high.y)}};
    }
    survey.Place(extent.low);
    survey.Place(extent.high);
    return extent.low.x <= extent.high.x && extent.low.y <= extent.high.y;
  }

  bool IsUpsideDown() const { return hasExtent && extent.low.y < extent.high.y; }

  /** Whether a 65536th of a unit doesn't show. */
  bool HasSmallUnits() const {
    return std::max(extent.high.x - extent.low.x, extent.high.y - extent.low.y) >= kLeastFixedSide;
  }
  bool IsWhole(const cgm::NumberSurvey &seen) const { return seen.whole || (seen.nearlyWhole && HasSmallUnits()); }

  Forms FormsFor(const cgm::NumberSurvey &seen) const {
    const bool whole = IsWhole(seen);
    Forms forms;
    if (whole && seen.vdc <= std::numeric_limits<std::int16_t>::max()) {
      forms.vdc = VdcForm::Integer16;
    } else if (whole && seen.vdc <= std::numeric_limits<std::int32_t>::max()) {
      forms.vdc = VdcForm::Integer32;
    } else {
      forms.vdc = HasSmallUnits() && seen.vdc < kFixedLimit ? VdcForm::Fixed32 : VdcForm::Float64;
    }
    forms.floatingReals = seen.real >= kFixedLimit;
    forms.longIntegers = seen.integer > std::numeric_limits<std::int16_t>::max();
    forms.utf8 = seen.beyondLatin1;
    return forms;
  }

  /** Whether the elements and forms of the profile are enough: its numbers are those that a metafile begins with. */
  bool IsProfile(const Forms &forms, const cgm::NumberSurvey &seen, const cgm::StyleWriter &styles) const {
    const bool usualNumbers = forms.vdc == VdcForm::Integer16 && !forms.floatingReals && !forms.longIntegers;
    const bool ascii = !seen.beyondAscii && !seen.beyondLatin1;
    return usualNumbers && ascii && !seen.beyondProfile && !styles.ChangesModes() && !drawing.hasBackground;
  }

  void WriteObjects(Encoder &encoder, cgm::StyleWriter &styles) const {
    encoder.TurnUpsideDown(IsUpsideDown());
    for (const Layer &layer : drawing.layers) {
      for (const Object &object : layer.objects) {
        if (object.style >= drawing.styles.size()) return encoder.Refuse();
        if (cgm::IsBlank(object.shape)) continue;
        styles.Write(object.style, cgm::UsesOf(object.shape, drawing.styles[object.style]));
        cgm::WriteShape(encoder, object.shape);
      }
    }
  }

  void WriteAll(const Forms &forms, const cgm::NumberSurvey &seen, const cgm::StyleWriter &surveyed) {
    Encoder encoder(data, {});
    WriteElement(encoder, {cgm::kDelimiters, cgm::kBeginMetafile}, [&] { encoder.Bytes(kMetafileName); });
    WriteMetafileDescriptor(encoder, forms, surveyed.ChangesModes());
    WriteFonts(encoder, surveyed.Faces());
    WriteCharacterSets(encoder, seen);
    WriteDefaults(encoder, forms);
    encoder.SetForms(forms);
    WriteElement(encoder, {cgm::kDelimiters, cgm::kBeginPicture}, [&] { encoder.Bytes(kPictureName); });
    WritePictureDescriptor(encoder, surveyed.BeginsWith());
    WriteElement(encoder, {cgm::kDelimiters, cgm::kBeginPictureBody});
    if (seen.beyondAscii && !forms.utf8) {
      WriteElement(encoder, {cgm::kAttributes, cgm::kAlternateCharacterSetIndex}, [&] { encoder.Index(kLatin1Index); });
    }
    cgm::StyleWriter styles(encoder, drawing, surveyed.BeginsWith());
    WriteObjects(encoder, styles);
    WriteElement(encoder, {cgm::kDelimiters, cgm::kEndPicture});
    WriteElement(encoder, {cgm::kDelimiters, cgm::kEndMetafile});
  }

  void WriteMetafileDescriptor(Encoder &encoder, const Forms &forms, bool changesModes) const {
    const auto element = [&](unsigned number, auto write) {
      WriteElement(encoder, {cgm::kMetafileDescriptors, number}, write);
    };
    element(cgm::kMetafileVersion, [&] { encoder.Integer(changesModes ? kVersionOfModeChanges : kVersion); });
    element(cgm::kMetafileDescription, [&] { encoder.Bytes(Description(forms.profile)); });
    element(cgm::kMetafileElementList, [&] {
      encoder.Integer(changesModes ? 2 : 1);
      encoder.Index(kShorthand);
      encoder.Index(kDrawingPlusControlSet);
      if (!changesModes) return;
      encoder.Index(kShorthand);
      encoder.Index(kVersion3Set);
    });
    if (forms.vdc >= VdcForm::Fixed32) element(cgm::kVdcType, [&] { encoder.Enumeration(kVdcReal); });
    if (forms.longIntegers) element(cgm::kIntegerPrecision, [&] { encoder.Integer(kLongIntegerBits); });
    Forms described;
    described.longIntegers = forms.longIntegers;
    encoder.SetForms(described);
    if (forms.floatingReals) element(cgm::kRealPrecision, [&] { WriteFloating(encoder); });
  }

  std::string Description(bool ofProfile) const {
    std::string text(ofProfile ? kProfileDescription : "");
    return text.append(kDescription).append(date).append("\"");
  }

  static void WriteFloating(Encoder &encoder) {
    encoder.Enumeration(kFloating);
    encoder.Integer(kBitsOfExponent);
    encoder.Integer(kBitsOfFraction);
  }

  static void WriteFonts(Encoder &encoder, const std::vector<cgm::Face> &faces) {
    if (faces.empty()) return;
    WriteElement(encoder, {cgm::kMetafileDescriptors, cgm::kFontList}, [&] {
      for (const cgm::Face face : faces) encoder.Bytes(cgm::NameOf(face));
    });
  }

  static void WriteCharacterSets(Encoder &encoder, const cgm::NumberSurvey &seen) {
    if (!seen.beyondAscii && !seen.beyondLatin1) return;
    const auto set = [&](unsigned type, std::string_view designation) {
      encoder.Enumeration(type);
      encoder.Bytes(designation);
    };
    WriteElement(encoder, {cgm::kMetafileDescriptors, cgm::kCharacterSetList}, [&] {
      if (seen.beyondLatin1) return set(kCompleteCode, kUtf8);
      set(k94Characters, kAscii);
      set(k96Characters, kLatin1);
    });
    WriteElement(encoder, {cgm::kMetafileDescriptors, cgm::kCharacterCodingAnnouncer},
                 [&] { encoder.Enumeration(kBasic8Bit); });
  }

  /** The precision of coordinates is a matter of the picture, but the extent in front of it has it too. */
  static void WriteDefaults(Encoder &encoder, const Forms &forms) {
    if (forms.vdc != VdcForm::Integer32 && forms.vdc != VdcForm::Float64) return;
    WriteElement(encoder, {cgm::kMetafileDescriptors, cgm::kMetafileDefaultsReplacement}, [&] {
      if (forms.vdc == VdcForm::Integer32) {
        WriteElement(encoder, {cgm::kControls, cgm::kVdcIntegerPrecision}, [&] { encoder.Integer(kLongIntegerBits); });
      } else {
        WriteElement(encoder, {cgm::kControls, cgm::kVdcRealPrecision}, [&] { WriteFloating(encoder); });
      }
    });
  }

  void WritePictureDescriptor(Encoder &encoder, const cgm::Modes &modes) const {
    const auto element = [&](unsigned number, auto write) {
      WriteElement(encoder, {cgm::kPictureDescriptors, number}, write);
    };
    element(cgm::kColorSelectionMode, [&] { encoder.Enumeration(1); });
    for (std::size_t thing = 0; thing < cgm::kMeasuredThings; ++thing) {
      if (modes[thing]) cgm::WriteMode(encoder, thing, *modes[thing]);
    }
    if (hasExtent) {
      encoder.TurnUpsideDown(IsUpsideDown());
      element(cgm::kVdcExtent, [&] {
        encoder.Place(extent.low);
        encoder.Place(extent.high);
      });
    }
    if (drawing.hasBackground) element(cgm::kBackgroundColor, [&] { encoder.DirectColor(drawing.background); });
  }

  const Drawing &drawing;
  std::string_view date;
  std::vector<std::uint8_t> &data;
  bool hasExtent;
  Box extent;
};

}  // namespace

Status WriteCgm(const Drawing &drawing, const Box *bounds, std::string_view date, std::vector<std::uint8_t> &data) {
  data.clear();
  const Status status = MetafileWriter(drawing, bounds, date, data).Write();
  if (status != SUCCESS) data.clear();
  return status;
}

}  // namespace ksvect
