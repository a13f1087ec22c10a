#include "ksvect/paint/fonts.h"

#include <array>
#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_TRUETYPE_TABLES_H

namespace ksvect {
namespace {

/** Lines that replace one curve of an outline. */
constexpr int kLinesOfCurve = 8;
/** How far slanted letters lean where the font has none of its own. */
constexpr double kSlant = 0.2;
constexpr double kUsualCap = 0.7;

/** The families asked for, metric-compatible with Times, Helvetica and Courier, and what the system has instead. */
struct FamilyNames {
  const char *wanted;
  const char *otherwise;
};
constexpr FamilyNames kFamilies[] = {
    {"Liberation Serif", "serif"}, {"Liberation Sans", "sans-serif"}, {"Liberation Mono", "monospace"}};

/** Collects the contours of an outline. */
class OutlineReader {
 public:
  OutlineReader(Path &target, double unitsOfEm, double slant) : path(target), scale(1 / unitsOfEm), lean(slant) {}

  void Read(FT_Outline &outline) {
    FT_Outline_Funcs functions = {};
    functions.move_to = [](const FT_Vector *to, void *self) { return Self(self).Move(*to); };
    functions.line_to = [](const FT_Vector *to, void *self) { return Self(self).Line(*to); };
    functions.conic_to = [](const FT_Vector *control, const FT_Vector *to, void *self) {
      return Self(self).Conic(*control, *to);
    };
    functions.cubic_to = [](const FT_Vector *first, const FT_Vector *second, const FT_Vector *to, void *self) {
      return Self(self).Cubic(*first, *second, *to);
    };
    FT_Outline_Decompose(&outline, &functions, this);
  }

 private:
  static OutlineReader &Self(void *self) { return *static_cast<OutlineReader *>(self); }

  Point PlaceOf(const FT_Vector &vector) const {
    const double y = static_cast<double>(vector.y) * scale;
    return {static_cast<double>(vector.x) * scale + y * lean, y};
  }

  int Move(const FT_Vector &to) {
    path.Begin(true);
    return Line(to);
  }

  int Line(const FT_Vector &to) {
    path.Add(PlaceOf(to));
    return 0;
  }

  int Conic(const FT_Vector &control, const FT_Vector &to) {
    const Point a = path.points.back();
    const Point b = PlaceOf(control);
    const Point c = PlaceOf(to);
    for (int i = 1; i <= kLinesOfCurve; ++i) {
      const double t = double(i) / kLinesOfCurve;
      path.Add(a * ((1 - t) * (1 - t)) + b * (2 * t * (1 - t)) + c * (t * t));
    }
    return 0;
  }

  int Cubic(const FT_Vector &first, const FT_Vector &second, const FT_Vector &to) {
    const Point a = path.points.back();
    const Point b = PlaceOf(first);
    const Point c = PlaceOf(second);
    const Point d = PlaceOf(to);
    for (int i = 1; i <= kLinesOfCurve; ++i) {
      const double t = double(i) / kLinesOfCurve;
      const double s = 1 - t;
      path.Add(a * (s * s * s) + b * (3 * s * s * t) + c * (3 * s * t * t) + d * (t * t * t));
    }
    return 0;
  }

  Path &path;
  double scale;
  double lean;
};

/** A face of a font file. Its glyphs are read as they are asked for, and kept. */
class FileFont final : public Font {
 public:
  FileFont(FT_Face ofFace, bool oblique)
      : face(ofFace),
        units(ofFace->units_per_EM),
        slant(oblique && (face->style_flags & FT_STYLE_FLAG_ITALIC) == 0 ? kSlant : 0) {
    top = face->ascender / units;
    bottom = face->descender / units;
    const auto *const os2 = static_cast<const TT_OS2 *>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    if (os2 != nullptr && os2->version >= 2) cap = os2->sCapHeight / units;
    if (!(cap > 0)) cap = FileFont::HeightOf(U'H');
    if (!(cap > 0)) cap = kUsualCap;
  }
  ~FileFont() override { FT_Done_Face(face); }

  const Glyph &GlyphOf(char32_t character) override {
    const std::scoped_lock lock(guard);
    const auto [place, isNew] = glyphs.try_emplace(character);
    if (isNew) Read(character, place->second);
    return place->second;
  }

