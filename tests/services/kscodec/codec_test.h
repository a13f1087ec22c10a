// What the tests of the codecs share: streams loaded, whole and damaged.
#pragma once

#include "../service_test.h"

#include <algorithm>

/** Decodes a stream that has a header. */
inline int32_t LoadStream(const Bytes &stream, KsLocalBitmap &bitmap, const KsLoadOptions *options = nullptr) {
  return KsLoadMemory(stream.data(), bitmap.Get(), sizeof(KsBitmap), 0, KS_ORDER_CODEC, stream.size(), options,
                      nullptr);
}

inline int32_t Inform(const Bytes &stream, KsFileInfo *info) {
  *info = {};
  return KsFileInfoMemory(stream.data(), info, sizeof *info, stream.size(), 0, 0);
}

inline KsLoadOptions Options(uint32_t flags, const std::array<uint32_t, 3> &bands = {}) {
  KsLoadOptions options;
  EXPECT_EQ(KsLoadOptionsInit(&options, sizeof options), SUCCESS);
  options.loadFlags = flags;
  std::copy(bands.begin(), bands.end(), options.bands);
  return options;
}

inline Bytes Joined(Bytes first, const Bytes &second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/** Decodes a stream that may be damaged: there is a status, or all of a picture. */
inline int32_t LoadDamaged(const Bytes &stream) {
  KsLocalBitmap bitmap;
  const int32_t status = LoadStream(stream, bitmap);
  EXPECT_TRUE(status == SUCCESS || status == ERROR_FILE_FORMAT || status == ERROR_NOT_SUPPORTED ||
              status == ERROR_NO_MEMORY)
      << status;
  EXPECT_EQ(bitmap->pixels != nullptr, status == SUCCESS);
  EXPECT_EQ(bitmap->width != 0, status == SUCCESS);
  KsFileInfo info;
  const int32_t informed = Inform(stream, &info);
  EXPECT_TRUE(status != SUCCESS || informed == SUCCESS) << informed;
  return status;
}

/** Decodes a stream with each of its bytes changed in some ways. A changed size may ask for gigabytes. */
inline void LoadWithChangedBytes(const Bytes &stream) {
  KsSetBitmapLimit(uint64_t{1} << 20);
  for (size_t i = 0; i < stream.size() && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE(i);
    for (const int change : {0x01, 0x10, 0x80, 0xFF}) {
      Bytes damaged = stream;
      damaged[i] = static_cast<uint8_t>(damaged[i] ^ change);
      LoadDamaged(damaged);
    }
  }
  KsSetBitmapLimit(0);
}
