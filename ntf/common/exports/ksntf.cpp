// The doors of the authoring interface: handles on files that are opened or made, changed and saved.
#include "drawings/handlgfx.h"
#include "headers/nitffile.h"
#include "internal/ksclasses_.h"
#include "ksntfx.h"
#include "save/append.h"
#include "save/savenitf.h"
#include "table/fields.h"

using namespace ksntfx;

namespace {

/** A narrow name as a wide one; null stays null. */
class WideName {
 public:
  explicit WideName(const char *narrow) : name(narrow != nullptr ? KsToWide(narrow) : nullptr) {
    failed = narrow != nullptr && name == nullptr;
  }
  WideName(const WideName &) = delete;
  WideName &operator=(const WideName &) = delete;
  ~WideName() {
    if (name != nullptr) KsToWideFree(name);
  }

  const char16_t *Get() const { return name; }
  bool Failed() const { return failed; }

 private:
  char16_t *name;
  bool failed;
};

void Destroy(NitfHandle *address) {
  NitfFileDestroy(*address);
  KsFreeAndClear(*address);
}

/** A header and nothing else. */
void MakeBlank(NitfFile *file) {
  NitfHeader &header = file->header;
  const std::uint64_t bytes = VisitFields(kFileHeaderTable, &header, HeaderSink{}, [](auto &&, auto) {});
  header.fileLength = header.fileLengthOut = header.headerLengthOut = static_cast<std::uint32_t>(bytes);
  SetNumberField(header.FL, 12, header.headerLengthOut);
  file->headerValid = 1;
}

Status Open(NitfFile *file, const char16_t *name) {
  return KsFileExists(name) == SUCCESS ? Load(file, name) : ERROR_NO_FILE;
}

Status WriteFile(NitfFile *file, KsHandle out) {
  KNitfSaveFile save;
  const Status status = save.WriteFileHeader(out, file);
  return status == SUCCESS ? save.WriteSegments(out, file) : status;
}

}  // namespace

int32_t K_NITFCreate(NitfHandle *address, const char16_t *name) {
  if (address == nullptr) return ERROR_NO_MEMORY;
  *address = static_cast<NitfFile *>(KsCalloc(1, sizeof(NitfFile), __LINE__, __FILE__));
  if (*address == nullptr) return ERROR_NO_MEMORY;
  NitfFileInit(*address);
  if (name == nullptr) {
    MakeBlank(*address);
    return SUCCESS;
  }
  const Status status = Open(*address, name);
  if (status != SUCCESS) Destroy(address);
  return status.Code();
}

int32_t K_NITFCreateA(NitfHandle *address, const char *name) {
  const WideName wide(name);
  if (wide.Failed() && address != nullptr) *address = nullptr;
  return wide.Failed() ? ERROR_NO_MEMORY : K_NITFCreate(address, wide.Get());
}

int32_t K_NITFDestroy(NitfHandle *address) {
  if (*address == nullptr) return NITF_NULL_HANDLE;
  Destroy(address);
  return SUCCESS;
}

int32_t K_NITFGetStatus(NitfHandle handle) {
  if (handle == nullptr) return NITF_NULL_HANDLE;
  const bool empty = (handle->imageCount | handle->graphicCount | handle->labelCount | handle->textCount) == 0;
  return (empty ? NITF_STATUS_EMPTY : 0) | (handle->headerValid != 0 ? NITF_STATUS_HEADER : 0);
}

int32_t K_NITFSaveFile(NitfHandle handle, const char16_t *name) {
  if (handle == nullptr) return NITF_NULL_HANDLE;
  const Status fits = CheckBeforeSave(handle);
  if (fits != SUCCESS) return fits.Code();
  // Creating the output would empty the source.
  if (KsIsSameFile(handle->fileHandle, name) == SUCCESS) return ERROR_FILE_WRITE;
  const KsHandle out = KsOpen(name, KS_OPEN_CREATE, KS_MODE_CREATE);
  const Status status = WriteFile(handle, out);
  const std::int32_t closed = KsClose(out);
  return status == SUCCESS ? closed : status.Code();
}

int32_t K_NITFSaveFileA(NitfHandle handle, const char *name) {
  const WideName wide(name);
  return wide.Failed() ? ERROR_NO_MEMORY : K_NITFSaveFile(handle, wide.Get());
}

int32_t K_NITFAppendImageSegment(NitfHandle handle, const KsBitmap *bitmap, uint32_t format, uint32_t bits,
                                 uint32_t quality) {
  return handle == nullptr ? NITF_NULL_HANDLE : AppendImage(handle, bitmap, format, bits, quality).Code();
}

int32_t K_NITFAppendGraphicSegment(NitfHandle handle, KsVector *vector, const KsRect *rectangle) {
  return handle == nullptr || rectangle == nullptr ? NITF_NULL_HANDLE
                                                   : AppendGraphic(handle, vector, *rectangle).Code();
}

int32_t K_NITFAppendTextSegment(NitfHandle handle, const char16_t *path) {
  return handle == nullptr ? NITF_NULL_HANDLE : AppendText(handle, path).Code();
}

int32_t K_NITFAppendTextSegmentA(NitfHandle handle, const char *path) {
  const WideName wide(path);
  return wide.Failed() ? ERROR_NO_MEMORY : K_NITFAppendTextSegment(handle, wide.Get());
}

KsVector *K_NITFGetVectorHandle(NitfHandle handle, uint32_t index) {
  if (handle == nullptr || index >= handle->graphicCount) return nullptr;
  GraphicSubheader *const graphic = FindGraphic(handle, index);
  if (graphic == nullptr) return nullptr;
  return DrawGraphic(nullptr, handle, index, {0, 0}) == SUCCESS ? &graphic->vector : nullptr;
}

int32_t K_NITFSetVectorHandle(NitfHandle handle, uint32_t index, const KsVector *vector) {
  return handle == nullptr ? NITF_NULL_HANDLE : ReplaceDrawing(handle, index, vector).Code();
}
