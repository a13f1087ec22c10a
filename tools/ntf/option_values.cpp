#include "option_values.h"

#include "export.h"
#include "picture.h"
#include "printable.h"

#include <algorithm>
#include <stdexcept>

namespace ntf {
namespace {

std::string Quoted(const std::string &value) {
  return "'" + WithoutControls(value) + "'";
}

/** A check without a description, which the help would repeat. */
template <class Check>
CLI::Validator Checked(const Check &check) {
  return {[check](const std::string &value) { return check(value); }, ""};
}

/** A number of a location has five characters, of which a minus sign is one. */
bool FitsLocation(int number) {
  return number >= -9999 && number <= 99999;
}

}  // namespace

CLI::Validator Between(int least, int most) {
  return Checked([=](const std::string &value) {
    const auto number = NumbersOf(value, 1);
    if (number && (*number)[0] >= least && (*number)[0] <= most) return std::string();
    return Quoted(value) + " is not a number from " + std::to_string(least) + " to " + std::to_string(most);
  });
}

CLI::Validator SegmentNumber() {
  return Between(0, 998);
}

CLI::Validator OneOf(std::initializer_list<const char *> words) {
  const std::vector<std::string> allowed(words.begin(), words.end());
  return Checked([=](const std::string &value) {
    if (std::find(allowed.begin(), allowed.end(), value) != allowed.end()) return std::string();
    std::string list;
    for (const std::string &word : allowed) list += (list.empty() ? "" : word == allowed.back() ? " or " : ", ") + word;
    return Quoted(value) + " is not " + list;
  });
}

CLI::Validator HeaderText(std::size_t characters) {
  return Checked([=](const std::string &value) {
    const std::optional<std::string> strange = StrangeCharacter(value);
    if (strange) return Quoted(value) + " has " + *strange + ", which header fields can't hold";
    if (Utf8ToLatin1(value)->size() <= characters) return std::string();
    return Quoted(value) + " has more than " + std::to_string(characters) + " characters";
  });
}

CLI::Validator Location() {
  return Checked([](const std::string &value) {
    const auto numbers = NumbersOf(value, 2);
    const bool fits = numbers && std::all_of(numbers->begin(), numbers->end(), FitsLocation);
    return fits ? std::string() : Quoted(value) + " is not ROW,COLUMN, from -9999 to 99999 each";
  });
}

CLI::Validator Box() {
  return Checked([](const std::string &value) {
    const auto box = NumbersOf(value, 4);
    const bool isBox = box && (*box)[0] < (*box)[2] && (*box)[1] < (*box)[3];
    return isBox ? std::string() : Quoted(value) + " is not LEFT,TOP,RIGHT,BOTTOM, with LEFT < RIGHT and TOP < BOTTOM";
  });
}

CLI::Validator Color() {
  return Checked([](const std::string &value) {
    const bool isColor = value.size() == 6 && value.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    return isColor ? std::string() : Quoted(value) + " is not RRGGBB, in hexadecimal digits";
  });
}

CLI::Validator PictureName() {
  return Checked([](const std::string &name) {
    return IsPictureName(name) ? std::string() : Quoted(name) + " doesn't end in .png or .ppm, and is not -";
  });
}

CLI::Validator TiffName() {
  return Checked([](const std::string &name) {
    return IsTiffName(name) ? std::string() : Quoted(name) + " doesn't end in .tif or .tiff";
  });
}

CLI::Validator BandList() {
  return Checked([](const std::string &value) {
    const auto bands = NumbersOf(value);
    const bool areBands = bands && std::all_of(bands->begin(), bands->end(), [](int band) { return band >= 0; });
    return areBands ? std::string() : Quoted(value) + " is not a list of band numbers, such as 3,2,1";
  });
}

std::optional<std::vector<int>> NumbersOf(const std::string &list) {
  std::vector<int> numbers;
  for (std::size_t at = 0; at <= list.size();) {
    const std::size_t comma = std::min(list.find(',', at), list.size());
    const std::string text = list.substr(at, comma - at);
    std::size_t used = 0;
    try {
      numbers.push_back(std::stoi(text, &used));
    } catch (const std::logic_error &) {
      return std::nullopt;
    }
    const bool isPlain = text[0] == '-' || (text[0] >= '0' && text[0] <= '9');
    if (used != text.size() || !isPlain) return std::nullopt;
    at = comma + 1;
  }
  return numbers;
}

std::optional<std::vector<int>> NumbersOf(const std::string &list, std::size_t count) {
  auto numbers = NumbersOf(list);
  return numbers && numbers->size() == count ? numbers : std::nullopt;
}

}  // namespace ntf
