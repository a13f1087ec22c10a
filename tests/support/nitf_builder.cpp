#include "nitf_builder.h"

#include "bit_writer.h"

#include <cstdio>
#include <utility>

namespace {

/** The fields of one header, each at its width. */
class FieldWriter {
 public:
  explicit FieldWriter(const FieldTexts &texts) : replaced(texts) {}

  FieldWriter &Text(const std::string &name, std::size_t width, std::string text = {}) {
    if (const auto found = replaced.find(name); found != replaced.end()) text = found->second;
    text.resize(width, ' ');
    bytes.insert(bytes.end(), text.begin(), text.end());
    return *this;
  }

  FieldWriter &Number(const std::string &name, int width, std::uint64_t value) {
    std::string digits = std::to_string(value);
    if (digits.size() < static_cast<std::size_t>(width)) digits.insert(0, width - digits.size(), '0');
    return Text(name, static_cast<std::size_t>(width), digits);
  }

  FieldWriter &Location(const std::string &name, int row, int column) {
    char text[16];
    std::snprintf(text, sizeof text, "%05d%05d", row, column);
    return Text(name, 10, text);
  }

  FieldWriter &Raw(const Bytes &raw) {
    bytes.insert(bytes.end(), raw.begin(), raw.end());
    return *this;
  }

  FieldWriter &Security(const std::string &prefix) {
    constexpr std::pair<const char *, std::size_t> kFields[] = {
        {"SCLAS", 1},  {"SCLSY", 2}, {"SCODE", 11}, {"SCTLH", 2}, {"SREL", 20},  {"SDCTP", 2},
        {"SDCDT", 8},  {"SDCXM", 4}, {"SDG", 1},    {"SDGDT", 8}, {"SCLTX", 43}, {"SCATP", 1},
        {"SCAUT", 40}, {"SCRSN", 1}, {"SSRDT", 8},  {"SCTLN", 15}};
    for (const auto &[name, width] : kFields) {
      Text(prefix + name, width, std::string(name) == "SCLAS" ? "U" : "");
    }
    return *this;
  }

  /** A length field, and behind it the overflow field and the data that the texts give for it. */
  FieldWriter &Extension(const std::string &length, const std::string &overflow, const std::string &data) {
    const auto found = replaced.find(data);
    Number(length, 5, found == replaced.end() ? 0 : found->second.size() + 3);
    if (found == replaced.end()) return *this;
    Number(overflow, 3, 0);
    return Text(data, found->second.size());
  }

  Bytes Take() { return std::move(bytes); }

