// Composing compressed pictures, as a ratio to the codec's own library: decoding the same streams from memory, and
// copying as many bytes as the canvas has.
#include "jpeg2000_encoder.h"
#include "jpeg_encoder.h"
#include "measure.h"
#include "nitf_builder.h"
#include "t4_encoder.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <jpeglib.h>
#include <tiffio.h>

namespace {

/** A file, and its streams decoded by the library behind the codec. */
struct Scene {
  const char *name;
  std::uint32_t side;
  std::uint32_t canvasBits;
  double aim; /**< times the floor */
  std::vector<Bytes> (*encode)(std::uint32_t side);
  ImageSpec (*image)(const std::vector<Bytes> &streams, std::uint32_t side);
  void (*decode)(const Bytes &stream);
};

/** Land from above: slow waves, and some noise. */
std::uint8_t Terrain(std::uint32_t band, std::uint32_t x, std::uint32_t y) {
  static std::uint32_t state = 1;
  const double wave = std::sin(x * 0.013 + band) * 50 + std::cos(y * 0.017 + x * 0.003) * 45;
  return static_cast<std::uint8_t>(128 + wave + (NoiseByte(state) & 15));
}

Bytes Joined(const std::vector<Bytes> &streams) {
  Bytes data;
  for (const Bytes &stream : streams) data.insert(data.end(), stream.begin(), stream.end());
  return data;
}

// ---- JPEG -----------------------------------------------------------------------------------------------------------

constexpr std::uint32_t kTile = 256;

Bytes EncodeTile(std::uint32_t left, std::uint32_t top, int bands) {
  const JpegEncoding encoding = {
      .components = bands, .sampling = {{2, 2}}, .jfif = true, .quality = 85, .width = kTile, .height = kTile};
  return EncodeByLibrary(
      encoding, [&](std::uint32_t band, std::uint32_t x, std::uint32_t y) { return Terrain(band, left + x, top + y); });
}

template <int kBands>
std::vector<Bytes> EncodeTiles(std::uint32_t side) {
  std::vector<Bytes> tiles;
  for (std::uint32_t top = 0; top < side; top += kTile) {
    for (std::uint32_t left = 0; left < side; left += kTile) tiles.push_back(EncodeTile(left, top, kBands));
  }
  return tiles;
}

template <int kBands, bool kMasked>
ImageSpec TiledImage(const std::vector<Bytes> &streams, std::uint32_t side) {
  ImageSpec image{.rows = side, .columns = side, .compression = kMasked ? "M3" : "C3", .blockWidth = kTile};
  image.blockHeight = kTile;
  if (kBands == 3) {
    image.representation = "YCbCr601";
    image.mode = 'P';
    image.bands = {{"Y", 0, {}}, {"Cb", 0, {}}, {"Cr", 0, {}}};
  }
  if (kMasked) {
    image.mask = MaskSpec{};
    std::uint32_t offset = 0;
    for (const Bytes &stream : streams) {
      image.mask->blockOffsets.push_back(offset);
      offset += static_cast<std::uint32_t>(stream.size());
    }
  }
  image.data = Joined(streams);
  return image;
}

void DecodeJpeg(const Bytes &stream) {
  static Bytes pixels(std::size_t{kTile} * kTile * 3);
  jpeg_decompress_struct jpeg{};
  jpeg_error_mgr errors{};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&jpeg);
  jpeg_mem_src(&jpeg, stream.data(), static_cast<unsigned long>(stream.size()));
  jpeg_read_header(&jpeg, TRUE);
  if (jpeg.num_components == 3) jpeg.out_color_space = JCS_EXT_BGR;
  jpeg_start_decompress(&jpeg);
  const std::size_t step = std::size_t{jpeg.output_width} * static_cast<std::size_t>(jpeg.output_components);
  while (jpeg.output_scanline < jpeg.output_height) {
    constexpr std::uint32_t kRows = 16;
    JSAMPROW rows[kRows];
    for (std::uint32_t i = 0; i < kRows; ++i) rows[i] = pixels.data() + (jpeg.output_scanline + i) * step;
    jpeg_read_scanlines(&jpeg, rows, std::min(kRows, jpeg.output_height - jpeg.output_scanline));
  }
  jpeg_destroy_decompress(&jpeg);
  benchmark::DoNotOptimize(pixels.data());
}

// ---- JPEG 2000 ------------------------------------------------------------------------------------------------------

std::vector<Bytes> EncodePicture(std::uint32_t side) {
  const Jpeg2000Spec spec = {.components = std::vector<Jpeg2000Component>(3),
                             .width = side,
                             .height = side,
                             .mixes = true,
                             .space = OPJ_CLRSPC_SRGB,
                             .rate = 12,
                             .resolutions = 6};
  Jpeg2000Samples samples(3);
  for (std::uint32_t band = 0; band < 3; ++band) {
    for (std::uint32_t i = 0; i < side * side; ++i) samples[band].push_back(Terrain(band, i % side, i / side));
  }
  return {EncodeJpeg2000(spec, samples)};
}

