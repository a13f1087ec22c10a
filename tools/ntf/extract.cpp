#include "extract.h"

#include "info_json.h"
#include "load_headers.h"
#include "output_file.h"
#include "saving.h"
#include "segment_choice.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace ntf {
namespace {

namespace fs = std::filesystem;

constexpr const char *kManifestName = "manifest.json";

/** A kind of segments: its file names, and the segments that were chosen. */
struct ExtractedKind {
  SegmentKind kind;
  const char *prefix;
  const char *listing; /* in the description of a file's headers */
  std::vector<std::uint32_t> ExtractOptions::*chosen;
};

constexpr ExtractedKind kKinds[] = {
    {SegmentKind::Image, "image", "images", &ExtractOptions::images},
    {SegmentKind::Graphic, "graphic", "graphics", &ExtractOptions::graphics},
    {SegmentKind::Text, "text", "texts", &ExtractOptions::texts},
    {SegmentKind::DataExtension, "des", "dataExtensions", &ExtractOptions::dataExtensions},
};

/** One segment to write. */
struct Body {
  const ExtractedKind *kind;
  std::uint32_t index;
  std::string name;
  std::uint64_t offset;
  std::uint64_t bytes;
};

/** The suffix by which other programs recognise an image's data; ".raw" if there is a mask table, or no codec. */
std::string ImageSuffix(const FileView &file, const Body &body) {
  constexpr std::string_view kJp2Box("\0\0\0\x0CjP  ", 8);
  constexpr std::string_view kCodeStream("\xFF\x4F\xFF\x51", 4);
  constexpr std::string_view kJpeg("\xFF\xD8\xFF", 3);
  std::array<char, 8> start = {};
  const std::uint64_t held = file.ReadAt(body.offset, start.data(), std::min<std::uint64_t>(start.size(), body.bytes));
  const std::string_view front(start.data(), held);
  const ImageNumbers image = file.Image(body.index);
  // A stream for each block is nothing that other programs read as one picture.
  if (front.starts_with(kJpeg)) return image.blocksPerRow * image.blocksPerColumn > 1 ? ".jpg-blocks" : ".jpg";
  if (front.starts_with(kJp2Box)) return ".jp2";
  return front.starts_with(kCodeStream) ? ".j2k" : ".raw";
}

std::string SuffixOf(const FileView &file, const Body &body) {
  switch (body.kind->kind) {
    case SegmentKind::Image:
      return ImageSuffix(file, body);
    case SegmentKind::Graphic:
      return file.FieldText({SegmentKind::Graphic, body.index}, "SFMT") == "C" ? ".cgm" : ".bin";
    case SegmentKind::Text:
      return ".txt";
    default:
      return ".bin";
  }
}

Body BodyOf(const FileView &file, const ExtractedKind &kind, std::uint32_t index) {
  const SegmentPlace place = file.Place(kind.kind, index);
  Body body = {&kind, index, {}, place.data, place.dataLength};
  std::array<char, 16> number = {};
  std::snprintf(number.data(), number.size(), "-%03u", index);
  body.name = kind.prefix + std::string(number.data()) + SuffixOf(file, body);
  return body;
}

Outcome ChooseBodies(const ExtractOptions &options, const FileView &file, std::vector<Body> &bodies) {
  const bool everything = std::all_of(std::begin(kKinds), std::end(kKinds),
                                      [&](const ExtractedKind &kind) { return (options.*kind.chosen).empty(); });
  for (const ExtractedKind &kind : kKinds) {
    std::vector<std::uint32_t> numbers = options.*kind.chosen;
    const std::uint32_t count = everything ? file.Count(kind.kind) : 0;
    for (std::uint32_t index = 0; index < count; ++index) numbers.push_back(index);
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    for (const std::uint32_t index : numbers) {
      if (Outcome missing = CheckSegment(options.file, file, kind.kind, index)) return missing;
      bodies.push_back(BodyOf(file, kind, index));
    }
  }
  return {};
}

Outcome CopyBody(const std::string &source, const FileView &file, const Body &body, OutputFile &output) {
  constexpr std::uint64_t kPiece = 1U << 20;
  std::vector<char> piece(std::min(kPiece, body.bytes));
  for (std::uint64_t done = 0; done < body.bytes;) {
    const std::uint64_t bytes = std::min(kPiece, body.bytes - done);
    if (file.ReadAt(body.offset + done, piece.data(), bytes) != bytes) {
      return Problem{
          source,
          std::string("the data of ") + KindWord(body.kind->kind) + " " + std::to_string(body.index) + " is truncated",
          ERROR_FILE_READ};
    }
    if (!output.Write(piece.data(), bytes)) return output.Failure();
    done += bytes;
  }
  return {};
}

/** The output folder. All names in it are ours. */
class Folder {
 public:
  explicit Folder(const ExtractOptions &options) : path(options.folder), force(options.force) {}

