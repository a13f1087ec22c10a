#include "printable.h"

#include <cstdio>

namespace ntf {
namespace {

bool IsFill(char character) {
  return character == ' ' || character == '\0';
}

bool IsContinuation(unsigned char byte) {
  return byte >= 0x80 && byte < 0xC0;
}

/** Control characters of ASCII, of Latin-1, and of Latin-1 in UTF-8. */
bool IsControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (first < 0x20 || first == 0x7F || (first >= 0x80 && first < 0xA0)) return true;
  return first == 0xC2 && character.size() == 2 && static_cast<unsigned char>(character[1]) < 0xA0;
}

}  // namespace

std::size_t CharacterBytes(std::string_view text) {
  std::size_t bytes = 1;
  if (static_cast<unsigned char>(text[0]) < 0xC2) return bytes;
  while (bytes < text.size() && bytes < 4 && IsContinuation(static_cast<unsigned char>(text[bytes]))) ++bytes;
  return bytes;
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsFill(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsFill(text.back())) text.remove_suffix(1);
  return text;
}

std::string Latin1ToUtf8(std::string_view text) {
  std::string utf8;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80) {
      utf8 += character;
    } else {
      utf8 += static_cast<char>(0xC0 | byte >> 6);
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

std::optional<std::string> Utf8ToLatin1(std::string_view text) {
  std::string latin1;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x80) {
      latin1 += text[at];
      continue;
    }
    // Characters up to U+00FF have two bytes, of which the first is C2 or C3.
    const bool isLatin1 = byte == 0xC2 || byte == 0xC3;
    if (!isLatin1 || at + 1 == text.size() || !IsContinuation(static_cast<unsigned char>(text[at + 1]))) return {};
    latin1 += static_cast<char>((byte & 3U) << 6 | (static_cast<unsigned char>(text[++at]) & 0x3FU));
  }
  return latin1;
}

bool IsHeaderCharacter(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return (code >= 0x20 && code < 0x7F) || code >= 0xA0;
}

std::optional<std::string> StrangeCharacter(std::string_view text) {
  while (!text.empty()) {
    const std::string_view character = text.substr(0, CharacterBytes(text));
    const std::optional<std::string> latin1 = Utf8ToLatin1(character);
    if (!latin1 && character.size() > 1) return "'" + std::string(character) + "'";
    if (!latin1 || !IsHeaderCharacter(latin1->front())) {
      char words[32];
      std::snprintf(words, sizeof words, "the byte 0x%02X", static_cast<unsigned>(character.back() & 0xFF));
      return words;
    }
    text.remove_prefix(character.size());
  }
  return {};
}

bool HasControls(std::string_view text) {
  constexpr std::string_view kLayout = "\n\r\t";
  while (!text.empty()) {
    const std::string_view character = text.substr(0, CharacterBytes(text));
    if (IsControl(character) && kLayout.find(character[0]) == std::string_view::npos) return true;
    text.remove_prefix(character.size());
  }
  return false;
}

std::string WithoutControls(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const std::string_view character = text.substr(0, CharacterBytes(text));
    shown += IsControl(character) ? "?" : character;
    text.remove_prefix(character.size());
  }
  return shown;
}

std::string Printable(std::string_view text) {
  return WithoutControls(Latin1ToUtf8(Trim(text)));
}

}  // namespace ntf
