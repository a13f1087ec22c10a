// JPEG: what a stream is, and which decoder reads it.
#include "kscodec/codecs.h"
#include "kscodec/jpeg/colors.h"
#include "kscodec/jpeg/markers.h"
#include "kscodec/jpeg/own_rows.h"
#include "kscodec/jpeg/processes.h"
#include "kscodec/jpeg/samples.h"
#include "kscore/bitmap.h"

#include <cstring>

namespace kscodec::jpeg {

namespace {

class JpegStream : public OpenedStream {
 public:
  JpegStream(Stream source, const Header &read, const PictureInfo &picture)
      : OpenedStream(picture), stream(source), header(read) {}

  Status Load(const KsLoadOptions &options, KsBitmap *target) const override {
    Status status = Check();
    if (status == SUCCESS) status = CreateBitmap(Info().width, Info().height, DepthOfBitmap(Info()), target);
    return status == SUCCESS ? Decode(options, *target) : status;
  }

  Status LoadInPlace(const KsLoadOptions &options, const KsBitmap &place) const override {
    const Status status = Check();
    if (status != SUCCESS) return status;
    // Our own decoder writes no rows where the stream breaks off.
    const uint64_t rowBytes = (uint64_t{place.width} * place.bitsPerPixel + 7) / 8;
    for (uint32_t row = 0; row < place.height && IsOwn(Info()); ++row) {
      std::memset(kscore::RowOf(place, row), 0, rowBytes);
    }
    return Decode(options, place);
  }

 private:
  /** Whether a decoder knows the process, and the stream is long enough. */
  Status Check() const {
    if (!IsPlausible(header, header.entropy.size(), Info())) return ERROR_FILE_FORMAT;
    return IsSupported(Info()) ? SUCCESS : ERROR_NOT_SUPPORTED;
  }

  Status Decode(const KsLoadOptions &options, const KsBitmap &target) const {
    const Plan plan = PlanOf(header, options);
    if (IsOwn(Info())) {
      BitmapRows rows(header.frame, plan, target);
      return DecodeOwn(stream, header, plan, plan.picked, rows);
    }
    return kLibraries.decodeJpeg(WithWholeSegments(stream, header), plan, target);
  }

  Stream stream;
  Header header;
};

bool Recognises(Stream padded) {
  const Stream stream = WithoutFill(padded);
  return stream.size() >= 3 && stream[0] == 0xFF && stream[1] == kSoi && stream[2] == 0xFF;
}

Status Open(Stream padded, std::unique_ptr<OpenedStream> *opened) {
  const Stream stream = WithoutFill(padded);
  Header header;
  PictureInfo info;
  Status status = ReadHeader(stream, &header);
  if (status == SUCCESS) status = Describe(header.frame, &info);
  if (status == SUCCESS) *opened = std::make_unique<JpegStream>(stream, header, info);
  return status;
}

}  // namespace

}  // namespace kscodec::jpeg

const kscodec::Codec kscodec::kJpegCodec = {jpeg::Recognises, jpeg::Open, jpeg::OpenForSamples, true};
