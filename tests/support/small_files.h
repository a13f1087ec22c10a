// Small sound files, one of every kind that has a road of its own through the library.
#pragma once

#include "nitf_builder.h"

struct SmallFile {
  std::string name;
  Bytes bytes;
  std::size_t streamBytes = 0; /**< of a file that differs from others in its image's data only: the bytes of those */
};

std::vector<SmallFile> SmallFiles();

/** An image of 6 x 4 pixels in blocks of 3 x 2. */
ImageSpec SmallImage(char mode, std::size_t bands, const char *compression);

/** The same with a mask table, a block that isn't recorded and a pad value. */
ImageSpec SmallMaskedImage(char mode, std::size_t bands);

/** A drawing of 60 x 60 units with a polygon, a text and an ellipse. */
Bytes SmallMetafile();