 private:
  const FieldTexts &replaced;
  Bytes bytes;
};

Bytes MaskTable(const MaskSpec &mask) {
  const std::size_t padBytes = mask.padCode ? mask.padCode->size() : 0;
  Bytes bytes;
  PutBigEndian(bytes, 10 + padBytes + 4 * (mask.blockOffsets.size() + mask.padOffsets.size()), 4);
  PutBigEndian(bytes, mask.blockOffsets.empty() ? 0 : 4, 2);
  PutBigEndian(bytes, mask.padOffsets.empty() ? 0 : 4, 2);
  PutBigEndian(bytes, 8 * padBytes, 2);
  if (mask.padCode) bytes.insert(bytes.end(), mask.padCode->begin(), mask.padCode->end());
  for (const std::uint32_t offset : mask.blockOffsets) PutBigEndian(bytes, offset, 4);
  for (const std::uint32_t offset : mask.padOffsets) PutBigEndian(bytes, offset, 4);
  return bytes;
}

void PutBands(FieldWriter &header, const ImageSpec &image) {
  const std::size_t count = image.bands.size();
  header.Number("NBANDS", 1, count < 10 ? count : 0);
  if (count >= 10 || count == 0) header.Number("XBANDS", 5, count);
  for (std::size_t band = 0; band < count; ++band) {
    const BandSpec &spec = image.bands[band];
    header.Text("IREPBAND" + std::to_string(band + 1), 2, spec.representation);
    header.Text("ISUBCAT", 6).Text("IFC", 1, "N").Text("IMFLT", 3).Number("NLUTS", 1, spec.luts);
    if (spec.luts != 0) header.Number("NELUT", 5, spec.lut.size() / spec.luts).Raw(spec.lut);
  }
}

Bytes ImageHeader(const ImageSpec &image) {
  FieldWriter header(image.fields);
  header.Text("IM", 2, "IM").Text("IID1", 10, "Sample").Text("IDATIM", 14, "20260102030405").Text("TGTID", 17);
  header.Text("IID2", 80, "Test image").Security("I").Number("ENCRYP", 1, 0).Text("ISORCE", 42);
  header.Number("NROWS", 8, image.rows).Number("NCOLS", 8, image.columns).Text("PVTYPE", 3, image.pixelValueType);
  header.Text("IREP", 8, image.representation).Text("ICAT", 8, "VIS");
  header.Number("ABPP", 2, image.actualBits != 0 ? image.actualBits : image.bits).Text("PJUST", 1, "R");
  header.Text("ICORDS", 1);
  if (image.fields.contains("IGEOLO")) header.Text("IGEOLO", 60);
  header.Number("NICOM", 1, image.fields.contains("ICOM1") ? 1 : 0);
  if (image.fields.contains("ICOM1")) header.Text("ICOM1", 80);
  header.Text("IC", 2, image.compression);
  if (image.compression != "NC" && image.compression != "NM") header.Text("COMRAT", 4, "00.0");
  PutBands(header, image);
  header.Number("ISYNC", 1, 0).Text("IMODE", 1, std::string(1, image.mode));
  header.Number("NBPR", 4, image.BlocksPerRow()).Number("NBPC", 4, image.BlocksPerColumn());
  header.Number("NPPBH", 4, image.BlockWidth()).Number("NPPBV", 4, image.BlockHeight());
  header.Number("NBPP", 2, image.bits).Number("IDLVL", 3, image.level).Number("IALVL", 3, image.attachment);
  header.Location("ILOC", image.locationRow, image.locationColumn).Text("IMAG", 4, "1.0");
  header.Extension("UDIDL", "UDOFL", "UDID").Extension("IXSHDL", "IXSOFL", "IXSHD");
  return header.Take();
}

Bytes GraphicHeader(const GraphicSpec &graphic) {
  FieldWriter header(graphic.fields);
  header.Text("SY", 2, "SY").Text("SID", 10, "Sample").Text("SNAME", 20).Security("S").Number("ENCRYP", 1, 0);
  header.Text("SFMT", 1, std::string(1, graphic.format)).Number("SSTRUCT", 13, 0);
  header.Number("SDLVL", 3, graphic.level).Number("SALVL", 3, graphic.attachment);
  header.Location("SLOC", graphic.locationRow, graphic.locationColumn).Location("SBND1", 0, 0);
  header.Text("SCOLOR", 1, "C").Location("SBND2", 0, 0).Number("SRES2", 2, 0).Extension("SXSHDL", "SXSOFL", "SXSHD");
  return header.Take();
}

Bytes TextHeader(const TextSpec &text) {
  FieldWriter header(text.fields);
  header.Text("TE", 2, "TE").Text("TEXTID", 7, "Sample").Number("TXTALVL", 3, 0).Text("TXTDT", 14, "20260102030405");
  header.Text("TXTITL", 80, "Test text").Security("T").Number("ENCRYP", 1, 0).Text("TXTFMT", 3, "STA");
  return header.Extension("TXSHDL", "TXSOFL", "TXSHD").Take();
}

Bytes DataExtensionHeader(const DataExtensionSpec &extension) {
  FieldWriter header(extension.fields);
  header.Text("DE", 2, "DE").Text("DESID", 25, extension.identifier).Number("DESVER", 2, 1).Security("DE");
  if (extension.identifier == "TRE_OVERFLOW") header.Text("DESOFLW", 6, "UDHD").Number("DESITEM", 3, 0);
  header.Number("DESSHL", 4, extension.userData.size());
  return header.Raw(Bytes(extension.userData.begin(), extension.userData.end())).Take();
}

Bytes ImageBody(const ImageSpec &image) {
  Bytes body = image.mask ? MaskTable(*image.mask) : Bytes();
  body.insert(body.end(), image.data.begin(), image.data.end());
  return body;
}

/** The samples of the blocks of an image, in the order of its mode. */
class LayoutWriter {
 public:
  LayoutWriter(const ImageSpec &spec, const SampleFunction &samples) : image(spec), sample(samples) {}

