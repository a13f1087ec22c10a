// One read of a window: which components, which tiles at a time, and where their samples go.
#pragma once

#include "kscodec/jpeg2000/channels.h"
#include "kscodec/jpeg2000/decoder.h"
#include "kscodec/jpeg2000/sample_grid.h"
#include "kscodec/jpeg2000/tile_stream.h"
#include "kscodec/sample_writer.h"
#include "kscodec/samples.h"

#include <optional>
#include <span>
#include <vector>

namespace kscodec::jpeg2000 {

/** Everything that the headers say. */
struct Headers {
  Header header;
  std::vector<Component> components;
  Coding coding;
  TileIndex index;
  std::optional<Palette> palette; /**< where it is to be applied */
};

/** A rectangle of a level, in its coordinates. */
struct LevelArea {
  std::uint64_t left;
  std::uint64_t top;
  std::uint64_t right;
  std::uint64_t bottom;
};

/** A component of the order, and where it goes. */
struct Wanted {
  std::uint64_t place; /**< in the list of the order */
  Channel channel;
};

/** One read of a window. */
class WindowReader {
 public:
  WindowReader(const ByteSource &stream, const Headers &read, const KsSamplesOptions &wantedOptions,
               const SampleOrder &asked)
      : codeStream(stream),
        headers(read),
        options(wantedOptions),
        size(read.header.size),
        order(asked),
        writer(asked.target) {}

  Status Read();

 private:
  bool IsPartial() const { return (options.flags & KS_SAMPLES_PARTIAL) != 0; }
  SampleAxis AcrossOf(std::uint32_t component) const {
    return {size.across, headers.components[component].across, order.window.level};
  }
  SampleAxis DownOf(std::uint32_t component) const {
    return {size.down, headers.components[component].down, order.window.level};
  }

  bool AreMixed(std::uint32_t component) const;
  void ChooseComponents();
  using Place = std::vector<Wanted>::iterator;
  Place EndOfGroup(Place first, Place end) const;
  Status ReadGroup();
  Status ReadRowOfTiles(const LevelArea &area);
  Status ReadTiles(const LevelArea &area);
  Status ReadFrom(const ByteSource &source, const LevelArea &area);
  Status ReadStrip(const ByteSource &source, const Size &pictured, const LevelArea &area);
  Area AreaOf(const LevelArea &area) const;
  Status Write(const Decoder &decoder, const Area &decoded, const LevelArea &area);
  Status WriteComponent(const opj_image_comp_t &component, const Wanted &to, const Area &decoded,
                        const LevelArea &area);
  template <class SampleAt>
  void WriteRow(const SampleRun &run, const Channel &channel, const SampleAt &sampleAt) const;
  void WriteZeros(const LevelArea &area);

  const ByteSource &codeStream;
  const Headers &headers;
  const KsSamplesOptions &options;
  const Size &size;
  const SampleOrder &order;
  SampleWriter writer;
  LevelArea window = {};
  std::span<const Wanted> wanted;        /**< those of the group that is read, by component */
  std::vector<std::uint32_t> components; /**< of the code stream, which rise */
  bool decodesAll = false;               /**< since components are stored as mixtures */
  bool hasSamples = false;
};

}  // namespace kscodec::jpeg2000
