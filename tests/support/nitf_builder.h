// Makes NITF files in a few lines, field by field, without the library under test.
#pragma once

#include "files.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/** Texts that stand in the place of a header's usual ones, by the standard's field names. */
using FieldTexts = std::map<std::string, std::string>;

struct BandSpec {
  std::string representation; /**< IREPBAND */
  unsigned luts = 0;          /**< NLUTS */
  Bytes lut;                  /**< the rows of the tables, one after the other */
};

/** The image data mask of an IC with one. Offsets count from behind the mask table. */
struct MaskSpec {
  std::vector<std::uint32_t> blockOffsets; /**< BMR; empty: no table */
  std::vector<std::uint32_t> padOffsets;   /**< TMR; empty: no table */
  std::optional<Bytes> padCode;            /**< TPXCD */
};

struct ImageSpec {
  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
  std::vector<BandSpec> bands = {{}};
  std::string representation = "MONO"; /**< IREP */
  std::string pixelValueType = "INT";  /**< PVTYPE */
  std::string compression = "NC";      /**< IC */
  char mode = 'B';                     /**< IMODE */
  std::uint32_t bits = 8;              /**< NBPP */
  std::uint32_t actualBits = 0;        /**< ABPP; 0: as NBPP */
  std::uint32_t blockWidth = 0;        /**< NPPBH; 0: the columns */
  std::uint32_t blockHeight = 0;       /**< NPPBV; 0: the rows */
  int level = 1;
  int attachment = 0;
  int locationRow = 0;
  int locationColumn = 0;
  std::optional<MaskSpec> mask{};
  Bytes data{}; /**< behind the mask table */
  FieldTexts fields{};

  std::uint32_t BlockWidth() const { return blockWidth != 0 ? blockWidth : columns; }
  std::uint32_t BlockHeight() const { return blockHeight != 0 ? blockHeight : rows; }
  std::uint32_t BlocksPerRow() const { return (columns + BlockWidth() - 1) / BlockWidth(); }
  std::uint32_t BlocksPerColumn() const { return (rows + BlockHeight() - 1) / BlockHeight(); }
};

struct GraphicSpec {
  int level = 1;
  int attachment = 0;
  int locationRow = 0;
  int locationColumn = 0;
  char format = 'C';
  Bytes data{};
  FieldTexts fields{};
};

struct TextSpec {
  std::string text;
  FieldTexts fields{};
};

struct DataExtensionSpec {
  std::string identifier;
  std::string userData{}; /**< DESSHF */
  Bytes data{};
  FieldTexts fields{};
};

/** One file. Segments come in the order of the calls, kind by kind. */
class NitfBuilder {
 public:
  NitfBuilder &Image(ImageSpec image);
  NitfBuilder &Graphic(GraphicSpec graphic);
  NitfBuilder &Text(TextSpec text);
  NitfBuilder &DataExtension(DataExtensionSpec extension);
  /** A field of the file header. */
  NitfBuilder &Field(const std::string &name, const std::string &text);

  /** The file. */
  Bytes Build() const;
  /** Its header alone, and the subheader of an image (without mask table). */
  Bytes Header() const { return HeaderOf(Kinds()); }
  Bytes ImageSubheader(std::size_t index) const;
  void Write(const std::string &path) const;

 private:
  /** A segment as it goes into the file. */
  struct Segment {
    Bytes subheader;
    Bytes body;
  };
  /** The segments of one kind, and how the file header tells their lengths. */
  struct Kind {
    const char *count;
    const char *subheaderLength;
    int subheaderDigits;
    const char *dataLength;
    int dataDigits;
    std::vector<Segment> segments;
  };
  std::vector<Kind> Kinds() const;
  Bytes HeaderOf(const std::vector<Kind> &kinds) const;

  std::vector<ImageSpec> images;
  std::vector<GraphicSpec> graphics;
  std::vector<TextSpec> texts;
  std::vector<DataExtensionSpec> extensions;
  FieldTexts headerFields;
};

/** An image of two columns and three rows with the pixels 1 to 6. */
ImageSpec SixPixels(const FieldTexts &fields = {});

/** A file with a stream file header behind it, which holds `replacement`; `lastLength` is another one than is true. */
Bytes WithStreamHeader(Bytes file, const Bytes &replacement, const std::string &lastLength = {});

/** A sample of an image: band, row and column count over the whole image; pads are asked for too. */
using SampleFunction = std::function<std::uint32_t(std::uint32_t band, std::uint32_t row, std::uint32_t column)>;

/** Whether a block, counted row by row, is recorded. */
using BlockFunction = std::function<bool(std::uint32_t block)>;

/**
 * Lays the samples of an image out in its IMODE, block by block, big-endian, rows of a block on whole bytes (samples of
 * one bit with PVTYPE B without any fill). Blocks that are not recorded are left out.
 */
Bytes LayOut(const ImageSpec &image, const SampleFunction &sample, const BlockFunction &recorded = {});
