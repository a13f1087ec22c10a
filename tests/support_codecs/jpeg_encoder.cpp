#include "jpeg_encoder.h"

#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

namespace {

void DescribeComponents(const JpegEncoding &encoding, jpeg_compress_struct *jpeg) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(encoding.components); ++i) {
    jpeg_component_info &component = jpeg->comp_info[i];
    component.component_id = static_cast<std::uint8_t>(encoding.ids[i]);
    const bool chroma = i != 0 && encoding.components == 3;
    component.quant_tbl_no = component.dc_tbl_no = component.ac_tbl_no = chroma ? 1 : 0;
    if (i >= encoding.sampling.size()) continue;
    component.h_samp_factor = static_cast<int>(encoding.sampling[i].across);
    component.v_samp_factor = static_cast<int>(encoding.sampling[i].down);
  }
}

void WriteAdobe(jpeg_compress_struct *jpeg, std::uint8_t transform) {
  const Bytes body = {'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, transform};
  jpeg_write_marker(jpeg, JPEG_APP0 + 14, body.data(), static_cast<unsigned>(body.size()));
}

void WriteNitf(jpeg_compress_struct *jpeg, const std::array<std::uint8_t, 2> &nitf) {
  const Bytes body = {'N', 'I', 'T', 'F', 0, 2, 0, 'P', 0, 1, 0, 1, 1, 8, 0, 1, nitf[0], nitf[1], 8, 1, 1, 0, 0};
  jpeg_write_marker(jpeg, JPEG_APP0 + 6, body.data(), static_cast<unsigned>(body.size()));
}

}  // namespace

Bytes EncodeByLibrary(const JpegEncoding &encoding, const JpegSample &sample) {
  jpeg_compress_struct jpeg = {};
  jpeg_error_mgr errors = {};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char *memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &memory, &size);
  jpeg.image_width = encoding.width;
  jpeg.image_height = encoding.height;
  jpeg.input_components = encoding.components;
  jpeg.in_color_space = JCS_UNKNOWN;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, encoding.quality, TRUE);
  DescribeComponents(encoding, &jpeg);
  jpeg.write_JFIF_header = encoding.jfif ? TRUE : FALSE;
  jpeg.restart_interval = encoding.restart;
  jpeg.optimize_coding = encoding.isFitted ? TRUE : FALSE;
  std::vector<jpeg_scan_info> scans;
  for (int i = 0; i < encoding.components && encoding.eachAlone; ++i) scans.push_back({1, {i}, 0, 63, 0, 0});
  jpeg.scan_info = scans.empty() ? nullptr : scans.data();
  jpeg.num_scans = static_cast<int>(scans.size());
  if (encoding.progressive) jpeg_simple_progression(&jpeg);
  jpeg_start_compress(&jpeg, TRUE);
  if (encoding.adobe) WriteAdobe(&jpeg, *encoding.adobe);
  if (encoding.nitf) WriteNitf(&jpeg, *encoding.nitf);
  const auto components = static_cast<std::uint32_t>(encoding.components);
  Bytes row(std::size_t{encoding.width} * components);
  for (std::uint32_t y = 0; y < encoding.height; ++y) {
    for (std::uint32_t i = 0; i < row.size(); ++i) {
      row[i] = static_cast<std::uint8_t>(sample(i % components, i / components, y));
    }
    JSAMPROW rows[] = {row.data()};
    jpeg_write_scanlines(&jpeg, rows, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  Bytes stream(memory, memory + size);
  std::free(memory);
  return stream;
}

JpegPixels DecodeByLibrary(const Bytes &stream, bool convertsToRgb, std::uint32_t level) {
  jpeg_decompress_struct jpeg = {};
  jpeg_error_mgr errors = {};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&jpeg);
  jpeg_mem_src(&jpeg, stream.data(), static_cast<unsigned long>(stream.size()));
  jpeg_read_header(&jpeg, TRUE);
  jpeg.jpeg_color_space = convertsToRgb ? JCS_YCbCr : JCS_UNKNOWN;
  jpeg.out_color_space = convertsToRgb ? JCS_RGB : JCS_UNKNOWN;
  jpeg.scale_denom = 1U << level;
  jpeg_start_decompress(&jpeg);
  JpegPixels pixels = {jpeg.output_width, jpeg.output_height, {}};
  const std::size_t rowBytes = std::size_t{pixels.width} * static_cast<std::size_t>(jpeg.output_components);
  pixels.samples.resize(rowBytes * pixels.height);
  while (jpeg.output_scanline < jpeg.output_height) {
    JSAMPROW row = pixels.samples.data() + jpeg.output_scanline * rowBytes;
    jpeg_read_scanlines(&jpeg, &row, 1);
  }
  jpeg_destroy_decompress(&jpeg);
  return pixels;
}
