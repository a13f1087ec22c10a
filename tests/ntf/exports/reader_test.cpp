// Headers through the wide reader: versions, all fields of a file of version 02.00 written down here, notes, and files
// that end early.
#include "ksntfx_reader.h"
#include "open_reader.h"
#include "version20.h"

#include <cctype>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

std::vector<Segment20> Segments20() {
  return {{NITF_SEGMENT_IMAGE, Image20(), std::string("\x0A\x0B\x0C\x0D\x0E\x0F")},
          {NITF_SEGMENT_GRAPHIC, Symbol20('B', 2), std::string("\xAA\x55")},
          {NITF_SEGMENT_GRAPHIC, Symbol20('C', 3), "metafile"},
          {NITF_SEGMENT_GRAPHIC, Symbol20('O', 4), "object"},
          {NITF_SEGMENT_LABEL, Label20(), "words"},
          {NITF_SEGMENT_TEXT, Text20(), "a text"},
          {NITF_SEGMENT_DATA_EXTENSION, Overflow20(), "data"},
          {NITF_SEGMENT_DATA_EXTENSION, Plain20(), "more"}};
}

/** The fields that are listed: all but tables of lengths, comments and bands. */
FieldList WithoutTables(const FieldList &fields) {
  FieldList listed;
  for (const auto &field : fields) {
    const bool isCounted = std::isdigit(static_cast<unsigned char>(field.first.back())) != 0;
    const bool isOther = field.first == "IID1" || field.first == "IID2" || field.first == "SBND2";
    if (!isCounted || isOther) listed.push_back(field);
  }
  return listed;
}

FieldList Listed(const OpenReader &reader, std::uint32_t kind, std::uint32_t index) {
  FieldList fields;
  const auto add = [](const char *name, const char *value, std::uint64_t bytes, void *list) -> std::int32_t {
    static_cast<FieldList *>(list)->emplace_back(name, std::string(value, bytes));
    return SUCCESS;
  };
  EXPECT_EQ(NitfReaderListFields(reader.Get(), kind, index, add, &fields), SUCCESS);
  return fields;
}

std::vector<std::string> Notes(const OpenReader &reader) {
  std::vector<std::string> notes;
  for (std::uint32_t index = 0; index < NitfReaderNoteCount(reader.Get()); ++index) {
    NitfNote note{};
    EXPECT_EQ(NitfReaderGetNote(reader.Get(), index, &note), SUCCESS);
    notes.push_back(std::to_string(note.kind) + ":" + std::to_string(note.index) + " " + note.field + "=" + note.value +
                    " @" + std::to_string(note.offset) + " " + std::to_string(note.status));
  }
  return notes;
}

TEST(Version0200, HasAllSegmentsAndFieldsThatWereWritten) {
  const std::vector<Segment20> segments = Segments20();
  const OpenReader reader(File20(Segments20()));
  ASSERT_EQ(reader.status, SUCCESS);
  EXPECT_EQ(Notes(reader), std::vector<std::string>());
  EXPECT_EQ(Listed(reader, NITF_SEGMENT_FILE, 0), WithoutTables(Header20(segments)));
  std::uint32_t indices[5] = {};
  std::uint64_t position = Joined(Header20(segments)).size();
  for (const Segment20 &segment : segments) {
    const std::uint32_t index = indices[segment.kind]++;
    SCOPED_TRACE("segment " + std::to_string(index) + " of kind " + std::to_string(segment.kind));
    EXPECT_EQ(Listed(reader, segment.kind, index), WithoutTables(segment.fields));
    NitfPlace place{};
    ASSERT_EQ(NitfReaderGetPlace(reader.Get(), segment.kind, index, &place), SUCCESS);
    EXPECT_EQ(place.subheader, position);
    EXPECT_EQ(place.subheaderBytes, Joined(segment.fields).size());
    EXPECT_EQ(place.data, position + place.subheaderBytes);
    ASSERT_EQ(place.dataBytes, segment.data.size());
    std::string data(segment.data.size(), '?');
    EXPECT_EQ(NitfReaderReadData(reader.Get(), segment.kind, index, 0, data.data(), data.size()), SUCCESS);
    EXPECT_EQ(data, segment.data);
    EXPECT_EQ(NitfReaderReadData(reader.Get(), segment.kind, index, 1, data.data(), data.size()), ERROR_INVALID_VALUE);
    position = place.data + place.dataBytes;
  }
  for (std::uint32_t kind = 0; kind < 5; ++kind) EXPECT_EQ(NitfReaderCount(reader.Get(), kind), indices[kind]);
  std::uint8_t samples[6] = {};
  const NitfSampleTarget target = {samples, 3, 1, 0};
  EXPECT_EQ(NitfReaderReadSamples(reader.Get(), 0, nullptr, nullptr, 0, &target), SUCCESS);
  EXPECT_EQ(samples[5], 0x0F);
}

