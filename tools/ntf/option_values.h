// What the options on the command line accept. Each check names the value and what is allowed.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace ntf {

/** A whole number in a range. */
CLI::Validator Between(int least, int most);

/** The number of a segment of a file, which has at most 999 of a kind. */
CLI::Validator SegmentNumber();

/** One of several words. */
CLI::Validator OneOf(std::initializer_list<const char *> words);

/** A text for a header field, of up to `characters` characters that the format has. */
CLI::Validator HeaderText(std::size_t characters);

/** ROW,COLUMN as a location field holds them. */
CLI::Validator Location();

/** LEFT,TOP,RIGHT,BOTTOM with an area. */
CLI::Validator Box();

/** RRGGBB in hexadecimal digits. */
CLI::Validator Color();

/** The name of a picture that can be written. */
CLI::Validator PictureName();

/** The name of a TIFF file. */
CLI::Validator TiffName();

/** Numbers of bands from 0, such as "3,2,1". */
CLI::Validator BandList();

/** The numbers of a list such as "3,-5"; none if it has another form. */
std::optional<std::vector<int>> NumbersOf(const std::string &list);

/** The same; none if there is another count of numbers. */
std::optional<std::vector<int>> NumbersOf(const std::string &list, std::size_t count);

}  // namespace ntf
