#include "export.h"

#include "file_reader.h"
#include "input_file.h"
#include "ksntfx_reader.h"
#include "kstiff.h"
#include "output_file.h"
#include "printable.h"
#include "progress.h"
#include "saving.h"
#include "segment_choice.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace ntf {
namespace {

constexpr std::uint64_t kStripBytes = std::uint64_t{8} << 20;
/** Samples that are held at a time: so many in any case, and more if this keeps blocks from being decoded twice. */
constexpr std::uint64_t kHeldBytes = std::uint64_t{16} << 20;
constexpr std::uint64_t kMostHeldBytes = std::uint64_t{64} << 20;

struct CloseTiff {
  void operator()(KsTiff *tiff) const { KsTiffClose(tiff); }
};
using Tiff = std::unique_ptr<KsTiff, CloseTiff>;

/** The image that is exported, and the bands of it in the order of the output. */
struct Source {
  std::string name;
  FileReader reader;
  std::uint32_t image = 0;
  NitfImageShape shape{};
  std::vector<std::uint32_t> bands;

  bool HasAllBands() const {
    for (std::uint32_t band = 0; band < bands.size(); ++band) {
      if (bands[band] != band) return false;
    }
    return bands.size() == shape.bands;
  }
  NitfBand Band(std::uint32_t band) const {
    NitfBand described = {};
    // A damaged header may lack bands; they have no names.
    if (NitfReaderGetBand(reader.Get(), image, band, &described) != SUCCESS) described = {};
    return described;
  }
};

Outcome ChooseBands(const ExportOptions &options, Source &source) {
  source.bands = options.bands;
  if (source.bands.empty()) {
    source.bands.resize(source.shape.bands);
    std::iota(source.bands.begin(), source.bands.end(), 0U);
  }
  for (const std::uint32_t band : source.bands) {
    if (band < source.shape.bands) continue;
    const std::string words = "image " + std::to_string(source.image) + " has no band " + std::to_string(band) +
                              ", only " + std::to_string(source.shape.bands);
    return Problem{source.name, words, ERROR_INVALID_VALUE, true};
  }
  if (source.bands.size() <= UINT16_MAX) return {};
  const std::string words = std::to_string(source.bands.size()) + " bands; a TIFF holds up to 65535 (--bands)";
  return Problem{source.name, words, ERROR_NOT_SUPPORTED, true};
}

Outcome OpenSource(const ExportOptions &options, Source &source) {
  source.name = options.file;
  source.image = options.image;
  if (Outcome unopened = source.reader.Open(options.file)) return unopened;
  NitfReader *const reader = source.reader.Get();
  const std::uint32_t images = NitfReaderCount(reader, NITF_SEGMENT_IMAGE);
  if (source.image >= images) {
    return MissingSegment(options.file, SegmentKind::Image, source.image, images);
  }
  const std::int32_t status = NitfReaderGetImage(reader, source.image, &source.shape);
  if (status != SUCCESS) return source.reader.Failed(status);
  if (source.shape.rows == 0 || source.shape.columns == 0 || source.shape.bands == 0) {
    return Problem{options.file, "the image is empty", ERROR_FILE_FORMAT};
  }
  return ChooseBands(options, source);
}

// ---- the directory -------------------------------------------------------------------------------------------------

std::uint32_t SampleFormatOf(std::uint32_t sampleType) {
  if (sampleType == NITF_SAMPLE_COMPLEX64) return KS_TIFF_COMPLEX;
  if (sampleType >= NITF_SAMPLE_FLOAT32) return KS_TIFF_REAL;
  return sampleType >= NITF_SAMPLE_INT8 ? KS_TIFF_SIGNED : KS_TIFF_UNSIGNED;
}

/** Whether the samples are red, green and blue as they are read: the YCbCr of JPEG streams is converted. */
bool IsRgb(const Source &source) {
  const NitfImageShape &shape = source.shape;
  const std::string_view representation = Trim(shape.representation);
  const std::string_view compression = shape.compression;
  const bool isJpeg = compression.ends_with('3') || compression == "I1";
  const bool isColor = representation == "RGB" || (representation == "YCbCr601" && isJpeg);
  const bool isShown = shape.sampleType == NITF_SAMPLE_UINT8 || shape.sampleType == NITF_SAMPLE_UINT16;
  return isColor && isShown && shape.bands == 3 && source.HasAllBands();
}

constexpr std::uint64_t kPaletteColors = 256;
using Palette = std::array<std::uint32_t, kPaletteColors>;

/** The lookup table of the only band. Returns false if there is none that fits a palette. */
bool FindPalette(const Source &source, Palette &palette) {
  if (source.bands.size() != 1 || source.shape.sampleType != NITF_SAMPLE_UINT8) return false;
  std::array<std::uint8_t, kPaletteColors> red{};
  std::array<std::uint8_t, kPaletteColors> green{};
  std::array<std::uint8_t, kPaletteColors> blue{};
  if (NitfReaderGetTable(source.reader.Get(), source.image, source.bands[0], red.data(), green.data(), blue.data(),
                         kPaletteColors) != SUCCESS) {
    return false;
  }
  for (std::size_t color = 0; color < kPaletteColors; ++color) {
    palette[color] = std::uint32_t{red[color]} << 16 | std::uint32_t{green[color]} << 8 | blue[color];
  }
  return true;
}

/** A text of a header in the characters of TIFF's texts. */
std::string Ascii(std::string_view text) {
  std::string plain(Trim(text));
  const auto isForeign = [](char character) { return character < ' ' || character > '~'; };
  std::replace_if(plain.begin(), plain.end(), isForeign, '?');
  return plain;
}

/** A line for each band: "band 0: IREPBAND=R ISUBCAT=650". Fields without a value are left out. */
std::string DescribeBands(const Source &source) {
  std::string lines;
  for (const std::uint32_t number : source.bands) {
    const NitfBand band = source.Band(number);
    const std::string representation = Ascii(band.representation);
    const std::string subcategory = Ascii(band.subcategory);
    if (!lines.empty()) lines += '\n';
    lines += "band " + std::to_string(number) + ":";
    if (!representation.empty()) lines += " IREPBAND=" + representation;
    if (!subcategory.empty()) lines += " ISUBCAT=" + subcategory;
  }
  return lines;
}

// ---- samples -------------------------------------------------------------------------------------------------------

/** How the samples go from the image to the file. */
struct Plan {
  bool isSeparate = false;        /* bands in planes */
  std::uint64_t rowBytes = 0;     /* of a row of a strip */
  std::uint64_t rowsPerStrip = 0; /* of the file */
  std::uint64_t rowsPerRead = 0;  /* whole blocks, or a part of a block */
  std::uint32_t planesPerRead = 1;
};

std::uint64_t Fitting(std::uint64_t room, std::uint64_t bytes, std::uint64_t most) {
  return std::clamp<std::uint64_t>(room / bytes, 1, most);
}

/**
 * Rows are read in multiples of a block's, so that no block is decoded twice, as far as memory allows. Separate planes
 * are read together, so that pixel-interleaved blocks are read once; if a row of blocks is too large for that, fewer
 * rows of uncompressed samples are read at a time, and fewer bands of compressed ones.
 */
Plan PlanOf(const Source &source) {
  constexpr std::uint32_t kMostTogether = 4;
  const NitfImageShape &shape = source.shape;
  const std::uint64_t bandBytes = shape.columns * shape.sampleBytes;
  const auto bands = static_cast<std::uint32_t>(source.bands.size());
  Plan plan;
  plan.isSeparate = bands > kMostTogether || bandBytes * bands > kMostHeldBytes;
  plan.rowBytes = plan.isSeparate ? bandBytes : bandBytes * bands;
  const std::uint32_t planes = plan.isSeparate ? bands : 1;

  const std::uint64_t blockRows = std::min<std::uint64_t>(std::max(shape.blockRows, 1U), shape.rows);
  const bool isUncompressed = std::string_view(shape.compression).starts_with('N');
  const std::uint64_t wanted = isUncompressed ? Fitting(kMostHeldBytes, plan.rowBytes * planes, blockRows) : blockRows;
  plan.planesPerRead = static_cast<std::uint32_t>(Fitting(kMostHeldBytes, plan.rowBytes * wanted, planes));
  const std::uint64_t heldRow = plan.rowBytes * plan.planesPerRead;
  plan.rowsPerRead = Fitting(kMostHeldBytes, heldRow, blockRows);
  if (plan.rowsPerRead == blockRows) plan.rowsPerRead *= Fitting(kHeldBytes, heldRow * blockRows, shape.rows);
  plan.rowsPerStrip = Fitting(kStripBytes, heldRow, shape.rows);
  return plan;
}

std::uint32_t CompressionOf(const ExportOptions &options) {
  return options.compression == "deflate" ? KS_TIFF_DEFLATE : KS_TIFF_UNCOMPRESSED;
}

/** Carries rows from the image to the file. What is no whole strip yet is kept for the next rows. */
class Carrier {
 public:
  Carrier(const Source &from, const Plan &how, KsTiff *to)
      : source(from), plan(how), tiff(to), capacity(plan.rowsPerRead + plan.rowsPerStrip - 1) {}