TEST(ReaderArguments, AreWithinTheImage) {
  const OpenReader reader(NitfBuilder().Image(SixPixels()));
  Bytes samples(100);
  const NitfSampleTarget target = {samples.data(), 2, 1, 0};
  constexpr std::uint64_t kFar = ~std::uint64_t{0};
  for (const NitfWindow &window : {NitfWindow{0, 0, 0, 1}, NitfWindow{0, 0, 1, 0}, NitfWindow{0, 0, 4, 1},
                                   NitfWindow{2, 1, 1, 2}, NitfWindow{kFar, 0, 2, 1}, NitfWindow{0, 1, 1, kFar}}) {
    EXPECT_EQ(NitfReaderReadSamples(reader.Get(), 0, &window, nullptr, 0, &target), ERROR_INVALID_VALUE);
    EXPECT_EQ(NitfReaderShowImage(reader.Get(), 0, nullptr, &window, samples.data(), 8), ERROR_INVALID_VALUE);
  }
  const std::uint32_t bands[] = {0, 1};
  EXPECT_EQ(NitfReaderReadSamples(reader.Get(), 0, nullptr, bands, 2, &target), ERROR_INVALID_VALUE);
  EXPECT_EQ(NitfReaderReadSamples(reader.Get(), 0, nullptr, bands, 0, &target), ERROR_INVALID_VALUE);
  EXPECT_EQ(NitfReaderReadSamples(reader.Get(), 1, nullptr, nullptr, 0, &target), ERROR_INVALID_VALUE);
  NitfImageShape shape{};
  NitfBand band{};
  EXPECT_EQ(NitfReaderGetImage(reader.Get(), 1, &shape), ERROR_INVALID_VALUE);
  EXPECT_EQ(NitfReaderGetBand(reader.Get(), 0, 1, &band), ERROR_INVALID_VALUE);
}

// ---- notes --------------------------------------------------------------------------------------------------------

struct NotedCase {
  const char *name;
  NitfBuilder file;
  std::vector<std::string> notes;
};

NitfBuilder Changed(const char *field, const char *text) {
  return NitfBuilder().Field(field, text).Image(SixPixels());
}

NitfBuilder ChangedImage(const char *field, const char *text) {
  return NitfBuilder().Image(SixPixels({{field, text}}));
}

/** Positions follow from the widths of the fields in front: the file header has 404 bytes, of which CLEVEL is at 9. */
std::vector<NotedCase> NotedCases() {
  std::vector<NotedCase> cases = {
      {"Level03", Changed("CLEVEL", "03"), {}},
      {"Level05", Changed("CLEVEL", "05"), {}},
      {"Level09", Changed("CLEVEL", "09"), {}},
      {"UnknownLevel", Changed("CLEVEL", "04"), {"5:0 CLEVEL=04 @9 " + std::to_string(NITF_UNSUPPORTED_CLEVEL)}},
      {"BlankLevel", Changed("CLEVEL", "  "), {"5:0 CLEVEL=   @9 " + std::to_string(NITF_UNSUPPORTED_CLEVEL)}},
      {"Classification", Changed("FSCLAS", "x"), {"5:0 FSCLAS=x @119 " + std::to_string(ERROR_FILE_FORMAT)}},
      {"Version", Changed("FVER", "02.20"), {"5:0 FVER=02.20 @4 " + std::to_string(NITF_UNSUPPORTED_VERSION)}},
      {"Type", ChangedImage("PVTYPE", "XYZ"), {"0:0 PVTYPE=XYZ @753 " + std::to_string(NITF_UNSUPPORTED_PVTYPE)}},
      {"Mode", ChangedImage("IMODE", "Q"), {"0:0 IMODE=Q @794 " + std::to_string(ERROR_FILE_FORMAT)}}};
  return cases;
}

class NotedFiles : public testing::TestWithParam<NotedCase> {};

TEST_P(NotedFiles, OpenAndSayWhatTheyHoldAndWhere) {
  const OpenReader reader(GetParam().file);
  ASSERT_EQ(reader.status, SUCCESS);
  EXPECT_EQ(Notes(reader), GetParam().notes);
  EXPECT_EQ(NitfReaderCount(reader.Get(), NITF_SEGMENT_IMAGE), 1U);
  EXPECT_FALSE(Listed(reader, NITF_SEGMENT_IMAGE, 0).empty());
}

INSTANTIATE_TEST_SUITE_P(Values, NotedFiles, testing::ValuesIn(NotedCases()),
                         [](const auto &noted) { return noted.param.name; });

TEST(ReaderOpen, TellsVersionsAndOtherFilesApart) {
  const auto statusOf = [](const char *prefix, const char *version) {
    return OpenReader(NitfBuilder().Field("FHDR", prefix).Field("FVER", version).Image(SixPixels())).status;
  };
  EXPECT_EQ(statusOf("NSIF", "01.00"), SUCCESS);
  EXPECT_EQ(statusOf("NITF", "01.10"), NITF_UNSUPPORTED_VERSION);
  EXPECT_EQ(statusOf("NITE", "02.10"), ERROR_FILE_FORMAT);
  const OpenReader nsif(NitfBuilder().Field("FHDR", "NSIF").Field("FVER", "01.00").Image(SixPixels()));
  EXPECT_EQ(Notes(nsif), std::vector<std::string>());
  NitfReader *reader = nullptr;
  EXPECT_EQ(NitfReaderOpen("/no/such/file.ntf", &reader), ERROR_NO_FILE);
  EXPECT_STRNE(NitfReaderProblem(reader), "");
  NitfReaderClose(reader);
}

