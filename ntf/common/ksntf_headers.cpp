// The doors to the headers: public records that are filled, stored and released, and the text of text segments.
#include "header_info.h"
#include "ksntfx.h"
#include "nitffile.h"
#include "segment_data.h"

namespace {

/** Finds the subheader that a call is about: SUCCESS, NITF_NO_HANDLE or NITF_OUT_OF_RANGE. */
std::int32_t FindRecord(const NitfFile *file, SegmentKind kind, std::uint32_t count, std::uint32_t index,
                        void **record) {
  if (index >= count) return NITF_OUT_OF_RANGE;
  *record = FindSubheader(file, kind, index);
  return *record == nullptr ? NITF_OUT_OF_RANGE : static_cast<std::int32_t>(SUCCESS);
}

std::int32_t Get(const NitfFile *file, SegmentKind kind, std::uint32_t count, std::uint32_t index,
                 const InfoTable &table, void *info) {
  void *record = nullptr;
  const std::int32_t status = FindRecord(file, kind, count, index, &record);
  return status == SUCCESS ? GetInfo(table, record, info) : status;
}

std::int32_t Set(const NitfFile *file, SegmentKind kind, std::uint32_t count, std::uint32_t index,
                 const InfoTable &table, const void *info) {
  void *record = nullptr;
  const std::int32_t status = FindRecord(file, kind, count, index, &record);
  return status == SUCCESS ? SetInfo(table, record, info) : status;
}

std::int32_t Free(const InfoTable &table, void *info) {
  if (info != nullptr) FreeInfo(table, info);
  return SUCCESS;
}

/** Without memory for a block the pointer of these records is null, and the call succeeds all the same. */
std::int32_t PassOverMemory(std::int32_t status) {
  return status == ERROR_NO_MEMORY ? static_cast<std::int32_t>(SUCCESS) : status;
}

}  // namespace

int32_t K_NITFGetNITFHeader(NitfHandle handle, NitfHeaderInfo *record) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  return record == nullptr ? NITF_OUT_OF_RANGE : GetInfo(kFileHeaderInfo, &handle->header, record);
}

int32_t K_NITFSetNITFHeader(NitfHandle handle, const NitfHeaderInfo *record) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  return record == nullptr ? NITF_OUT_OF_RANGE : SetInfo(kFileHeaderInfo, &handle->header, record);
}

int32_t K_NITFFreeNITFHeader(NitfHeaderInfo *record) {
  return Free(kFileHeaderInfo, record);
}

int32_t K_NITFGetImageHeaderCount(NitfHandle handle) {
  return handle == nullptr ? 0 : static_cast<std::int32_t>(CountImages(handle));
}

int32_t K_NITFGetImageHeader(NitfHandle handle, uint32_t index, NitfImageHeaderInfo *record) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  if (record == nullptr) return ERROR_INVALID_VALUE;
  return PassOverMemory(Get(handle, SegmentKind::Image, handle->imageCount, index, kImageInfo, record));
}

int32_t K_NITFSetImageHeader(NitfHandle handle, uint32_t index, const NitfImageHeaderInfo *record) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  if (record == nullptr) return NITF_OUT_OF_RANGE;
  return Set(handle, SegmentKind::Image, handle->imageCount, index, kImageInfo, record);
}

int32_t K_NITFFreeImageHeader(NitfImageHeaderInfo *record) {
  return Free(kImageInfo, record);
}

int32_t K_NITFGetGraphicHeaderCount(NitfHandle handle) {
  return handle == nullptr ? 0 : static_cast<std::int32_t>(CountGraphics(handle));
}

int32_t K_NITFGetGraphicHeader(NitfHandle handle, uint32_t index, NitfGraphicHeaderInfo *record) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  if (record == nullptr) return NITF_OUT_OF_RANGE;
  return PassOverMemory(Get(handle, SegmentKind::Graphic, handle->graphicCount, index, kGraphicInfo, record));
}

int32_t K_NITFSetGraphicHeader(NitfHandle handle, uint32_t index, const NitfGraphicHeaderInfo *record) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  if (record == nullptr) return NITF_OUT_OF_RANGE;
  return Set(handle, SegmentKind::Graphic, handle->graphicCount, index, kGraphicInfo, record);
}

int32_t K_NITFFreeGraphicHeader(NitfGraphicHeaderInfo *record) {
  return Free(kGraphicInfo, record);
}

int32_t K_NITFGetTextHeaderCount(NitfHandle handle) {
  return handle == nullptr ? 0 : static_cast<std::int32_t>(CountTexts(handle));
}

int32_t K_NITFGetTextHeader(NitfHandle handle, uint32_t index, NitfTextHeaderInfo *record) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  if (record == nullptr) return NITF_OUT_OF_RANGE;
  return Get(handle, SegmentKind::Text, handle->textCount, index, kTextInfo, record);
}

int32_t K_NITFSetTextHeader(NitfHandle handle, uint32_t index, const NitfTextHeaderInfo *record) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  if (record == nullptr) return NITF_OUT_OF_RANGE;
  return Set(handle, SegmentKind::Text, handle->textCount, index, kTextInfo, record);
}

int32_t K_NITFFreeTextHeader(NitfTextHeaderInfo *record) {
  return Free(kTextInfo, record);
}

int32_t K_NITFGetTextSegment(NitfHandle handle, uint32_t index, char *buffer, uint32_t *size) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  if (index >= handle->textCount) return NITF_OUT_OF_RANGE;
  if (size != nullptr) *size = TextDataLength(handle, index);
  if (buffer == nullptr) return SUCCESS;
  return FindText(handle, index) == nullptr ? 0 : ReadText(handle, index, buffer);
}
