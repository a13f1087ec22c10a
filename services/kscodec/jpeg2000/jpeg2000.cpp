// JPEG 2000 (ISO/IEC 15444-1): bare code streams, and code streams in JP2 files.
#include "internal/ksclasses_.h"
#include "kscodec/codecs.h"
#include "kscodec/jpeg2000/coding.h"
#include "kscodec/jpeg2000/decoder.h"
#include "kscodec/jpeg2000/pixels.h"
#include "kscodec/jpeg2000/rows_at_once.h"
#include "kscodec/jpeg2000/samples.h"
#include "kscore/pixel_forms.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <vector>

namespace kscodec::jpeg2000 {

namespace {

constexpr std::uint32_t kMostBits = 16;

// ---- which components ----------------------------------------------------------------------------------------------

bool Asks(const KsLoadOptions &options, std::uint32_t flag) {
  return (options.loadFlags & flag) != 0;
}

/** Whether the components are those that the options say, and not what the stream makes of them. */
bool TakesBands(const KsLoadOptions &options, const Header &header, const Coding &coding) {
  if (!Asks(options, KS_LOAD_BANDS)) return false;
  if (!Asks(options, KS_LOAD_NAMED_BANDS)) return true;
  const Colors &colors = header.colors;
  if (header.size.components < 3 || colors.hasChannelDefinition || colors.paletteColumns != 0) return false;
  return !Asks(options, KS_LOAD_YCBCR) || colors.isSycc || (!header.isJp2 && !coding.mixesComponents);
}

/** The component of each channel, of a picture with `components` of them. */
Channels ChooseChannels(const KsLoadOptions &options, bool takesBands, std::uint32_t components) {
  Channels channels = {0, 1, 2};
  if (takesBands) {
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
  std::uint64_t decoded = 0;             /**< their number */
};

/**
 * The components of the channels alone, where they can be decoded by themselves: the decoder then omits the steps that
 * combine components, which are the mixing of the first three, palettes, and channel definitions.
 */
Selection Select(const Header &header, const Coding &coding, const Channels &channels) {
  const Colors &colors = header.colors;
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

// ---- decoding -------------------------------------------------------------------------------------------------------

Status CheckComponent(const opj_image_comp_t &component) {
  if (component.data == nullptr || component.w == 0 || component.h == 0) return ERROR_FILE_FORMAT;
  if (component.dx == 0 || component.dy == 0 || component.prec == 0) return ERROR_FILE_FORMAT;
  return component.prec <= kMostBits ? SUCCESS : ERROR_NOT_SUPPORTED;
}

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

Status CheckComponents(const opj_image_t &image, const Channels &places) {
  for (const std::uint32_t place : places) {
    const Status status = place < image.numcomps ? CheckComponent(image.comps[place]) : ERROR_FILE_FORMAT;
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

/** Writes decoded rows into `target` from row `top` on. The first ones create it. */
Status Write(const opj_image_t &image, const Look &look, const Header &header, std::uint32_t top, KsBitmap *target) {
  Status status = CheckComponents(image, look.places);
  if (status != SUCCESS) return status;
  std::uint32_t bits = kscore::Bgr24::bits;
  if (look.isGray) bits = image.comps[0].prec > 8 ? kscore::Gray16::bits : kscore::Index8::bits;
  if (top == 0) status = CreateBitmap(header.size.width, header.size.height, bits, target);
  if (status != SUCCESS) return status;
  if (target->bitsPerPixel != bits) return ERROR_FILE_FORMAT;
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

/** Components and bits are those of the palette where there is one. */
PictureInfo InfoOf(const Header &header) {
  const Colors &colors = header.colors;
  const bool hasPalette = colors.paletteColumns != 0;
  return {.format = static_cast<std::uint32_t>(header.isJp2 ? KS_FORMAT_JP2 : KS_FORMAT_J2K),
          .width = header.size.width,
          .height = header.size.height,
          .components = hasPalette ? colors.paletteColumns : header.size.components,
          .bits = hasPalette ? colors.paletteBits : header.size.bits};
}

/**
 * Where the part that starts at row `first` ends: before a row in which all components have a sample. Nothing where
 * such rows are so far apart that the components can't be those of a picture.
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

/** A stream, and what is wanted of it. */
struct Order {
  const ByteSource &source;
  const Header &header;
  const KsLoadOptions &options;
  bool takesBands;
  const Selection &selection;
};

Look LookOf(const Order &order, const opj_image_t &image) {
  // The decoder may leave a palette unapplied, so the components are counted again.
  const std::uint32_t components = order.selection.components.empty() ? image.numcomps : order.header.size.components;
  const bool isSycc = order.takesBands ? Asks(order.options, KS_LOAD_YCBCR) : order.header.colors.isSycc;
  return {PlacesOf(ChooseChannels(order.options, order.takesBands, components), order.selection), components == 1,
          isSycc && components >= 3};
}

/** Decodes the rows from `*first` on, as many as are decoded at once, and moves `*first` past them. */
Status DecodeRows(const Order &order, std::uint32_t rowsAtOnce, std::uint32_t *first, KsBitmap *target) {
  const Size &size = order.header.size;
  Decoder decoder(order.source, {.isJp2 = order.header.isJp2});
  Status status = decoder.ReadHeader();
  if (status != SUCCESS) return status;
  const opj_image_t &image = decoder.Image();
  if (image.numcomps != size.components || !IsOfSize(image, size.width, size.height)) return ERROR_FILE_FORMAT;
  const std::optional<std::uint32_t> end = EndOfRows(image, *first, rowsAtOnce);
  if (!end) return ERROR_NOT_SUPPORTED;
  const bool isWhole = *first == 0 && *end == size.height;
  if (!isWhole) status = decoder.TakeArea({image.x0, image.y0 + *first, image.x1, image.y0 + *end});
  if (status == SUCCESS) status = decoder.Decode(order.selection.components);
  if (status != SUCCESS) return status;
  if (image.numcomps == 0 || !IsOfSize(image, size.width, *end - *first)) return ERROR_FILE_FORMAT;
  status = Write(image, LookOf(order, image), order.header, *first, target);
  *first = *end;
  return status;
}

// ---- the codec ------------------------------------------------------------------------------------------------------

class Jpeg2000Stream : public OpenedStream {
 public:
  Jpeg2000Stream(Stream stream, const Header &read) : OpenedStream(InfoOf(read)), source(stream), header(read) {}

  Status Load(const KsLoadOptions &options, KsBitmap *target) const override {
    const Coding coding = ReadCoding(source, header);
    const bool takesBands = TakesBands(options, header, coding);
    const Selection selection = Select(header, coding, ChooseChannels(options, takesBands, Info().components));
    // A sample takes four bytes in the decoder, so this bounds its memory to four times the limit.
    Status status = CheckBitmapLimit(header.size.width, header.size.height * selection.decoded, 8);
    if (status != SUCCESS) return status;
    if (!IsPlausible(header, coding)) return ERROR_FILE_FORMAT;
    const SourcePart part(source, header.isJp2 ? 0 : header.codeStreamAt,
                          header.isJp2 ? source.Size() : header.codeStreamBytes);
    const std::uint32_t rowsAtOnce =
        RowsAtOnce(header.codeStreamBytes, header.size.width, header.size.height, selection.decoded);
    for (std::uint32_t first = 0; first < header.size.height && status == SUCCESS;) {
      status = DecodeRows({part, header, options, takesBands, selection}, rowsAtOnce, &first, target);
    }
    return status;
  }

 private:
  MemorySource source;
  Header header;
};

bool Recognises(Stream stream) {
  return IsJp2(stream) || IsCodeStream(stream);
}

Status Open(Stream stream, std::unique_ptr<OpenedStream> *opened) {
  Header header;
  const Status status = ReadHeader(MemorySource(stream), &header);
  if (status == SUCCESS) *opened = std::make_unique<Jpeg2000Stream>(stream, header);
  return status;
}

}  // namespace

}  // namespace kscodec::jpeg2000

const kscodec::Codec kscodec::kJpeg2000Codec = {jpeg2000::Recognises, jpeg2000::Open, jpeg2000::OpenForSamples, false};
