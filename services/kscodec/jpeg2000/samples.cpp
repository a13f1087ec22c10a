#include "kscodec/jpeg2000/samples.h"

#include "kscodec/jpeg2000/window_reader.h"

#include <algorithm>

namespace kscodec::jpeg2000 {

namespace {

/** The most that the library decodes. */
constexpr std::uint32_t kMostDecodedBits = 31;

constexpr std::uint32_t kUnspecified = 65535;

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

class Jpeg2000Samples final : public SampleStream {
 public:
  Jpeg2000Samples(const ByteSource &whole, const KsSamplesOptions &wanted, Headers &&read)
      : SampleStream(InfoOf(read), DescribeComponents(whole, read)),
        codeStream(whole, read.header.codeStreamAt, read.header.codeStreamBytes),
        options(wanted),
        headers(std::move(read)) {}

  Status Read(const SampleOrder &order) override;

 private:
  SourcePart codeStream;
  KsSamplesOptions options;
  Headers headers;
};

Status Jpeg2000Samples::Read(const SampleOrder &order) {
  const auto isTooDeep = [](const Component &component) { return component.bits > kMostDecodedBits; };
  if (std::any_of(headers.components.begin(), headers.components.end(), isTooDeep)) return ERROR_NOT_SUPPORTED;
  return WindowReader(codeStream, headers, options, order).Read();
}

}  // namespace

Status OpenForSamples(const ByteSource &source, const KsSamplesOptions &options,
                      std::unique_ptr<SampleStream> *opened) {
  Headers headers;
  const Status status = ReadHeaders(source, options, &headers);
  if (status == SUCCESS) *opened = std::make_unique<Jpeg2000Samples>(source, options, std::move(headers));
  return status;
}

}  // namespace kscodec::jpeg2000