  void PutBlock(std::uint32_t block, const std::vector<std::uint32_t> &bands) {
    const auto top = block / image.BlocksPerRow() * image.BlockHeight();
    const auto left = block % image.BlocksPerRow() * image.BlockWidth();
    const bool byRow = image.mode == 'R' || image.mode == 'P';
    if (byRow) {
      for (std::uint32_t y = 0; y < image.BlockHeight(); ++y) PutRow(bands, top + y, left);
    } else {
      for (const std::uint32_t band : bands) PutPlane(band, top, left);
    }
    bits.FillByte();
  }

  Bytes Take() { return std::move(bytes); }

 private:
  void PutPlane(std::uint32_t band, std::uint32_t top, std::uint32_t left) {
    for (std::uint32_t y = 0; y < image.BlockHeight(); ++y) {
      for (std::uint32_t x = 0; x < image.BlockWidth(); ++x) bits.Put(sample(band, top + y, left + x), image.bits);
      if (image.pixelValueType != "B") bits.FillByte();
    }
  }

  void PutRow(const std::vector<std::uint32_t> &bands, std::uint32_t y, std::uint32_t left) {
    if (image.mode == 'R') {
      for (const std::uint32_t band : bands) {
        for (std::uint32_t x = 0; x < image.BlockWidth(); ++x) bits.Put(sample(band, y, left + x), image.bits);
        bits.FillByte();
      }
      return;
    }
    for (std::uint32_t x = 0; x < image.BlockWidth(); ++x) {
      for (const std::uint32_t band : bands) bits.Put(sample(band, y, left + x), image.bits);
    }
    bits.FillByte();
  }

  const ImageSpec &image;
  const SampleFunction &sample;
  Bytes bytes;
  BitWriter bits{bytes};
};

}  // namespace

NitfBuilder &NitfBuilder::Image(ImageSpec image) {
  images.push_back(std::move(image));
  return *this;
}

NitfBuilder &NitfBuilder::Graphic(GraphicSpec graphic) {
  graphics.push_back(std::move(graphic));
  return *this;
}

NitfBuilder &NitfBuilder::Text(TextSpec text) {
  texts.push_back(std::move(text));
  return *this;
}

NitfBuilder &NitfBuilder::DataExtension(DataExtensionSpec extension) {
  extensions.push_back(std::move(extension));
  return *this;
}

NitfBuilder &NitfBuilder::Field(const std::string &name, const std::string &text) {
  headerFields[name] = text;
  return *this;
}

std::vector<NitfBuilder::Kind> NitfBuilder::Kinds() const {
  const auto segmentsOf = [](const auto &specs, auto makeHeader, auto makeBody) {
    std::vector<Segment> segments;
    segments.reserve(specs.size());
    for (const auto &spec : specs) segments.push_back({makeHeader(spec), makeBody(spec)});
    return segments;
  };
  const auto dataOf = [](const auto &spec) { return spec.data; };
  const auto textOf = [](const TextSpec &spec) { return Bytes(spec.text.begin(), spec.text.end()); };
  return {{"NUMI", "LISH", 6, "LI", 10, segmentsOf(images, ImageHeader, ImageBody)},
          {"NUMS", "LSSH", 4, "LS", 6, segmentsOf(graphics, GraphicHeader, dataOf)},
          {"NUMX", "", 0, "", 0, {}},
          {"NUMT", "LTSH", 4, "LT", 5, segmentsOf(texts, TextHeader, textOf)},
          {"NUMDES", "LDSH", 4, "LD", 9, segmentsOf(extensions, DataExtensionHeader, dataOf)},
          {"NUMRES", "", 0, "", 0, {}}};
}

