#include "images/streams.h"

#include "headers/mask_table.h"
#include "images/image_target.h"

#include <new>

namespace ksntfx {

namespace {

/** The shape of an image that is a bitmap of its reader's own making. */
ImageShape WholeShape(const ImageSubheader &image) {
  ImageShape shape = ShapeOf(BlockGrid(image), TargetDepth(image));
  shape.isWhole = true;
  shape.blockHeight = static_cast<std::uint32_t>(PaddedHeight(image));
  shape.across = shape.down = shape.gridAcross = 1;
  return shape;
}

class StreamReader final : public ImageReader {
 public:
  StreamReader(const LoadFunctions &loadFunctions, const ImageSource &data)
      : functions(loadFunctions), source(data), image(*data.image) {}

  Status Open() override {
    shape = WholeShape(image);
    return stream.ReadAll(source);
  }

  Status MakeBitmap(KsBitmap *, std::uint64_t) override { return SUCCESS; }

  Status Read(const BlockRows &, const StripPlace &place, StoredRows *stored) override {
    const Status status = stream.Load(functions, LoadOptionsFor(image), place.strip);
    if (status != SUCCESS) return status;
    // The codec's grays are the indices of an image with a lookup table.
    SetImagePalette(place.strip, image);
    if (KindOf(image).isReduced) place.strip->flags |= KS_BITMAP_ENLARGED;
    stored->form = StoredRows::Form::Placed;
    return SUCCESS;
  }

 private:
  const LoadFunctions &functions;
  const ImageSource &source;
  ImageSubheader &image;
  CodecStream stream;
};

/** What the redirect callback answers for a bi-level stream. */
struct RawPicture {
  std::uint32_t format;
  std::uint32_t width;
  std::uint32_t height;
};

std::int32_t DescribeRaw(KsRawFormatInfo *info, void *userData) {
  const auto &picture = *static_cast<const RawPicture *>(userData);
  info->format = picture.format;
  info->width = picture.width;
  info->height = picture.height;
  info->bits = 1;
  info->offset = 0;
  info->pages = 1;
  return SUCCESS;
}

class BilevelStreamReader final : public ImageReader {
 public:
  BilevelStreamReader(const LoadFunctions &loadFunctions, const ImageSource &data)
      : functions(loadFunctions), source(data), image(*data.image) {}

  Status Open() override {
    shape = WholeShape(image);
    return stream.ReadAll(source);
  }

  Status MakeBitmap(KsBitmap *bitmap, std::uint64_t rows) override {
    return CreateTarget(bitmap, image, PaddedWidth(image), rows);
  }

  Status Read(const BlockRows &, const StripPlace &place, StoredRows *stored) override {
    const Status status = DecodeBilevel(functions, image, stream.bytes.Get(), stream.size, place.strip);
    if (status != SUCCESS) return status;
    CrossPalette(place.strip);
    InvertPadCode();
    stored->form = StoredRows::Form::Placed;
    return SUCCESS;
  }

 private:
  /** The codec gives 1 for white, where the format counts black as 1: the colours of the image's table change places.
   */
  void CrossPalette(KsBitmap *target) const {
    constexpr std::uint32_t kColors = 2;
    if (image.lut == nullptr || image.lutCount < kColors) return;
    KsPaletteEntry entries[kColors] = {};
    KsBitmapGetPalette(target, 0, kColors, entries);
    for (std::uint32_t color = 0; color < kColors; ++color) {
      const std::uint32_t entry = image.lut[color];
      KsPaletteEntry &other = entries[kColors - 1 - color];
      other.blue = static_cast<std::uint8_t>(entry);
      other.green = static_cast<std::uint8_t>(entry >> 8);
      other.red = static_cast<std::uint8_t>(entry >> 16);
    }
    KsBitmapSetPalette(target, 0, kColors, entries);
  }

  /** The pad value stays on its colour: it becomes its logical inverse, once for each decoding. */
  void InvertPadCode() {
    if (image.padCode == nullptr) return;
    const bool wasZero = image.padCode[0] == 0;
    KsFreeAndClear(image.padCode);
    KsArray<std::uint8_t> inverse;
    if (!inverse.Allocate(2)) return;
    inverse[0] = wasZero ? 1 : 0;
    image.padCode = inverse.Release();
    image.padCodeHeld = 1;
  }

  const LoadFunctions &functions;
  const ImageSource &source;
  ImageSubheader &image;
  CodecStream stream;
};

}  // namespace

Status DecodeBilevel(const LoadFunctions &functions, const ImageSubheader &image, const std::uint8_t *bytes,
                     std::uint32_t size, KsBitmap *target) {
  const bool twoDimensional = image.rateKind == kRate2DS || image.rateKind == kRate2DH;
  RawPicture picture{twoDimensional ? KS_FORMAT_T4_2D : KS_FORMAT_T4_1D, target->width, target->height};
  const KsRedirectCallback before = functions.setRedirect(DescribeRaw, &picture);
  const Status status = functions.load(bytes, target, sizeof *target, static_cast<std::int32_t>(target->bitsPerPixel),
                                       KS_ORDER_BGR, size, nullptr, nullptr);
  functions.setRedirect(before, nullptr);
  return status;
}

std::unique_ptr<ImageReader> MakeStreamReader(const LoadFunctions &functions, const ImageSource &source) {
  return std::unique_ptr<ImageReader>(new (std::nothrow) StreamReader(functions, source));
}

std::unique_ptr<ImageReader> MakeBilevelStreamReader(const LoadFunctions &functions, const ImageSource &source) {
  return std::unique_ptr<ImageReader>(new (std::nothrow) BilevelStreamReader(functions, source));
}

}  // namespace ksntfx
