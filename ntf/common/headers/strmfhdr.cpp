#include "headers/strmfhdr.h"

#include "internal/ksclasses_.h"
#include "table/fields.h"

#include <algorithm>
#include <cstring>

namespace ksntfx {

namespace {

constexpr std::string_view kFirstDelimiter("\x0A\x6E\x1D\x97", 4);
constexpr std::string_view kLastDelimiter("\x0E\xCA\x14\xBF", 4);
constexpr std::uint32_t kLengthDigits = 7;

/** The search looks at windows of so many bytes, from the end backward, and takes a window's first match. */
constexpr std::uint64_t kWindow = 255;

/** The bytes in front of a window's end that are fetched at once, so that each one is read about once. */
constexpr std::uint64_t kFetch = 64 * 1024;

/** The tail of a file, read backward piece by piece. */
class BackwardReader {
 public:
  explicit BackwardReader(KsHandle source) : handle(source) {}

  bool Prepare() { return buffer.Allocate(kFetch); }

  /** The `bytes` bytes from `start`, or nothing where the file can't give them. */
  std::string_view Window(std::uint64_t start, std::uint64_t bytes) {
    if (start < first || start + bytes > first + count) Fetch(start + bytes);
    if (start < first || start + bytes > first + count) return {};
    return {buffer.Get() + (start - first), bytes};
  }

 private:
  void Fetch(std::uint64_t end) {
    first = end - std::min(end, kFetch);
    KsSeek(handle, static_cast<std::int64_t>(first), KS_SEEK_START);
    count = KsRead(handle, buffer.Get(), end - first);
  }

  KsHandle handle;
  KsArray<char> buffer;
  std::uint64_t first = 0;
  std::uint64_t count = 0;
};

/** The distance from the end of the file to the byte behind the delimiter. */
Status FindReplacementData(KsHandle handle, std::uint64_t size, std::uint32_t *distance) {
  BackwardReader tail(handle);
  if (!tail.Prepare()) return ERROR_NO_MEMORY;
  std::uint64_t scanned = 0;
  while (scanned < size) {
    const std::uint64_t window = std::min(kWindow, size - scanned);
    if (window < kFirstDelimiter.size()) break;
    scanned += window;
    const std::string_view bytes = tail.Window(size - scanned, window);
    if (bytes.empty()) return ERROR_FILE_READ;
    const std::size_t place = bytes.find(kFirstDelimiter);
    if (place != std::string_view::npos) {
      *distance = static_cast<std::uint32_t>(scanned - place - kFirstDelimiter.size());
      return SUCCESS;
    }
    scanned -= kFirstDelimiter.size() - 1;  // a delimiter may lie across two windows
  }
  return ERROR_INVALID_VALUE;
}

Status ReadLength(KsHandle handle, std::uint32_t *length) {
  char digits[kLengthDigits];
  if (KsRead(handle, digits, sizeof digits) != sizeof digits) return ERROR_FILE_READ;
  *length = static_cast<std::uint32_t>(ParseNumber({digits, sizeof digits}));
  return SUCCESS;
}

Status ReadDelimiter(KsHandle handle, char *field, std::string_view expected) {
  if (KsRead(handle, field, expected.size()) != expected.size()) return ERROR_FILE_READ;
  return std::string_view(field, expected.size()) == expected ? SUCCESS : ERROR_FILE_FORMAT;
}

Status ReadReplacementData(KsHandle handle, std::uint64_t size, StreamFileHeader *stream) {
  const std::int64_t here = KsSeek(handle, 0, KS_SEEK_CURRENT);
  const std::uint64_t length = stream->streamLengthFirst;
  if (here < 0 || static_cast<std::uint64_t>(here) > size || length > size - static_cast<std::uint64_t>(here)) {
    return ERROR_FILE_READ;
  }
  KsArray<char> data;
  if (!data.Allocate(length + 1)) return ERROR_NO_MEMORY;
  if (KsRead(handle, data.Get(), length) != length) return ERROR_FILE_READ;
  KsFreeAndClear(stream->replacementData);
  stream->replacementData = data.Release();
  return SUCCESS;
}

}  // namespace

Status ReadStreamFileHeader(KsHandle handle, StreamFileHeader *stream, std::uint32_t *streamBytesLeft) {
  const std::int64_t end = KsSeek(handle, 0, KS_SEEK_END);
  if (end < 1) return ERROR_INVALID_VALUE;
  const auto size = static_cast<std::uint64_t>(end);
  Status status = FindReplacementData(handle, size, streamBytesLeft);
  if (status != SUCCESS) return status;
  const std::int64_t start = end - *streamBytesLeft - static_cast<std::int64_t>(kFirstDelimiter.size() + kLengthDigits);
  if (KsSeek(handle, start, KS_SEEK_START) < 0) return ERROR_FILE_READ;
  status = ReadLength(handle, &stream->streamLengthFirst);
  if (status == SUCCESS) status = ReadDelimiter(handle, stream->SFH_DELIM1, kFirstDelimiter);
  if (status == SUCCESS) status = ReadReplacementData(handle, size, stream);
  if (status == SUCCESS) status = ReadDelimiter(handle, stream->SFH_DELIM2, kLastDelimiter);
  if (status == SUCCESS) status = ReadLength(handle, &stream->streamLengthLast);
  if (status != SUCCESS) return status;
  if (stream->streamLengthLast != stream->streamLengthFirst) return ERROR_FILE_FORMAT;
  KsSeek(handle, start, KS_SEEK_START);
  return SUCCESS;
}

void StreamFileHeaderFree(StreamFileHeader *stream) {
  KsFreeAndClear(stream->replacementData);
  DataExtensionSubheaderFree(stream);
}

}  // namespace ksntfx