  Outcome Run(const OutputFile &output) {
    const auto planes = static_cast<std::uint32_t>(plan.isSeparate ? source.bands.size() : 1);
    held.resize(capacity * plan.rowBytes * plan.planesPerRead);
    for (std::uint32_t first = 0; first < planes; first += plan.planesPerRead) {
      firstPlane = first;
      planeCount = std::min(plan.planesPerRead, planes - first);
      if (Outcome failed = CarryPlanes(output, planes)) return failed;
    }
    return {};
  }

 private:
  Outcome CarryPlanes(const OutputFile &output, std::uint32_t planes) {
    const std::uint64_t rows = source.shape.rows;
    heldRows = 0;
    nextStrip = 0;
    for (std::uint64_t row = 0; row < rows;) {
      const std::uint64_t count = std::min(RowsFrom(row), rows - row);
      const std::int32_t status = Read(row, count);
      if (status != SUCCESS) return source.reader.Failed(status);
      heldRows += count;
      row += count;
      const std::int32_t written = WriteStrips(row == rows);
      if (written == ERROR_FILE_WRITE) return output.Failure();
      if (written != SUCCESS) return StatusProblem(output.Name(), written);
      progress.Advance(firstPlane * rows + planeCount * row, planes * rows);
    }
    return {};
  }

