// The codecs behind their front: the first byte says how a stream is loaded, the stream follows.
#include "kssamples.h"
#include "target.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

enum Road : std::uint8_t { kPlain, kBands, kColor, kInPlace, kOneDimensional, kTwoDimensional, kSamples, kRoads };

/** Answers for a stream without a header, whose size stands in front of it. */
std::int32_t Answer(KsRawFormatInfo *info, void *userData) {
  *info = *static_cast<const KsRawFormatInfo *>(userData);
  return SUCCESS;
}

void LoadRaw(Choices choices, Road road) {
  KsRawFormatInfo raw{};
  raw.format = road == kOneDimensional ? KS_FORMAT_T4_1D : KS_FORMAT_T4_2D;
  raw.width = choices.Word();
  raw.height = choices.Word();
  raw.bits = 1;
  raw.pages = 1;
  const Input stream = choices.Rest();
  KsSetRedirect(Answer, &raw);
  KsBitmap bitmap;
  KsBitmapInit(&bitmap, sizeof bitmap, 0, 0, 0);
  KsLoadMemory(stream.data(), &bitmap, sizeof bitmap, 1, 0, stream.size(), nullptr, nullptr);
  KsBitmapFree(&bitmap);
  KsSetRedirect(nullptr, nullptr);
}

/** Decodes into a bitmap of the size that the stream's header tells. */
void LoadInPlace(Input stream, const KsFileInfo &info, const KsLoadOptions &options) {
  KsBitmap place;
  KsBitmapInit(&place, sizeof place, 0, 0, 0);
  if (KsBitmapCreate(&place, sizeof place, KS_BITMAP_OWN, info.width, info.height, info.bitsPerPixel == 8 ? 8 : 24, 0,
                     nullptr, 1, nullptr, 0) != SUCCESS) {
    return;
  }
  KsLoadMemoryInPlace(stream.data(), &place, sizeof place, stream.size(), &options);
  KsBitmapFree(&place);
}

void LoadSelfTold(Choices choices, Road road) {
  KsLoadOptions options{};
  KsLoadOptionsInit(&options, sizeof options);
  if (road == kColor) options.loadFlags = KS_LOAD_COLOR;
  if (road == kBands) {
    options.loadFlags = KS_LOAD_BANDS;
    for (std::uint32_t &band : options.bands) band = choices.Word();
  }
  const Input stream = choices.Rest();
  KsFileInfo info{};
  const std::int32_t told = KsFileInfoMemory(stream.data(), &info, sizeof info, stream.size(), 0, 0);
  if (road == kInPlace && told == SUCCESS) LoadInPlace(stream, info, options);
  KsBitmap bitmap;
  KsBitmapInit(&bitmap, sizeof bitmap, 0, 0, 0);
  const std::int32_t status =
      KsLoadMemory(stream.data(), &bitmap, sizeof bitmap, 0, KS_ORDER_CODEC, stream.size(), &options, nullptr);
  Require((status == SUCCESS) == ((bitmap.flags & KS_BITMAP_ALLOCATED) != 0), "a picture comes with SUCCESS only");
  Require(status != SUCCESS || told == SUCCESS, "what is decoded can be told");
  KsBitmapFree(&bitmap);
}

std::int64_t ReadInput(void *user, std::uint64_t offset, void *buffer, std::uint64_t bytes) {
  const Input &stream = *static_cast<const Input *>(user);
  Require(offset <= stream.size() && bytes <= stream.size() - offset, "reads are within the stream");
  std::copy_n(stream.begin() + static_cast<std::ptrdiff_t>(offset), bytes, static_cast<std::uint8_t *>(buffer));
  return static_cast<std::int64_t>(bytes);
}

/** Part of `size`, of up to `most`. */
std::uint32_t Part(Choices &choices, std::uint32_t size, std::uint32_t most, std::uint32_t *first) {
  *first = choices.Below(size);
  return 1 + choices.Below(std::min(size - *first, most));
}

/** Reads a window of raw samples, which must be within its memory. */
void ReadSamples(Choices choices) {
  constexpr std::uint32_t kMostPixels = 256;
  const KsSamplesOptions options = {choices.Byte(), 0};
  const std::uint32_t level = choices.Byte() % 6U;
  Choices place = choices;
  for (int i = 0; i < 4; ++i) choices.Word();
  Input stream = choices.Rest();
  const KsSampleSource source = {ReadInput, &stream, stream.size()};
  KsSamples *samples = nullptr;
  if (KsSamplesOpen(&source, &options, &samples) != SUCCESS) return;
  const KsSamplesInfo &info = *KsSamplesDescribe(samples);
  const auto atLevel = [level](std::uint32_t size) { return ((size - 1) >> level) + 1; };
  KsSamplesWindow window = {};
  window.level = level;
  window.rows = Part(place, atLevel(info.rows), kMostPixels, &window.firstRow);
  window.columns = Part(place, atLevel(info.columns), kMostPixels, &window.firstColumn);
  const std::uint32_t count = std::min(info.components, 3U);
  const std::array<std::uint32_t, 3> components = {info.components - 1, 0, info.components / 2};
  std::vector<std::int64_t> memory(std::size_t{window.rows} * window.columns * count);
  const KsSamplesTarget target = {memory.data(), std::int64_t{window.columns} * count * 8, std::int64_t{count} * 8, 8,
                                  KS_SAMPLES_I64};
  KsSamplesRead(samples, &window, components.data(), count, &target);
  KsSamplesClose(samples);
}

}  // namespace

void FuzzOne(Input input) {
  KsSetBitmapLimit(kBitmapLimit);
  Choices choices(input);
  const auto road = static_cast<Road>(choices.Byte() % kRoads);
  if (road == kOneDimensional || road == kTwoDimensional) {
    LoadRaw(choices, road);
  } else if (road == kSamples) {
    ReadSamples(choices);
  } else {
    LoadSelfTold(choices, road);
  }
}
