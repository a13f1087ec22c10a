#include "ksvect/cgm/reader.h"

#include "ksvect/cgm/handlers.h"
#include "ksvect/cgm/stream.h"

#include <array>

namespace ksvect {
namespace cgm {
namespace {

class HandlerTable {
 public:
  HandlerTable() {
    for (const auto rows : {DescriptorHandlers(), AttributeHandlers(), PrimitiveHandlers()}) {
      for (const HandlerRow &row : rows) handlers[row.group][row.number] = row.handler;
    }
  }

  /** Null for an element that says nothing here. */
  Handler Of(const Element &element) const {
    return element.group < kElementClasses ? handlers[element.group][element.number] : nullptr;
  }

 private:
  std::array<std::array<Handler, kElementNumbers>, kElementClasses> handlers = {};
};

/** What stands between such delimiters isn't drawn: it shapes something else, or is drawn by reference. */
struct HiddenBlock {
  unsigned begin;
  unsigned end;
};
constexpr HiddenBlock kHiddenBlocks[] = {
    {kBeginProtectionRegion, kEndProtectionRegion},
    {kBeginCompoundTextPath, kEndCompoundTextPath},
    {kBeginTileArray, kEndTileArray},
};

class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> data) : stream(data), picture(data.size()) {}

  Status Read();
  Drawing Take() { return std::move(picture.drawing); }

 private:
  /** False where the element ends the picture, or is malformed. */
  bool Accept(const Element &element);
  bool Delimit(unsigned number);
  bool Handle(const Element &element);
  bool HandleDefaults(std::span<const std::uint8_t> parameters);

  ElementStream stream;
  Picture picture;
  std::optional<Attributes> beforeSegment;
  unsigned hiddenUntil = kNoOperation; /**< the delimiter that ends what isn't drawn */
  bool inPicture = false;
  bool ended = false;
};

Status Reader::Read() {
  Element element;
  const bool begun = stream.Next(element) == ElementStream::Step::Element && element.group == kDelimiters &&
                     element.number == kBeginMetafile;
  if (!begun) return ERROR_FILE_FORMAT;
  while (stream.Next(element) == ElementStream::Step::Element) {
    if (!Accept(element)) break;
  }
  if (picture.outOfMemory) return ERROR_NO_MEMORY;
  return ended || picture.HasObjects() ? SUCCESS : ERROR_FILE_FORMAT;
}

bool Reader::Accept(const Element &element) {
  if (element.group == kDelimiters && !Delimit(element.number)) return false;
  if (hiddenUntil != kNoOperation) return true;
  if (element.group == kMetafileDescriptors && element.number == kMetafileDefaultsReplacement) {
    return HandleDefaults(element.parameters);
  }
  return Handle(element);
}

bool Reader::Delimit(unsigned number) {
  if (number == kEndPicture || number == kEndMetafile) {
    ended = inPicture;
    return false;
  }
  if (hiddenUntil != kNoOperation) {
    if (number == hiddenUntil) hiddenUntil = kNoOperation;
    return true;
  }
  for (const HiddenBlock &block : kHiddenBlocks) {
    if (number == block.begin) hiddenUntil = block.end;
  }
  if (number == kBeginPicture) inPicture = true;
  // A segment of the picture is drawn where it stands, and its attributes end with it; others wait to be copied.
  if (number == kBeginSegment) {
    if (!inPicture) {
      hiddenUntil = kEndSegment;
    } else {
      beforeSegment = picture.attributes;
    }
  }
  if (number == kEndSegment && beforeSegment) {
    picture.attributes = *beforeSegment;
    beforeSegment.reset();
    picture.Restyle();
  }
  return true;
}

bool Reader::Handle(const Element &element) {
  static const HandlerTable table;
  const Handler handler = table.Of(element);
  if (handler == nullptr) return true;
  Parameters parameters(element.parameters, picture.coding);
  if (element.group != kPrimitives) picture.Restyle();
  handler(picture, parameters);
  return parameters.Good() && !picture.outOfMemory;
}

/** Defaults are values like others that are said before the picture. */
bool Reader::HandleDefaults(std::span<const std::uint8_t> parameters) {
  ElementStream defaults(parameters);
  Element element;
  for (;;) {
    switch (defaults.Next(element)) {
      case ElementStream::Step::End:
        return true;
      case ElementStream::Step::Broken:
        return false;
      case ElementStream::Step::Element:
        break;
    }
    const bool isValue = element.group != kDelimiters && element.group != kPrimitives;
    if (isValue && !Handle(element)) return false;
  }
}

}  // namespace
}  // namespace cgm

Status ReadCgm(std::span<const std::uint8_t> data, Drawing &drawing) {
  cgm::Reader reader(data);
  const Status status = reader.Read();
  drawing = status == SUCCESS ? reader.Take() : Drawing{};
  return status;
}

}  // namespace ksvect
