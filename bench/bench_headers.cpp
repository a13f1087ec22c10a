// Reading the headers of a file of many segments, as a ratio to reading the whole file at once, with memory that the
// system gives anew, as a program that opens a file has it, and with memory that is there; and the time that a segment
// takes, as a ratio to that of a file of fewer.
#include "ksntfx.h"
#include "measure.h"
#include "nitf_builder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

constexpr int kRuns = 25;
constexpr std::uint32_t kMany = 999;
constexpr std::uint32_t kFew = 99;

/** So many images, graphics and texts each, with bodies of some bytes. */
void WriteSegments(const std::string &path, std::uint32_t count) {
  ImageSpec image;
  image.rows = image.columns = 4;
  image.data.assign(16, 1);
  NitfBuilder file;
  for (std::uint32_t i = 0; i < count; ++i) {
    file.Image(image);
    file.Graphic({.data = Bytes(16)});
    file.Text({std::string(16, 'a')});
  }
  file.Write(path);
}

void OpenAndClose(const std::string &path) {
  NitfHandle handle = nullptr;
  if (K_NITFCreateA(&handle, path.c_str()) != SUCCESS) std::abort();
  K_NITFDestroy(&handle);
}

void ReadAtOnce(const std::string &path) {
  const std::size_t size = std::filesystem::file_size(path);
  const std::unique_ptr<char[]> bytes(new char[size]);
  std::FILE *file = std::fopen(path.c_str(), "rb");
  std::setvbuf(file, nullptr, _IONBF, 0);
  if (std::fread(bytes.get(), 1, size, file) != size) std::abort();
  benchmark::DoNotOptimize(bytes.get());
  std::fclose(file);
}

/** Whether what is freed goes back to the system, or is kept for the next run. */
void KeepMemory(bool kept) {
#ifdef __GLIBC__
  mallopt(M_MMAP_THRESHOLD, kept ? 32 * kMebibyte : 128 * 1024);
  mallopt(M_TRIM_THRESHOLD, kept ? 256 * kMebibyte : 128 * 1024);
#else
  static_cast<void>(kept);
#endif
}

/** The least seconds of several runs. */
struct Best {
  double open = 1e9;
  double floor = 1e9;
};

Best Measure(const std::string &path) {
  Best best;
  for (int run = 0; run < kRuns; ++run) {
    best.open = std::min(best.open, SecondsOf([&] { OpenAndClose(path); }));
    best.floor = std::min(best.floor, SecondsOf([&] { ReadAtOnce(path); }));
  }
  return best;
}

void PrintRatio(const char *name, double ratio, double aim) {
  std::printf("%-58s %8.2f %8.2f\n", name, ratio, aim);
}

}  // namespace

int main() {
  const std::string many = BenchPath("many");
  const std::string few = BenchPath("few");
  WriteSegments(many, kMany);
  WriteSegments(few, kFew);
  KeepMemory(false);
  const Best fresh = Measure(many);
  KeepMemory(true);
  const Best warm = Measure(many);
  const double perSegment = warm.open / Measure(few).open * kFew / kMany;
  std::printf("%-58s %8s %8s\n", "opening a file, which reads its headers", "ratio", "aim");
  PrintRatio("999 images, graphics and texts, to reading the file", fresh.open / fresh.floor, 3.0);
  PrintRatio("the same with memory that is there already", warm.open / warm.floor, 3.0);
  PrintRatio("a segment of these, to one of 99 of each", perSegment, 1.2);
  std::filesystem::remove(many);
  std::filesystem::remove(few);
  return 0;
}
