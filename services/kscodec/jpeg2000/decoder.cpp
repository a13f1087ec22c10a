#include "kscodec/jpeg2000/decoder.h"

#include <algorithm>
#include <cstring>

namespace kscodec::jpeg2000 {

namespace {

using Input = Decoder::Input;

OPJ_SIZE_T ReadInput(void *buffer, OPJ_SIZE_T count, void *user) {
  auto &input = *static_cast<Input *>(user);
  const std::uint64_t moved = std::min<std::uint64_t>(count, input.source->Size() - input.at);
  if (moved == 0) return static_cast<OPJ_SIZE_T>(-1);
  if (input.source->Read(input.at, buffer, moved) != SUCCESS) {
    input.hasFailed = true;
    return static_cast<OPJ_SIZE_T>(-1);
  }
  input.at += moved;
  return moved;
}

OPJ_OFF_T SkipInput(OPJ_OFF_T count, void *user) {
  auto &input = *static_cast<Input *>(user);
  if (count < 0) return -1;
  const std::uint64_t moved = std::min<std::uint64_t>(count, input.source->Size() - input.at);
  if (moved == 0 && count != 0) return -1;
  input.at += moved;
  return static_cast<OPJ_OFF_T>(moved);
}

OPJ_BOOL SeekInput(OPJ_OFF_T to, void *user) {
  auto &input = *static_cast<Input *>(user);
  if (to < 0 || static_cast<std::uint64_t>(to) > input.source->Size()) return OPJ_FALSE;
  input.at = static_cast<std::uint64_t>(to);
  return OPJ_TRUE;
}

opj_stream_t *OpenInput(Input *input) {
  // The library reads whole tile parts past this buffer.
  constexpr std::uint64_t kMostBuffered = 1 << 16;
  opj_stream_t *stream = opj_stream_create(std::min<std::uint64_t>(input->source->Size(), kMostBuffered), OPJ_TRUE);
  if (stream == nullptr) return nullptr;
  opj_stream_set_read_function(stream, ReadInput);
  opj_stream_set_skip_function(stream, SkipInput);
  opj_stream_set_seek_function(stream, SeekInput);
  opj_stream_set_user_data(stream, input, nullptr);
  opj_stream_set_user_data_length(stream, input->source->Size());
  return stream;
}

void DropMessage(const char *, void *) {}

}  // namespace

Decoder::Decoder(const ByteSource &source, const DecoderOptions &wanted)
    : options(wanted),
      input{&source},
      stream(OpenInput(&input)),
      codec(opj_create_decompress(wanted.isJp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K)) {}

Status Decoder::ReadHeader() {
  if (codec == nullptr || stream == nullptr) return ERROR_NO_MEMORY;
  opj_set_info_handler(codec.get(), DropMessage, nullptr);
  opj_set_warning_handler(codec.get(), DropMessage, nullptr);
  opj_set_error_handler(codec.get(), DropMessage, nullptr);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  parameters.cp_reduce = options.level;
  if (!opj_setup_decoder(codec.get(), &parameters)) return ERROR_NO_MEMORY;
  if (!options.isStrict && !opj_decoder_set_strict_mode(codec.get(), OPJ_FALSE)) return ERROR_NO_MEMORY;
  if (options.threads > 1 && !opj_codec_set_threads(codec.get(), static_cast<int>(options.threads))) {
    return ERROR_NO_MEMORY;
  }
  opj_image_t *made = nullptr;
  const bool isRead = opj_read_header(stream.get(), codec.get(), &made) != OPJ_FALSE;
  image.reset(made);
  if (!isRead || image == nullptr) return Failure();
  if (options.level == 0) return SUCCESS;
  // The area is that of the whole picture; without this call, the library gets the sizes of levels wrong.
  return opj_set_decode_area(codec.get(), image.get(), 0, 0, 0, 0) ? SUCCESS : Failure();
}

Status Decoder::TakeArea(const Area &area) {
  if (image->x1 > INT32_MAX || image->y1 > INT32_MAX) return ERROR_NOT_SUPPORTED;
  const auto place = [](std::uint32_t position) { return static_cast<OPJ_INT32>(position); };
  const bool isSet = opj_set_decode_area(codec.get(), image.get(), place(area.left), place(area.top), place(area.right),
                                         place(area.bottom)) != OPJ_FALSE;
  return isSet ? SUCCESS : ERROR_FILE_FORMAT;
}

Status Decoder::Decode(const std::vector<std::uint32_t> &components) {
  if (!components.empty() && !opj_set_decoded_components(codec.get(), static_cast<OPJ_UINT32>(components.size()),
                                                         components.data(), OPJ_FALSE)) {
    return ERROR_FILE_FORMAT;
  }
  return opj_decode(codec.get(), stream.get(), image.get()) ? SUCCESS : Failure();
}

}  // namespace kscodec::jpeg2000
