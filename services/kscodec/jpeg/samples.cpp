#include "kscodec/jpeg/samples.h"

#include "kscodec/jpeg/own_rows.h"
#include "kscodec/jpeg/processes.h"

#include <algorithm>

namespace kscodec::jpeg {

namespace {

/** The first bytes of a stream, which have its header; the whole stream where it is in memory, or short. */
struct Beginning {
  std::vector<std::uint8_t> held;
  std::uint64_t fill = 0; /**< bytes FF in front of the stream */
  Stream bytes;           /**< from the start of image on */
  bool isWhole = false;
};

/** Reads as much of a stream as its header needs. */
Status ReadBeginning(const ByteSource &source, Beginning *beginning, Header *header) {
  constexpr std::uint64_t kFirst = 1 << 16;
  constexpr std::uint64_t kMost = 16 << 20;
  for (std::uint64_t count = kFirst;; count *= 4) {
    Stream bytes = source.Memory();
    if (bytes.empty()) {
      count = std::min(count, source.Size());
      beginning->held.resize(count);
      const Status status = source.Read(0, beginning->held.data(), count);
      if (status != SUCCESS) return status;
      bytes = beginning->held;
    }
    beginning->bytes = WithoutFill(bytes);
    beginning->fill = bytes.size() - beginning->bytes.size();
    beginning->isWhole = bytes.size() == source.Size();
    const Status status = ReadHeader(beginning->bytes, header);
    if (status == SUCCESS || beginning->isWhole || count >= kMost) return status;
  }
}

std::vector<KsSamplesComponent> DescribeComponents(const Frame &frame) {
  constexpr std::uint32_t kUnspecified = 65535;
  std::uint32_t across = 1;
  std::uint32_t down = 1;
  for (std::size_t i = 0; i < frame.components && frame.components > 1; ++i) {
    across = std::max<std::uint32_t>(across, frame.ComponentAt(i).across);
    down = std::max<std::uint32_t>(down, frame.ComponentAt(i).down);
  }
  std::vector<KsSamplesComponent> components;
  for (std::size_t i = 0; i < frame.components; ++i) {
    const Component component = frame.ComponentAt(i);
    components.push_back({frame.bits, 0, std::max(1U, down / component.down), std::max(1U, across / component.across),
                          kUnspecified, kUnspecified});
  }
  return components;
}

/** What the stream itself says. */
std::uint32_t ColorOf(const Header &header) {
  constexpr std::uint8_t kYcck = 2;
  const Frame &frame = header.frame;
  if (frame.components == 1) return KS_SAMPLES_COLOR_GRAY;
  if (frame.components == 4 && header.hasAdobe) {
    return header.adobeTransform == kYcck ? KS_SAMPLES_COLOR_YCCK : KS_SAMPLES_COLOR_CMYK;
  }
  if (frame.components != 3) return KS_SAMPLES_COLOR_UNSAID;
  // Where the stream says it, a wish makes no difference.
  if (IsRgb(header, false)) return KS_SAMPLES_COLOR_RGB;
  return IsRgb(header, true) ? KS_SAMPLES_COLOR_UNSAID : KS_SAMPLES_COLOR_YCBCR;
}

/** Whether three components become red, green and blue. */
bool Converts(const Header &header, const KsSamplesOptions &options) {
  if (header.frame.components != 3 || (options.flags & KS_SAMPLES_AS_STORED) != 0) return false;
  return !IsRgb(header, (options.flags & KS_SAMPLES_RGB_IF_UNSAID) != 0);
}

KsSamplesInfo InfoOf(const Header &header, const PictureInfo &picture, bool converts) {
  constexpr std::uint32_t kScales = 3;
  return {.format = picture.format,
          .rows = picture.height,
          .columns = picture.width,
          .components = picture.components,
          .levels = IsOwn(picture) ? 0 : kScales,
          .tileRows = picture.height,
          .tileColumns = picture.width,
          .tileTop = 0,
          .tileLeft = 0,
          .color = ColorOf(header),
          .isConverted = converts ? 1U : 0U,
          .isMixed = 0,
          .colorSpace = 0,
          .paletteSize = 0,
          .paletteParts = 0,
          .hasChannels = 0};
}

class JpegSamples final : public SampleStream {
 public:
  /** Moving the beginning doesn't move its bytes, which the header refers to. */
  JpegSamples(const ByteSource &from, Beginning &&start, const Header &read, const PictureInfo &described,
              bool converts)
      : SampleStream(InfoOf(read, described, converts), DescribeComponents(read.frame)),
        source(from),
        beginning(std::move(start)),
        header(read),
        picture(described),
        plan(PlanOf(read, {})) {
    plan.route = converts ? Route::kColorFromYCbCr : Route::kPicked;
  }

  Status Read(const SampleOrder &order) override {
    if (!IsPlausible(header, EntropyBytes(), picture)) return ERROR_FILE_FORMAT;
    const bool streams = !beginning.isWhole && !IsOwn(picture) && IsInOneScan(header);
    if (streams) return kLibraries.readJpegSamples({{}, &source, beginning.fill}, plan, order);
    std::vector<std::uint8_t> held;
    Stream stream = beginning.bytes;
    if (!beginning.isWhole) {
      held.resize(source.Size() - beginning.fill);
      const Status status = source.Read(beginning.fill, held.data(), held.size());
      if (status != SUCCESS) return status;
      stream = held;
    }
    return ReadFrom(stream, order);
  }

 private:
  std::uint64_t EntropyBytes() const {
    return header.entropy.size() + (source.Size() - beginning.fill - beginning.bytes.size());
  }

  Status ReadFrom(Stream stream, const SampleOrder &order) {
    Header whole;
    const Status status = ReadHeader(stream, &whole);
    if (status != SUCCESS) return status;
    if (!IsOwn(picture)) return kLibraries.readJpegSamples({WithWholeSegments(stream, whole), nullptr, 0}, plan, order);
    SampleRows rows(whole.frame, plan.route == Route::kColorFromYCbCr, order);
    const Status decoded = DecodeOwn(stream, whole, plan, rows.Components(), rows);
    if (decoded == SUCCESS) rows.WriteMissing();
    return decoded;
  }

  const ByteSource &source;
  Beginning beginning;
  Header header;
  PictureInfo picture;
  Plan plan;
};

}  // namespace

Status OpenForSamples(const ByteSource &source, const KsSamplesOptions &options,
                      std::unique_ptr<SampleStream> *opened) {
  Beginning beginning;
  Header header;
  PictureInfo picture;
  Status status = ReadBeginning(source, &beginning, &header);
  if (status == SUCCESS) status = Describe(header.frame, &picture);
  if (status != SUCCESS) return status;
  if (!IsSupported(picture)) return ERROR_NOT_SUPPORTED;
  *opened = std::make_unique<JpegSamples>(source, std::move(beginning), header, picture, Converts(header, options));
  return SUCCESS;
}

}  // namespace kscodec::jpeg
