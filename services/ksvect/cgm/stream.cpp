#include "ksvect/cgm/stream.h"

#include "ksvect/cgm/elements.h"

namespace ksvect::cgm {

ElementStream::Step ElementStream::Next(Element &element) {
  // A single byte is padding behind the last element.
  if (rest.size() < 2) return Step::End;
  element.offset = whole.size() - rest.size();
  unsigned header = 0;
  Word(header);
  element.group = header >> 12;
  element.number = header >> 5 & 0x7F;
  const unsigned length = header & 0x1F;
  const bool complete =
      length == kLongForm ? LongParameters(element.parameters) : Partition(length, element.parameters);
  return complete ? Step::Element : Step::Broken;
}

bool ElementStream::Word(unsigned &word) {
  if (rest.size() < 2) return false;
  word = static_cast<unsigned>(rest[0] << 8 | rest[1]);
  rest = rest.subspan(2);
  return true;
}

bool ElementStream::Partition(std::size_t length, std::span<const std::uint8_t> &part) {
  if (rest.size() < length) return false;
  part = rest.first(length);
  const bool padded = length % 2 != 0 && rest.size() > length;
  rest = rest.subspan(length + (padded ? 1 : 0));
  return true;
}

bool ElementStream::LongParameters(std::span<const std::uint8_t> &parameters) {
  unsigned word = 0;
  if (!Word(word) || !Partition(word & ~kMoreFollows, parameters)) return false;
  if ((word & kMoreFollows) == 0) return true;
  joined.assign(parameters.begin(), parameters.end());
  while ((word & kMoreFollows) != 0) {
    if (!Word(word) || !Partition(word & ~kMoreFollows, parameters)) return false;
    joined.insert(joined.end(), parameters.begin(), parameters.end());
  }
  parameters = joined;
  return true;
}

}  // namespace ksvect::cgm
