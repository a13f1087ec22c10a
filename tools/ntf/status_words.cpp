#include "status_words.h"

#include "ksntfx.h"

namespace ntf {
namespace {

struct StatusRow {
  std::int32_t status;
  const char *words;
};

constexpr StatusRow kStatusTable[] = {
    {SUCCESS, "success"},
    {NITF_TOO_MANY_SEGMENTS, "the file already has 999 segments of the kind"},
    {NITF_OUT_OF_RANGE, "no such segment"},
    {ERROR_NO_MEMORY, "out of memory, or the picture exceeds the size limit"},
    {ERROR_NO_STORAGE, "the bitmap has no pixels"},
    {ERROR_FILE_WRITE, "could not be written completely"},
    {ERROR_FILE_READ, "is truncated, or can't be read"},
    {ERROR_FILE_FORMAT, "is not a NITF file, or is malformed"},
    {ERROR_NO_FILE, "no such file"},
    {ERROR_BITMAP_SIZE, "the picture is wider or higher than 65500 pixels"},
    {ERROR_INVALID_VALUE, "invalid value, or missing stream file header"},
    {NITF_NO_TEXT_FILE, "the text file can't be opened"},
    {ERROR_NOT_SUPPORTED, "image data or drawing of an unsupported kind"},
    {ERROR_QUALITY, "the compression quality is out of range"},
    {ERROR_BITS_PER_PIXEL, "unsupported number of bits per pixel"},
    {NITF_UNSUPPORTED_VERSION, "version is not 02.10"},
    {NITF_NULL_HANDLE, "no handle"},
    {NITF_EMPTY_DRAWING, "the drawing has no objects"},
    {NITF_NULL_DATA, "no data"},
    {NITF_UNSUPPORTED_PVTYPE, "pixel value type is neither INT nor B"},
    {NITF_UNSUPPORTED_CLEVEL, "compliance level is not 03"},
    {NITF_UNSUPPORTED_BPP, "several bands of 16 bits"},
    {NITF_UNSUPPORTED_TILE, "a compressed block is neither JPEG nor JPEG 2000"},
};

}  // namespace

const char *StatusWords(std::int32_t status) {
  for (const StatusRow &row : kStatusTable) {
    if (row.status == status) return row.words;
  }
  return "unknown error";
}

}  // namespace ntf
