#include "jpeg2000_encoder.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

std::uint32_t DivideUp(std::uint32_t value, std::uint32_t by) {
  return (value + by - 1) / by;
}

OPJ_SIZE_T Read(void *buffer, OPJ_SIZE_T count, void *user) {
  auto &memory = *static_cast<Jpeg2000Memory *>(user);
  const std::size_t moved = std::min<std::size_t>(count, memory.bytes.size() - memory.at);
  std::memcpy(buffer, memory.bytes.data() + memory.at, moved);
  memory.at += moved;
  return moved == 0 ? static_cast<OPJ_SIZE_T>(-1) : moved;
}

OPJ_SIZE_T Write(void *buffer, OPJ_SIZE_T count, void *user) {
  auto &memory = *static_cast<Jpeg2000Memory *>(user);
  memory.bytes.resize(std::max(memory.bytes.size(), memory.at + count));
  std::memcpy(memory.bytes.data() + memory.at, buffer, count);
  memory.at += count;
  return count;
}

OPJ_OFF_T Skip(OPJ_OFF_T count, void *user) {
  static_cast<Jpeg2000Memory *>(user)->at += static_cast<std::size_t>(count);
  return count;
}

OPJ_BOOL Seek(OPJ_OFF_T to, void *user) {
  static_cast<Jpeg2000Memory *>(user)->at = static_cast<std::size_t>(to);
  return OPJ_TRUE;
}

using Image = std::unique_ptr<opj_image_t, decltype(&opj_image_destroy)>;
using Codec = std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)>;
using Input = std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)>;

Image MakeImage(const Jpeg2000Spec &spec, const Jpeg2000Samples &samples) {
  std::vector<opj_image_cmptparm_t> shapes;
  for (const Jpeg2000Component &component : spec.components) {
    const Jpeg2000Extent extent = ExtentOf(spec, component);
    opj_image_cmptparm_t shape = {};
    shape.dx = component.dx;
    shape.dy = component.dy;
    shape.w = extent.width;
    shape.h = extent.height;
    shape.prec = component.bits;
    shape.sgnd = component.isSigned ? 1 : 0;
    shapes.push_back(shape);
  }
  Image image(opj_image_create(static_cast<OPJ_UINT32>(shapes.size()), shapes.data(), spec.space), opj_image_destroy);
  image->x0 = spec.left;
  image->y0 = spec.top;
  image->x1 = spec.left + spec.width;
  image->y1 = spec.top + spec.height;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    std::copy(samples[i].begin(), samples[i].end(), image->comps[i].data);
  }
  if (spec.hasAlpha) image->comps[image->numcomps - 1].alpha = 1;
  return image;
}

}  // namespace

Jpeg2000Extent ExtentOf(const Jpeg2000Spec &spec, const Jpeg2000Component &component) {
  const std::uint32_t left = DivideUp(spec.left, component.dx);
  const std::uint32_t top = DivideUp(spec.top, component.dy);
  return {left, top, DivideUp(spec.left + spec.width, component.dx) - left,
          DivideUp(spec.top + spec.height, component.dy) - top};
}

opj_stream_t *OpenJpeg2000Memory(Jpeg2000Memory *memory, bool reads) {
  opj_stream_t *stream = opj_stream_create(1 << 20, reads ? OPJ_TRUE : OPJ_FALSE);
  opj_stream_set_read_function(stream, Read);
  opj_stream_set_write_function(stream, Write);
  opj_stream_set_skip_function(stream, Skip);
  opj_stream_set_seek_function(stream, Seek);
  opj_stream_set_user_data(stream, memory, nullptr);
  opj_stream_set_user_data_length(stream, memory->bytes.size());
  return stream;
}

Bytes EncodeJpeg2000(const Jpeg2000Spec &spec, const Jpeg2000Samples &samples) {
  const Image image = MakeImage(spec, samples);
  opj_cparameters_t parameters;
  opj_set_default_encoder_parameters(&parameters);
  parameters.tcp_numlayers = 1;
  parameters.tcp_rates[0] = spec.rate;
  parameters.cp_disto_alloc = 1;
  // The encoder requires a pixel at the lowest resolution.
  parameters.numresolution = std::min(spec.width, spec.height) < 4 ? 1 : spec.resolutions;
  parameters.tcp_mct = spec.mixes ? 1 : 0;
  parameters.irreversible = spec.irreversible ? 1 : 0;
  parameters.tile_size_on = spec.tile != 0 ? OPJ_TRUE : OPJ_FALSE;
  parameters.cp_tdx = parameters.cp_tdy = static_cast<int>(spec.tile);
  Jpeg2000Memory memory;
  const Codec codec(opj_create_compress(spec.isJp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K), opj_destroy_codec);
  const Input stream(OpenJpeg2000Memory(&memory, false), opj_stream_destroy);
  const bool isDone = opj_setup_encoder(codec.get(), &parameters, image.get()) &&
                      opj_start_compress(codec.get(), image.get(), stream.get()) &&
                      opj_encode(codec.get(), stream.get()) && opj_end_compress(codec.get(), stream.get());
  if (!isDone) std::abort();
  return memory.bytes;
}

std::vector<Jpeg2000Plane> DecodeJpeg2000(const Bytes &stream, bool isJp2, std::uint32_t level) {
  Jpeg2000Memory memory = {stream};
  const Input input(OpenJpeg2000Memory(&memory, true), opj_stream_destroy);
  const Codec codec(opj_create_decompress(isJp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K), opj_destroy_codec);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  parameters.cp_reduce = level;
  opj_image_t *made = nullptr;
  // The area is that of the whole picture; without this call, the library gets the sizes of levels wrong.
  const bool isRead = opj_setup_decoder(codec.get(), &parameters) && opj_read_header(input.get(), codec.get(), &made) &&
                      opj_set_decode_area(codec.get(), made, 0, 0, 0, 0);
  const Image image(made, opj_image_destroy);
  if (!isRead || !opj_decode(codec.get(), input.get(), image.get())) std::abort();
  std::vector<Jpeg2000Plane> planes;
  for (std::uint32_t i = 0; i < image->numcomps; ++i) {
    const opj_image_comp_t &component = image->comps[i];
    planes.push_back(
        {component.w, component.h, {component.data, component.data + std::size_t{component.w} * component.h}});
  }
  return planes;
}
