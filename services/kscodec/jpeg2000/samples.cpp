#include "kscodec/jpeg2000/samples.h"

#include "kscodec/jpeg2000/channels.h"
#include "kscodec/jpeg2000/decoder.h"
#include "kscodec/jpeg2000/sample_grid.h"
#include "kscodec/jpeg2000/tile_stream.h"
#include "kscodec/sample_writer.h"
#include "kscore/pixel_forms.h"

#include <algorithm>
#include <numeric>
#include <optional>

namespace kscodec::jpeg2000 {

namespace {

/** The most that the library decodes. */
constexpr std::uint32_t kMostDecodedBits = 31;

constexpr std::uint32_t kUnspecified = 65535;

/** Everything that the headers say. */
struct Headers {
  Header header;
  std::vector<Component> components;
  Coding coding;
  TileIndex index;
  std::optional<Palette> palette; /**< where it is to be applied */
};

Status ReadHeaders(const ByteSource &source, const KsSamplesOptions &options, Headers *read) {
  Status status = ReadHeader(source, &read->header);
  if (status == SUCCESS) status = ReadComponents(source, read->header, &read->components);
  if (status != SUCCESS) return status;
  read->coding = ReadCoding(source, read->header);
  // Packet headers of all tiles in one place can't be divided.
  Coding &coding = read->coding;
  coding.partsAreKnown = coding.partsAreKnown && !coding.parts.empty() && !coding.packsHeaders;
  if (coding.partsAreKnown) status = MakeTileIndex(source, read->header, coding, &read->index);
  coding.parts = {};
  const bool expands = (options.flags & KS_SAMPLES_EXPAND_PALETTE) != 0 && read->header.colors.paletteColumns != 0;
  if (status == SUCCESS && expands) status = ReadPalette(source, read->header, &read->palette.emplace());
  return status;
}

std::uint32_t ColorOf(const Header &header) {
  enum Space : std::uint32_t { kCmyk = 12, kSrgb = 16, kGray = 17, kSycc = 18 };
  switch (header.colors.space) {
    case kCmyk:
      return KS_SAMPLES_COLOR_CMYK;
    case kSrgb:
      return KS_SAMPLES_COLOR_RGB;
    case kGray:
      return KS_SAMPLES_COLOR_GRAY;
    case kSycc:
      return KS_SAMPLES_COLOR_YCBCR;
    default:
      return header.colors.space != 0 || header.colors.hasProfile ? KS_SAMPLES_COLOR_OTHER : KS_SAMPLES_COLOR_UNSAID;
  }
}

/** The resolutions that all components have, and have a sample in. */
std::uint32_t LevelsOf(const Headers &headers) {
  constexpr std::uint32_t kMostLevels = 31;
  const Size &size = headers.header.size;
  std::uint32_t levels = headers.coding.levels > kMostLevels ? 0 : headers.coding.levels;
  const auto hasSamples = [&](const Component &component) {
    return !SampleAxis(size.across, component.across, levels).IsEmpty() &&
           !SampleAxis(size.down, component.down, levels).IsEmpty();
  };
  while (levels > 0 && !std::all_of(headers.components.begin(), headers.components.end(), hasSamples)) --levels;
  return levels;
}

KsSamplesInfo InfoOf(const Headers &headers) {
  const Header &header = headers.header;
  const Size &size = header.size;
  const std::uint64_t channels = headers.palette ? headers.palette->channels.size() : size.components;
  return {.format = static_cast<std::uint32_t>(header.isJp2 ? KS_FORMAT_JP2 : KS_FORMAT_J2K),
          .rows = size.height,
          .columns = size.width,
          .components = static_cast<std::uint32_t>(channels),
          .levels = LevelsOf(headers),
          .tileRows = size.tiles == 1 ? size.height : static_cast<std::uint32_t>(size.down.tileStep),
          .tileColumns = size.tiles == 1 ? size.width : static_cast<std::uint32_t>(size.across.tileStep),
          .tileTop = size.tiles == 1 ? 0 : static_cast<std::uint32_t>(size.down.start - size.down.tileStart),
          .tileLeft = size.tiles == 1 ? 0 : static_cast<std::uint32_t>(size.across.start - size.across.tileStart),
          .color = ColorOf(header),
          .isConverted = 0,
          .isMixed = headers.coding.mixesComponents ? 1U : 0U,
          .colorSpace = header.colors.space,
          .paletteSize = header.colors.paletteEntries,
          .paletteParts = header.colors.paletteColumns,
          .hasChannels = header.colors.hasChannelDefinition ? 1U : 0U};
}

std::vector<KsSamplesComponent> DescribeComponents(const ByteSource &source, const Headers &headers) {
  std::vector<KsSamplesComponent> described;
  const auto describe = [&](const Component &samples, const Component &place) {
    described.push_back(
        {samples.bits, samples.isSigned ? 1U : 0U, place.down, place.across, kUnspecified, kUnspecified});
  };
  if (headers.palette) {
    for (const Channel &channel : headers.palette->channels) {
      const Component &place = headers.components[channel.component];
      describe(channel.isMapped ? headers.palette->columns[channel.column] : place, place);
    }
  } else {
    for (const Component &component : headers.components) describe(component, component);
  }
  if (!headers.header.colors.hasChannelDefinition) return described;
  for (const ChannelUse &use : ReadChannelUses(source, headers.header)) {
    if (use.channel >= described.size()) continue;
    described[use.channel].channelType = use.type;
    described[use.channel].channelOf = use.belongs;
  }
  return described;
}

// ---- reading --------------------------------------------------------------------------------------------------------

/** A rectangle of a level, in its coordinates. */
struct LevelArea {
  std::uint64_t left;
  std::uint64_t top;
  std::uint64_t right;
  std::uint64_t bottom;
};

class Jpeg2000Samples final : public SampleStream {
 public:
  Jpeg2000Samples(const ByteSource &whole, const KsSamplesOptions &wanted, Headers &&read)
      : SampleStream(InfoOf(read), DescribeComponents(whole, read)),
        codeStream(whole, read.header.codeStreamAt, read.header.codeStreamBytes),
        options(wanted),
        headers(std::move(read)) {}

