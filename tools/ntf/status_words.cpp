#include "status_words.h"

#include "ksntfx.h"

namespace ntf {
namespace {

struct StatusRow {
  std::int32_t status;
  const char *words;
};

// The values without a name are results of the authoring functions.
constexpr StatusRow kStatusTable[] = {
    {SUCCESS, "no failure"},
    {0, "no handle, or the limit of 999 segments of a kind is reached"},
    {87, "no such segment, or no record for it"},
    {ERROR_NO_MEMORY, "not enough memory, or a picture above the size limit"},
    {ERROR_NO_STORAGE, "a bitmap has no storage"},
    {ERROR_FILE_WRITE, "could not be written in full"},
    {ERROR_FILE_READ, "ends too early, or can't be read"},
    {ERROR_FILE_FORMAT, "is not a NITF file, or a header field is wrong"},
    {ERROR_NO_FILE, "no such file"},
    {-11, "an image is wider or higher than 65535 pixels"},
    {ERROR_INVALID_VALUE, "a value is not allowed, or the stream file header is missing"},
    {-14, "a text file can't be opened"},
    {ERROR_NOT_SUPPORTED, "image data or a drawing of a kind that can't be decoded"},
    {-21, "a compression quality is out of range"},
    {ERROR_BITS_PER_PIXEL, "a number of bits per pixel that is not supported"},
    {NITF_UNSUPPORTED_VERSION, "version is not 02.10"},
    {-261, "no handle"},
    {-501, "a drawing is empty"},
    {-814, "no data"},
    {NITF_UNSUPPORTED_PVTYPE, "pixel value type is neither INT nor B"},
    {NITF_UNSUPPORTED_CLEVEL, "compliance level is not 03"},
    {NITF_UNSUPPORTED_BPP, "several bands of 16 bits"},
    {NITF_UNSUPPORTED_TILE, "compressed data of a kind that the format doesn't hold"},
};

}  // namespace

const char *StatusWords(std::int32_t status) {
  for (const StatusRow &row : kStatusTable) {
    if (row.status == status) return row.words;
  }
  return "unknown failure";
}

}  // namespace ntf
