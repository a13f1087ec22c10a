#include "sheet.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr int kLetterWidth = 5;
constexpr int kLetterHeight = 7;
constexpr int kLetterPitch = kLetterWidth + 1;

/** A letter's rows from the top, five bits each, the left pixel first. */
struct Letter {
  char character;
  std::uint8_t rows[kLetterHeight];
};

constexpr Letter kLetters[] = {
    {',', {0b00000, 0b00000, 0b00000, 0b00000, 0b00110, 0b00100, 0b01000}},
    {'0', {0b01110, 0b10001, 0b10011, 0b10101, 0b11001, 0b10001, 0b01110}},
    {'1', {0b00100, 0b01100, 0b00100, 0b00100, 0b00100, 0b00100, 0b01110}},
    {'2', {0b01110, 0b10001, 0b00001, 0b00110, 0b01000, 0b10000, 0b11111}},
    {'4', {0b00010, 0b00110, 0b01010, 0b10010, 0b11111, 0b00010, 0b00010}},
    {'5', {0b11111, 0b10000, 0b11110, 0b00001, 0b00001, 0b10001, 0b01110}},
    {'6', {0b00110, 0b01000, 0b10000, 0b11110, 0b10001, 0b10001, 0b01110}},
    {'8', {0b01110, 0b10001, 0b10001, 0b01110, 0b10001, 0b10001, 0b01110}},
    {'A', {0b01110, 0b10001, 0b10001, 0b11111, 0b10001, 0b10001, 0b10001}},
    {'B', {0b11110, 0b10001, 0b10001, 0b11110, 0b10001, 0b10001, 0b11110}},
    {'C', {0b01111, 0b10000, 0b10000, 0b10000, 0b10000, 0b10000, 0b01111}},
    {'D', {0b11110, 0b10001, 0b10001, 0b10001, 0b10001, 0b10001, 0b11110}},
    {'E', {0b11111, 0b10000, 0b10000, 0b11110, 0b10000, 0b10000, 0b11111}},
    {'F', {0b11111, 0b10000, 0b10000, 0b11110, 0b10000, 0b10000, 0b10000}},
    {'G', {0b01111, 0b10000, 0b10000, 0b10011, 0b10001, 0b10001, 0b01111}},
    {'H', {0b10001, 0b10001, 0b10001, 0b11111, 0b10001, 0b10001, 0b10001}},
    {'I', {0b01110, 0b00100, 0b00100, 0b00100, 0b00100, 0b00100, 0b01110}},
    {'K', {0b10001, 0b10010, 0b10100, 0b11000, 0b10100, 0b10010, 0b10001}},
    {'L', {0b10000, 0b10000, 0b10000, 0b10000, 0b10000, 0b10000, 0b11111}},
    {'M', {0b10001, 0b11011, 0b10101, 0b10101, 0b10001, 0b10001, 0b10001}},
    {'N', {0b10001, 0b11001, 0b10101, 0b10101, 0b10011, 0b10001, 0b10001}},
    {'O', {0b01110, 0b10001, 0b10001, 0b10001, 0b10001, 0b10001, 0b01110}},
    {'P', {0b11110, 0b10001, 0b10001, 0b11110, 0b10000, 0b10000, 0b10000}},
    {'R', {0b11110, 0b10001, 0b10001, 0b11110, 0b10100, 0b10010, 0b10001}},
    {'S', {0b01111, 0b10000, 0b10000, 0b01110, 0b00001, 0b00001, 0b11110}},
    {'T', {0b11111, 0b00100, 0b00100, 0b00100, 0b00100, 0b00100, 0b00100}},
    {'Y', {0b10001, 0b10001, 0b01010, 0b00100, 0b00100, 0b00100, 0b00100}},
};

}  // namespace

void Sheet::Mark(int x, int y) {
  if (x >= 0 && y >= 0 && x < width && y < height) marks[static_cast<std::size_t>(y) * width + x] = true;
}

bool Sheet::IsMarked(int x, int y) const {
  return x >= 0 && y >= 0 && x < width && y < height && marks[static_cast<std::size_t>(y) * width + x];
}

void Sheet::Line(int x0, int y0, int x1, int y1, int drawn, int period) {
  const int steps = std::max(std::abs(x1 - x0), std::abs(y1 - y0));
  for (int step = 0; step <= steps; ++step) {
    if (step % period >= drawn) continue;
    const double part = steps == 0 ? 0 : static_cast<double>(step) / steps;
    Mark(static_cast<int>(std::lround(std::lerp(x0, x1, part))),
         static_cast<int>(std::lround(std::lerp(y0, y1, part))));
  }
}

void Sheet::Box(int left, int top, int columns, int rows) {
  Fill(left, top, columns, 1);
  Fill(left, top + rows - 1, columns, 1);
  Fill(left, top, 1, rows);
  Fill(left + columns - 1, top, 1, rows);
}

void Sheet::Fill(int left, int top, int columns, int rows) {
  for (int y = top; y < top + rows; ++y) {
    for (int x = left; x < left + columns; ++x) Mark(x, y);
  }
}

void Sheet::Text(int left, int top, std::string_view text, int scale) {
  for (const char character : text) {
    const auto *letter = std::find_if(std::begin(kLetters), std::end(kLetters),
                                      [&](const Letter &each) { return each.character == character; });
    for (int bit = 0; letter != std::end(kLetters) && bit < kLetterWidth * kLetterHeight; ++bit) {
      const int x = bit % kLetterWidth, y = bit / kLetterWidth;
      if ((letter->rows[y] >> (kLetterWidth - 1 - x) & 1) != 0) Fill(left + x * scale, top + y * scale, scale, scale);
    }
    left += kLetterPitch * scale;
  }
}

int Sheet::TextWidth(std::string_view text, int scale) {
  return (static_cast<int>(text.size()) * kLetterPitch - 1) * scale;
}

Sheet Sheet::Halo() const {
  Sheet halo(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int place = 0; place < 9 && !IsMarked(x, y); ++place) {
        if (IsMarked(x + place % 3 - 1, y + place / 3 - 1)) halo.Mark(x, y);
      }
    }
  }
  return halo;
}