  Status Read(const SampleOrder &order) override;

 private:
  friend class WindowReader;

  SourcePart codeStream;
  KsSamplesOptions options;
  Headers headers;
};

/** A component of the order, and where it goes. */
struct Wanted {
  std::uint64_t place; /**< in the list of the order */
  Channel channel;
};

/** One read of a window. */
class WindowReader {
 public:
  WindowReader(const Jpeg2000Samples &opened, const SampleOrder &asked)
      : stream(opened), headers(opened.headers), size(opened.headers.header.size), order(asked), writer(asked.target) {}

  Status Read();

 private:
  bool IsPartial() const { return (stream.options.flags & KS_SAMPLES_PARTIAL) != 0; }
  SampleAxis AcrossOf(std::uint32_t component) const {
    return {size.across, headers.components[component].across, order.window.level};
  }
  SampleAxis DownOf(std::uint32_t component) const {
    return {size.down, headers.components[component].down, order.window.level};
  }

  void ChooseComponents();
  Status ReadGroup();
  Status ReadRowOfTiles(const LevelArea &area);
  Status ReadTiles(const LevelArea &area);
  Status ReadFrom(const ByteSource &source, const LevelArea &area);
  Status ReadStrip(const ByteSource &source, const Size &pictured, const LevelArea &area);
  Area AreaOf(const LevelArea &area) const;
  Status Write(const Decoder &decoder, const Area &decoded, const LevelArea &area);
  Status WriteComponent(const opj_image_comp_t &component, const Wanted &to, const Area &decoded,
                        const LevelArea &area);
  void WriteZeros(const LevelArea &area);

