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

  /** Null for an element that has no effect here. */
  Handler Of(const Element &element) const {
    return element.group < kElementClasses ? handlers[element.group][element.number] : nullptr;
  }

 private:
  std::array<std::array<Handler, kElementNumbers>, kElementClasses> handlers = {};
};

/** Elements between these delimiters aren't drawn: they shape others, or are drawn by reference. */
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
  Reader(std::span<const std::uint8_t> data, SkippedElements &skippedOnes)
      : stream(data), picture(data.size()), skipped(skippedOnes) {}

  Status Read();
  Drawing Take() { return picture.Take(); }

 private:
  /** False where the element ends the picture. */
  bool Accept(const Element &element);
  bool Delimit(unsigned number);
  void Handle(const Element &element);
  void HandleDefaults(const Element &replacement);
  void Skip(const Element &element, SkipReason reason);

  ElementStream stream;
  Picture picture;
  SkippedElements &skipped;
  std::optional<Attributes> beforeSegment;
  unsigned hiddenUntil = kNoOperation; /**< the delimiter that ends a hidden block */
  bool inPicture = false;
  bool ended = false;
};

Status Reader::Read() {
  Element element;
  const bool begun = stream.Next(element) == ElementStream::Step::Element && element.group == kDelimiters &&
                     element.number == kBeginMetafile;
  if (!begun) return ERROR_FILE_FORMAT;
  for (;;) {
    const ElementStream::Step step = stream.Next(element);
    if (step == ElementStream::Step::Broken) Skip(element, SkipReason::TooShort);
    if (step != ElementStream::Step::Element || !Accept(element)) break;
  }
  return ended || picture.HasObjects() ? SUCCESS : ERROR_FILE_FORMAT;
}

bool Reader::Accept(const Element &element) {
  if (element.group == kDelimiters && !Delimit(element.number)) return false;
  if (hiddenUntil != kNoOperation) return true;
  if (element.group == kMetafileDescriptors && element.number == kMetafileDefaultsReplacement) {
    HandleDefaults(element);
  } else {
    Handle(element);
  }
  return true;
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
  // A segment within the picture is drawn in its place, and its attributes end with it; others only serve as copies.
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

void Reader::Handle(const Element &element) {
  static const HandlerTable table;
  const Handler handler = table.Of(element);
  if (handler == nullptr) return;
  Parameters parameters(element.parameters, picture.coding);
  if (element.group != kPrimitives) picture.Restyle();
  handler(picture, parameters);
  if (!parameters.Good()) Skip(element, parameters.Failure());
}

/** Defaults are values like those of other elements in front of the picture. */
void Reader::HandleDefaults(const Element &replacement) {
  ElementStream defaults(replacement.parameters);
  Element element;
  ElementStream::Step step = defaults.Next(element);
  for (; step == ElementStream::Step::Element; step = defaults.Next(element)) {
    element.offset = replacement.offset;
    if (element.group != kDelimiters && element.group != kPrimitives) Handle(element);
  }
  element.offset = replacement.offset;
  if (step == ElementStream::Step::Broken) Skip(element, SkipReason::TooShort);
}

void Reader::Skip(const Element &element, SkipReason reason) {
  // What is appended to a skipped text must not be appended to the text before it.
  if (element.group == kPrimitives) picture.CloseText();
  ++skipped.count;
  if (skipped.elements.size() >= kMostSkippedKept) return;
  skipped.elements.push_back({element.group, element.number, element.offset, reason});
}

}  // namespace
}  // namespace cgm

Status ReadCgm(std::span<const std::uint8_t> data, Drawing &drawing, cgm::SkippedElements *skipped) {
  cgm::SkippedElements found;
  cgm::Reader reader(data, skipped != nullptr ? *skipped : found);
  const Status status = reader.Read();
  drawing = status == SUCCESS ? reader.Take() : Drawing{};
  return status;
}

}  // namespace ksvect
