// The codecs behind their front: the first byte says how a stream is loaded, the stream follows.
#include "target.h"

namespace {

enum Road : std::uint8_t { kPlain, kBands, kColor, kInPlace, kOneDimensional, kTwoDimensional, kRoads };

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

}  // namespace

void FuzzOne(Input input) {
  KsSetBitmapLimit(kBitmapLimit);
  Choices choices(input);
  const auto road = static_cast<Road>(choices.Byte() % kRoads);
  if (road == kOneDimensional || road == kTwoDimensional) {
    LoadRaw(choices, road);
  } else {
    LoadSelfTold(choices, road);
  }
}
