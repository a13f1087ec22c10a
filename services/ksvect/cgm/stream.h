// The elements of a metafile, one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ksvect::cgm {

struct Element {
  unsigned group = 0; /**< an ElementClass, or an unknown one */
  unsigned number = 0;
  std::size_t offset = 0;                   /**< of its header in the data */
  std::span<const std::uint8_t> parameters; /**< of all partitions together; valid until the next element */
};

/** Walks over elements: their short and long headers, partitions and padding to words. */
class ElementStream {
 public:
  explicit ElementStream(std::span<const std::uint8_t> data) : whole(data), rest(data) {}

  enum class Step { Element, End, Broken };
  /** Broken where an element, whose class and number are set, is longer than the data. */
  Step Next(Element &element);

 private:
  bool Word(unsigned &word);
  bool Partition(std::size_t length, std::span<const std::uint8_t> &part);
  bool LongParameters(std::span<const std::uint8_t> &parameters);

  std::span<const std::uint8_t> whole;
  std::span<const std::uint8_t> rest;
  std::vector<std::uint8_t> joined; /**< the parameters of an element of several partitions */
};

}  // namespace ksvect::cgm
