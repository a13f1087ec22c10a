// Writing pictures with the program: the share of its time that goes into compressing them, which is what it takes
// longer than for a picture of the same form whose pixels are stored.
#include "measure.h"
#include "nitf_builder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kRuns = 9;
const std::string kSource = BenchPath("picture");
const std::string kPicture = kSource + ".png";

/** A smooth picture with noise of three bits, which the filters of PNG leave. */
void WriteSmooth(std::uint32_t side, std::uint32_t bands) {
  ImageSpec image;
  image.rows = image.columns = side;
  image.fields = {{"NPPBH", "0000"}, {"NPPBV", "0000"}};
  if (bands == 3) {
    image.bands.clear();
    for (const char *band : {"R", "G", "B"}) image.bands.push_back({band, 0, {}});
    image.representation = "RGB";
  }
  image.data.resize(std::size_t{side} * side * bands);
  std::uint32_t state = 1;
  std::size_t at = 0;
  for (std::uint32_t band = 0; band < bands; ++band) {
    for (std::uint32_t row = 0; row < side; ++row) {
      const double level = 120 + 50 * std::cos(row / 200.0 + band);
      for (std::uint32_t column = 0; column < side; ++column) {
        const double smooth = level + 50 * std::sin(column / 300.0 + band);
        image.data[at++] = static_cast<std::uint8_t>(smooth + (NoiseByte(state) >> 5));
      }
    }
  }
  NitfBuilder().Image(image).Write(kSource);
}

/** The seconds that pass while the program writes the picture. */
double SecondsToRender(std::string compression) {
  std::string program = NTF_PROGRAM;
  std::string source = kSource;
  std::string picture = kPicture;
  std::string command = "render";
  std::string to = "-o";
  std::string compress = "--compress";
  const std::array<char *, 8> arguments = {program.data(), command.data(),  source.data(),      to.data(),
                                           picture.data(), compress.data(), compression.data(), nullptr};
  std::filesystem::remove(kPicture);
  const auto start = std::chrono::steady_clock::now();
  pid_t child = 0;
  int status = 0;
  const bool ran = posix_spawn(&child, NTF_PROGRAM, nullptr, nullptr, arguments.data(), environ) == 0 &&
                   waitpid(child, &status, 0) == child && status == 0;
  if (!ran) std::abort();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void PrintShare(const char *name) {
  double fast = 1e9;
  double stored = 1e9;
  for (int run = 0; run < kRuns; ++run) {
    fast = std::min(fast, SecondsToRender("1"));
    stored = std::min(stored, SecondsToRender("0"));
  }
  std::printf("%-58s %8.2f %8.2f\n", name, 1 - stored / fast, 0.5);
  std::fflush(stdout);
}

}  // namespace

int main() {
  std::printf("%-58s %8s %8s\n", "writing a PNG, the share of time that compression takes", "share", "aim");
  WriteSmooth(8192, 1);
  PrintShare("8192 x 8192 mono");
  WriteSmooth(4096, 3);
  PrintShare("4096 x 4096 RGB");
  std::filesystem::remove(kSource);
  std::filesystem::remove(kPicture);
  return 0;
}
