// Reading the headers of a file of many segments, as a ratio to reading the whole file at once; and the time that a
// segment takes, as a ratio to that of a file of fewer.
#include "ksntfx.h"
#include "measure.h"
#include "nitf_builder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

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

/** Into new memory, as much as the file is long. */
void ReadAtOnce(const std::string &path) {
  const std::size_t size = std::filesystem::file_size(path);
  const std::unique_ptr<char[]> bytes(new char[size]);
  std::FILE *file = std::fopen(path.c_str(), "rb");
  std::setvbuf(file, nullptr, _IONBF, 0);
  if (std::fread(bytes.get(), 1, size, file) != size) std::abort();
  benchmark::DoNotOptimize(bytes.get());
  std::fclose(file);
}

}  // namespace

int main() {
  const std::string many = BenchPath("many");
  const std::string few = BenchPath("few");
  WriteSegments(many, kMany);
  WriteSegments(few, kFew);
  double openMany = 1e9;
  double openFew = 1e9;
  double floor = 1e9;
  for (int run = 0; run < kRuns; ++run) {
    openMany = std::min(openMany, SecondsOf([&] { OpenAndClose(many); }));
    openFew = std::min(openFew, SecondsOf([&] { OpenAndClose(few); }));
    floor = std::min(floor, SecondsOf([&] { ReadAtOnce(many); }));
  }
  const double perSegment = openMany / openFew * kFew / kMany;
  std::printf("%-58s %8s %8s\n", "opening a file, which reads its headers", "ratio", "aim");
  std::printf("%-58s %8.2f %8.2f\n", "999 images, graphics and texts, to reading the file", openMany / floor, 3.0);
  std::printf("%-58s %8.2f %8.2f\n", "a segment of these, to one of 99 of each", perSegment, 1.2);
  std::filesystem::remove(many);
  std::filesystem::remove(few);
  return 0;
}
