// What a screen shows of an image's samples, as red, green, blue and opacity of 8 bits each: lookup tables applied,
// YCbCr converted, more than 8 bits spread over 8.
#pragma once

#include "images/pad_value.h"
#include "images/raw_image.h"
#include "images/stretch.h"

#include <array>
#include <optional>
#include <vector>

namespace ksntfx {

/** How an image is to be shown. */
struct ShowChoice {
  StretchChoice stretch;
  bool stretchesAll = false;                         /**< also samples of 8 bits and fewer */
  std::optional<std::array<std::uint32_t, 3>> bands; /**< of red, green and blue; by IREPBAND without them */
};

/** Bytes of a pixel that is shown. */
constexpr std::uint32_t kShownBytes = 4;

class WideShown {
 public:
  /** `rawImage`, which is open, must outlive it. */
  WideShown(RawImage &rawImage, const ShowChoice &showChoice) : image(rawImage), choice(showChoice) {}

  /** Chooses bands and measures their range. ERROR_INVALID_VALUE for a band that isn't there, or as RawImage::Read. */
  Status Open();

  /** Draws a window that lies in the image into rows of `rowStep` bytes. */
  Status Draw(const PixelWindow &window, std::uint8_t *pixels, std::uint64_t rowStep);

  /** Rows that are best drawn at once. */
  std::uint64_t RowsOfStrip() const;

 private:
  /** One band on its way to 8 bits. */
  struct Channel {
    std::uint32_t band;
    Stretch stretch{};
    std::vector<std::uint8_t> levels{}; /**< of all samples, where they are few; else `stretch` is asked */
  };
  using Color = std::array<std::uint8_t, 3>;

  Status ChooseBands();
  Status MakeChannel(Channel *channel);
  void MakeColors();
  bool IsStretched() const;
  Status ReadStrip(const PixelWindow &window, AbsentPixels *absent);
  const std::uint8_t *SamplesOf(std::size_t channel, std::uint64_t row) const;
  void DrawRow(std::uint64_t row, std::uint8_t *pixels);
  void DrawColors(const std::uint8_t *from, std::uint8_t *pixels) const;
  const std::uint8_t *LevelsOf(std::size_t channel, std::uint64_t row);
  void ClearPads(std::uint64_t row, std::uint8_t *pixels) const;

  RawImage &image;
  ShowChoice choice;
  std::vector<Channel> channels; /**< one, or three for red, green and blue */
  bool isYcc = false;
  std::vector<Color> colors; /**< of all samples of a band with a lookup table */
  PadValue pad;
  std::vector<std::uint8_t> samples; /**< of a strip, band after band */
  std::uint64_t columns = 0;         /**< of that strip */
  std::uint64_t rows = 0;
  std::vector<double> values;           /**< of a row */
  std::vector<std::uint8_t> buffers[3]; /**< a row of levels of each channel */
};

}  // namespace ksntfx
