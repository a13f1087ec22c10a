// The doors: the filter entries and the composition functions that clients call.
#include "compose/compose.h"
#include "headers/nitffile.h"
#include "internal/ksclasses_.h"
#include "ksntfx.h"

#include <cstddef>

using namespace ksntfx;

namespace {

#define NITF_AT(Record, member, place) static_assert(offsetof(Record, member) == (place))
NITF_AT(FilterInfoRecord, fileName, 0);
NITF_AT(FilterInfoRecord, inputHandle, 12);
NITF_AT(FilterInfoRecord, fileInfo, 20);
NITF_AT(FilterInfoRecord, loadOptions, 56);
NITF_AT(FilterTargetInfo, bitsPerPixel, 28);
NITF_AT(FilterLoadRecord, fileName, 0);
NITF_AT(FilterLoadRecord, targetInfo, 8);
NITF_AT(FilterLoadRecord, rowCallback, 20);
NITF_AT(FilterLoadRecord, rowUserData, 28);
NITF_AT(FilterLoadRecord, rowContext, 72);
NITF_AT(FilterLoadRecord, loadOptions, 2000);
NITF_AT(FilterLoadRecord, loadFromMemory, 2056);
NITF_AT(FilterLoadRecord, setRedirect, 2064);
NITF_AT(FilterLoadRecord, requiredEntry, 2120);
NITF_AT(FilterLoadRecord, skipRows, 2360);
#undef NITF_AT

/** The framework's own bits, which every load carries. */
constexpr std::uint32_t kFrameworkFlags = 0x80000001;

/** What fltInfo reports, whatever the images hold: a composition has full colour. */
constexpr std::uint32_t kReportedBits = 24;

constexpr std::uint32_t kCanvasMemory = 4;

struct CanvasSize {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/** What both entries begin with: the options, the headers, the size of the picture. */
Status LoadRequested(NitfFile *file, const char16_t *name, KsLoadOptions *options, CanvasSize *size) {
  options->loadFlags |= kFrameworkFlags;
  file->fixedCanvas = (options->loadFlags & NITF_LOAD_FIXED_CANVAS) != 0 ? 1 : 0;
  file->toneCheck = (options->loadFlags & NITF_LOAD_TONE_CHECK) != 0 ? 1 : 0;
  file->vectorRender = (options->loadFlags & NITF_LOAD_VECTOR_RENDER) != 0 ? 1 : 0;
  const Status status = Load(file, name);
  return status == SUCCESS ? MeasureCanvas(file, &size->width, &size->height) : status;
}

/** Creates a canvas and fills it with FBKGC, which stays wherever nothing is drawn. */
Status CreateCanvas(KsBitmap *canvas, const CanvasSize &size, std::uint32_t bits, const NitfFile *file) {
  const Status status = KsBitmapCreate(canvas, sizeof *canvas, KS_BITMAP_OWN, size.width, size.height, bits,
                                       KS_ORDER_BGR, nullptr, kCanvasMemory, nullptr, 0);
  if (status == SUCCESS) KsBitmapFill(canvas, file->backgroundColor);
  return status;
}

/** Graphics, labels and images with transparent pad pixels are painted; all else is combined without a context. */
bool NeedsContext(const NitfFile *file) {
  if (file->graphicCount + file->labelCount != 0) return true;
  for (const SegmentNode *node = file->imageList; node != nullptr; node = node->next) {
    const auto *image = static_cast<const ImageSubheader *>(node->subheader);
    if (image != nullptr && image->padCode != nullptr) return true;
  }
  return false;
}

std::uint32_t RowFlags(std::uint32_t row, std::uint32_t height) {
  std::uint32_t flags = NITF_ROW_VALID;
  if (row == 0) flags |= NITF_ROW_FIRST;
  if (row + 1 == height) flags |= NITF_ROW_LAST;
  return flags;
}

Status DeliverRows(const FilterLoadRecord *request, KsBitmap *canvas) {
  KsArray<std::uint8_t> row;
  if (!row.Allocate(canvas->bytesPerLine)) return ERROR_NO_MEMORY;
  const std::int32_t access = KsBitmapAccess(canvas, 0);
  std::int64_t status = access;
  for (std::uint32_t index = 0; index < canvas->height && status == SUCCESS; ++index) {
    status = KsBitmapGetRow(canvas, row.Get(), index, canvas->bytesPerLine);
    if (status < SUCCESS) break;
    status = request->rowCallback(request->rowContext, canvas, row.Get(), RowFlags(index, canvas->height), index, 1,
                                  request->rowUserData);
  }
  if (access == SUCCESS) KsBitmapRelease(canvas, 1, 1);
  return static_cast<std::int32_t>(status);
}

Status ComposeInContext(FilterLoadRecord *request, KsBitmap *canvas, NitfFile *file) {
  const KsLocalContext context(canvas);
  return context.Get() == nullptr ? ERROR_NO_MEMORY : DrawObjects(request, {canvas, context.Get(), true}, file);
}

void FillInfo(KsFileInfo *info, const CanvasSize &size) {
  info->formatId = NITF_FORMAT_ID;
  info->width = size.width;
  info->height = size.height;
  info->bitsPerPixel = kReportedBits;
  const std::uint32_t rowBytes = ((kReportedBits * size.width + 31) / 8) & ~3U;
  info->imageBytes = std::uint64_t{rowBytes} * size.height;
  info->pageCount = 1;
  info->pageNumber = 1;
}

}  // namespace

std::int32_t fltInfo(FilterInfoRecord *request) {
  KsSeek(request->inputHandle, 0, KS_SEEK_START);
  LocalNitfFile file;
  CanvasSize size;
  const Status status = LoadRequested(file.Get(), request->fileName, request->loadOptions, &size);
  if (status == SUCCESS) FillInfo(request->fileInfo, size);
  return status.Code();
}

std::int32_t fltLoad(FilterLoadRecord *request) {
  LocalNitfFile file;
  if (request->loadFromMemory == nullptr || request->setRedirect == nullptr || request->requiredEntry == nullptr) {
    return ERROR_FILE_FORMAT;
  }
  CanvasSize size;
  Status status = LoadRequested(file.Get(), request->fileName, request->loadOptions, &size);
  if (status != SUCCESS) return status.Code();
  KsLocalBitmap canvas;
  status = CreateCanvas(canvas.Get(), size, request->targetInfo->bitsPerPixel, file.Get());
  if (status != SUCCESS) return status.Code();
  status = NeedsContext(file.Get()) ? ComposeInContext(request, canvas.Get(), file.Get())
                                    : DrawObjects(request, {canvas.Get(), nullptr, true}, file.Get());
  if (status != SUCCESS) return status.Code();
  if ((canvas->flags & KS_BITMAP_ALLOCATED) == 0) return ERROR_NO_STORAGE;
  return request->skipRows != 0 ? SUCCESS : DeliverRows(request, canvas.Get()).Code();
}

std::int32_t fltSave(void) {
  // As every other entry it makes its file, and traces that it releases it.
  const LocalNitfFile file;
  return ERROR_NOT_SUPPORTED;
}

std::int32_t GetActual_Width_Height(NitfFile *file, std::uint32_t *width, std::uint32_t *height) {
  return MeasureCanvas(file, width, height).Code();
}

std::int32_t K_NitfDrawObjects(FilterLoadRecord *loadContext, KsDeviceContext *deviceContext, KsBitmap *canvas,
                               NitfFile *file) {
  return DrawObjects(loadContext, {canvas, deviceContext, false}, file).Code();
}

std::int32_t K_NtfRenderBitmap(KsBitmap *bitmap, NitfFile *file) {
  if (bitmap == nullptr) return ERROR_INVALID_VALUE;
  if ((bitmap->flags & KS_BITMAP_ALLOCATED) != 0) KsBitmapFree(bitmap);
  CanvasSize size;
  Status status = MeasureCanvas(file, &size.width, &size.height);
  if (status == SUCCESS) status = CreateCanvas(bitmap, size, kReportedBits, file);
  if (status != SUCCESS) return status.Code();
  status = ComposeInContext(nullptr, bitmap, file);
  if (status < SUCCESS) KsBitmapFree(bitmap);
  return status.Code();
}
