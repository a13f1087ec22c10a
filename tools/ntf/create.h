// ntf create and ntf append: files from pictures, drawings and texts.
#pragma once

#include "kskernel.h"
#include "problem.h"
#include "rewriting.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ntf {

enum class ItemKind : std::uint8_t { Image, Graphic, Text };

/** The quality of a picture's JPEG stream. */
constexpr int kWorstQuality = 1;
constexpr int kBestQuality = 100;
constexpr int kDefaultQuality = 97;

/** One segment to append. */
struct Item {
  ItemKind kind;
  std::string file;
  int quality = kDefaultQuality; /* of an image */
  std::optional<std::string> location{};
  std::optional<std::string> level{};
  std::optional<std::string> attachment{};
  std::optional<KsRect> box{}; /* of a drawing; by default the bounds of its objects */
};

struct CreateOptions {
  std::optional<std::string> input; /* the file to append to */
  std::string output;
  bool force = false;             /* overwrites a file */
  std::vector<FieldValue> fields; /* of the file header */
  std::vector<Item> items;
};

Outcome Create(const CreateOptions &options);

}  // namespace ntf
