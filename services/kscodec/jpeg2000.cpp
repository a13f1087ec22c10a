#ifdef KSNTFX_CODEC_JPEG2000

#include "kscodec/jpeg2000.h"

#include "internal/ksclasses_.h"
#include "kscodec/jpeg2000_header.h"
#include "kscodec/ycc.h"
#include "kscore/bitmap.h"
#include "kscore/pixel_forms.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <numeric>
#include <optional>
#include <vector>

#include <openjpeg.h>

namespace {

using kscodec::Jpeg2000Header;
using kscodec::Stream;

constexpr std::uint32_t kMostBits = 16;

/** Components for red, green and blue, by number. */
using Channels = std::array<std::uint32_t, 3>;

struct CodecDeleter {
  void operator()(opj_codec_t *codec) const { opj_destroy_codec(codec); }
};
struct StreamDeleter {
  void operator()(opj_stream_t *stream) const { opj_stream_destroy(stream); }
};
struct ImageDeleter {
  void operator()(opj_image_t *image) const { opj_image_destroy(image); }
};
using CodecOwner = std::unique_ptr<opj_codec_t, CodecDeleter>;
using StreamOwner = std::unique_ptr<opj_stream_t, StreamDeleter>;
using ImageOwner = std::unique_ptr<opj_image_t, ImageDeleter>;

// ---- the buffer as a stream -----------------------------------------------------------------------------------------

struct Source {
  Stream bytes;
  std::uint64_t at = 0;
};

OPJ_SIZE_T ReadSource(void *buffer, OPJ_SIZE_T count, void *user) {
  auto &source = *static_cast<Source *>(user);
  const std::uint64_t moved = std::min<std::uint64_t>(count, source.bytes.size() - source.at);
  if (moved == 0) return static_cast<OPJ_SIZE_T>(-1);
  std::memcpy(buffer, source.bytes.data() + source.at, moved);
  source.at += moved;
  return moved;
}

OPJ_OFF_T SkipSource(OPJ_OFF_T count, void *user) {
  auto &source = *static_cast<Source *>(user);
  if (count < 0) return -1;
  const std::uint64_t moved = std::min<std::uint64_t>(count, source.bytes.size() - source.at);
  if (moved == 0 && count != 0) return -1;
  source.at += moved;
  return static_cast<OPJ_OFF_T>(moved);
}

OPJ_BOOL SeekSource(OPJ_OFF_T to, void *user) {
  auto &source = *static_cast<Source *>(user);
  if (to < 0 || static_cast<std::uint64_t>(to) > source.bytes.size()) return OPJ_FALSE;
  source.at = static_cast<std::uint64_t>(to);
  return OPJ_TRUE;
}

StreamOwner OpenSource(Source &source) {
  constexpr std::uint64_t kMostBuffered = 1 << 20;
  StreamOwner stream(opj_stream_create(std::min<std::uint64_t>(source.bytes.size(), kMostBuffered), OPJ_TRUE));
  if (stream == nullptr) return stream;
  opj_stream_set_read_function(stream.get(), ReadSource);
  opj_stream_set_skip_function(stream.get(), SkipSource);
  opj_stream_set_seek_function(stream.get(), SeekSource);
  opj_stream_set_user_data(stream.get(), &source, nullptr);
  opj_stream_set_user_data_length(stream.get(), source.bytes.size());
  return stream;
}

void DropMessage(const char *, void *) {}

// ---- which components ----------------------------------------------------------------------------------------------

/** The component of each channel, of a picture with `components` of them. */
Channels ChooseChannels(const KsLoadOptions &options, std::uint32_t components) {
  Channels channels = {0, 1, 2};
  if ((options.loadFlags & KS_LOAD_BANDS) != 0) {
    std::copy(std::begin(options.bands), std::end(options.bands), channels.begin());
  } else if (components == 2) {
    channels = {0, 0, 0};
  }
  for (std::uint32_t &channel : channels) channel = std::min(channel, components - 1);
  return channels;
}

/** What is decoded of a stream. */
struct Selection {
  std::vector<std::uint32_t> components; /**< in the order that they are decoded to; empty: all */
  std::uint64_t decoded = 0;             /**< how many */
};

/**
 * The components of the channels alone, where they can be had by themselves: the decoder leaves out the steps that look
 * at several components, which are the mixing of the first three, palettes, and channel definitions.
 */
Selection Select(const Jpeg2000Header &header, const kscodec::Jpeg2000Coding &coding, const Channels &channels) {
  const kscodec::Jp2Colors &colors = header.colors;
  Selection selection;
  selection.decoded = std::max(header.size.components, colors.paletteColumns);
  const bool mixed = coding.mixesComponents && *std::min_element(channels.begin(), channels.end()) < 3;
  if (header.size.components <= 3 || mixed || colors.paletteColumns != 0 || colors.hasChannelDefinition) {
    return selection;
  }
  selection.components.assign(channels.begin(), channels.end());
  std::sort(selection.components.begin(), selection.components.end());
  selection.components.erase(std::unique(selection.components.begin(), selection.components.end()),
                             selection.components.end());
  selection.decoded = selection.components.size();
  return selection;
}

// ---- from components to rows ----------------------------------------------------------------------------------------

/** Samples of one component at the pixels of the picture, scaled to `Sample`. */
template <class Sample>
class ComponentRows {
 public:
  /** `full` is what the greatest value of the component becomes. */
  ComponentRows(const opj_image_t &image, const opj_image_comp_t &source, std::uint32_t full)
      : component(source), shift(source.sgnd != 0 ? 1 << (source.prec - 1) : 0) {
    const std::uint64_t greatest = (std::uint64_t{1} << component.prec) - 1;
    scaled.resize(greatest + 1);
    for (std::uint64_t value = 0; value <= greatest; ++value) {
      scaled[value] = static_cast<Sample>((value * full + greatest / 2) / greatest);
    }
    columns = Positions(image.x0, image.x1, component.dx, component.w);
    rows = Positions(image.y0, image.y1, component.dy, component.h);
  }

