// Headers written down field by field, in a line a few.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <map>
#include <sstream>
#include <string>
#include <vector>

/** A field, or what stands between fields, with its bytes. */
struct Field {
  std::string name;
  std::string bytes;
  char fill = '\0'; /**< what a text that is shorter is filled with; 0 for bytes that aren't written from a text */
};
using Fields = std::vector<Field>;

/** A text of a field's own: its name, or the end of it, and dots; or a letter all over. */
inline std::string OwnText(const std::string &name, std::size_t width, char letter = '\0') {
  if (letter != '\0') return std::string(width, letter);
  std::string text = name.size() > width ? name.substr(name.size() - width) : name;
  text.resize(width, '.');
  return text;
}

/**
 * Fields from a list of words: NAME:10 for a text of its own of ten bytes, NAME=ABC for these, in which a tilde is a
 * blank, and NAME alone for the bytes in `given`. A word may end in |0 or |_ for its fill.
 */
inline Fields ListOf(const std::string &words, const std::map<std::string, std::string> &given = {}, char letter = 0) {
  Fields fields;
  std::istringstream list(words);
  for (std::string word; list >> word;) {
    Field field;
    if (const auto bar = word.find('|'); bar != std::string::npos) {
      field.fill = word[bar + 1] == '_' ? ' ' : '0';
      word.resize(bar);
    }
    const auto mark = word.find_first_of(":=");
    field.name = word.substr(0, mark);
    if (mark == std::string::npos) {
      field.bytes = given.at(word);
    } else if (word[mark] == ':') {
      field.bytes = OwnText(field.name, std::stoul(word.substr(mark + 1)), letter);
    } else {
      field.bytes = word.substr(mark + 1);
      std::replace(field.bytes.begin(), field.bytes.end(), '~', ' ');
    }
    fields.push_back(field);
  }
  return fields;
}

inline Fields operator+(Fields fields, const Fields &more) {
  fields.insert(fields.end(), more.begin(), more.end());
  return fields;
}

inline std::string Joined(const Fields &fields) {
  std::string bytes;
  for (const Field &field : fields) bytes += field.bytes;
  return bytes;
}
