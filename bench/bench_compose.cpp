// Composing large pictures, uncompressed and vector-quantised, as a ratio to what can't be beaten: reading the same
// bytes in pieces of 1 MiB and copying as many bytes as the canvas has.
#include "measure.h"
#include "nitf_builder.h"
#include "vq_builder.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

/** A picture to compose. */
struct Scene {
  const char *name;
  std::uint32_t side;
  std::uint32_t bands;
  std::uint32_t bits;
  char mode;
  std::uint32_t block;
  std::uint32_t canvasBits;
  double aim; /**< times the floor */
  bool quantised = false;
};

constexpr Scene kScenes[] = {
    {"8192 x 8192 mono 8 bits, blocks of 1024, 24-bit canvas", 8192, 1, 8, 'B', 1024, 24, 2},
    {"8192 x 8192 mono 8 bits, blocks of 1024, 8-bit canvas", 8192, 1, 8, 'B', 1024, 8, 2},
    {"4096 x 4096 RGB, mode B, blocks of 1024", 4096, 3, 8, 'B', 1024, 24, 2},
    {"4096 x 4096 RGB, mode R, blocks of 1024", 4096, 3, 8, 'R', 1024, 24, 2},
    {"4096 x 4096 RGB, mode S, blocks of 1024", 4096, 3, 8, 'S', 1024, 24, 2},
    {"4096 x 4096 RGB, mode P, blocks of 1024", 4096, 3, 8, 'P', 1024, 24, 3},
    {"4096 x 4096 mono 16 bits, one block", 4096, 1, 16, 'B', 0, 24, 2},
    {"6144 x 6144 vector-quantised, frames of 1536, 24 bits", 6144, 1, 8, 'B', 1536, 24, 3, true},
    {"6144 x 6144 vector-quantised, frames of 1536, 8 bits", 6144, 1, 8, 'B', 1536, 8, 3, true},
};

std::string ScenePath(const Scene &scene) {
  return BenchPath(std::to_string(&scene - kScenes));
}

Bytes Samples(const Scene &scene) {
  Bytes samples(std::size_t{scene.side} * scene.side * scene.bands * (scene.bits / 8));
  std::uint32_t state = 1;
  for (std::uint8_t &byte : samples) byte = NoiseByte(state);
  return samples;
}

/** Kernels of 4 x 4 and codes of 12 bits, as in raster maps. */
Bytes Codes(const Scene &scene) {
  VqSpec data{.codeRows = scene.block / 4, .codesPerRow = scene.block / 4};
  std::uint32_t state = 1;
  data.kernels.assign(4096, Bytes(16));
  for (Bytes &kernel : data.kernels) {
    for (std::uint8_t &value : kernel) value = NoiseByte(state);
  }
  data.codes.resize(std::size_t{scene.side / 4} * (scene.side / 4));
  for (std::uint32_t &code : data.codes) code = std::uint32_t{NoiseByte(state)} << 4 | NoiseByte(state) >> 4;
  return EncodeVq(data);
}

void WriteScene(const Scene &scene) {
  ImageSpec image{.rows = scene.side, .columns = scene.side, .mode = scene.mode, .bits = scene.bits};
  image.compression = scene.quantised ? "C4" : "NC";
  image.blockWidth = image.blockHeight = scene.block;
  image.fields = scene.block == 0 ? FieldTexts{{"NPPBH", "0000"}, {"NPPBV", "0000"}} : FieldTexts{};
  if (scene.bands == 3) {
    image.representation = "RGB";
    image.bands = {{"R", 0, {}}, {"G", 0, {}}, {"B", 0, {}}};
  }
  image.data = scene.quantised ? Codes(scene) : Samples(scene);
  NitfBuilder().Image(image).Write(ScenePath(scene));
}

void Compose(const Scene &scene) {
  ComposeFile(ScenePath(scene), scene.canvasBits, scene.side);
}

/** Reads the file and copies a canvas' worth of bytes into a new canvas. */
void RunFloor(const Scene &scene) {
  ReadWholeFile(ScenePath(scene));
  CopyNewCanvas(scene.side, scene.canvasBits);
}

/** The same into memory that is there already. */
void RunWarmFloor(const Scene &scene) {
  static std::vector<std::uint8_t> canvas(std::size_t{8192} * 8192 * 3);
  ReadWholeFile(ScenePath(scene));
  CopyBytes(canvas.data(), std::size_t{scene.side} * scene.side * (scene.canvasBits / 8));
}

/** One composition and one floor an iteration, turn by turn, so that both meet the same machine; the best of each
 * counts. */
void MeasureScene(benchmark::State &state, const Scene &scene) {
  WriteScene(scene);
  RunFloor(scene);
  RunWarmFloor(scene);
  double composed = 1e9;
  double floor = 1e9;
  double warmFloor = 1e9;
  for ([[maybe_unused]] auto iteration : state) {
    const double seconds = SecondsOf([&] { Compose(scene); });
    composed = std::min(composed, seconds);
    floor = std::min(floor, SecondsOf([&] { RunFloor(scene); }));
    warmFloor = std::min(warmFloor, SecondsOf([&] { RunWarmFloor(scene); }));
    state.SetIterationTime(seconds);
  }
  state.counters["floors"] = composed / floor;
  state.counters["warm"] = composed / warmFloor;
  state.counters["aim"] = scene.aim;
  std::filesystem::remove(ScenePath(scene));
}

/** Peak memory of a process that composes the scene once, in MiB. */
long PeakMemory(const Scene &scene) {
  WriteScene(scene);
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    Compose(scene);
    _exit(0);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) std::abort();
  std::filesystem::remove(ScenePath(scene));
  return usage.ru_maxrss / 1024;
}

/** What it may be at most: the canvas, one decoded image, one block, and 64 MiB. */
long AllowedMemory(const Scene &scene) {
  const std::uint64_t pixels = std::uint64_t{scene.side} * scene.side;
  const std::uint64_t sampleBytes = std::uint64_t{scene.bands} * (scene.bits / 8);
  const std::uint64_t blockPixels = scene.block == 0 ? pixels : std::uint64_t{scene.block} * scene.block;
  return static_cast<long>((pixels * (scene.canvasBits / 8) + (pixels + blockPixels) * sampleBytes) / kMebibyte + 64);
}

}  // namespace

int main(int argc, char **argv) {
  for (const Scene &scene : kScenes) {
    benchmark::RegisterBenchmark(scene.name, [&scene](benchmark::State &state) { MeasureScene(state, scene); })
        ->UseManualTime()
        ->Iterations(7);
  }
  benchmark::Initialize(&argc, argv);
  std::printf("%-58s %8s %8s\n", "peak memory of composing once, in MiB", "peak", "allowed");
  for (const Scene &scene : kScenes) {
    std::printf("%-58s %8ld %8ld\n", scene.name, PeakMemory(scene), AllowedMemory(scene));
  }
  std::printf("\n");
  RatioTable table;
  benchmark::RunSpecifiedBenchmarks(&table);
  return 0;
}
