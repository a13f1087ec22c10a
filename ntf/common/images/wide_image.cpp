#include "images/wide_image.h"

namespace ksntfx {

ImageData DataOfImage(WideFile &file, std::uint32_t index, bool fillsMissing) {
  const SegmentSpan &span = file.Spans().Of(SegmentKind::Image)[index];
  return {file.Get()->fileHandle, FindImage(file.Get(), index), span.data, span.dataBytes, file.Size(), fillsMissing};
}

}  // namespace ksntfx
