#include "kscodec/jpeg2000/decoder.h"

#include <algorithm>
#include <cstring>

namespace kscodec::jpeg2000 {

namespace {

using Source = Decoder::Source;

OPJ_SIZE_T ReadSource(void *buffer, OPJ_SIZE_T count, void *user) {
  auto &source = *static_cast<Source *>(user);
  const std::uint64_t moved = std::min<std::uint64_t>(count, source.bytes.size() - source.at);
  if (moved == 0) return static_cast<OPJ_SIZE_T>(-1);
  std::memcpy(buffer, source.bytes.data() + source.at, moved);
  source.at += moved;
  return moved;
}

OPJ_OFF_T SkipSource(OPJ_OFF_T count, void *user) {
  auto &source = *static_cast<Source *>(user);
  if (count < 0) return -1;
  const std::uint64_t moved = std::min<std::uint64_t>(count, source.bytes.size() - source.at);
  if (moved == 0 && count != 0) return -1;
  source.at += moved;
  return static_cast<OPJ_OFF_T>(moved);
}

OPJ_BOOL SeekSource(OPJ_OFF_T to, void *user) {
  auto &source = *static_cast<Source *>(user);
  if (to < 0 || static_cast<std::uint64_t>(to) > source.bytes.size()) return OPJ_FALSE;
  source.at = static_cast<std::uint64_t>(to);
  return OPJ_TRUE;
}

opj_stream_t *OpenSource(Source *source) {
  constexpr std::uint64_t kMostBuffered = 1 << 20;
  opj_stream_t *stream = opj_stream_create(std::min<std::uint64_t>(source->bytes.size(), kMostBuffered), OPJ_TRUE);
  if (stream == nullptr) return nullptr;
  opj_stream_set_read_function(stream, ReadSource);
  opj_stream_set_skip_function(stream, SkipSource);
  opj_stream_set_seek_function(stream, SeekSource);
  opj_stream_set_user_data(stream, source, nullptr);
  opj_stream_set_user_data_length(stream, source->bytes.size());
  return stream;
}

void DropMessage(const char *, void *) {}

}  // namespace

Decoder::Decoder(Stream stream, bool isJp2)
    : source{stream}, input(OpenSource(&source)), codec(opj_create_decompress(isJp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K)) {}

Status Decoder::ReadHeader() {
  if (codec == nullptr || input == nullptr) return ERROR_NO_MEMORY;
  opj_set_info_handler(codec.get(), DropMessage, nullptr);
  opj_set_warning_handler(codec.get(), DropMessage, nullptr);
  opj_set_error_handler(codec.get(), DropMessage, nullptr);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  if (!opj_setup_decoder(codec.get(), &parameters)) return ERROR_NO_MEMORY;
  opj_image_t *made = nullptr;
  const bool isRead = opj_read_header(input.get(), codec.get(), &made) != OPJ_FALSE;
  image.reset(made);
  return isRead && image != nullptr ? SUCCESS : ERROR_FILE_FORMAT;
}

Status Decoder::TakeRows(std::uint32_t first, std::uint32_t end) {
  if (image->x1 > INT32_MAX || image->y1 > INT32_MAX) return ERROR_NOT_SUPPORTED;
  const auto place = [](std::uint32_t position) { return static_cast<OPJ_INT32>(position); };
  const bool isSet = opj_set_decode_area(codec.get(), image.get(), place(image->x0), place(image->y0 + first),
                                         place(image->x1), place(image->y0 + end)) != OPJ_FALSE;
  return isSet ? SUCCESS : ERROR_FILE_FORMAT;
}

Status Decoder::Decode(const std::vector<std::uint32_t> &components) {
  if (!components.empty() && !opj_set_decoded_components(codec.get(), static_cast<OPJ_UINT32>(components.size()),
                                                         components.data(), OPJ_FALSE)) {
    return ERROR_FILE_FORMAT;
  }
  return opj_decode(codec.get(), input.get(), image.get()) ? SUCCESS : ERROR_FILE_FORMAT;
}

}  // namespace kscodec::jpeg2000
