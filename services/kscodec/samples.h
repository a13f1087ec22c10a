// What the front asks of a codec for raw samples: it opens a stream, and decodes windows of it.
#pragma once

#include "internal/status.h"
#include "kscodec/source.h"
#include "kssamples.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace kscodec {

/** A read that was checked: the window is within the picture, and the container has room for all values. */
struct SampleOrder {
  KsSamplesWindow window;
  std::span<const std::uint32_t> components; /**< in the order of the target; some may be there twice */
  KsSamplesTarget target;
};

/** A stream whose headers have been read. It refers to its source, which must outlive it. */
class SampleStream {
 public:
  virtual ~SampleStream() = default;
  SampleStream(const SampleStream &) = delete;
  SampleStream &operator=(const SampleStream &) = delete;

  const KsSamplesInfo &Info() const { return info; }
  const std::vector<KsSamplesComponent> &Components() const { return components; }

  /** Decodes a window. The target may hold anything after a failure. May throw std::bad_alloc. */
  virtual Status Read(const SampleOrder &order) = 0;

 protected:
  SampleStream(const KsSamplesInfo &described, std::vector<KsSamplesComponent> each)
      : info(described), components(std::move(each)) {}

 private:
  KsSamplesInfo info;
  std::vector<KsSamplesComponent> components;
};

/** The size of a picture's rows or columns at a level. */
constexpr std::uint32_t SizeAtLevel(std::uint32_t size, std::uint32_t level) {
  return static_cast<std::uint32_t>((size + (std::uint64_t{1} << level) - 1) >> level);
}

}  // namespace kscodec