Bytes NitfBuilder::Build() const {
  const std::vector<Kind> kinds = Kinds();
  Bytes file = HeaderOf(kinds);
  for (const Kind &kind : kinds) {
    for (const Segment &segment : kind.segments) {
      file.insert(file.end(), segment.subheader.begin(), segment.subheader.end());
      file.insert(file.end(), segment.body.begin(), segment.body.end());
    }
  }
  return file;
}

Bytes NitfBuilder::HeaderOf(const std::vector<Kind> &kinds) const {
  FieldWriter tail(headerFields);
  std::size_t segmentBytes = 0;
  for (const Kind &kind : kinds) {
    tail.Number(kind.count, 3, kind.segments.size());
    for (std::size_t index = 0; index < kind.segments.size(); ++index) {
      const Segment &segment = kind.segments[index];
      const std::string number = std::to_string(index + 1);
      tail.Number(kind.subheaderLength + number, kind.subheaderDigits, segment.subheader.size());
      tail.Number(kind.dataLength + number, kind.dataDigits, segment.body.size());
      segmentBytes += segment.subheader.size() + segment.body.size();
    }
  }
  tail.Extension("UDHDL", "UDHOFL", "UDHD").Extension("XHDL", "XHDLOFL", "XHD");
  const Bytes tailBytes = tail.Take();

  FieldWriter header(headerFields);
  header.Text("FHDR", 4, "NITF").Text("FVER", 5, "02.10").Text("CLEVEL", 2, "03").Text("STYPE", 4, "BF01");
  header.Text("OSTAID", 10, "Ksntfx").Text("FDT", 14, "20260102030405").Text("FTITLE", 80, "A test file").Security("F");
  header.Number("FSCOP", 5, 0).Number("FSCPYS", 5, 0).Number("ENCRYP", 1, 0).Text("FBKGC", 3, std::string(3, '\0'));
  header.Text("ONAME", 24).Text("OPHONE", 18);
  constexpr std::size_t kBytesBeforeLengths = 342;
  const std::size_t headerBytes = kBytesBeforeLengths + 12 + 6 + tailBytes.size();
  header.Number("FL", 12, headerBytes + segmentBytes).Number("HL", 6, headerBytes).Raw(tailBytes);
  return header.Take();
}

Bytes NitfBuilder::ImageSubheader(std::size_t index) const {
  return ImageHeader(images.at(index));
}

void NitfBuilder::Write(const std::string &path) const {
  WriteFile(path, Build());
}

ImageSpec SixPixels(const FieldTexts &fields) {
  ImageSpec image;
  image.rows = 3;
  image.columns = 2;
  image.data = {1, 2, 3, 4, 5, 6};
  image.fields = fields;
  return image;
}

Bytes WithStreamHeader(Bytes file, const Bytes &replacement, const std::string &lastLength) {
  char length[8];
  std::snprintf(length, sizeof length, "%07zu", replacement.size());
  const auto append = [&file](const auto &bytes) { file.insert(file.end(), bytes.begin(), bytes.end()); };
  append(std::string(length) + "\x0A\x6E\x1D\x97");
  append(replacement);
  append("\x0E\xCA\x14\xBF" + (lastLength.empty() ? std::string(length) : lastLength));
  return file;
}

Bytes LayOut(const ImageSpec &image, const SampleFunction &sample, const BlockFunction &recorded) {
  std::vector<std::uint32_t> all;
  for (std::uint32_t band = 0; band < image.bands.size(); ++band) all.push_back(band);
  const std::uint32_t blocks = image.BlocksPerRow() * image.BlocksPerColumn();
  LayoutWriter writer(image, sample);
  const std::size_t passes = image.mode == 'S' ? all.size() : 1;
  for (std::size_t pass = 0; pass < passes; ++pass) {
    for (std::uint32_t block = 0; block < blocks; ++block) {
      if (recorded && !recorded(block)) continue;
      writer.PutBlock(block, image.mode == 'S' ? std::vector<std::uint32_t>{all[pass]} : all);
    }
  }
  return writer.Take();
}
