#include "picture.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace ntf {
namespace {

using MakeWriter = std::unique_ptr<PictureWriter> (*)(OutputFile &, CompressionLevel);

struct PictureFormat {
  const char *suffix;
  MakeWriter makeWriter;
};

constexpr PictureFormat kFormats[] = {{".png", MakePngWriter}, {".ppm", MakePpmWriter}};

MakeWriter WriterForName(const std::string &name) {
  if (name == "-") return MakePngWriter;
  std::string suffix = std::filesystem::path(name).extension().string();
  std::transform(suffix.begin(), suffix.end(), suffix.begin(), [](unsigned char c) { return std::tolower(c); });
  const auto *format = std::find_if(std::begin(kFormats), std::end(kFormats),
                                    [&](const PictureFormat &candidate) { return suffix == candidate.suffix; });
  return format == std::end(kFormats) ? nullptr : format->makeWriter;
}

}  // namespace

bool IsPictureName(const std::string &name) {
  return WriterForName(name) != nullptr;
}

bool IsCompressedPicture(const std::string &name) {
  return WriterForName(name) == MakePngWriter;
}

std::unique_ptr<PictureWriter> MakePictureWriter(OutputFile &output, CompressionLevel level) {
  return WriterForName(output.Name())(output, level);
}

}  // namespace ntf