  const Jpeg2000Samples &stream;
  const Headers &headers;
  const Size &size;
  const SampleOrder &order;
  SampleWriter writer;
  LevelArea window = {};
  std::vector<Wanted> wanted;            /**< by component; those of a group while it is read */
  std::vector<std::uint32_t> components; /**< of the code stream, which rise */
  bool decodesAll = false;               /**< since components are stored as mixtures */
  bool hasSamples = false;
};

Status Jpeg2000Samples::Read(const SampleOrder &order) {
  const auto isTooDeep = [](const Component &component) { return component.bits > kMostDecodedBits; };
  if (std::any_of(headers.components.begin(), headers.components.end(), isTooDeep)) return ERROR_NOT_SUPPORTED;
  return WindowReader(*this, order).Read();
}

/** The samples that are decoded at a time if tiles allow it; four bytes each. */
constexpr std::uint64_t kSamplesAtOnce = 4 << 20;

Status WindowReader::Read() {
  const std::uint32_t level = order.window.level;
  window.left = SampleAxis::AtLevel(size.across.start, level) + order.window.firstColumn;
  window.top = SampleAxis::AtLevel(size.down.start, level) + order.window.firstRow;
  window.right = window.left + order.window.columns;
  window.bottom = window.top + order.window.rows;
  for (std::uint64_t place = 0; place < order.components.size(); ++place) {
    const std::uint32_t number = order.components[place];
    wanted.push_back({place, headers.palette ? headers.palette->channels[number] : Channel{number}});
    const std::uint32_t component = wanted.back().channel.component;
    if (AcrossOf(component).IsEmpty() || DownOf(component).IsEmpty()) return ERROR_FILE_FORMAT;
  }
  std::sort(wanted.begin(), wanted.end(),
            [](const Wanted &left, const Wanted &right) { return left.channel.component < right.channel.component; });
  const Status status = ReadGroup();
  if (status != SUCCESS) return status;
  return hasSamples ? SUCCESS : ERROR_FILE_FORMAT;
}

/** Components are decoded by themselves unless some of them are made of others. */
void WindowReader::ChooseComponents() {
  components.clear();
  for (const Wanted &each : wanted) {
    if (components.empty() || components.back() != each.channel.component) {
      components.push_back(each.channel.component);
    }
  }
  constexpr std::uint32_t kMixed = 3;
  const bool isMixed = headers.coding.mixesComponents && components.front() < kMixed;
  decodesAll = isMixed || components.size() == headers.components.size();
}

/** Goes from row to row of tiles. */
Status WindowReader::ReadGroup() {
  ChooseComponents();
  if (!headers.coding.partsAreKnown) {
    return ReadFrom(stream.codeStream, window);
  }
  Status status = SUCCESS;
  LevelArea rows = window;
  for (; rows.top < window.bottom && status == SUCCESS; rows.top = rows.bottom) {
    rows.bottom = std::min(window.bottom, EndOfTile(size.down, rows.top, order.window.level));
    status = ReadRowOfTiles(rows);
  }
  return status;
}

/** Goes along a row of tiles, with as many at a time as memory allows. */
Status WindowReader::ReadRowOfTiles(const LevelArea &area) {
  const std::uint64_t decoded = decodesAll ? headers.components.size() : components.size();
  const std::uint64_t most = std::max<std::uint64_t>(1, kSamplesAtOnce / decoded / (area.bottom - area.top));
  Status status = SUCCESS;
  LevelArea part = area;
  for (; part.left < area.right && status == SUCCESS; part.left = part.right) {
    part.right = EndOfTile(size.across, part.left, order.window.level);
    while (part.right < area.right && !IsPartial()) {
      const std::uint64_t further = EndOfTile(size.across, part.right, order.window.level);
      if (further - part.left > most) break;
      part.right = further;
    }
    part.right = std::min(part.right, area.right);
    status = ReadTiles(part);
    if (status == ERROR_FILE_FORMAT && IsPartial()) {
      WriteZeros(part);
      status = SUCCESS;
    }
  }
  return status;
}

Area WindowReader::AreaOf(const LevelArea &area) const {
  std::uint64_t left = UINT64_MAX;
  std::uint64_t top = UINT64_MAX;
  std::uint64_t right = 0;
  std::uint64_t bottom = 0;
  for (const std::uint32_t component : components) {
    const SampleAxis across = AcrossOf(component);
    const SampleAxis down = DownOf(component);
    left = std::min(left, across.OnGrid(across.SampleAt(area.left)));
    right = std::max(right, across.OnGrid(across.SampleAt(area.right - 1)) + 1);
    top = std::min(top, down.OnGrid(down.SampleAt(area.top)));
    bottom = std::max(bottom, down.OnGrid(down.SampleAt(area.bottom - 1)) + 1);
  }
  return {static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top), static_cast<std::uint32_t>(right),
          static_cast<std::uint32_t>(bottom)};
}

Status WindowReader::ReadTiles(const LevelArea &area) {
  const Area needed = AreaOf(area);
  const TileRange range = {TileAt(size.across, needed.left), TileAt(size.down, needed.top),
                           TileAt(size.across, needed.right - 1) + 1, TileAt(size.down, needed.bottom - 1) + 1};
  const TileStream tiles(stream.codeStream, headers.header, headers.index, range);
  if (tiles.MissingTiles() != 0 && !IsPartial()) return ERROR_FILE_FORMAT;
  return ReadFrom(tiles, area);
}

Status WindowReader::ReadFrom(const ByteSource &source, const LevelArea &area) {
  Header header;
  const Status status = ReadHeader(source, &header);
  if (status != SUCCESS) return status;
  if (!IsPlausible(header, ReadCoding(source, header))) return ERROR_FILE_FORMAT;
  const std::uint64_t decoded = decodesAll ? headers.components.size() : components.size();
  const std::uint32_t rows = RowsAtOnce(source.Size(), static_cast<std::uint32_t>(area.right - area.left),
                                        static_cast<std::uint32_t>(area.bottom - area.top), decoded);
  LevelArea strip = area;
  for (; strip.top < area.bottom; strip.top = strip.bottom) {
    strip.bottom = std::min(area.bottom, strip.top + rows);
    const Status read = ReadStrip(source, header.size, strip);
    if (read != SUCCESS) return read;
  }
  return SUCCESS;
}

Status WindowReader::ReadStrip(const ByteSource &source, const Size &pictured, const LevelArea &area) {
  Decoder decoder(source, {.level = order.window.level, .threads = stream.options.threads, .isStrict = !IsPartial()});
  Status status = decoder.ReadHeader();
  if (status != SUCCESS) return status;
  const opj_image_t &image = decoder.Image();
  const bool isExpected = image.numcomps == size.components && image.x0 == pictured.across.start &&
                          image.y0 == pictured.down.start && image.x1 == pictured.across.end &&
                          image.y1 == pictured.down.end;
  if (!isExpected) return ERROR_FILE_FORMAT;
  const Area picture = {image.x0, image.y0, image.x1, image.y1};
  const Area needed = AreaOf(area);
  if (needed != picture) status = decoder.TakeArea(needed);
  if (status == SUCCESS) status = decoder.Decode(decodesAll ? std::vector<std::uint32_t>() : components);
  return status == SUCCESS ? Write(decoder, needed, area) : status;
}

Status WindowReader::Write(const Decoder &decoder, const Area &decoded, const LevelArea &area) {
  const opj_image_t &image = decoder.Image();
  for (const Wanted &each : wanted) {
    std::uint64_t place = each.channel.component;
    if (!decodesAll) {
      place = static_cast<std::uint64_t>(
          std::lower_bound(components.begin(), components.end(), each.channel.component) - components.begin());
    }
    if (place >= image.numcomps) return ERROR_FILE_FORMAT;
    const Status status = WriteComponent(image.comps[place], each, decoded, area);
    if (status != SUCCESS) return status;
  }
  hasSamples = true;
  return SUCCESS;
}

Status WindowReader::WriteComponent(const opj_image_comp_t &component, const Wanted &to, const Area &decoded,
                                    const LevelArea &area) {
  const SampleAxis across = AcrossOf(to.channel.component);
  const SampleAxis down = DownOf(to.channel.component);
  const std::uint64_t left = across.OfLevel(decoded.left);
  const std::uint64_t top = down.OfLevel(decoded.top);
  const bool hasAll = component.data != nullptr && across.SampleAt(area.right - 1) - left < component.w &&
                      down.SampleAt(area.bottom - 1) - top < component.h;
  if (!hasAll) return ERROR_FILE_FORMAT;
  const auto width = static_cast<std::uint32_t>(area.right - area.left);
  std::vector<std::uint32_t> columns;
  const bool isPlain = across.IsPlain(area.right);
  for (std::uint32_t x = 0; x < width && !isPlain; ++x) {
    columns.push_back(static_cast<std::uint32_t>(across.SampleAt(area.left + x) - left));
  }
  for (std::uint64_t y = area.top; y < area.bottom; ++y) {
    const OPJ_INT32 *const row = component.data + (down.SampleAt(y) - top) * component.w;
    const SampleRun run = {to.place, static_cast<std::uint32_t>(y - window.top),
                           static_cast<std::uint32_t>(area.left - window.left), width};
    if (to.channel.isMapped) {
      const Palette &palette = *headers.palette;
      const auto level = [&](std::uint32_t x) {
        return row[isPlain ? across.SampleAt(area.left + x) - left : columns[x]];
      };
      writer.Put(run, [&](std::uint32_t x) {
        const std::uint64_t color = std::clamp<std::int64_t>(level(x), 0, palette.size - 1);
        return palette.values[color * palette.columns.size() + to.channel.column];
      });
    } else if (isPlain) {
      const OPJ_INT32 *const first = row + (across.SampleAt(area.left) - left);
      writer.Put(run, [first](std::uint32_t x) { return first[x]; });
    } else {
      writer.Put(run, [&](std::uint32_t x) { return row[columns[x]]; });
    }
  }
  return SUCCESS;
}

void WindowReader::WriteZeros(const LevelArea &area) {
  for (const Wanted &each : wanted) {
    for (std::uint64_t y = area.top; y < area.bottom; ++y) {
      const SampleRun run = {each.place, static_cast<std::uint32_t>(y - window.top),
                             static_cast<std::uint32_t>(area.left - window.left),
                             static_cast<std::uint32_t>(area.right - area.left)};
      writer.Put(run, [](std::uint32_t) { return 0; });
    }
  }
}

}  // namespace

std::uint32_t RowsAtOnce(std::uint64_t streamBytes, std::uint32_t width, std::uint32_t height, std::uint64_t decoded) {
  constexpr std::uint64_t kHeldOfAByte = 64;
  constexpr std::uint64_t kShareOfAny = 1024;
  const std::uint64_t rowsOfBytes = kHeldOfAByte * streamBytes / (width * decoded);
  const auto isBounded = [&](std::uint64_t rows) {
    const std::uint64_t held = rows <= rowsOfBytes ? rows * decoded : rows * decoded * kShareOfAny;
    return CheckBitmapLimit(width, held, kscore::Bgr32::bits) == SUCCESS;
  };
  std::uint32_t rows = height;
  while (rows > 1 && !isBounded(rows)) rows = rows / 2;
  return rows;
}

Status OpenForSamples(const ByteSource &source, const KsSamplesOptions &options,
                      std::unique_ptr<SampleStream> *opened) {
  Headers headers;
  const Status status = ReadHeaders(source, options, &headers);
  if (status == SUCCESS) *opened = std::make_unique<Jpeg2000Samples>(source, options, std::move(headers));
  return status;
}

}  // namespace kscodec::jpeg2000