  /** Calls `put` with x and the sample of each pixel of a row. */
  template <class Put>
  void ForRow(std::uint32_t y, const Put &put) const {
    const OPJ_INT32 *const samples = component.data + std::uint64_t{rows[y]} * component.w;
    const std::uint64_t levels = scaled.size();
    const auto sampleOf = [&](OPJ_INT32 stored) {
      // What is below 0 is beyond all levels as well, so that sound samples are compared once.
      const auto level = static_cast<std::uint64_t>(stored + shift);
      if (level < levels) [[likely]]
        return scaled[level];
      return stored < 0 ? scaled.front() : scaled.back();
    };
    const std::uint64_t width = columns.size();
    if (component.dx == 1 && component.w >= width) {
      for (std::uint64_t x = 0; x < width; ++x) put(x, sampleOf(samples[x]));
    } else {
      for (std::uint64_t x = 0; x < width; ++x) put(x, sampleOf(samples[columns[x]]));
    }
  }

 private:
  /**
   * The sample that stands for each pixel from `start` to `end` along one axis. Samples lie at the multiples of
   * `distance` on the reference grid and are repeated up to the next one; pixels before the first sample get that one.
   */
  static std::vector<std::uint32_t> Positions(std::uint32_t start, std::uint32_t end, std::uint32_t distance,
                                              std::uint32_t samples) {
    const std::uint64_t first = (std::uint64_t{start} + distance - 1) / distance;
    std::vector<std::uint32_t> positions(end - start);
    for (std::uint64_t i = 0; i < positions.size(); ++i) {
      const std::uint64_t sample = std::max((start + i) / distance, first) - first;
      positions[i] = static_cast<std::uint32_t>(std::min<std::uint64_t>(sample, samples - 1));
    }
    return positions;
  }

