// The exports for header records, which are filled, stored and released, and for the text of text segments.
#include "access/header_info.h"
#include "headers/nitffile.h"
#include "headers/segment_data.h"
#include "ksntfx.h"

using namespace ksntfx;

namespace {

/** The subheaders of one kind, as their exports see them. */
struct Subheaders {
  SegmentKind kind;
  std::uint32_t NitfFile::*count;
  const InfoTable &table;
  std::int32_t nullRecord; /**< what a Get returns for a null record */
  bool passesOverMemory;   /**< a Get succeeds without memory, and the block's pointer is null */
};

const Subheaders kImages = {SegmentKind::Image, &NitfFile::imageCount, kImageInfo, ERROR_INVALID_VALUE, true};
const Subheaders kGraphics = {SegmentKind::Graphic, &NitfFile::graphicCount, kGraphicInfo, NITF_OUT_OF_RANGE, true};
const Subheaders kTexts = {SegmentKind::Text, &NitfFile::textCount, kTextInfo, NITF_OUT_OF_RANGE, false};

void *FindRecord(const NitfFile *file, const Subheaders &of, std::uint32_t index) {
  return index < file->*of.count ? FindSubheader(file, of.kind, index) : nullptr;
}

std::int32_t Count(const NitfFile *file, const Subheaders &of) {
  return file == nullptr ? 0 : static_cast<std::int32_t>(CountSegments(file, of.kind));
}

std::int32_t Get(const NitfFile *file, const Subheaders &of, std::uint32_t index, void *info) {
  if (file == nullptr) return NITF_NO_HANDLE;
  if (info == nullptr) return of.nullRecord;
  const void *const record = FindRecord(file, of, index);
  if (record == nullptr) return NITF_OUT_OF_RANGE;
  const Status status = GetInfo(of.table, record, info);
  return of.passesOverMemory && status == ERROR_NO_MEMORY ? SUCCESS : status.Code();
}

std::int32_t Set(const NitfFile *file, const Subheaders &of, std::uint32_t index, const void *info) {
  if (file == nullptr) return NITF_NO_HANDLE;
  void *const record = info == nullptr ? nullptr : FindRecord(file, of, index);
  return record == nullptr ? NITF_OUT_OF_RANGE : SetInfo(of.table, record, info).Code();
}

std::int32_t Free(const InfoTable &table, void *info) {
  if (info != nullptr) FreeInfo(table, info);
  return SUCCESS;
}

}  // namespace

int32_t K_NITFGetNITFHeader(NitfHandle handle, NitfHeaderInfo *record) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  return record == nullptr ? NITF_OUT_OF_RANGE : GetInfo(kFileHeaderInfo, &handle->header, record).Code();
}

int32_t K_NITFSetNITFHeader(NitfHandle handle, const NitfHeaderInfo *record) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  return record == nullptr ? NITF_OUT_OF_RANGE : SetInfo(kFileHeaderInfo, &handle->header, record).Code();
}

int32_t K_NITFFreeNITFHeader(NitfHeaderInfo *record) {
  return Free(kFileHeaderInfo, record);
}

int32_t K_NITFGetImageHeaderCount(NitfHandle handle) {
  return Count(handle, kImages);
}

int32_t K_NITFGetImageHeader(NitfHandle handle, uint32_t index, NitfImageHeaderInfo *record) {
  return Get(handle, kImages, index, record);
}

int32_t K_NITFSetImageHeader(NitfHandle handle, uint32_t index, const NitfImageHeaderInfo *record) {
  return Set(handle, kImages, index, record);
}

int32_t K_NITFFreeImageHeader(NitfImageHeaderInfo *record) {
  return Free(kImageInfo, record);
}

int32_t K_NITFGetGraphicHeaderCount(NitfHandle handle) {
  return Count(handle, kGraphics);
}

int32_t K_NITFGetGraphicHeader(NitfHandle handle, uint32_t index, NitfGraphicHeaderInfo *record) {
  return Get(handle, kGraphics, index, record);
}

int32_t K_NITFSetGraphicHeader(NitfHandle handle, uint32_t index, const NitfGraphicHeaderInfo *record) {
  return Set(handle, kGraphics, index, record);
}

int32_t K_NITFFreeGraphicHeader(NitfGraphicHeaderInfo *record) {
  return Free(kGraphicInfo, record);
}

int32_t K_NITFGetTextHeaderCount(NitfHandle handle) {
  return Count(handle, kTexts);
}

int32_t K_NITFGetTextHeader(NitfHandle handle, uint32_t index, NitfTextHeaderInfo *record) {
  return Get(handle, kTexts, index, record);
}

int32_t K_NITFSetTextHeader(NitfHandle handle, uint32_t index, const NitfTextHeaderInfo *record) {
  return Set(handle, kTexts, index, record);
}

int32_t K_NITFFreeTextHeader(NitfTextHeaderInfo *record) {
  return Free(kTextInfo, record);
}

int32_t K_NITFGetTextSegment(NitfHandle handle, uint32_t index, char *buffer, uint32_t *size) {
  if (handle == nullptr) return NITF_NO_HANDLE;
  if (index >= handle->textCount) return NITF_OUT_OF_RANGE;
  if (size != nullptr) *size = TextDataLength(handle, index);
  if (buffer == nullptr) return SUCCESS;
  return FindText(handle, index) == nullptr ? 0 : ReadText(handle, index, buffer).Code();
}