  /** The rows to read at `row`: a part of a block ends with the block. */
  std::uint64_t RowsFrom(std::uint64_t row) const {
    const std::uint64_t blockRows = std::max(source.shape.blockRows, 1U);
    return plan.rowsPerRead >= blockRows ? plan.rowsPerRead : std::min(plan.rowsPerRead, blockRows - row % blockRows);
  }

  std::uint8_t *Plane(std::uint32_t plane) { return held.data() + plane * capacity * plan.rowBytes; }

  std::int32_t Read(std::uint64_t row, std::uint64_t count) {
    const auto bands = static_cast<std::uint32_t>(plan.isSeparate ? planeCount : source.bands.size());
    const auto sampleBytes = static_cast<std::int64_t>(source.shape.sampleBytes);
    const NitfWindow window = {row, 0, count, source.shape.columns};
    NitfSampleTarget target = {};
    target.samples = held.data() + heldRows * plan.rowBytes;
    target.rowStep = static_cast<std::int64_t>(plan.rowBytes);
    target.columnStep = plan.isSeparate ? sampleBytes : sampleBytes * bands;
    target.bandStep = plan.isSeparate ? static_cast<std::int64_t>(capacity * plan.rowBytes) : sampleBytes;
    return NitfReaderReadSamples(source.reader.Get(), source.image, &window, source.bands.data() + firstPlane, bands,
                                 &target);
  }

