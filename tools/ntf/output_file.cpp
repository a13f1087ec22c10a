#include "output_file.h"

#include "host.h"
#include "kskernel.h"

#include <cerrno>
#include <random>
#include <system_error>
#include <utility>

namespace ntf {
namespace {

namespace fs = std::filesystem;

fs::path TemporaryName(const fs::path &target) {
  static const char *const digits = "0123456789abcdefghijklmnopqrstuvwxyz";
  std::random_device random;
  std::uniform_int_distribution<std::size_t> digit(0, 35);
  std::string name = ".ntf-";
  for (int i = 0; i < 12; ++i) name += digits[digit(random)];
  return target.parent_path() / (name + ".part");
}

}  // namespace

OutputFile::~OutputFile() {
  Discard();
}

Outcome OutputFile::Open() {
  if (IsStandardOutput()) {
    MakeStandardOutputBinary();
    stream = stdout;
    return {};
  }
  // A link stays a link: the file that it points to is replaced.
  std::error_code ignored;
  target = fs::weakly_canonical(name, ignored);
  if (target.empty()) target = name;

  const fs::file_status status = fs::status(target, ignored);
  if (fs::is_directory(status)) return FailWithError(EISDIR);
  if (!fs::exists(status) || fs::is_regular_file(status)) return CreateBesideTarget();
  stream = std::fopen(target.string().c_str(), "wb");
  return stream == nullptr ? FailWithError(errno) : Outcome();
}

Outcome OutputFile::CreateBesideTarget() {
  constexpr int kAttempts = 16;
  for (int attempt = 0; attempt < kAttempts && stream == nullptr; ++attempt) {
    temporary = TemporaryName(target);
    stream = std::fopen(temporary.string().c_str(), "wbx");
    if (stream == nullptr && errno != EEXIST) break;
  }
  if (stream == nullptr) {
    temporary.clear();
    return FailWithError(errno);
  }
  RemoveOnInterrupt(temporary.string());
  KeepAccess(target.string(), temporary.string());
  return {};
}

bool OutputFile::Write(const void *bytes, std::size_t size) {
  position += size;
  if (std::fwrite(bytes, 1, size, stream) == size) return true;
  lastError = errno;
  return false;
}

bool OutputFile::WriteAt(std::uint64_t offset, const void *bytes, std::size_t size) {
  // Every move empties the stream's buffer.
  if (offset != position && !SeekTo(stream, offset)) {
    lastError = errno;
    return false;
  }
  position = offset;
  return Write(bytes, size);
}

Outcome OutputFile::Commit() {
  if (!Close()) {
    Discard();
    return Failure();
  }
  if (temporary.empty()) return {};
  std::error_code error;
  fs::rename(temporary, target, error);
  if (error) {
    Discard();
    return FailWithError(error.value());
  }
  temporary.clear();
  RemoveOnInterrupt("");
  return {};
}

bool OutputFile::Close() {
  std::FILE *closing = std::exchange(stream, nullptr);
  const int failed = closing == stdout ? std::fflush(closing) : std::fclose(closing);
  if (failed != 0) lastError = errno;
  return failed == 0;
}

void OutputFile::Discard() {
  if (stream != nullptr) Close();
  if (temporary.empty()) return;
  std::error_code ignored;
  fs::remove(temporary, ignored);
  temporary.clear();
  RemoveOnInterrupt("");
}

Outcome OutputFile::FailWithError(int error) {
  lastError = error;
  return Failure();
}

Problem OutputFile::Failure() const {
  return SystemProblem(IsStandardOutput() ? "standard output" : name, lastError, ERROR_FILE_WRITE);
}

}  // namespace ntf
