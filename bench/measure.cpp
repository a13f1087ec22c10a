#include "measure.h"

#include "internal/ksclasses_.h"
#include "ksntfx.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <vector>

namespace {

std::int32_t CountRow(std::uint64_t, KsBitmap *, void *, std::uint32_t, std::uint32_t, std::uint32_t count,
                      std::uint64_t rows) {
  // The number is the address that the request carried.
  *reinterpret_cast<std::uint64_t *>(rows) += count;  // NOLINT(performance-no-int-to-ptr)
  return SUCCESS;
}

double ProcessorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

std::string BenchPath(const std::string &name) {
  return (std::filesystem::temp_directory_path() / ("ksntfx-bench-" + name + ".ntf")).string();
}

std::uint8_t NoiseByte(std::uint32_t &state) {
  state = state * 1664525 + 1013904223;
  return static_cast<std::uint8_t>(state >> 24);
}

void ComposeFile(const std::string &path, std::uint32_t bits, std::uint32_t rows) {
  const std::u16string name = std::filesystem::path(path).u16string();
  FilterTargetInfo target{};
  target.bitsPerPixel = bits;
  KsLoadOptions options{};
  std::uint64_t counted = 0;
  auto request = std::make_unique<FilterLoadRecord>();
  request->fileName = name.c_str();
  request->targetInfo = &target;
  request->rowCallback = CountRow;
  request->rowUserData = reinterpret_cast<std::uintptr_t>(&counted);
  request->loadOptions = &options;
  request->loadFromMemory = KsLoadMemory;
  request->setRedirect = KsSetRedirect;
  request->requiredEntry = [] {};
  if (fltLoad(request.get()) != SUCCESS || counted != rows) std::abort();
}

void ReadWholeFile(const std::string &path) {
  const std::unique_ptr<char[]> piece(new char[kMebibyte]);
  std::FILE *file = std::fopen(path.c_str(), "rb");
  std::setvbuf(file, nullptr, _IONBF, 0);
  while (std::fread(piece.get(), 1, kMebibyte, file) == kMebibyte) benchmark::DoNotOptimize(piece.get());
  std::fclose(file);
}

void CopyBytes(std::uint8_t *canvas, std::size_t bytes) {
  static const std::vector<std::uint8_t> piece(kMebibyte, 1);
  for (std::size_t at = 0; at < bytes; at += kMebibyte) std::memcpy(canvas + at, piece.data(), kMebibyte);
  benchmark::DoNotOptimize(canvas);
}

void CopyNewCanvas(std::uint32_t side, std::uint32_t bits) {
  KsLocalBitmap canvas;
  KsBitmapCreate(canvas.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, side, side, bits, KS_ORDER_BGR, nullptr, 4, nullptr, 0);
  KsBitmapAccess(canvas.Get(), 0);
  CopyBytes(canvas->pixels, std::size_t{side} * side * (bits / 8));
  KsBitmapRelease(canvas.Get(), 1, 1);
}

double SecondsOf(const std::function<void()> &work) {
  const double start = ProcessorSeconds();
  work();
  return ProcessorSeconds() - start;
}

bool RatioTable::ReportContext(const Context &) {
  std::printf("%-58s %8s %8s %8s\n", "composing, in times of the floor", "ratio", "aim", "warm");
  return true;
}

void RatioTable::ReportRuns(const std::vector<Run> &runs) {
  for (const Run &run : runs) {
    std::printf("%-58s %8.2f %8.2f", run.run_name.function_name.c_str(), run.counters.at("floors").value,
                run.counters.at("aim").value);
    const auto warm = run.counters.find("warm");
    if (warm != run.counters.end()) std::printf(" %8.2f", warm->second.value);
    std::printf("\n");
    std::fflush(stdout);
  }
}
