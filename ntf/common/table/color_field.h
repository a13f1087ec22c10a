// Colours that stand in a header as three bytes: red, green, blue.
#pragma once

#include "table/header_reader.h"
#include "table/header_writer.h"

namespace ksntfx {

/** How such a field gets into a number with red in the low byte, and back. */
template <auto color>
struct ColorField;
template <class Record, std::uint32_t Record::*color>
struct ColorField<color> {
  static Status Read(HeaderReader &reader, std::string_view text) {
    const auto byte = [&](std::size_t index) { return std::uint32_t{static_cast<std::uint8_t>(text[index])}; };
    reader.As<Record>().*color = byte(0) | byte(1) << 8 | byte(2) << 16;
    return SUCCESS;
  }

  static Status Write(HeaderWriter &writer) {
    const std::uint32_t value = writer.As<Record>().*color;
    const std::uint8_t bytes[] = {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
                                  static_cast<std::uint8_t>(value >> 16)};
    return writer.Bytes(bytes, sizeof bytes);
  }
};

}  // namespace ksntfx
