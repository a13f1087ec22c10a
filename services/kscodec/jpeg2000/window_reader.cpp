#include "kscodec/jpeg2000/window_reader.h"

#include "kscodec/jpeg2000/rows_at_once.h"

#include <algorithm>

namespace kscodec::jpeg2000 {

/** The samples that are decoded at a time if tiles allow it; four bytes each. */
constexpr std::uint64_t kSamplesAtOnce = 4 << 20;

Status WindowReader::Read() {
  const std::uint32_t level = order.window.level;
  window.left = SampleAxis::AtLevel(size.across.start, level) + order.window.firstColumn;
  window.top = SampleAxis::AtLevel(size.down.start, level) + order.window.firstRow;
  window.right = window.left + order.window.columns;
  window.bottom = window.top + order.window.rows;
  std::vector<Wanted> all;
  for (std::uint64_t place = 0; place < order.components.size(); ++place) {
    const std::uint32_t number = order.components[place];
    all.push_back({place, headers.palette ? headers.palette->channels[number] : Channel{number}});
    const std::uint32_t component = all.back().channel.component;
    if (AcrossOf(component).IsEmpty() || DownOf(component).IsEmpty()) return ERROR_FILE_FORMAT;
  }
  std::sort(all.begin(), all.end(),
            [](const Wanted &left, const Wanted &right) { return left.channel.component < right.channel.component; });
  Status status = SUCCESS;
  for (auto first = all.begin(); first != all.end() && status == SUCCESS;) {
    const auto end = EndOfGroup(first, all.end());
    wanted = {first, end};
    ChooseComponents();
    status = ReadGroup();
    first = end;
  }
  if (status != SUCCESS) return status;
  return hasSamples ? SUCCESS : ERROR_FILE_FORMAT;
}

/** Whether a component is made of others. */
bool WindowReader::AreMixed(std::uint32_t component) const {
  constexpr std::uint32_t kMixed = 3;
  return headers.coding.mixesComponents && component < kMixed;
}

/** The components that are decoded together: as many as memory allows, and all mixed ones at once. */
WindowReader::Place WindowReader::EndOfGroup(Place first, Place end) const {
  constexpr std::uint64_t kMostSamples = 16 << 20;
  const Size &whole = headers.header.size;
  const std::uint64_t rows = std::min<std::uint64_t>(order.window.rows, whole.tileHeight >> order.window.level);
  const std::uint64_t columns = std::min<std::uint64_t>(order.window.columns, whole.tileWidth >> order.window.level);
  const std::uint64_t most = kMostSamples / std::max<std::uint64_t>(1, rows * columns);
  std::uint64_t count = 0;
  for (auto each = first; each != end; ++each) {
    const std::uint32_t component = each->channel.component;
    const bool isNew = each == first || component != (each - 1)->channel.component;
    if (AreMixed(component) != AreMixed(first->channel.component)) return each;
    if (isNew && count++ >= most && each != first && !AreMixed(component)) return each;
  }
  return end;
}

/** Components are decoded by themselves unless some of them are made of others. */
void WindowReader::ChooseComponents() {
  components.clear();
  for (const Wanted &each : wanted) {
    if (components.empty() || components.back() != each.channel.component) {
      components.push_back(each.channel.component);
    }
  }
  decodesAll = AreMixed(components.front()) || components.size() == headers.components.size();
}

/** Goes from row to row of tiles. */
Status WindowReader::ReadGroup() {
  if (!headers.coding.partsAreKnown) return ReadFrom(codeStream, window);
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
  const TileStream tiles(codeStream, headers.header, headers.index, range);
  const std::uint64_t mostMissing = IsPartial() ? range.Count() - 1 : 0;
  if (tiles.MissingTiles() > mostMissing) return ERROR_FILE_FORMAT;
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
  Decoder decoder(source, {.level = order.window.level, .threads = options.threads, .isStrict = !IsPartial()});
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
  std::vector<std::uint32_t> columns(across.IsPlain(area.right) ? 0 : width);
  for (std::uint32_t x = 0; x < columns.size(); ++x) {
    columns[x] = static_cast<std::uint32_t>(across.SampleAt(area.left + x) - left);
  }
  for (std::uint64_t y = area.top; y < area.bottom; ++y) {
    const OPJ_INT32 *const row = component.data + (down.SampleAt(y) - top) * component.w;
    const SampleRun run = {to.place, static_cast<std::uint32_t>(y - window.top),
                           static_cast<std::uint32_t>(area.left - window.left), width};
    if (!columns.empty()) {
      WriteRow(run, to.channel, [&](std::uint32_t x) { return row[columns[x]]; });
    } else {
      const OPJ_INT32 *const first = row + (across.SampleAt(area.left) - left);
      WriteRow(run, to.channel, [first](std::uint32_t x) { return first[x]; });
    }
  }
  return SUCCESS;
}

/** Stores samples, or what the palette makes of them. */
template <class SampleAt>
void WindowReader::WriteRow(const SampleRun &run, const Channel &channel, const SampleAt &sampleAt) const {
  if (!channel.isMapped) return writer.Put(run, sampleAt);
  const Palette &palette = *headers.palette;
  writer.Put(run, [&](std::uint32_t x) {
    const auto color = static_cast<std::uint64_t>(std::clamp<std::int64_t>(sampleAt(x), 0, palette.size - 1));
    return palette.values[color * palette.columns.size() + channel.column];
  });
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

}  // namespace kscodec::jpeg2000
