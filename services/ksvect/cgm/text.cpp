#include "ksvect/cgm/text.h"

#include <algorithm>

namespace ksvect::cgm {
namespace {

constexpr char kEscape = '\x1B';

/** The first of these that a name contains says the family: so SANS comes before SERIF, and ROMAN last. */
struct FamilyWord {
  std::string_view word;
  Family family;
};
constexpr FamilyWord kFamilyWords[] = {
    {"COURIER", Family::Fixed},  {"MONO", Family::Fixed},  {"FIXED", Family::Fixed},  {"TYPEWRITER", Family::Fixed},
    {"HELVETICA", Family::Sans}, {"ARIAL", Family::Sans},  {"SANS", Family::Sans},    {"GOTHIC", Family::Sans},
    {"SIMPLEX", Family::Sans},   {"SWISS", Family::Sans},  {"UNIVERS", Family::Sans}, {"TIMES", Family::Serif},
    {"SERIF", Family::Serif},    {"ROMAN", Family::Serif},
};

/** Faces of the Hershey fonts that no family has: the nearest is one of the serif font's. */
struct HersheyFace {
  std::string_view word;
  bool bold;
  bool oblique;
  Alphabet alphabet;
};
constexpr HersheyFace kHersheyFaces[] = {
    {"GREEK", false, false, Alphabet::Greek},
    {"CYRILLIC", false, false, Alphabet::Cyrillic},
    {"SCRIPT", false, true, Alphabet::Latin},
    {"GOTHIC", true, false, Alphabet::Latin},
};

/** Letters in the order of an alphabet from the code of 'A' and that of 'a' on; a sigma has one form only. */
constexpr std::u16string_view kGreekCapitals =
    u"\u0391\u0392\u0393\u0394\u0395\u0396\u0397\u0398\u0399\u039A\u039B\u039C"
    u"\u039D\u039E\u039F\u03A0\u03A1\u03A3\u03A4\u03A5\u03A6\u03A7\u03A8\u03A9";
constexpr char16_t kGreekSmall = u'\u03B1' - u'\u0391';
constexpr char16_t kCyrillicCapital = u'\u0410';
constexpr char16_t kCyrillicSmall = u'\u0430';
/** More letters than those of ASCII: the last ones have the codes behind Z and z. */
constexpr int kCyrillicLetters = 32;

/** The letter at a code, or 0 where the code is no letter's. */
char16_t LetterOf(unsigned char code, Alphabet alphabet) {
  const bool small = code >= 'a';
  const int place = code - (small ? 'a' : 'A');
  if (place < 0 || code > '~') return 0;
  if (alphabet == Alphabet::Cyrillic) {
    if (place >= kCyrillicLetters) return 0;
    return static_cast<char16_t>((small ? kCyrillicSmall : kCyrillicCapital) + place);
  }
  if (static_cast<std::size_t>(place) >= kGreekCapitals.size()) return 0;
  return static_cast<char16_t>(kGreekCapitals[static_cast<std::size_t>(place)] + (small ? kGreekSmall : 0));
}

/** Number of bytes of the UTF-8 character at the front, or 0 where there is none; overlong forms are none. */
std::size_t Utf8Length(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
  if (!std::ranges::all_of(text.substr(1, length - 1), isContinuation)) return 0;
  const auto second = static_cast<unsigned char>(text[1]);
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool surrogate = lead == 0xED && second >= 0xA0;
  const bool beyond = lead == 0xF4 && second >= 0x90;
  return overlong || surrogate || beyond ? 0 : length;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = Utf8Length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

/** Bytes of the escape sequence at the front: some bytes between, and a last one. */
std::size_t EscapeLength(std::string_view text) {
  std::size_t length = 1;
  while (length < text.size() && text[length] >= 0x20 && text[length] <= 0x2F) ++length;
  return std::min(length + 1, text.size());
}

bool IsControl(unsigned char c) {
  return c < 0x20 || c == 0x7F;
}

/** Characters 0x80 to 0x9F are control characters too. */
void AppendLatin1(std::string &out, unsigned char c) {
  if (c < 0x80) out.push_back(static_cast<char>(c));
  if (c < 0xA0) return;
  out.push_back(static_cast<char>(0xC0 | c >> 6));
  out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
}

/** A run of text without escape sequences. */
void AppendText(std::string &out, std::string_view text, bool utf8) {
  const bool kept = utf8 && IsUtf8(text);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (IsControl(c)) continue;
    if (!kept) {
      AppendLatin1(out, c);
    } else if (c == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      ++i;  // a control character of two bytes
    } else {
      out.push_back(text[i]);
    }
  }
}

}  // namespace

Font FontOfName(std::string_view name) {
  std::string upper(name);
  std::ranges::transform(upper, upper.begin(), [](char c) { return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c; });
  const auto has = [&upper](std::string_view word) { return upper.find(word) != std::string::npos; };
  Font font;
  const auto *family = std::ranges::find_if(kFamilyWords, [&](const FamilyWord &entry) { return has(entry.word); });
  if (family != std::end(kFamilyWords)) font.family = family->family;
  font.bold = has("BOLD");
  font.oblique = has("ITALIC") || has("OBLIQUE");
  if (!has("HERSHEY")) return font;
  for (const HersheyFace &face : kHersheyFaces) {
    if (has(face.word)) return {Family::Serif, face.bold, face.oblique, face.alphabet};
  }
  return font;
}

std::string InAlphabet(std::string_view text, Alphabet alphabet) {
  std::string out;
  for (const char character : text) {
    const char16_t letter =
        alphabet == Alphabet::Latin ? u'\0' : LetterOf(static_cast<unsigned char>(character), alphabet);
    if (letter == 0) {
      out.push_back(character);
    } else {
      out.push_back(static_cast<char>(0xC0 | letter >> 6));
      out.push_back(static_cast<char>(0x80 | (letter & 0x3F)));
    }
  }
  return out;
}

bool DesignatesUtf8(std::string_view designation) {
  if (!designation.empty() && designation.front() == kEscape) designation.remove_prefix(1);
  constexpr std::string_view kDesignations[] = {"%G", "%I", "/G", "/H", "/I", "%/G", "%/H", "%/I"};
  return std::ranges::find(kDesignations, designation) != std::end(kDesignations);
}

std::string ToUtf8(std::string_view text, bool utf8) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::size_t escape = std::min(text.find(kEscape), text.size());
    AppendText(out, text.substr(0, escape), utf8);
    text.remove_prefix(escape);
    if (text.empty()) break;
    const std::size_t length = EscapeLength(text);
    const std::string_view sequence = text.substr(0, length);
    if (sequence.starts_with("\x1B%")) utf8 = DesignatesUtf8(sequence);
    text.remove_prefix(length);
  }
  return out;
}

}  // namespace ksvect::cgm
