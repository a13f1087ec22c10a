// Files of version 02.00, each field written at its width, without the library under test. Fields have the names of
// later versions where those have the same ones.
#pragma once

#include "files.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/** Names and bytes of fields in file order. */
using FieldList = std::vector<std::pair<std::string, std::string>>;

std::string Digits(std::size_t value, std::size_t width);
std::string Joined(const FieldList &fields);

/** The fields with other bytes in some of them. */
FieldList With(FieldList fields, const FieldList &others);

/** Subheaders, with a downgrade event in those of images, labels and overflow segments. */
FieldList Image20(); /**< 2 rows of 3 pixels */
FieldList Symbol20(char kind, int level);
FieldList Label20();
FieldList Text20();
FieldList Overflow20();
FieldList Plain20();

struct Segment20 {
  std::uint32_t kind; /**< NitfSegmentKind */
  FieldList fields;
  std::string data;
};

FieldList Header20(const std::vector<Segment20> &segments);
/** Segments come kind by kind. */
Bytes File20(const std::vector<Segment20> &segments);
