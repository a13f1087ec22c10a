#include "images/handlimg.h"

#include "images/image_target.h"
#include "images/streams.h"
#include "images/strips.h"
#include "images/tiles.h"
#include "images/vq.h"

namespace ksntfx {

namespace {

std::unique_ptr<ImageReader> MakeTiledReader(const LoadFunctions &functions, const ImageSource &source) {
  const ImageSubheader &image = *source.image;
  if (BlockGrid(image).IsSingle()) return MakeStreamReader(functions, source);
  const bool streamForEachBand = image.bandCount > 1 && image.mode == kBandSequential;
  return streamForEachBand ? MakeBandStreamsReader(functions, source) : MakeTileReader(functions, source);
}

/** One image on its way from the file to where it is shown. */
class ImageRoad {
 public:
  ImageRoad(FilterLoadRecord *loadContext, const NitfFile *file, ImageSubheader *image, std::uint32_t index)
      : functions(loadContext), source(OpenSource(file, image, index)) {}

  /** Makes the reader for the layout of the data, and opens it. */
  Status Open() {
    // An image that would make no bitmap is refused, whatever its data.
    Status status =
        KindOf(*source.image).layout == ImageLayout::VectorQuantised ? SUCCESS : CheckTargetSize(*source.image);
    if (status == SUCCESS) status = MakeReader();
    return status == SUCCESS ? reader->Open() : status;
  }

  Status PassTo(ImageSink &sink) {
    ShownImage shownImage(source, *reader, shown);
    return PassInStrips(*reader, shownImage, sink);
  }

  Status PassTo(KsBitmap *target) {
    ShownImage shownImage(source, *reader, shown);
    return PassWhole(*reader, shownImage, target);
  }

 private:
  Status MakeReader() {
    switch (KindOf(*source.image).layout) {
      case ImageLayout::None:
        return ERROR_NOT_SUPPORTED;
      case ImageLayout::PlainBlocks: {
        const Status status = ChooseShown(*source.image, &shown);
        if (status != SUCCESS) return status;
        const bool packed = source.image->pixelValueType == 1;
        reader = packed ? MakeBilevelReader(source, shown.bands) : MakePlainReader(source, shown.bands);
        break;
      }
      case ImageLayout::BilevelStream:
        reader = MakeBilevelStreamReader(functions, source);
        break;
      case ImageLayout::VectorQuantised:
        shown.depth = kVqDepth;
        reader = MakeVqReader(source);
        break;
      case ImageLayout::Tiles:
        reader = MakeTiledReader(functions, source);
        break;
      case ImageLayout::OneStream:
        reader = MakeStreamReader(functions, source);
        break;
    }
    return reader == nullptr ? ERROR_NO_MEMORY : SUCCESS;
  }

  LoadFunctions functions;
  ImageSource source;
  ShownRows shown{};
  std::unique_ptr<ImageReader> reader;
};

template <class Target>
Status Decode(FilterLoadRecord *loadContext, const NitfFile *file, std::uint32_t index, Target &&target) {
  ImageSubheader *const image = FindImage(file, index);
  if (image == nullptr) return ERROR_INVALID_VALUE;
  ImageRoad road(loadContext, file, image, index);
  const Status status = road.Open();
  return status == SUCCESS ? road.PassTo(target) : status;
}

}  // namespace

Status DecodeImageSegment(FilterLoadRecord *loadContext, const NitfFile *file, std::uint32_t index, KsBitmap *target) {
  return Decode(loadContext, file, index, target);
}

Status DecodeImageInStrips(FilterLoadRecord *loadContext, const NitfFile *file, std::uint32_t index, ImageSink &sink) {
  return Decode(loadContext, file, index, sink);
}

}  // namespace ksntfx
