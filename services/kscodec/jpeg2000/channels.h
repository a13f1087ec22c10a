// The channels of a JP2 file: its palette, and what the channels are for (ISO/IEC 15444-1, I.5.3).
#pragma once

#include "kscodec/jpeg2000/header.h"

#include <cstdint>
#include <vector>

namespace kscodec::jpeg2000 {

/** A channel is a component, or what a column of the palette makes of it. */
struct Channel {
  std::uint32_t component = 0;
  bool isMapped = false;
  std::uint32_t column = 0; /**< of the palette */
};

struct Palette {
  std::uint32_t size = 0;           /**< colours */
  std::vector<Component> columns;   /**< their bits and signs */
  std::vector<std::int64_t> values; /**< of one colour after the other */
  std::vector<Channel> channels;
};

/** What a channel is for. */
struct ChannelUse {
  std::uint32_t channel = 0;
  std::uint32_t type = 0;    /**< 0 colour, 1 and 2 opacity, 65535 unspecified */
  std::uint32_t belongs = 0; /**< 0: to the picture; 1 and on: to a colour; 65535: to nothing */
};

/** SUCCESS, ERROR_FILE_FORMAT for a palette that isn't complete, or ERROR_FILE_READ. */
Status ReadPalette(const ByteSource &source, const Header &header, Palette *palette);

/** The channel definitions as far as they go. */
std::vector<ChannelUse> ReadChannelUses(const ByteSource &source, const Header &header);

}  // namespace kscodec::jpeg2000
