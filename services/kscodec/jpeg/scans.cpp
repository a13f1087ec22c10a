// From segment to segment: tables, scan headers, and the scans themselves.
#include "kscodec/jpeg/picture.h"

#include <algorithm>
#include <numeric>

namespace kscodec::jpeg {

namespace {

/** Tables of a DHT segment (B.2.4.2). */
bool ReadHuffman(Stream body, Tables *tables) {
  constexpr std::size_t kCounts = 16;
  while (body.size() > kCounts) {
    const std::uint32_t tableClass = body[0] >> 4;
    const std::uint32_t number = body[0] & 0xFU;
    HuffmanTable table;
    std::copy_n(body.begin() + 1, kCounts, table.counts.begin());
    const std::size_t symbols = std::accumulate(table.counts.begin(), table.counts.end(), std::size_t{0});
    body = body.subspan(1 + kCounts);
    if (tableClass > 1 || number >= tables->dc.size() || symbols > 256 || symbols > body.size()) return false;
    table.symbols = body.first(symbols);
    if (!(tableClass == 0 ? tables->dc : tables->ac)[number].Build(table)) return false;
    body = body.subspan(symbols);
  }
  return body.empty();
}

/** Tables of a DQT segment (B.2.4.1), of 8 or 16 bits. */
bool ReadQuantisation(Stream body, Tables *tables) {
  while (!body.empty()) {
    const std::size_t width = (body[0] >> 4) + std::size_t{1};
    const std::uint32_t number = body[0] & 0xFU;
    const std::size_t bytes = 64 * width;
    if (width > 2 || number >= tables->quantisation.size() || body.size() <= bytes) return false;
    for (std::size_t i = 0; i < 64; ++i) {
      const std::uint8_t *const value = body.data() + 1 + i * width;
      tables->quantisation[number][i] = static_cast<std::uint16_t>(width == 1 ? value[0] : value[0] << 8 | value[1]);
    }
    tables->hasQuantisation[number] = true;
    body = body.subspan(1 + bytes);
  }
  return true;
}

bool ReadRestartInterval(Stream body, Tables *tables) {
  if (body.size() != 2) return false;
  tables->restartInterval = std::uint32_t{body[0]} << 8 | body[1];
  return true;
}

/** Reads the tables of a segment; false for a damaged one. */
bool TakeTables(const Segment &segment, Tables *tables) {
  switch (segment.marker) {
    case kDht:
      return ReadHuffman(segment.body, tables);
    case kDqt:
      return ReadQuantisation(segment.body, tables);
    case kDri:
      return ReadRestartInterval(segment.body, tables);
    default:
      return true;
  }
}

/** The components of a scan come in the order of the frame, each in one scan of the picture only. */
bool ReadScan(Stream body, Picture &picture, Scan *scan) {
  constexpr std::size_t kTrailer = 3;
  const std::size_t count = body.empty() ? 0 : body[0];
  if (count == 0 || count > kMostScanComponents || body.size() != 1 + 2 * count + kTrailer) return false;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t id = body[1 + 2 * i];
    const std::uint32_t numbers = body[2 + 2 * i];
    const auto plane = std::find_if(picture.Planes().begin(), picture.Planes().end(),
                                    [&](const Plane &known) { return known.id == id && !known.isScanned; });
    if (plane == picture.Planes().end() || numbers >> 4 > 3 || (numbers & 0xF) > 3) return false;
    plane->isScanned = true;
    scan->parts.push_back({&*plane, numbers >> 4, numbers & 0xF});
  }
  const Stream trailer = body.last(kTrailer);
  scan->first = trailer[0];
  scan->low = trailer[2] & 0xF;
  return true;
}

bool AllAreScanned(Picture &picture) {
  return std::all_of(picture.Planes().begin(), picture.Planes().end(),
                     [](const Plane &plane) { return plane.isScanned; });
}

/** Reads all segments of a stream that ReadHeader accepted, and decodes its scans. */
Status DecodeScans(Stream stream, const Plan &plan, Picture &picture, ScanDecoder decoder) {
  Tables tables(plan.quantisation);
  constexpr std::size_t kStartOfImage = 2;
  MarkerWalk walk(stream.subspan(kStartOfImage));
  Segment segment;
  // Where the segments break off, the picture is what came before.
  while (!AllAreScanned(picture) && walk.Next(&segment) == SUCCESS && segment.marker != kEoi) {
    if (segment.marker != kSos) {
      if (!TakeTables(segment, &tables)) return ERROR_FILE_FORMAT;
      continue;
    }
    Scan scan;
    if (!ReadScan(segment.body, picture, &scan)) return ERROR_FILE_FORMAT;
    BitReader bits(walk.Rest());
    const Status status = decoder(scan, tables, picture, bits);
    if (status != SUCCESS) return status;
    walk = MarkerWalk(bits.Rest());
  }
  return SUCCESS;
}

}  // namespace

Tables::Tables(const QuantisationTable *given) {
  for (std::size_t i = 0; i < quantisation.size() && given != nullptr; ++i) {
    std::copy(given->begin(), given->end(), quantisation[i].begin());
    hasQuantisation[i] = true;
  }
  for (std::size_t i = 0; i < kStandardDc.size(); ++i) {
    dc[i].Build(kStandardDc[i]);
    ac[i].Build(kStandardAc[i]);
  }
}

Status DecodeOwn(Stream stream, const Header &header, const Plan &plan, std::span<const std::uint32_t> wanted,
                 RowSink &sink) {
  const bool isLossless = header.frame.marker == kSof3;
  constexpr std::uint32_t kTransformed = 8;
  Picture picture(header.frame, isLossless ? 1 : kTransformed, wanted, sink);
  Status status = picture.MakePlanes(IsInOneScan(header));
  if (status == SUCCESS) status = DecodeScans(stream, plan, picture, isLossless ? DecodeLossless : DecodeSequential);
  if (status == SUCCESS) picture.WriteRows();
  return status;
}

}  // namespace kscodec::jpeg
