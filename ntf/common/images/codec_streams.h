// Compressed streams inside an image segment, and the functions that decode them. What is in the streams is the codecs'
// business.
#pragma once

#include "images/image_source.h"
#include "internal/ksclasses_.h"

namespace ksntfx {

/** The framework's functions, or those that the caller of a load brought. */
struct LoadFunctions {
  explicit LoadFunctions(const FilterLoadRecord *context)
      : load(context == nullptr ? KsLoadMemory : context->loadFromMemory),
        setRedirect(context == nullptr ? KsSetRedirect : context->setRedirect) {}

  /** The framework can do more than a caller's function: decode into pixels that are there. */
  bool IsFramework() const { return load == KsLoadMemory; }

  NitfLoadFromMemory load;
  NitfSetRedirect setRedirect;
};

/** The bytes of one stream. */
struct CodecStream {
  KsArray<std::uint8_t> bytes;
  std::uint32_t size = 0;

  /** Reads `count` bytes at `offset` behind the image data's start. SUCCESS, ERROR_FILE_READ, ERROR_NO_MEMORY. */
  Status Read(const ImageSource &source, std::int64_t offset, std::uint32_t count);

  /** Reads all data behind IMDATOFF, which may be behind their end: ERROR_FILE_READ. */
  Status ReadAll(const ImageSource &source);

  /** Whether it is of a kind that an image segment may hold. */
  bool IsAccepted() const;

  /** Decodes it into `bitmap`, in the depth and colour order that it has. */
  Status Load(const LoadFunctions &functions, const KsLoadOptions &options, KsBitmap *bitmap) const;
};

/** How the streams of an image with all bands are decoded. The choice of bands may be stored in the record. */
KsLoadOptions LoadOptionsFor(ImageSubheader &image);

}  // namespace ksntfx
