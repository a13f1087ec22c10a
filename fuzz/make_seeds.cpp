// Writes inputs to begin with, a folder a target: small sound files of every kind, and what is inside of them.
#include "cgm_builder.h"
#include "small_files.h"
#include "version20.h"

#include <cstdio>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

/** The roads of the target for codecs, which the first byte of an input chooses. */
constexpr std::uint8_t kCodecRoads = 4;
constexpr std::uint8_t kRawRoads[] = {4, 5};
/** With options, a level, and a window: first row, rows, first column, columns. */
constexpr std::uint8_t kSampleRoad[] = {6, 0, 0, 0, 200, 0, 200};

Bytes Joined(Bytes first, const Bytes &second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

class Seeds {
 public:
  explicit Seeds(fs::path folder) : root(std::move(folder)) {}

  void Add(const std::string &target, const std::string &name, const Bytes &bytes) const {
    fs::create_directories(root / target);
    WriteFile((root / target / name).string(), bytes);
  }

 private:
  fs::path root;
};

void AddFiles(const Seeds &seeds) {
  for (const SmallFile &file : SmallFiles()) {
    for (const char *target : {"headers", "compose", "resave", "reader"}) seeds.Add(target, file.name, file.bytes);
    if (file.streamBytes == 0) continue;
    const Bytes stream(file.bytes.end() - static_cast<std::ptrdiff_t>(file.streamBytes), file.bytes.end());
    for (std::uint8_t road = 0; road < kCodecRoads; ++road) {
      seeds.Add("codecs", file.name + std::to_string(road),
                Joined(road == 1 ? Bytes{1, 2, 1, 0} : Bytes{road}, stream));
    }
    seeds.Add("codecs", file.name + "-samples", Joined({std::begin(kSampleRoad), std::end(kSampleRoad)}, stream));
    for (const std::uint8_t road : kRawRoads) {
      seeds.Add("codecs", file.name + std::to_string(road), Joined({road, 16, 5}, stream));
    }
  }
}

/** Kinds of samples that only the wide reader has, plain and masked in each mode. */
void AddSamples(const Seeds &seeds) {
  struct Kind {
    const char *type;
    std::uint32_t bits;
  };
  constexpr Kind kKinds[] = {{"INT", 13}, {"INT", 64}, {"SI", 12}, {"SI", 32}, {"R", 32}, {"R", 64}, {"C", 64}};
  for (const Kind &kind : kKinds) {
    for (const char mode : {'B', 'P', 'R', 'S'}) {
      for (const bool isMasked : {false, true}) {
        ImageSpec image = isMasked ? SmallMaskedImage(mode, 3) : SmallImage(mode, 3, "NC");
        image.pixelValueType = kind.type;
        image.bits = kind.bits;
        image.data.resize(std::size_t{9} * kind.bits, 0x3C);
        const std::string name = kind.type + std::to_string(kind.bits) + mode + (isMasked ? "-masked" : "");
        seeds.Add("reader", name, NitfBuilder().Image(image).Build());
      }
    }
  }
}

/** A file of version 02.00 with segments of all kinds: image, symbols, label, text, data extension. */
void AddVersion20(const Seeds &seeds) {
  const Bytes metafile = SmallMetafile();
  seeds.Add("reader", "version20",
            File20({{0, Image20(), "pixels"},
                    {1, With(Symbol20('B', 2), {{"SCOLOR", "R"}}), "ab"},
                    {1, Symbol20('C', 3), {metafile.begin(), metafile.end()}},
                    {1, Symbol20('O', 4), ""},
                    {2, Label20(), "words"},
                    {3, Text20(), "text"},
                    {4, Overflow20(), "data"}}));
}

void AddDrawings(const Seeds &seeds) {
  const CgmCoding codings[] = {{},
                               {.vdcReal = CgmReal::Float32, .vdcIsReal = true, .directColor = true},
                               {.integer = 32, .index = 8, .vdcInteger = 24, .real = CgmReal::Float64, .partition = 8}};
  int number = 0;
  for (const CgmCoding &coding : codings) {
    CgmBuilder metafile(coding, {0, 0}, {60, 60});
    // Lines, marks, areas, texts and arcs, each with an attribute of its own in front.
    metafile.Add(5, 3, metafile.New().Vdc(3)).Add(4, 1, metafile.New().Points({{0, 0}, {50, 50}, {10, 20}}));
    metafile.Add(5, 6, metafile.New().Index(4)).Add(4, 3, metafile.New().Points({{5, 5}, {20, 40}}));
    metafile.Add(5, 22, metafile.New().Enumeration(3)).Add(5, 24, metafile.New().Index(5));
    metafile.Add(4, 7, metafile.New().Points({{1, 2}, {50, 3}, {30, 50}}));
    metafile.Add(5, 15, metafile.New().Vdc(8));
    metafile.Add(4, 4, metafile.New().Points({{10, 20}}).Enumeration(1).String("words"));
    metafile.Add(4, 12, metafile.New().Points({{20, 20}}).Vdc(9));
    metafile.Add(4, 15, metafile.New().Points({{20, 20}}).Vdc(1).Vdc(0).Vdc(0).Vdc(1).Vdc(9));
    metafile.Add(4, 17, metafile.New().Points({{30, 30}, {50, 30}, {30, 40}}));
    metafile.Add(4, 26, metafile.New().Index(2).Points({{0, 0}, {10, 50}, {40, 50}, {50, 0}}));
    seeds.Add("drawing", "coding" + std::to_string(number++), metafile.Finish());
  }
  seeds.Add("drawing", "small", SmallMetafile());
}

/** Calls by their numbers in the target's table, each with what it reads. */
void AddCalls(const Seeds &seeds) {
  const Bytes image = {4, 16, 12, 4, 200, 0, 0, 10};
  const Bytes graphic = {5, 2, 1, 2, 0, 30, 40, 9, 9, 1, 3, 50, 20, 20, 10, 10, 60, 60};
  const Bytes text = {6, 5, 'w', 'o', 'r', 'd', 's'};
  const Bytes reopen = {10};
  seeds.Add("authoring", "image", Joined(image, {9, 10}));
  seeds.Add("authoring", "graphic", Joined(graphic, {9, 10, 7, 0, 1, 5, 6, 0, 7, 8}));
  seeds.Add("authoring", "text", Joined(text, {8, 0, 10}));
  Bytes all = Joined(Joined(image, graphic), Joined(text, reopen));
  for (std::uint8_t call = 0; call < 4; ++call) {
    all.push_back(call);
    all.push_back(0);
    // Members that are changed to a short text or a small number, and others that are left.
    for (int i = 0; i < 30; ++i) all.insert(all.end(), {0xFF, 2, 'A', '1', 0x00, 0x20});
  }
  seeds.Add("authoring", "all", Joined(all, {9, 10}));
}

}  // namespace

int main(int count, char **arguments) {
  if (count != 2) {
    std::fputs("usage: make_seeds FOLDER\n", stderr);
    return 2;
  }
  const Seeds seeds(arguments[1]);
  AddFiles(seeds);
  AddSamples(seeds);
  AddVersion20(seeds);
  AddDrawings(seeds);
  AddCalls(seeds);
  return 0;
}
