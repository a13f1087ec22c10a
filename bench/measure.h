// What the benchmarks share: composing a file, the floors that it is held against, and the table of ratios.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include <benchmark/benchmark.h>

constexpr std::uint32_t kMebibyte = 1U << 20;

/** The path of a temporary file. */
std::string BenchPath(const std::string &name);

std::uint8_t NoiseByte(std::uint32_t &state);

/** Composes a file on a canvas of `bits` bits and counts its rows; the process ends where that fails. */
void ComposeFile(const std::string &path, std::uint32_t bits, std::uint32_t rows);

/** Reads a file in pieces of 1 MiB. */
void ReadWholeFile(const std::string &path);

/** Writes `bytes` bytes of a canvas, from memory that is in the cache. */
void CopyBytes(std::uint8_t *canvas, std::size_t bytes);

/** Copies as many bytes as a square canvas has into a new one. */
void CopyNewCanvas(std::uint32_t side, std::uint32_t bits);

/** The seconds of a processor that `work` takes, the system's share included: what else runs counts little. */
double SecondsOf(const std::function<void()> &work);

/** Prints a table of ratios, which mean more than times on machines that differ. */
class RatioTable : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context &) override;
  void ReportRuns(const std::vector<Run> &runs) override;
};
