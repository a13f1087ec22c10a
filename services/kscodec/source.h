// The bytes of a stream: in memory, or read from where they are when they are needed.
#pragma once

#include "internal/status.h"
#include "kscodec/codec.h"
#include "kssamples.h"

#include <cstdint>
#include <vector>

namespace kscodec {

class ByteSource {
 public:
  ByteSource() = default;
  virtual ~ByteSource() = default;
  ByteSource(const ByteSource &) = delete;
  ByteSource &operator=(const ByteSource &) = delete;

  virtual std::uint64_t Size() const = 0;

  /** Copies `bytes` bytes from `at`, which must be within the size. SUCCESS or ERROR_FILE_READ. */
  virtual Status Read(std::uint64_t at, void *buffer, std::uint64_t bytes) const = 0;

  /** All bytes, where they are in memory; otherwise nothing. */
  virtual Stream Memory() const { return {}; }
};

class MemorySource final : public ByteSource {
 public:
  explicit MemorySource(Stream stream) : bytes(stream) {}

  std::uint64_t Size() const override { return bytes.size(); }
  Status Read(std::uint64_t at, void *buffer, std::uint64_t count) const override;
  Stream Memory() const override { return bytes; }

 private:
  Stream bytes;
};

/** What a caller's function reads. */
class CallbackSource final : public ByteSource {
 public:
  explicit CallbackSource(const KsSampleSource &callback) : source(callback) {}

  std::uint64_t Size() const override { return source.size; }
  Status Read(std::uint64_t at, void *buffer, std::uint64_t bytes) const override;

 private:
  KsSampleSource source;
};

/** A part of another source, which must outlive it. */
class SourcePart final : public ByteSource {
 public:
  SourcePart(const ByteSource &whole, std::uint64_t start, std::uint64_t bytes)
      : source(whole), first(start), count(bytes) {}

  std::uint64_t Size() const override { return count; }
  Status Read(std::uint64_t at, void *buffer, std::uint64_t bytes) const override {
    return source.Read(first + at, buffer, bytes);
  }
  Stream Memory() const override;

 private:
  const ByteSource &source;
  std::uint64_t first;
  std::uint64_t count;
};

/** Small pieces of a source, such as headers, with some read-ahead. */
class PieceReader {
 public:
  explicit PieceReader(const ByteSource &whole) : source(whole), memory(whole.Memory()) {}

  std::uint64_t Size() const { return source.Size(); }

  /** Whether `count` bytes follow at `at`. */
  bool Has(std::uint64_t at, std::uint64_t count) const { return at <= Size() && count <= Size() - at; }

  /**
   * `count` bytes at `at`, until the next call. Zeros where the source ends before, or fails, which Check reports.
   */
  Stream At(std::uint64_t at, std::uint64_t count);

  /** SUCCESS, or ERROR_FILE_READ after a read that failed. */
  Status Check() const { return hasFailed ? ERROR_FILE_READ : SUCCESS; }

 private:
  const ByteSource &source;
  Stream memory;
  std::vector<std::uint8_t> held;
  std::uint64_t heldAt = 0;
  bool hasFailed = false;
};

}  // namespace kscodec