  const opj_image_comp_t &component;
  std::int64_t shift;
  std::vector<Sample> scaled;
  std::vector<std::uint32_t> columns;
  std::vector<std::uint32_t> rows;
};

void WriteGray(const opj_image_t &image, KsBitmap &bitmap) {
  const opj_image_comp_t &component = image.comps[0];
  if (bitmap.bitsPerPixel == kscore::Gray16::bits) {
    const ComponentRows<std::uint16_t> rows(image, component, 0xFFFF);
    for (std::uint32_t y = 0; y < bitmap.height; ++y) {
      std::uint8_t *const row = kscore::RowOf(bitmap, y);
      rows.ForRow(y, [row](std::uint64_t x, std::uint16_t value) { kscore::Gray16::Put(row, x, value); });
    }
    return;
  }
  const ComponentRows<std::uint8_t> rows(image, component, (1u << component.prec) - 1);
  for (std::uint32_t y = 0; y < bitmap.height; ++y) {
    std::uint8_t *const row = kscore::RowOf(bitmap, y);
    rows.ForRow(y, [row](std::uint64_t x, std::uint8_t value) { row[x] = value; });
  }
}

void WriteColors(const opj_image_t &image, const Channels &components, bool isSycc, KsBitmap &bitmap) {
  using Rows = ComponentRows<std::uint8_t>;
  const std::array<Rows, 3> channels = {Rows(image, image.comps[components[0]], 0xFF),
                                        Rows(image, image.comps[components[1]], 0xFF),
                                        Rows(image, image.comps[components[2]], 0xFF)};
  for (std::uint32_t y = 0; y < bitmap.height; ++y) {
    std::uint8_t *const row = kscore::RowOf(bitmap, y);
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
      std::uint8_t *const first = row + 2 - channel;
      channels[channel].ForRow(y, [first](std::uint64_t x, std::uint8_t value) { first[x * 3] = value; });
    }
    if (isSycc) kscodec::ConvertYccRow(row, bitmap.width);
  }
}

// ---- decoding -------------------------------------------------------------------------------------------------------

/** The status of KsBitmapCreate for what the decoded components take, which is bounded by four times its limit. */
std::int32_t CheckDecodedSize(const Jpeg2000Header &header, std::uint64_t decoded) {
  // A sample is four bytes in the decoder, so the bound is one that a bitmap with a byte for each sample must keep.
  const std::uint64_t rows = header.size.height * decoded;
  if (rows > UINT32_MAX) return ERROR_NO_MEMORY;
  KsBitmap shape;
  return KsBitmapCreate(&shape, sizeof shape, KS_BITMAP_CALLER, header.size.width, static_cast<std::uint32_t>(rows), 8,
                        KS_ORDER_GRAY, nullptr, 1, nullptr, 0);
}

std::int32_t CheckComponent(const opj_image_comp_t &component) {
  if (component.data == nullptr || component.w == 0 || component.h == 0) return ERROR_FILE_FORMAT;
  if (component.dx == 0 || component.dy == 0 || component.prec == 0) return ERROR_FILE_FORMAT;
  return component.prec <= kMostBits ? SUCCESS : ERROR_NOT_SUPPORTED;
}

std::int32_t CreateBitmap(const Jpeg2000Header &header, std::uint32_t bits, KsBitmap *target) {
  std::uint32_t order = KS_ORDER_BGR;
  if (bits == kscore::Index8::bits) order = KS_ORDER_PALETTE;
  if (bits == kscore::Gray16::bits) order = KS_ORDER_GRAY;
  return KsBitmapCreate(target, sizeof(KsBitmap), KS_BITMAP_OWN, header.size.width, header.size.height, bits, order,
                        nullptr, 1, nullptr, 0);
}

/** A decoder with the headers of its stream read. */
class Decoder {
 public:
  Decoder(Stream stream, bool isJp2)
      : source{stream},
        input(OpenSource(source)),
        codec(opj_create_decompress(isJp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K)) {}

