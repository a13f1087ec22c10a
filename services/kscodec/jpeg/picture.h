// A JPEG picture that our own decoder reads: its components, and the tables of its scans. What a scan holds depends on
// the process.
#pragma once

#include "internal/ksclasses_.h"
#include "kscodec/jpeg/colors.h"
#include "kscodec/jpeg/entropy.h"
#include "kscodec/jpeg/markers.h"
#include "kscodec/jpeg/quantisation.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace kscodec::jpeg {

/** A component of the frame, and its samples as far as they are decoded. */
struct Plane {
  std::uint8_t id = 0;
  std::uint32_t across = 1; /**< samples of a coded unit */
  std::uint32_t down = 1;
  std::uint32_t quantisation = 0; /**< the number of its table */
  std::uint32_t width = 0;        /**< samples that the picture needs */
  std::uint32_t height = 0;
  std::uint32_t stride = 0; /**< samples from one row to the next: whole units */
  std::uint32_t heldRows = 0;
  std::uint32_t decodedRows = 0; /**< from the top */
  std::uint32_t shift = 0;       /**< what the samples were halved by in the stream, as a number of bits */
  bool isWanted = false;         /**< the samples of others are not kept */
  bool isScanned = false;
  KsArray<std::uint16_t> samples; /**< heldRows rows, which are used in turn */

  std::uint16_t *Row(std::uint64_t row) const { return samples.Get() + row % heldRows * stride; }
};

/** A component within a scan, with the numbers of its Huffman tables. */
struct ScanPart {
  Plane *plane;
  std::uint32_t dc;
  std::uint32_t ac;
};

/** A scan header (B.2.3). */
struct Scan {
  std::vector<ScanPart> parts;
  std::uint8_t first = 0; /**< Ss: of the spectrum, or the predictor */
  std::uint8_t low = 0;   /**< Al: the point transform */

  bool IsInterleaved() const { return parts.size() > 1; }
};

/** What segments set for the scans after them. */
struct Tables {
  /** The standard Huffman tables, and `given` for quantisation unless it is null, until the stream has others. */
  explicit Tables(const QuantisationTable *given);

  std::array<HuffmanDecoder, 4> dc;
  std::array<HuffmanDecoder, 4> ac;
  std::array<std::array<std::uint16_t, 64>, 4> quantisation = {}; /**< in zigzag order */
  std::array<bool, 4> hasQuantisation = {};
  std::uint32_t restartInterval = 0;
};

/** The units along one axis: in an interleaved scan those of the frame, else those of the one component. */
struct Units {
  std::uint32_t across;
  std::uint32_t down;
};

/** A component in one row of the picture. */
struct PlaneRow {
  const std::uint16_t *samples; /**< of the component, fewer than pixels where it is subsampled */
  std::uint32_t shift;          /**< what they were halved by, as a number of bits */
  std::uint32_t greatest;       /**< level */
  std::uint32_t across;         /**< samples for each `mostAcross` pixels */
  std::uint32_t mostAcross;

  /** The level of a sample, which damaged streams may have beyond the greatest. */
  std::uint32_t Level(std::uint32_t sample) const {
    return std::min(std::uint32_t{samples[sample]} << shift, greatest);
  }
  std::uint32_t SampleOf(std::uint32_t pixel) const { return pixel * across / mostAcross; }
};

class Picture;

/** Where the rows of a picture go, each of them once, from top to bottom. */
class RowSink {
 public:
  virtual ~RowSink() = default;
  virtual void TakeRow(const Picture &picture, std::uint32_t row) = 0;
  /** The rows that are needed, from the top. */
  virtual std::uint32_t NeededRows() const = 0;
};

/** The samples of a picture on their way to a sink. */
class Picture {
 public:
  /**
   * One coded unit of a component is `unit` samples wide and high: 8 with a transform, 1 without. `wanted` are the
   * components that the sink looks at.
   */
  Picture(const Frame &source, std::uint32_t unit, std::span<const std::uint32_t> wanted, RowSink &rows);

  /**
   * Makes room for the wanted components: for all of their rows, or with `inOneScan` for those that a decoder looks
   * at. Unwanted ones have room for as many. ERROR_NO_MEMORY above 4 GiB, too.
   */
  Status MakePlanes(bool inOneScan);

  Units UnitsOf(const Scan &scan) const;
  std::uint32_t Bits() const { return frame.bits; }
  std::uint32_t Width() const { return frame.width; }
  std::vector<Plane> &Planes() { return planes; }

  /**
   * Must be called after each row of units of a scan. The rows of a picture in one scan go to the sink at once. False
   * where it needs no more.
   */
  bool EndRow() {
    if (isInOneScan) WriteRows();
    return writtenRows < sink.NeededRows();
  }

  /** Passes on the rows that are decoded and have not been yet. */
  void WriteRows();

  /** A wanted component. Where it lacks rows that others have, its samples count as middle brightness. */
  PlaneRow RowOf(std::uint32_t component, std::uint32_t row) const;

 private:
  std::uint32_t DecodedRows() const;

  const Frame &frame;
  std::uint32_t unitSide;
  RowSink &sink;
  std::uint32_t mostAcross = 1;
  std::uint32_t mostDown = 1;
  std::vector<Plane> planes;
  bool isInOneScan = false;
  std::uint32_t writtenRows = 0;
  std::vector<std::uint16_t> neutral; /**< a row of middle brightness */
};

/**
 * Decodes one scan, as far as its data go: SUCCESS also where they break off, ERROR_FILE_FORMAT for what no encoder
 * writes. `bits` is at the end of the scan's data afterwards.
 */
using ScanDecoder = Status (*)(const Scan &scan, const Tables &tables, Picture &picture, BitReader &bits);

/** Sequential DCT of 8 or 12 bits (SOF0 and SOF1), with any number of components. */
Status DecodeSequential(const Scan &scan, const Tables &tables, Picture &picture, BitReader &bits);

/** Lossless, process 14 (SOF3). */
Status DecodeLossless(const Scan &scan, const Tables &tables, Picture &picture, BitReader &bits);

/** Decodes a stream of one of these two processes. The sink gets the rows in front of a place where it breaks off. */
Status DecodeOwn(Stream stream, const Header &header, const Plan &plan, std::span<const std::uint32_t> wanted,
                 RowSink &sink);

}  // namespace kscodec::jpeg