ImageSpec Jpeg2000Image(const std::vector<Bytes> &streams, std::uint32_t side) {
  ImageSpec image{.rows = side, .columns = side, .representation = "RGB", .compression = "C8", .data = streams[0]};
  image.bands = {{"R", 0, {}}, {"G", 0, {}}, {"B", 0, {}}};
  image.blockWidth = image.blockHeight = side;
  return image;
}

void DecodeJpeg2000(const Bytes &bytes) {
  Jpeg2000Memory memory{bytes};
  opj_codec_t *codec = opj_create_decompress(OPJ_CODEC_J2K);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  opj_setup_decoder(codec, &parameters);
  opj_stream_t *stream = OpenJpeg2000Memory(&memory, true);
  opj_image_t *image = nullptr;
  if (!opj_read_header(stream, codec, &image) || !opj_decode(codec, stream, image)) std::abort();
  opj_image_destroy(image);
  opj_stream_destroy(stream);
  opj_destroy_codec(codec);
}

// ---- T.4 ------------------------------------------------------------------------------------------------------------

const std::string &TiffPath() {
  static const std::string path = BenchPath("tiff");
  return path;
}

/** Words on a page: runs of some ten pixels, alike in a few rows one below the other. */
std::vector<Bytes> EncodePage(std::uint32_t side) {
  Bytes row(side / 8);
  std::uint32_t state = 1;
  const auto isBlack = [&](std::uint32_t y, std::uint32_t x) {
    if (y % 4 == 0 && x == 0) {
      for (std::size_t at = 0; at < row.size();) {
        const std::uint8_t ink = (NoiseByte(state) & 3) == 0 ? 1 : 0;
        for (unsigned run = 1 + (NoiseByte(state) & 7); run > 0 && at < row.size(); --run) row[at++] = ink;
      }
    }
    return row[x / 8] != 0;
  };
  return {EncodeT4({side, side, isBlack}, false, TiffPath())};
}

ImageSpec T4Image(const std::vector<Bytes> &streams, std::uint32_t side) {
  ImageSpec image{.rows = side, .columns = side, .pixelValueType = "B", .compression = "C1", .bits = 1};
  image.data = streams[0];
  image.fields = {{"COMRAT", "1D"}, {"NPPBH", "0000"}, {"NPPBV", "0000"}};
  return image;
}

void DecodeT4(const Bytes &) {
  TIFF *tiff = TIFFOpen(TiffPath().c_str(), "r");
  Bytes row(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
  std::uint32_t rows = 0;
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &rows);
  for (std::uint32_t y = 0; y < rows; ++y) TIFFReadScanline(tiff, row.data(), y, 0);
  TIFFClose(tiff);
}

// ---- the table ------------------------------------------------------------------------------------------------------

const Scene kScenes[] = {
    {"JPEG 4096 x 4096 mono, tiles of 256, searched", 4096, 8, 1.15, EncodeTiles<1>, TiledImage<1, false>, DecodeJpeg},
    {"JPEG 4096 x 4096 mono, tiles of 256, mask table", 4096, 8, 1.15, EncodeTiles<1>, TiledImage<1, true>, DecodeJpeg},
    {"JPEG 4096 x 4096 YCbCr, tiles of 256, searched", 4096, 24, 1.15, EncodeTiles<3>, TiledImage<3, false>,
     DecodeJpeg},
    {"JPEG 4096 x 4096 YCbCr, tiles of 256, mask table", 4096, 24, 1.15, EncodeTiles<3>, TiledImage<3, true>,
     DecodeJpeg},
    {"JPEG 2000 2048 x 2048 RGB, one thread", 2048, 24, 1.1, EncodePicture, Jpeg2000Image, DecodeJpeg2000},
    {"T.4 8192 x 8192, one-dimensional", 8192, 8, 1.2, EncodePage, T4Image, DecodeT4},
};

/** One composition and one floor an iteration, turn by turn; the best of each counts. */
void MeasureScene(benchmark::State &state, const Scene &scene) {
  const std::vector<Bytes> streams = scene.encode(scene.side);
  const std::string path = BenchPath("codec");
  NitfBuilder().Image(scene.image(streams, scene.side)).Write(path);
  double composed = 1e9;
  double floor = 1e9;
  for ([[maybe_unused]] auto iteration : state) {
    const double seconds = SecondsOf([&] { ComposeFile(path, scene.canvasBits, scene.side); });
    composed = std::min(composed, seconds);
    floor = std::min(floor, SecondsOf([&] {
                       for (const Bytes &stream : streams) scene.decode(stream);
                       CopyNewCanvas(scene.side, scene.canvasBits);
                     }));
    state.SetIterationTime(seconds);
  }
  state.counters["floors"] = composed / floor;
  state.counters["aim"] = scene.aim;
  std::filesystem::remove(path);
  std::filesystem::remove(TiffPath());
}

}  // namespace

int main(int argc, char **argv) {
  for (const Scene &scene : kScenes) {
    benchmark::RegisterBenchmark(scene.name, [&scene](benchmark::State &state) { MeasureScene(state, scene); })
        ->UseManualTime()
        ->Iterations(7);
  }
  benchmark::Initialize(&argc, argv);
  RatioTable table;
  benchmark::RunSpecifiedBenchmarks(&table);
  return 0;
}
