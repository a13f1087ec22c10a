// What an encoder of the framework has written.
#pragma once

#include "internal/status.h"
#include "kskernel.h"
#include "platform.h"

#include <cstdint>

namespace ksntfx {

/** A global block with encoded bytes, which goes back at the end of its scope. */
class EncodedData {
 public:
  EncodedData() = default;
  EncodedData(const EncodedData &) = delete;
  EncodedData &operator=(const EncodedData &) = delete;
  ~EncodedData() {
    if (bytes != nullptr) platform::GlobalUnlock(handle);
    if (handle != nullptr) KsFreeGlobal(handle, __LINE__, __FILE__);
  }

  /** Where an encoder is to put its handle and its size. */
  void **Handle() { return &handle; }
  std::uint64_t *Size() { return &size; }

  /** Takes over what the encoder gave: its failure, SUCCESS with the bytes at hand, or ERROR_NO_MEMORY. */
  Status Take(std::int32_t encoded) {
    KsTrackAlloc(KS_MEMORY_GLOBAL, handle, __LINE__, __FILE__);
    if (encoded != SUCCESS) return encoded;
    bytes = static_cast<const char *>(platform::GlobalLock(handle));
    return bytes == nullptr ? ERROR_NO_MEMORY : SUCCESS;
  }

  const char *Bytes() const { return bytes; }
  std::uint64_t Count() const { return size; }

 private:
  void *handle = nullptr;
  std::uint64_t size = 0;
  const char *bytes = nullptr;
};

}  // namespace ksntfx
