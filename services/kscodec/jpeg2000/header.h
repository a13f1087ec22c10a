// What the boxes and the first marker segment of a JPEG 2000 stream say about its picture.
#pragma once

#include "kscodec/source.h"

#include <cstdint>
#include <vector>

namespace kscodec::jpeg2000 {

/** A component: its samples are at the multiples of the distances on the reference grid. */
struct Component {
  std::uint32_t bits = 0;
  bool isSigned = false;
  std::uint32_t across = 1; /**< distance of samples; 0 in damaged headers */
  std::uint32_t down = 1;
};

/** Along one axis of the reference grid: the image, and the tiles that it is cut into. */
struct Axis {
  std::uint64_t start = 0; /**< of the image */
  std::uint64_t end = 0;
  std::uint64_t tileStart = 0; /**< of the first tile */
  std::uint64_t tileStep = 0;
  std::uint64_t tiles = 0;
};

/** The SIZ marker segment (ISO/IEC 15444-1, A.5.1). */
struct Size {
  Axis across;
  Axis down;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t tileWidth = 0; /**< cut to the image */
  std::uint32_t tileHeight = 0;
  std::uint64_t tiles = 0;
  std::uint32_t components = 0;
  std::uint32_t bits = 0; /**< of the first component */
};

/** What the boxes of a JP2 file say of its colours (ISO/IEC 15444-1, I.5.3). */
struct Colors {
  std::uint32_t paletteEntries = 0;
  std::uint32_t paletteColumns = 0; /**< 0 without a palette */
  std::uint32_t paletteBits = 0;    /**< of the first column */
  bool hasChannelDefinition = false;
  bool isSycc = false;
  bool hasProfile = false;
  std::uint32_t space = 0; /**< the enumerated colour space, 0 without one */
};

/** A JP2 file whose image header box contradicts its code stream counts as the bare stream. */
struct Header {
  bool isJp2 = false;
  std::uint64_t codeStreamAt = 0; /**< of SOC */
  std::uint64_t codeStreamBytes = 0;
  std::uint64_t boxesAt = 0; /**< the contents of the JP2 header box */
  std::uint64_t boxesBytes = 0;
  Size size;
  Colors colors;
};

bool IsJp2(Stream stream);
bool IsCodeStream(Stream stream);

/** SUCCESS, ERROR_FILE_FORMAT or ERROR_FILE_READ. */
Status ReadHeader(const ByteSource &source, Header *header);

/** The components of a header that ReadHeader accepted; ERROR_FILE_FORMAT for a distance of 0. */
Status ReadComponents(const ByteSource &source, const Header &header, std::vector<Component> *components);

}  // namespace kscodec::jpeg2000
