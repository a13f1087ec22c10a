// A JPEG picture that our own decoder reads: its components, and the tables of its scans. What a scan holds depends on
// the process.
#pragma once

#include "internal/ksclasses_.h"
#include "kscodec/jpeg/colors.h"
#include "kscodec/jpeg/entropy.h"
#include "kscodec/jpeg/markers.h"
#include "kscodec/jpeg/quantisation.h"

#include <array>
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

/** The samples of a picture on their way into a bitmap. */
class Picture {
 public:
  /** One coded unit of a component is `unit` samples wide and high: 8 with a transform, 1 without. */
  Picture(const Frame &source, std::uint32_t unit, const Plan &wanted, const KsBitmap &bitmap);

  /**
   * Makes room for the wanted components: for all of their rows, or with `inOneScan` for those that a decoder looks
   * at. Unwanted ones have room for as many. ERROR_NO_MEMORY above 4 GiB, too.
   */
  Status MakePlanes(bool inOneScan);

  Units UnitsOf(const Scan &scan) const;
  std::uint32_t Bits() const { return frame.bits; }
  std::vector<Plane> &Planes() { return planes; }

  /** Must be called after each row of units of a scan. The rows of a picture in one scan go to the bitmap at once. */
  void EndRow() {
    if (isInOneScan) WriteRows();
  }

  /**
   * Writes the rows that are decoded and not written yet into the bitmap. Where a component lacks rows that others
   * have, its samples count as middle brightness.
   */
  void WriteRows();

 private:
  /** What samples become in the bitmap. */
  void MakeScale();
  std::uint32_t DecodedRows() const;
  const std::uint16_t *SamplesOf(const Plane &plane, std::uint32_t row) const;
  void WriteGrayRow(std::uint32_t row, std::uint8_t *out) const;
  void WriteColorRow(std::uint32_t row, std::uint8_t *out) const;

  const Frame &frame;
  std::uint32_t unitSide;
  const Plan &plan;
  const KsBitmap &target;
  std::uint32_t mostAcross = 1;
  std::uint32_t mostDown = 1;
  std::vector<Plane> planes;
  bool isInOneScan = false;
  std::uint32_t writtenRows = 0;
  std::vector<std::uint16_t> scale;   /**< by the value of a sample */
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

/** Decodes a stream of one of these two processes into a bitmap of its size, all of 0. */
Status DecodeOwn(Stream stream, const Header &header, const Plan &plan, const KsBitmap &target);

}  // namespace kscodec::jpeg