  std::int32_t ReadHeader() {
    if (codec == nullptr || input == nullptr) return ERROR_NO_MEMORY;
    opj_set_info_handler(codec.get(), DropMessage, nullptr);
    opj_set_warning_handler(codec.get(), DropMessage, nullptr);
    opj_set_error_handler(codec.get(), DropMessage, nullptr);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    if (!opj_setup_decoder(codec.get(), &parameters)) return ERROR_NO_MEMORY;
    opj_image_t *made = nullptr;
    const bool isRead = opj_read_header(input.get(), codec.get(), &made) != OPJ_FALSE;
    image.reset(made);
    return isRead && image != nullptr ? SUCCESS : ERROR_FILE_FORMAT;
  }

  std::int32_t Decode(const std::vector<std::uint32_t> &components) {
    if (!components.empty() && !opj_set_decoded_components(codec.get(), static_cast<OPJ_UINT32>(components.size()),
                                                           components.data(), OPJ_FALSE)) {
      return ERROR_FILE_FORMAT;
    }
    return opj_decode(codec.get(), input.get(), image.get()) ? SUCCESS : ERROR_FILE_FORMAT;
  }

  /** Leaves out all but some rows of the picture; components are then counted from the first of them. */
  std::int32_t TakeRows(std::uint32_t first, std::uint32_t end) {
    if (image->x1 > INT32_MAX || image->y1 > INT32_MAX) return ERROR_NOT_SUPPORTED;
    const auto place = [](std::uint32_t position) { return static_cast<OPJ_INT32>(position); };
    const bool isTold = opj_set_decode_area(codec.get(), image.get(), place(image->x0), place(image->y0 + first),
                                            place(image->x1), place(image->y0 + end)) != OPJ_FALSE;
    return isTold ? SUCCESS : ERROR_FILE_FORMAT;
  }

  const opj_image_t &Image() const { return *image; }

 private:
  Source source;
  StreamOwner input;
  CodecOwner codec;
  ImageOwner image;
};

bool IsOfSize(const opj_image_t &image, std::uint32_t width, std::uint32_t height) {
  return image.x1 - image.x0 == width && image.y1 - image.y0 == height;
}

/** The places of the channels among the components that were decoded. */
Channels PlacesOf(const Channels &channels, const Selection &selection) {
  if (selection.components.empty()) return channels;
  Channels places = {};
  for (std::size_t i = 0; i < channels.size(); ++i) {
    const auto place = std::lower_bound(selection.components.begin(), selection.components.end(), channels[i]);
    places[i] = static_cast<std::uint32_t>(place - selection.components.begin());
  }
  return places;
}

/** Which pixels the channels are made of. */
struct Look {
  Channels places = {}; /**< among the components that were decoded */
  bool isGray = false;
  bool isSycc = false;
};

