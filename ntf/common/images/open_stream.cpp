#include "images/open_stream.h"

#include <algorithm>

namespace ksntfx {

namespace {

/** What the header says of the colours of a stream that says nothing itself. */
std::uint32_t FlagsFor(const ImageData &data) {
  const ImageSubheader &image = *data.image;
  std::uint32_t flags = data.fillsMissing ? KS_SAMPLES_PARTIAL : 0;
  if (image.representation != kYCbCr601 && image.representation != kMono) flags |= KS_SAMPLES_RGB_IF_UNSAID;
  return flags;
}

/** In the order of SampleType; those that no stream has are any. */
constexpr std::uint32_t kContainers[] = {KS_SAMPLES_U8, KS_SAMPLES_U16, KS_SAMPLES_U32, KS_SAMPLES_U64,
                                         KS_SAMPLES_I8, KS_SAMPLES_I16, KS_SAMPLES_I32, KS_SAMPLES_I64};

}  // namespace

std::int64_t OpenStream::ReadBytes(void *user, std::uint64_t offset, void *buffer, std::uint64_t bytes) {
  const auto &stream = *static_cast<const OpenStream *>(user);
  const Status status = stream.source->Read(stream.start + offset, buffer, bytes);
  return status == SUCCESS ? static_cast<std::int64_t>(bytes) : 0;
}

Status OpenStream::Open(const ImageData &data, const StreamPlace &place) {
  source = &data;
  start = place.offset;
  const std::uint64_t held = data.HeldBytes();
  if (place.offset >= held) return ERROR_FILE_READ;
  if (place.bytes > held - place.offset && !data.fillsMissing) return ERROR_FILE_READ;
  const KsSampleSource bytes = {ReadBytes, this, std::min(place.bytes, held - place.offset)};
  KsSamplesOptions options = {FlagsFor(data), 1};
  KsSamplesClose(stream);
  Status status = KsSamplesOpen(&bytes, &options, &stream);
  // A palette in the stream is expanded where the header counts its colours as bands.
  if (status == SUCCESS && Info().paletteSize != 0 && data.image->bandCount > Info().components) {
    KsSamplesClose(stream);
    options.flags |= KS_SAMPLES_EXPAND_PALETTE;
    status = KsSamplesOpen(&bytes, &options, &stream);
  }
  return status;
}

bool OpenStream::FindType(SampleType *type, std::uint32_t *bits) const {
  bool isSigned = false;
  *bits = 0;
  for (std::uint32_t component = 0; component < Info().components; ++component) {
    isSigned = isSigned || Component(component).isSigned != 0;
    *bits = std::max(*bits, Component(component).bits);
  }
  *type = IntegerType(*bits, isSigned);
  return *bits >= 1 && *bits <= 64;
}

Status OpenStream::Read(const KsSamplesWindow &window, std::span<const std::uint32_t> components,
                        const SampleTarget &target, SampleType type) const {
  const KsSamplesTarget to = {target.samples, target.rowStep, target.columnStep, target.bandStep,
                              kContainers[static_cast<std::size_t>(type)]};
  return KsSamplesRead(stream, &window, components.data(), static_cast<std::uint32_t>(components.size()), &to);
}

}  // namespace ksntfx