  std::int32_t WriteStrips(bool isEnd) {
    std::uint64_t used = 0;
    for (; heldRows - used >= plan.rowsPerStrip || (isEnd && used < heldRows); ++nextStrip) {
      for (std::uint32_t plane = 0; plane < planeCount; ++plane) {
        const std::uint8_t *const samples = Plane(plane) + used * plan.rowBytes;
        const std::int32_t status = KsTiffWriteStrip(tiff, firstPlane + plane, nextStrip, samples);
        if (status != SUCCESS) return status;
      }
      used = std::min(used + plan.rowsPerStrip, heldRows);
    }
    heldRows -= used;
    for (std::uint32_t plane = 0; plane < planeCount; ++plane) {
      std::memmove(Plane(plane), Plane(plane) + used * plan.rowBytes, heldRows * plan.rowBytes);
    }
    return SUCCESS;
  }

  const Source &source;
  const Plan &plan;
  KsTiff *tiff;
  std::uint64_t capacity; /* rows of a plane that are held */
  std::vector<std::uint8_t> held;
  std::uint64_t heldRows = 0; /* not written yet */
  std::uint64_t nextStrip = 0;
  std::uint32_t firstPlane = 0;
  std::uint32_t planeCount = 0;
  Progress progress{"exporting"};
};

std::int64_t WriteOutput(void *output, std::uint64_t offset, const void *bytes, std::uint64_t size) {
  return static_cast<OutputFile *>(output)->WriteAt(offset, bytes, size) ? static_cast<std::int64_t>(size) : -1;
}

Outcome TiffOutcome(const OutputFile &output, std::int32_t status) {
  if (status == ERROR_FILE_WRITE) return output.Failure();
  if (status == ERROR_NOT_SUPPORTED)
    return Problem{output.Name(), "this build lacks libtiff, or libtiff's Deflate", status};
  return OutcomeOf(output.Name(), status);
}

Outcome WriteTiff(const ExportOptions &options, const Source &source, OutputFile &output) {
  const Plan plan = PlanOf(source);
  Palette palette{};
  const bool hasPalette = FindPalette(source, palette);
  const std::string description = DescribeBands(source);
  KsTiffShape shape = {};
  shape.rows = source.shape.rows;
  shape.columns = source.shape.columns;
  shape.samples = static_cast<std::uint32_t>(source.bands.size());
  shape.bits = source.shape.sampleBytes * 8;
  shape.sampleFormat = SampleFormatOf(source.shape.sampleType);
  shape.isSeparate = plan.isSeparate ? 1 : 0;
  shape.rowsPerStrip = plan.rowsPerStrip;
  shape.colors = hasPalette ? KS_TIFF_PALETTE : IsRgb(source) ? KS_TIFF_RGB : KS_TIFF_GRAY;
  shape.compression = CompressionOf(options);
  shape.colorTable = palette.data();
  shape.description = description.c_str();

  const KsTiffTarget target = {WriteOutput, &output};
  KsTiff *opened = nullptr;
  const std::int32_t status = KsTiffOpen(&target, &shape, &opened);
  const Tiff tiff(opened);
  if (status != SUCCESS) return TiffOutcome(output, status);
  if (Outcome failed = Carrier(source, plan, tiff.get()).Run(output)) return failed;
  return TiffOutcome(output, KsTiffFinish(tiff.get()));
}

}  // namespace

bool IsTiffName(const std::string &name) {
  return name.ends_with(".tif") || name.ends_with(".tiff");
}

Outcome Export(const ExportOptions &options) {
  if (Outcome unreadable = CheckInput(options.file)) return unreadable;
  if (Outcome same = CheckNotInput(options.output, {options.file})) return same;
  if (Outcome taken = CheckFree(options.output, options.force)) return taken;
  Source source;
  if (Outcome failed = OpenSource(options, source)) return failed;
  OutputFile output(options.output);
  if (Outcome unopened = output.Open()) return unopened;
  const Outcome failed = WriteTiff(options, source, output);
  return failed ? failed : output.Commit();
}

}  // namespace ntf
