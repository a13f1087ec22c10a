// Saving opened files: a large one as a ratio to copying its bytes in pieces of 1 MiB, and many small segments as a
// ratio to fewer.
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

constexpr int kRuns = 7;
const std::string kSavedPath = BenchPath("saved");

ImageSpec SquareImage(std::uint32_t side) {
  ImageSpec image;
  image.rows = image.columns = side;
  image.fields = {{"NPPBH", "0000"}, {"NPPBV", "0000"}};
  image.data.assign(std::size_t{side} * side, 1);
  std::uint32_t state = 1;
  for (std::uint8_t &byte : image.data) byte = NoiseByte(state);
  return image;
}

void WriteImages(const std::string &path, std::uint32_t count, std::uint32_t side) {
  const ImageSpec image = SquareImage(side);
  NitfBuilder builder;
  for (std::uint32_t i = 0; i < count; ++i) builder.Image(image);
  builder.Write(path);
}

void Save(const std::string &path) {
  NitfHandle handle = nullptr;
  if (K_NITFCreateA(&handle, path.c_str()) != SUCCESS) std::abort();
  if (K_NITFSaveFileA(handle, kSavedPath.c_str()) != SUCCESS) std::abort();
  K_NITFDestroy(&handle);
}

void CopyFile(const std::string &path) {
  const std::unique_ptr<char[]> piece(new char[kMebibyte]);
  std::FILE *from = std::fopen(path.c_str(), "rb");
  std::FILE *to = std::fopen(kSavedPath.c_str(), "wb");
  std::setvbuf(from, nullptr, _IONBF, 0);
  std::setvbuf(to, nullptr, _IONBF, 0);
  for (std::size_t bytes = kMebibyte; bytes == kMebibyte;) {
    bytes = std::fread(piece.get(), 1, kMebibyte, from);
    if (std::fwrite(piece.get(), 1, bytes, to) != bytes) std::abort();
  }
  std::fclose(from);
  if (std::fclose(to) != 0) std::abort();
}

void PrintRatio(const char *name, double ratio, double aim) {
  std::printf("%-58s %8.2f %8.2f\n", name, ratio, aim);
  std::fflush(stdout);
}

/** The best of several runs of each, turn by turn. */
template <class Work, class Floor>
double RatioOf(const Work &work, const Floor &floor) {
  double best = 1e9;
  double bestFloor = 1e9;
  for (int run = 0; run < kRuns; ++run) {
    best = std::min(best, SecondsOf(work));
    bestFloor = std::min(bestFloor, SecondsOf(floor));
  }
  return best / bestFloor;
}

void MeasureLargeFile() {
  const std::string path = BenchPath("large");
  WriteImages(path, 16, 8192);
  PrintRatio("saving 1 GiB, 16 images of 8192 x 8192", RatioOf([&] { Save(path); }, [&] { CopyFile(path); }), 1.2);
  std::filesystem::remove(path);
}

void MeasureManySegments() {
  constexpr double kMany = 999;
  constexpr double kFew = 99;
  const std::string many = BenchPath("many");
  const std::string few = BenchPath("few");
  WriteImages(many, static_cast<std::uint32_t>(kMany), 64);
  WriteImages(few, static_cast<std::uint32_t>(kFew), 64);
  const double ratio = RatioOf([&] { Save(many); }, [&] { Save(few); });
  PrintRatio("saving 999 images of 4 KiB, a segment, to 99 images", ratio * kFew / kMany, 1.5);
  std::filesystem::remove(many);
  std::filesystem::remove(few);
}

}  // namespace

int main() {
  std::printf("%-58s %8s %8s\n", "saving an opened file", "ratio", "aim");
  MeasureLargeFile();
  MeasureManySegments();
  std::filesystem::remove(kSavedPath);
  return 0;
}
