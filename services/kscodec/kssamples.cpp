// The exports for raw samples: which codec a stream belongs to, and whether a read is possible.
#include "kssamples.h"

#include "kscodec/codecs.h"
#include "kscodec/samples.h"

#include <algorithm>
#include <memory>
#include <new>
#include <numeric>

/** A stream with its source, which is used by its codec. */
struct KsSamples {
  std::unique_ptr<kscodec::ByteSource> source;
  std::unique_ptr<kscodec::SampleStream> stream;
};

namespace {

using kscodec::ByteSource;
using kscodec::Codec;
using kscodec::kLibraries;
using kscodec::SampleOrder;
using kscodec::SampleStream;
using kscodec::Stream;

/** Nothing may be thrown out of an export. */
template <class Work>
int32_t WithoutExceptions(const Work &work) {
  try {
    return Status(work()).Code();
  } catch (const std::bad_alloc &) {
    return ERROR_NO_MEMORY;
  }
}

Status Open(std::unique_ptr<ByteSource> source, const KsSamplesOptions *options, KsSamples **stream) {
  constexpr uint64_t kBeginning = 512;
  const KsSamplesOptions none = {};
  kscodec::PieceReader pieces(*source);
  const Stream beginning = pieces.At(0, std::min(source->Size(), kBeginning));
  if (pieces.Check() != SUCCESS) return pieces.Check();
  for (const Codec *codec : {&kscodec::kJpegCodec, kLibraries.jpeg2000}) {
    if (codec == nullptr || !codec->recognises(beginning)) continue;
    auto made = std::make_unique<KsSamples>();
    made->source = std::move(source);
    const Status status = codec->openSamples(*made->source, options != nullptr ? *options : none, &made->stream);
    if (status == SUCCESS) *stream = made.release();
    return status;
  }
  return ERROR_NOT_SUPPORTED;
}

struct Container {
  uint32_t bits;
  bool isSigned;
};

constexpr Container kContainers[] = {{8, false},  {8, true},  {16, false}, {16, true},
                                     {32, false}, {32, true}, {64, false}, {64, true}};

/** Whether all values of a component fit. */
bool Holds(const Container &container, const KsSamplesComponent &component) {
  if (component.isSigned != 0) return container.isSigned && container.bits >= component.bits;
  return container.isSigned ? container.bits > component.bits : container.bits >= component.bits;
}

bool IsWithin(uint32_t first, uint32_t count, uint32_t size) {
  return count != 0 && first < size && count <= size - first;
}

Status Check(const SampleStream &stream, const SampleOrder &order) {
  const KsSamplesInfo &info = stream.Info();
  const KsSamplesWindow &window = order.window;
  if (window.level > info.levels) return ERROR_INVALID_VALUE;
  const bool isInside = IsWithin(window.firstRow, window.rows, kscodec::SizeAtLevel(info.rows, window.level)) &&
                        IsWithin(window.firstColumn, window.columns, kscodec::SizeAtLevel(info.columns, window.level));
  if (!isInside || order.components.empty() || order.target.container >= std::size(kContainers)) {
    return ERROR_INVALID_VALUE;
  }
  for (const uint32_t component : order.components) {
    if (component >= info.components) return ERROR_INVALID_VALUE;
    if (!Holds(kContainers[order.target.container], stream.Components()[component])) return ERROR_BITS_PER_PIXEL;
  }
  return SUCCESS;
}

Status Read(SampleStream &stream, const KsSamplesWindow &window, std::span<const uint32_t> components,
            const KsSamplesTarget &target) {
  std::vector<uint32_t> all;
  if (components.data() == nullptr) {
    all.resize(stream.Info().components);
    std::iota(all.begin(), all.end(), 0U);
    components = all;
  }
  const SampleOrder order = {window, components, target};
  const Status status = Check(stream, order);
  return status == SUCCESS ? stream.Read(order) : status;
}

}  // namespace

int32_t KsSamplesOpen(const KsSampleSource *source, const KsSamplesOptions *options, KsSamples **stream) {
  if (stream == nullptr) return ERROR_INVALID_VALUE;
  *stream = nullptr;
  if (source == nullptr || source->read == nullptr) return ERROR_INVALID_VALUE;
  return WithoutExceptions([&] { return Open(std::make_unique<kscodec::CallbackSource>(*source), options, stream); });
}

int32_t KsSamplesOpenMemory(const void *bytes, uint64_t size, const KsSamplesOptions *options, KsSamples **stream) {
  if (stream == nullptr) return ERROR_INVALID_VALUE;
  *stream = nullptr;
  if (bytes == nullptr) return ERROR_INVALID_VALUE;
  const Stream memory(static_cast<const uint8_t *>(bytes), size);
  return WithoutExceptions([&] { return Open(std::make_unique<kscodec::MemorySource>(memory), options, stream); });
}

void KsSamplesClose(KsSamples *stream) {
  const std::unique_ptr<KsSamples> closed(stream);
}

const KsSamplesInfo *KsSamplesDescribe(const KsSamples *stream) {
  return stream != nullptr ? &stream->stream->Info() : nullptr;
}

const KsSamplesComponent *KsSamplesDescribeComponent(const KsSamples *stream, uint32_t component) {
  const bool exists = stream != nullptr && component < stream->stream->Components().size();
  return exists ? &stream->stream->Components()[component] : nullptr;
}

int32_t KsSamplesRead(KsSamples *stream, const KsSamplesWindow *window, const uint32_t *components, uint32_t count,
                      const KsSamplesTarget *target) {
  if (stream == nullptr || window == nullptr || target == nullptr || target->samples == nullptr) {
    return ERROR_INVALID_VALUE;
  }
  const std::span<const uint32_t> wanted(components, components != nullptr ? count : 0);
  return WithoutExceptions([&] { return Read(*stream->stream, *window, wanted, *target); });
}