// ---- files that end early -----------------------------------------------------------------------------------------

/** Each cut: what is in front of it is read, what isn't there is named, and nothing is read behind the end. */
TEST(CutFiles, OpenFromTheEndOfTheirHeaderOn) {
  const Bytes whole = File20(Segments20());
  const std::vector<Segment20> segments = Segments20();
  const std::size_t headerBytes = Joined(Header20(segments)).size();
  for (std::size_t bytes = 0; bytes <= whole.size(); ++bytes) {
    SCOPED_TRACE(bytes);
    const OpenReader reader(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(bytes)));
    ASSERT_EQ(reader.status == SUCCESS, bytes >= headerBytes) << reader.status;
    if (reader.status != SUCCESS) continue;
    std::size_t notes = 0;
    std::size_t end = headerBytes;
    std::uint32_t indices[5] = {};
    for (const Segment20 &segment : segments) {
      const std::uint32_t index = indices[segment.kind]++;
      end += Joined(segment.fields).size();
      const bool hasHeader = bytes >= end;
      char byte = 0;
      std::string marker(3, '?');
      const std::string &name = segment.fields[0].first;
      EXPECT_EQ(NitfReaderGetField(reader.Get(), segment.kind, index, name.c_str(), marker.data(), 3) == SUCCESS,
                hasHeader);
      end += segment.data.size();
      EXPECT_EQ(NitfReaderReadData(reader.Get(), segment.kind, index, segment.data.size() - 1, &byte, 1) == SUCCESS,
                bytes >= end);
      notes += (hasHeader ? 0 : 1) + (bytes >= end ? 0 : 1);
    }
    ASSERT_EQ(NitfReaderNoteCount(reader.Get()), notes);
    if (notes != 0) {
      EXPECT_TRUE(Notes(reader).back().ends_with(std::to_string(ERROR_FILE_READ))) << Notes(reader).back();
    }
  }
}

/** Two images; data of the first go beyond 4 GiB, and both have samples behind that. */
TEST(LongFiles, HaveSamplesBeyondFourGibibytes) {
  constexpr std::uint32_t kRows = 70000;
  constexpr std::uint32_t kColumns = 65536;
  ImageSpec large{.rows = kRows, .columns = kColumns, .blockWidth = 8192, .blockHeight = 8192};
  const std::uint64_t dataBytes = std::uint64_t{large.BlocksPerRow()} * large.BlocksPerColumn() * 8192 * 8192;
  const NitfBuilder builder = NitfBuilder().Image(large).Image(SixPixels()).Field("LI1", Digits(dataBytes, 10));
  const Bytes file = builder.Build();
  const std::size_t secondBytes = builder.ImageSubheader(1).size() + 6;
  const std::size_t firstBytes = file.size() - secondBytes;
  const TemporaryFolder folder;
  const std::string path = folder.Path("long.ntf");
  WriteFile(path, Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(firstBytes)));
  const int descriptor = open(path.c_str(), O_WRONLY);
  const auto put = [&](const std::uint8_t *bytes, std::size_t count, std::uint64_t position) {
    ASSERT_EQ(pwrite(descriptor, bytes, count, static_cast<off_t>(position)), static_cast<ssize_t>(count));
  };
  const std::uint8_t mark = 0x5A;
  // The last row and column of the image: row 4463 and the last column of the last block.
  const std::uint64_t offset =
      (std::uint64_t{8} * 9 - 1) * 8192 * 8192 + std::uint64_t{(kRows - 1) % 8192} * 8192 + 8191;
  put(&mark, 1, firstBytes + offset);
  put(file.data() + firstBytes, secondBytes, firstBytes + dataBytes);
  close(descriptor);
  NitfReader *reader = nullptr;
  ASSERT_EQ(NitfReaderOpen(path.c_str(), &reader), SUCCESS) << NitfReaderProblem(reader);
  EXPECT_EQ(NitfReaderNoteCount(reader), 0U);
  std::uint8_t samples[2] = {1, 1};
  const NitfSampleTarget target = {samples, 2, 1, 0};
  const NitfWindow corner = {kRows - 1, kColumns - 2, 1, 2};
  EXPECT_EQ(NitfReaderReadSamples(reader, 0, &corner, nullptr, 0, &target), SUCCESS) << NitfReaderProblem(reader);
  EXPECT_EQ(samples[0], 0);
  EXPECT_EQ(samples[1], mark);
  const NitfWindow last = {2, 0, 1, 2};
  EXPECT_EQ(NitfReaderReadSamples(reader, 1, &last, nullptr, 0, &target), SUCCESS) << NitfReaderProblem(reader);
  EXPECT_EQ(samples[1], 6);
  NitfReaderClose(reader);
}

}  // namespace
