#include "t4_encoder.h"

#include <cstdlib>

#include <tiffio.h>

Bytes EncodeT4(const T4Picture &picture, bool twoDimensional, const std::string &path) {
  TIFF *tiff = TIFFOpen(path.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX3);
  TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, twoDimensional ? GROUP3OPT_2DENCODING : 0);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, picture.height);
  for (std::uint32_t row = 0; row < picture.height; ++row) {
    Bytes line((picture.width + 7) / 8);
    for (std::uint32_t x = 0; x < picture.width; ++x) {
      if (picture.isBlack(row, x)) line[x / 8] = static_cast<std::uint8_t>(line[x / 8] | 0x80 >> x % 8);
    }
    TIFFWriteScanline(tiff, line.data(), row, 0);
  }
  TIFFClose(tiff);
  tiff = TIFFOpen(path.c_str(), "r");
  Bytes stream(TIFFRawStripSize64(tiff, 0));
  if (TIFFReadRawStrip(tiff, 0, stream.data(), static_cast<tmsize_t>(stream.size())) < 0) std::abort();
  TIFFClose(tiff);
  return stream;
}