 private:
  void Read(char32_t character, Glyph &glyph) {
    // Unscaled and without hints, an outline is the same on all machines.
    if (FT_Load_Char(face, character, FT_LOAD_NO_SCALE) != 0) return;
    glyph.advance = static_cast<double>(face->glyph->metrics.horiAdvance) / units;
    if (face->glyph->format == FT_GLYPH_FORMAT_OUTLINE) {
      OutlineReader(glyph.outline, units, slant).Read(face->glyph->outline);
    }
  }

  double HeightOf(char32_t character) {
    double height = 0;
    for (const Point point : FileFont::GlyphOf(character).outline.points) height = std::max(height, point.y);
    return height;
  }

  FT_Face face;
  double units;
  double slant;
  std::mutex guard;
  std::unordered_map<char32_t, Glyph> glyphs;  // whose entries don't move
};

/** The fonts of the system, opened when they are first asked for. */
class FontShelf {
 public:
  FontShelf() {
    if (FT_Init_FreeType(&library) != 0) library = nullptr;
    configuration = FcInitLoadConfigAndFonts();
  }
  FontShelf(const FontShelf &) = delete;
  FontShelf &operator=(const FontShelf &) = delete;
  ~FontShelf() {
    for (Entry &entry : entries) entry.font.reset();
    if (library != nullptr) FT_Done_FreeType(library);
    if (configuration != nullptr) FcConfigDestroy(configuration);
  }

  Font *Find(Family family, bool bold, bool oblique) {
    const std::scoped_lock lock(guard);
    Entry &entry =
        entries[static_cast<std::size_t>(family) % std::size(kFamilies) * 4 + (bold ? 2 : 0) + (oblique ? 1 : 0)];
    if (!entry.tried) {
      entry.tried = true;
      entry.font = Open(kFamilies[static_cast<std::size_t>(family) % std::size(kFamilies)], bold, oblique);
    }
    return entry.font.get();
  }

 private:
  struct Entry {
    bool tried = false;
    std::unique_ptr<Font> font;
  };

  std::unique_ptr<Font> Open(const FamilyNames &names, bool bold, bool oblique) const {
    int index = 0;
    const std::string file = FileOf(names, bold, oblique, index);
    FT_Face face = nullptr;
    if (library == nullptr || file.empty() || FT_New_Face(library, file.c_str(), index, &face) != 0) return nullptr;
    if (FT_IS_SCALABLE(face) && face->units_per_EM != 0) return std::make_unique<FileFont>(face, oblique);
    FT_Done_Face(face);
    return nullptr;
  }

  std::string FileOf(const FamilyNames &names, bool bold, bool oblique, int &index) const {
    FcPattern *const wanted = FcPatternCreate();
    for (const char *const name : {names.wanted, names.otherwise}) {
      FcPatternAddString(wanted, FC_FAMILY, reinterpret_cast<const FcChar8 *>(name));
    }
    FcPatternAddInteger(wanted, FC_WEIGHT, bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
    FcPatternAddInteger(wanted, FC_SLANT, oblique ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(wanted, FC_SCALABLE, FcTrue);
    FcConfigSubstitute(configuration, wanted, FcMatchPattern);
    FcDefaultSubstitute(wanted);
    FcResult result = FcResultNoMatch;
    FcPattern *const found = FcFontMatch(configuration, wanted, &result);
    FcPatternDestroy(wanted);
    if (found == nullptr) return {};
    FcChar8 *file = nullptr;
    const bool known = FcPatternGetString(found, FC_FILE, 0, &file) == FcResultMatch;
    std::string name = known ? reinterpret_cast<const char *>(file) : "";
    FcPatternGetInteger(found, FC_INDEX, 0, &index);
    FcPatternDestroy(found);
    return name;
  }

  FT_Library library = nullptr;
  FcConfig *configuration = nullptr;
  std::mutex guard;
  std::array<Entry, std::size(kFamilies) * 4> entries;
};

}  // namespace

Font *FindFont(Family family, bool bold, bool oblique) {
  static FontShelf shelf;
  return shelf.Find(family, bold, oblique);
}

}  // namespace ksvect