  Outcome Make() const {
    std::error_code error;
    fs::create_directories(path, error);
    return error ? Outcome(SystemProblem(path.string(), error.value(), ERROR_FILE_WRITE)) : Outcome();
  }

  /** Refuses an existing file unless forced. A link may lead out of the folder, so it is never followed. */
  Outcome CheckFree(const std::string &name) const {
    std::error_code ignored;
    const fs::file_status status = fs::symlink_status(path / name, ignored);
    if (!fs::exists(status)) return {};
    if (!force) return Problem{NameOf(name), "already exists (use --force to overwrite)", ERROR_FILE_WRITE};
    if (!fs::is_regular_file(status)) return Problem{NameOf(name), "is not a regular file", ERROR_FILE_WRITE};
    return {};
  }

  std::string NameOf(const std::string &name) const { return (path / name).string(); }
  bool Has(const std::string &name) const {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(path / name, ignored));
  }

 private:
  fs::path path;
  bool force;
};

/** The content of files whose suffix doesn't say all. */
Json ContentOf(const FileView &file, const Body &body) {
  if (!body.name.ends_with(".jpg-blocks")) return nullptr;
  const ImageNumbers image = file.Image(body.index);
  return "JPEG streams, one after the other, for blocks of " + std::to_string(image.blockWidth) + " x " +
         std::to_string(image.blockHeight) + " pixels, " + std::to_string(image.blocksPerRow) + " across and " +
         std::to_string(image.blocksPerColumn) + " down";
}

/** Entries of the folder's manifest, if it is of the same source, whose files exist and are not replaced. */
Json KeptSegments(const ExtractOptions &options, const Folder &folder, const std::vector<Body> &bodies) {
  Json kept = Json::array();
  std::ifstream stream(folder.NameOf(kManifestName));
  const Json manifest = Json::parse(stream, nullptr, false);
  if (!manifest.is_object() || manifest.value("source", Json()) != options.file) return kept;
  for (const Json &segment : manifest.value("segments", Json::array())) {
    const Json name = segment.is_object() ? segment.value("file", Json()) : Json();
    if (!name.is_string() || !folder.Has(name)) continue;
    const bool isReplaced =
        std::any_of(bodies.begin(), bodies.end(), [&](const Body &body) { return body.name == name; });
    if (!isReplaced) kept.push_back(segment);
  }
  return kept;
}

Json ManifestOf(const ExtractOptions &options, const Folder &folder, const FileView &file,
                const std::vector<Body> &bodies) {
  const Json headers = DescribeHeaders(file);
  Json segments = KeptSegments(options, folder, bodies);
  for (const Body &body : bodies) {
    segments.push_back({{"kind", KindWord(body.kind->kind)},
                        {"index", body.index},
                        {"file", body.name},
                        {"offset", body.offset},
                        {"bytes", body.bytes},
                        {"subheader", headers[body.kind->listing][body.index]}});
    if (const Json content = ContentOf(file, body); !content.is_null()) segments.back()["content"] = content;
  }
  return {{"source", options.file}, {"header", headers["file"]}, {"segments", std::move(segments)}};
}

/** Writes a file of the folder with the contents that `fill` provides. */
template <class Fill>
Outcome WriteFile(const Folder &folder, const std::string &name, Fill fill) {
  OutputFile output(folder.NameOf(name));
  if (Outcome unopened = output.Open()) return unopened;
  if (Outcome failed = fill(output)) return failed;
  return output.Commit();
}

}  // namespace

Outcome Extract(const ExtractOptions &options) {
  LoadedFile loaded;
  if (Outcome failed = LoadHeaders(options.file, loaded, options.door)) return failed;
  const FileView file = loaded.View();
  std::vector<Body> bodies;
  if (Outcome missing = ChooseBodies(options, file, bodies)) return missing;
  const Folder folder(options);
  if (Outcome unmade = folder.Make()) return unmade;
  if (Outcome same = CheckNotInput(folder.NameOf(kManifestName), {options.file})) return same;
  if (Outcome taken = folder.CheckFree(kManifestName)) return taken;
  for (const Body &body : bodies) {
    if (Outcome same = CheckNotInput(folder.NameOf(body.name), {options.file})) return same;
    if (Outcome taken = folder.CheckFree(body.name)) return taken;
  }
  for (const Body &body : bodies) {
    const auto copy = [&](OutputFile &output) { return CopyBody(options.file, file, body, output); };
    if (Outcome failed = WriteFile(folder, body.name, copy)) return failed;
  }
  const std::string manifest = TextOf(ManifestOf(options, folder, file, bodies));
  return WriteFile(folder, kManifestName, [&](OutputFile &output) {
    return output.Write(manifest.data(), manifest.size()) ? Outcome() : Outcome(output.Failure());
  });
}

}  // namespace ntf