std::int32_t CheckComponents(const opj_image_t &image, const Channels &places) {
  for (const std::uint32_t place : places) {
    const std::int32_t status = place < image.numcomps ? CheckComponent(image.comps[place]) : ERROR_FILE_FORMAT;
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

/** Writes decoded rows into `target` from row `top` on; the first ones make it. */
std::int32_t Write(const opj_image_t &image, const Look &look, const Jpeg2000Header &header, std::uint32_t top,
                   KsBitmap *target) {
  std::int32_t status = CheckComponents(image, look.places);
  if (status != SUCCESS) return status;
  std::uint32_t bits = kscore::Bgr24::bits;
  if (look.isGray) bits = image.comps[0].prec > 8 ? kscore::Gray16::bits : kscore::Index8::bits;
  if (top == 0) status = CreateBitmap(header, bits, target);
  if (status != SUCCESS) return status;
  if (target->bitsPerPixel != bits) return ERROR_FILE_FORMAT;
  kscore::MarkWritten(*target);
  KsLocalBitmap rows;
  status = KsBitmapView(rows.Get(), sizeof(KsBitmap), target, 0, top, target->width, image.y1 - image.y0);
  if (status != SUCCESS) return status;
  if (look.isGray) {
    WriteGray(image, *rows.Get());
  } else {
    WriteColors(image, look.places, look.isSycc, *rows.Get());
  }
  return SUCCESS;
}

/** Whether the bitmap would be within its limit, before anything is decoded. */
std::int32_t CheckBitmapSize(const kscodec::PictureInfo &info) {
  std::uint32_t bits = kscore::Bgr24::bits;
  if (info.components == 1) bits = info.bits > 8 ? kscore::Gray16::bits : kscore::Index8::bits;
  KsBitmap shape;
  return KsBitmapCreate(&shape, sizeof shape, KS_BITMAP_CALLER, info.width, info.height, bits, KS_ORDER_BGR, nullptr, 1,
                        nullptr, 0);
}

/** Components and bits are those of the palette where there is one. */
void Tell(const Jpeg2000Header &header, kscodec::PictureInfo *info) {
  info->format = header.isJp2 ? KS_FORMAT_JP2 : KS_FORMAT_J2K;
  info->width = header.size.width;
  info->height = header.size.height;
  const kscodec::Jp2Colors &colors = header.colors;
  info->components = colors.paletteColumns != 0 ? colors.paletteColumns : header.size.components;
  info->bits = colors.paletteColumns != 0 ? colors.paletteBits : header.size.bits;
}

/** Whether as many samples of the decoder, of four bytes each, are within the limit for a bitmap. */
bool AreWithinLimit(std::uint32_t width, std::uint64_t rows) {
  KsBitmap shape;
  return rows <= UINT32_MAX &&
         KsBitmapCreate(&shape, sizeof shape, KS_BITMAP_CALLER, width, static_cast<std::uint32_t>(rows),
                        kscore::Bgr32::bits, KS_ORDER_BGR, nullptr, 1, nullptr, 0) == SUCCESS;
}

/**
 * The rows that are decoded at a time, so that what the decoder holds is bounded: its samples are within the limit for
 * a bitmap, and within a 1024th of that or 64 for each byte of the stream. So few bytes cost little memory; and as each
 * part reads the stream from its start, long streams have few parts.
 */
std::uint32_t RowsAtOnce(const Jpeg2000Header &header, std::uint64_t decoded) {
  constexpr std::uint64_t kHeldOfAByte = 64;
  constexpr std::uint64_t kShareOfAny = 1024;
  const std::uint64_t rowsOfBytes = kHeldOfAByte * header.codeStream.size() / (header.size.width * decoded);
  const auto isBounded = [&](std::uint64_t rows) {
    const std::uint64_t held = rows <= rowsOfBytes ? rows * decoded : rows * decoded * kShareOfAny;
    return AreWithinLimit(header.size.width, held);
  };
  std::uint32_t rows = header.size.height;
  while (rows > 1 && !isBounded(rows)) rows = rows / 2;
  return rows;
}

/**
 * Where the rows from `first` on end that are decoded next: a row that all components have a sample in is the next
 * one's first. Nothing where there is no such row for so long that the components can't be those of a picture.
 */
std::optional<std::uint32_t> EndOfRows(const opj_image_t &image, std::uint32_t first, std::uint32_t rowsAtOnce) {
  constexpr std::uint64_t kMostBetween = 4096;
  const std::uint64_t height = image.y1 - image.y0;
  if (first + std::uint64_t{rowsAtOnce} >= height) return static_cast<std::uint32_t>(height);
  std::uint64_t between = 1;
  for (std::uint32_t i = 0; i < image.numcomps && between <= kMostBetween; ++i) {
    between = std::lcm(between, std::uint64_t{std::max(image.comps[i].dy, 1U)});
  }
  if (between > kMostBetween) return std::nullopt;
  const std::uint64_t end = (image.y0 + first + std::max<std::uint64_t>(rowsAtOnce, between)) / between * between;
  return static_cast<std::uint32_t>(std::min(end - image.y0, height));
}

/** A stream and what is wanted of it. */
struct Order {
  Stream stream;
  const Jpeg2000Header &header;
  const KsLoadOptions &options;
  const Selection &selection;
};

Look LookOf(const Order &order, const opj_image_t &image) {
  // Palettes can be left unapplied, so that the components are counted again.
  const std::uint32_t components = order.selection.components.empty() ? image.numcomps : order.header.size.components;
  const bool wantsBands = (order.options.loadFlags & KS_LOAD_BANDS) != 0;
  return {PlacesOf(ChooseChannels(order.options, components), order.selection), components == 1,
          order.header.colors.isSycc && !wantsBands && components >= 3};
}

/** Decodes the rows from `*first` on, as many as are decoded at once, and goes on behind them. */
std::int32_t DecodeRows(const Order &order, std::uint32_t rowsAtOnce, std::uint32_t *first, KsBitmap *target) {
  const kscodec::Jpeg2000Size &size = order.header.size;
  Decoder decoder(order.stream, order.header.isJp2);
  std::int32_t status = decoder.ReadHeader();
  if (status != SUCCESS) return status;
  const opj_image_t &image = decoder.Image();
  if (image.numcomps != size.components || !IsOfSize(image, size.width, size.height)) return ERROR_FILE_FORMAT;
  const std::optional<std::uint32_t> end = EndOfRows(image, *first, rowsAtOnce);
  if (!end) return ERROR_NOT_SUPPORTED;
  const bool isWhole = *first == 0 && *end == size.height;
  if (!isWhole) status = decoder.TakeRows(*first, *end);
  if (status == SUCCESS) status = decoder.Decode(order.selection.components);
  if (status != SUCCESS) return status;
  if (image.numcomps == 0 || !IsOfSize(image, size.width, *end - *first)) return ERROR_FILE_FORMAT;
  status = Write(image, LookOf(order, image), order.header, *first, target);
  *first = *end;
  return status;
}

std::int32_t Decode(Stream stream, const KsLoadOptions &options, KsBitmap *target) {
  const std::optional<Jpeg2000Header> header = kscodec::ReadJpeg2000Header(stream);
  if (!header) return ERROR_FILE_FORMAT;
  kscodec::PictureInfo info;
  Tell(*header, &info);
  const kscodec::Jpeg2000Coding coding = kscodec::ReadJpeg2000Coding(*header);
  const Selection selection = Select(*header, coding, ChooseChannels(options, info.components));
  std::int32_t status = CheckBitmapSize(info);
  if (status == SUCCESS) status = CheckDecodedSize(*header, selection.decoded);
  if (status == SUCCESS && !kscodec::IsPlausible(*header, coding)) status = ERROR_FILE_FORMAT;

  const std::uint32_t rowsAtOnce = status == SUCCESS ? RowsAtOnce(*header, selection.decoded) : 0;
  for (std::uint32_t first = 0; first < header->size.height && status == SUCCESS;) {
    status = DecodeRows({stream, *header, options, selection}, rowsAtOnce, &first, target);
  }
  return status;
}

// ---- the codec ------------------------------------------------------------------------------------------------------

bool Recognises(Stream stream) {
  return kscodec::IsJp2(stream) || kscodec::IsCodeStream(stream);
}

std::int32_t Inform(Stream stream, kscodec::PictureInfo *info) {
  const std::optional<Jpeg2000Header> header = kscodec::ReadJpeg2000Header(stream);
  if (!header) return ERROR_FILE_FORMAT;
  Tell(*header, info);
  return SUCCESS;
}

std::int32_t Load(Stream stream, const KsLoadOptions &options, KsBitmap *target) {
  std::int32_t status = ERROR_NO_MEMORY;
  try {
    status = Decode(stream, options, target);
  } catch (const std::bad_alloc &) {
    status = ERROR_NO_MEMORY;
  }
  if (status != SUCCESS) KsBitmapFree(target);
  return status;
}

}  // namespace

namespace kscodec {

const Codec kJpeg2000Codec = {Recognises, Inform, Load, nullptr};

}  // namespace kscodec

#endif
