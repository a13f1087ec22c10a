// One stream of a codec inside an image segment, opened for its samples.
#pragma once

#include "images/image_data.h"
#include "images/sample_reader.h"
#include "internal/status.h"
#include "kssamples.h"

#include <span>

namespace ksntfx {

/** Bytes of an image's data behind the mask table. */
struct StreamPlace {
  std::uint64_t offset;
  std::uint64_t bytes;
};

class OpenStream {
 public:
  OpenStream() = default;
  OpenStream(const OpenStream &) = delete;
  OpenStream &operator=(const OpenStream &) = delete;
  ~OpenStream() { KsSamplesClose(stream); }

  /** `data` must outlive the stream. SUCCESS, or a status of KsSamplesOpen. */
  Status Open(const ImageData &data, const StreamPlace &place);

  const KsSamplesInfo &Info() const { return *KsSamplesDescribe(stream); }
  const KsSamplesComponent &Component(std::uint32_t component) const {
    return *KsSamplesDescribeComponent(stream, component);
  }
  /** The type that holds the samples of all components; false where there is none. */
  bool FindType(SampleType *type, std::uint32_t *bits) const;

  /** Decodes a window of some components; see KsSamplesRead. */
  Status Read(const KsSamplesWindow &window, std::span<const std::uint32_t> components, const SampleTarget &target,
              SampleType type) const;

 private:
  static std::int64_t ReadBytes(void *user, std::uint64_t offset, void *buffer, std::uint64_t bytes);

  const ImageData *source = nullptr;
  std::uint64_t start = 0;
  KsSamples *stream = nullptr;
};

}  // namespace ksntfx
