// Every member of the public header records: what a Get gives, what a Set stores, and what a save makes of it.
#include "access/header_info.h"

#include "internal/ksclasses_.h"
#include "opened_file.h"
#include "table/header_writer.h"

#include <algorithm>
#include <array>

#include <gtest/gtest.h>

using namespace ksntfx;

namespace {

// ---- the records, without their types

using AnyInfo = std::vector<char>;

struct RecordKind {
  const char *name;
  std::size_t size;
  const InfoTable *members;
  const HeaderTable *format;
  std::int32_t (*get)(NitfHandle, char *);
  std::int32_t (*set)(NitfHandle, const char *);
  std::int32_t (*free)(char *);
  const void *(*record)(NitfFile *);
  SegmentKind segment; /**< DataExtension for the file header, which stands at the start */
};

template <class Info, auto get, auto set, auto free>
constexpr RecordKind SegmentRecord(const char *name, const InfoTable &members, const HeaderTable &format,
                                   const void *(*record)(NitfFile *), SegmentKind kind) {
  return {name,
          sizeof(Info),
          &members,
          &format,
          [](NitfHandle handle, char *info) { return get(handle, 0, reinterpret_cast<Info *>(info)); },
          [](NitfHandle handle, const char *info) { return set(handle, 0, reinterpret_cast<const Info *>(info)); },
          [](char *info) { return free(reinterpret_cast<Info *>(info)); },
          record,
          kind};
}

const RecordKind kHeader = {
    "Header",
    sizeof(NitfHeaderInfo),
    &kFileHeaderInfo,
    &kFileHeaderTable,
    [](NitfHandle handle, char *info) { return K_NITFGetNITFHeader(handle, reinterpret_cast<NitfHeaderInfo *>(info)); },
    [](NitfHandle handle, const char *info) {
      return K_NITFSetNITFHeader(handle, reinterpret_cast<const NitfHeaderInfo *>(info));
    },
    [](char *info) { return K_NITFFreeNITFHeader(reinterpret_cast<NitfHeaderInfo *>(info)); },
    [](NitfFile *file) -> const void * { return &file->header; },
    SegmentKind::DataExtension};
const RecordKind kImage =
    SegmentRecord<NitfImageHeaderInfo, K_NITFGetImageHeader, K_NITFSetImageHeader, K_NITFFreeImageHeader>(
        "Image", kImageInfo, kImageTable, [](NitfFile *file) -> const void * { return FindImage(file, 0); },
        SegmentKind::Image);
const RecordKind kGraphic =
    SegmentRecord<NitfGraphicHeaderInfo, K_NITFGetGraphicHeader, K_NITFSetGraphicHeader, K_NITFFreeGraphicHeader>(
        "Graphic", kGraphicInfo, kGraphicTable, [](NitfFile *file) -> const void * { return FindGraphic(file, 0); },
        SegmentKind::Graphic);
const RecordKind kText =
    SegmentRecord<NitfTextHeaderInfo, K_NITFGetTextHeader, K_NITFSetTextHeader, K_NITFFreeTextHeader>(
        "Text", kTextInfo, kTextTable, [](NitfFile *file) -> const void * { return FindText(file, 0); },
        SegmentKind::Text);

/** One segment of each kind, in which all optional fields are there. */
NitfBuilder FullFile() {
  ImageSpec image = SixPixels({{"ICORDS", "U"},
                               {"IGEOLO", std::string(60, '5')},
                               {"ICOM1", "a comment"},
                               {"UDID", "user"},
                               {"IXSHD", "tags"},
                               {"ISCODE", "AB"},
                               {"ISSRDT", "20200102"}});
  image.compression = "C3";
  return NitfBuilder()
      .Field("FSCODE", "XY")
      .Field("FSDGDT", "20300405")
      .Image(image)
      .Graphic({3, 1, 5, -7, 'C', {1, 2, 3}, {{"SXSHD", "more"}}})
      .Text({"words", {{"TXSHD", "last"}}});
}

// ---- the members

enum class Value : std::uint8_t { Text, Number, Date };

struct Member {
  const RecordKind *kind;
  std::string name;
  std::size_t offset;
  Value value;
  std::string changed; /**< what is set */
  std::string written; /**< what a save then writes; empty where the field is not written */
};

std::string Padded(std::string text, std::size_t width, char fill) {
  if (fill == '0') return std::string(width - std::min(width, text.size()), '0') + text;
  text.resize(width, fill);
  return text;
}

// Members and their kinds are names, which take no parentheses.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define TEXT(Info, kind, member, changed, width)                                              \
  Member {                                                                                    \
    &kind, #member, offsetof(Info, member), Value::Text, changed, Padded(changed, width, ' ') \
  }
#define NUMBER(Info, kind, member, changed, width)                                                \
  Member {                                                                                        \
    &kind, #member, offsetof(Info, member), Value::Number, #changed, Padded(#changed, width, '0') \
  }
#define DATE(Info, kind, member, changed)                                 \
  Member {                                                                \
    &kind, #member, offsetof(Info, member), Value::Date, changed, changed \
  }
#define AS_WRITTEN(member, text) \
  [] {                           \
    Member other = member;       \
    other.written = text;        \
    return other;                \
  }()
// NOLINTEND(bugprone-macro-parentheses)

/** The security group, whose members take 8 bytes each; texts as long as they may be, of which a file keeps less. */
std::vector<Member> Security(const RecordKind &kind, const std::string &prefix, std::size_t offset) {
  struct Field {
    const char *name;
    std::size_t most;
    std::size_t width;
  };
  constexpr Field kFields[] = {{"SCLAS", 1, 1},   {"SCLSY", 2, 2}, {"SCODE", 40, 11}, {"SCTLH", 40, 2},
                               {"SREL", 40, 20},  {"SDCTP", 2, 2}, {"SDCDT", 0, 8},   {"SDCXM", 4, 4},
                               {"SDG", 1, 1},     {"SDGDT", 0, 8}, {"SCLTX", 43, 43}, {"SCATP", 1, 1},
                               {"SCAUT", 40, 40}, {"SCRSN", 1, 1}, {"SSRDT", 0, 8},   {"SCTLN", 20, 15}};
  std::vector<Member> members;
  char letter = 'C';
  for (const Field &field : kFields) {
    const bool date = field.most == 0;
    if (date && prefix == "F") continue;
    const std::string changed(std::max(field.most, field.width), letter++);
    members.push_back({&kind, prefix + field.name, offset, date ? Value::Date : Value::Text, changed,
                       changed.substr(0, field.width)});
    offset += 8;
  }
  return members;
}

std::vector<Member> AllMembers() {
#define T(member, changed, width) TEXT(NitfHeaderInfo, kHeader, member, changed, width)
#define N(member, changed, width) NUMBER(NitfHeaderInfo, kHeader, member, changed, width)
  std::vector<Member> all = {T(FHDR, "NSIF", 4),
                             N(CLEVEL, 99, 2),
                             T(STYPE, "XY", 4),
                             T(OSTAID, "Station", 10),
                             T(FTITLE, "A title", 80),
                             T(ONAME, "Somebody", 24),
                             T(OPHONE, "12345", 18),
                             N(FL, 98765, 12),
                             N(FSCOP, 12, 5),
                             N(FSCPYS, 34, 5),
                             N(ENCRYP, 1, 1),
                             DATE(NitfHeaderInfo, kHeader, FSSRDT, "19990102"),
                             DATE(NitfHeaderInfo, kHeader, FSDGDT, "20990102"),
                             DATE(NitfHeaderInfo, kHeader, FSDCDT, "20890102"),
                             DATE(NitfHeaderInfo, kHeader, FDT, "20250607080910")};
#undef T
#undef N
#define T(member, changed, width) TEXT(NitfImageHeaderInfo, kImage, member, changed, width)
#define N(member, changed, width) NUMBER(NitfImageHeaderInfo, kImage, member, changed, width)
  const std::vector<Member> image = {T(IM, "IX", 2),
                                     T(IID1, "A name", 10),
                                     DATE(NitfImageHeaderInfo, kImage, IDATIM, "20250607080910"),
                                     T(TGTID, "target", 17),
                                     T(IID2, "A title", 80),
                                     N(ENCRYP, 2, 1),
                                     T(ISORCE, "a sensor", 42),
                                     N(NROWS, 5, 8),
                                     N(NCOLS, 7, 8),
                                     AS_WRITTEN(T(PVTYPE, "BI", 3), "B  "),
                                     T(IREP, "MULTI", 8),
                                     T(ICAT, "MAP", 8),
                                     N(ABPP, 7, 2),
                                     T(PJUST, "L", 1),
                                     T(ICORDS, "G", 1),
                                     T(IGEOLO, "somewhere", 60),
                                     T(IC, "M3", 2),
                                     T(COMRAT, "2DS", 4),
                                     AS_WRITTEN(T(COMRAT, "01.5", 4), "00.0"),
                                     N(NBANDS, 2, 1),
                                     AS_WRITTEN(N(XBANDS, 3, 5), ""),
                                     N(ISYNC, 4, 1),
                                     T(IMODE, "P", 1),
                                     N(NBPR, 9, 4),
                                     N(NBPC, 8, 4),
                                     N(NPPBH, 8192, 4),
                                     N(NPPBV, 0, 4),
                                     N(NBPP, 4, 2),
                                     N(IDLVL, 999, 3),
                                     N(IALVL, 12, 3),
                                     AS_WRITTEN(T(IMAG, "/4", 4), "0.2 "),
                                     N(UDOFL, 7, 3),
                                     N(IXSOFL, 8, 3)};
#undef T
#undef N
#define T(member, changed, width) TEXT(NitfGraphicHeaderInfo, kGraphic, member, changed, width)
#define N(member, changed, width) NUMBER(NitfGraphicHeaderInfo, kGraphic, member, changed, width)
  const std::vector<Member> graphic = {T(SY, "SX", 2),  T(SID, "A name", 10), T(SNAME, "A title", 20),
                                       N(ENCRYP, 3, 1), T(SFMT, "X", 1),      N(SSTRUCT, 2147483647, 13),
                                       N(SDLVL, 0, 3),  N(SALVL, 12, 3),      AS_WRITTEN(T(SCOLOR, "M", 1), "C"),
                                       N(SRES2, 42, 2), N(SXSOFL, 7, 3)};
#undef T
#undef N
#define T(member, changed, width) TEXT(NitfTextHeaderInfo, kText, member, changed, width)
#define N(member, changed, width) NUMBER(NitfTextHeaderInfo, kText, member, changed, width)
  const std::vector<Member> text = {T(TE, "TX", 2),           AS_WRITTEN(T(TEXTID, "ABCDEFGHIJ", 7), "ABCDEFG"),
                                    N(TXTALVL, 12, 3),        DATE(NitfTextHeaderInfo, kText, TXTDT, "20250607080910"),
                                    T(TXTITL, "A title", 80), N(ENCRYP, 3, 1),
                                    T(TXTFMT, "MTF", 3),      N(TXSOFL, 7, 3)};
#undef T
#undef N
  for (const auto &more : {image, graphic, text, Security(kHeader, "F", offsetof(NitfHeaderInfo, FSCLAS)),
                           Security(kImage, "I", offsetof(NitfImageHeaderInfo, ISCLAS)),
                           Security(kGraphic, "S", offsetof(NitfGraphicHeaderInfo, SSCLAS)),
                           Security(kText, "T", offsetof(NitfTextHeaderInfo, TSCLAS))}) {
    all.insert(all.end(), more.begin(), more.end());
  }
  return all;
}

std::string ValueOf(const Member &member, const AnyInfo &info) {
  const char *const place = info.data() + member.offset;
  if (member.value == Value::Text) return LoadInfo<const char *>(place);
  if (member.value == Value::Number) return std::to_string(LoadInfo<std::uint32_t>(place));
  return {place, member.changed.size()};
}

/** Puts the changed value into a record, where `text` is to outlive the Set. */
void Change(const Member &member, AnyInfo &info, std::string &text) {
  text = member.changed;
  char *const place = info.data() + member.offset;
  if (member.value == Value::Text) StoreInfo(place, text.data());
  if (member.value == Value::Number) StoreInfo(place, static_cast<std::uint32_t>(std::stoul(text)));
  if (member.value == Value::Date) std::copy(text.begin(), text.end(), place);
}

/** A field's text as the file gave it. */
std::string FieldText(const Member &member, NitfFile *file) {
  std::string text;
  ListFields(*member.kind->format, member.kind->record(file), false, [&](const FieldView &field) {
    if (field.name == member.name) text = field.text;
  });
  return text;
}

/** Where a field stands in a saved file. */
std::uint64_t PlaceOf(const Member &member, NitfFile *file) {
  std::uint64_t place = 0;
  if (member.kind->segment != SegmentKind::DataExtension) {
    place = file->header.headerLength;
    for (const SegmentKind kind : {SegmentKind::Image, SegmentKind::Graphic, SegmentKind::Text}) {
      if (kind == member.kind->segment) break;
      place += SubheaderLength(file, kind, 0) + DataLength(file, kind, 0);
    }
  }
  VisitFields(*member.kind->format, member.kind->record(file), SinkFor(file, KS_INVALID_HANDLE),
              [&](const std::string &name, std::uint64_t at) {
                if (name == member.name) place += at;
              });
  return place;
}

class Members : public testing::TestWithParam<Member> {
 protected:
  ~Members() override { EXPECT_EQ(LiveBlocks(), before) << "what a record held is released"; }

 private:
  const std::array<std::int64_t, KS_MEMORY_KINDS> before = LiveBlocks();
};

TEST_P(Members, AreReadSetAndSaved) {
  const Member &member = GetParam();
  const RecordKind &kind = *member.kind;
  const Opened opened(FullFile().Build());
  ASSERT_EQ(opened.status, SUCCESS);
  AnyInfo info(kind.size);
  ASSERT_EQ(kind.get(opened.Get(), info.data()), SUCCESS);
  const std::string asRead = FieldText(member, opened.Get());
  const std::string got = ValueOf(member, info);
  if (member.value == Value::Number) {
    EXPECT_EQ(got, std::to_string(asRead.empty() ? 0 : std::stoul(asRead)));
  } else {
    EXPECT_EQ(got.substr(0, asRead.size()), asRead);
    EXPECT_EQ(got.find_first_not_of(' ', asRead.size()), std::string::npos);
  }

  AnyInfo changed = info;
  std::string text;
  Change(member, changed, text);
  ASSERT_EQ(kind.set(opened.Get(), changed.data()), SUCCESS);
  kind.free(info.data());
  ASSERT_EQ(kind.get(opened.Get(), info.data()), SUCCESS);
  EXPECT_EQ(ValueOf(member, info).substr(0, text.size()), text);
  kind.free(info.data());

  // A further band takes room in front of the data.
  if (std::string(member.name) == "NBANDS") opened->header.imageSubheaderLengthsOut[0] += 13;
  const Bytes saved = opened.Saved();
  const std::uint64_t place = PlaceOf(member, opened.Get());
  ASSERT_LE(place + member.written.size(), saved.size());
  EXPECT_EQ(std::string(saved.begin() + static_cast<std::ptrdiff_t>(place),
                        saved.begin() + static_cast<std::ptrdiff_t>(place + member.written.size())),
            member.written);
}

std::vector<Member> TextMembers() {
  std::vector<Member> members = AllMembers();
  std::erase_if(members, [](const Member &member) { return member.value != Value::Text; });
  return members;
}

class Texts : public testing::TestWithParam<Member> {};

/** The members of a record in the order in which a Set stores them. */
std::string OrderOf(const RecordKind &kind) {
  const auto group = [](const std::string &prefix) {
    std::string names;
    for (const char *name : {"SCLAS ", "SCLSY ", "SCODE ", "SCTLH ", "SREL ", "SDCTP ", "SDCXM ", "SDG ", "SCLTX ",
                             "SCATP ", "SCAUT ", "SCRSN ", "SCTLN "}) {
      names += prefix + name;
    }
    return names;
  };
  if (&kind == &kHeader) return {};
  if (&kind == &kImage) {
    return " IM IID1 TGTID IID2 " + group("I") +
           "ISORCE PVTYPE IREP ICAT PJUST ICORDS IC COMRAT IGEOLO IDATIM ISDCDT ISDGDT ISSRDT ENCRYP NROWS NCOLS ABPP "
           "NBANDS XBANDS ISYNC IMODE NBPR NBPC NPPBH NPPBV NBPP IDLVL IALVL IMAG UDOFL IXSOFL ";
  }
  if (&kind == &kGraphic) {
    return " SY SID SNAME " + group("S") + "ENCRYP SFMT SSTRUCT SDLVL SALVL SCOLOR SRES2 SXSOFL SSDCDT SSDGDT SSSRDT ";
  }
  return " TE TEXTID TXTALVL TXTDT TXTITL TSCLAS TSCLSY TSCODE TSCTLH TSREL TSDCTP TSDCDT TSDCXM TSDG TSDGDT TSCLTX "
         "TSCATP TSCAUT TSCRSN TSSRDT TSCTLN ENCRYP TXTFMT TXSOFL ";
}

/** The members of a record, each once. */
std::vector<Member> MembersOf(const RecordKind &kind) {
  std::vector<Member> members;
  for (const Member &member : AllMembers()) {
    const bool isNew = members.empty() || members.back().name != member.name;
    if (member.kind == &kind && isNew) members.push_back(member);
  }
  return members;
}

/** What a Get gives after a Set of a record in which a text is null or too long and all other members are others. */
AnyInfo AfterSet(const Opened &opened, const Member &member, const std::vector<Member> &others, char *text) {
  const RecordKind &kind = *member.kind;
  AnyInfo changed(kind.size);
  EXPECT_EQ(kind.get(opened.Get(), changed.data()), SUCCESS);
  AnyInfo owned = changed;
  std::vector<std::string> texts(others.size());
  for (std::size_t at = 0; at < others.size(); ++at) Change(others[at], changed, texts[at]);
  StoreInfo(changed.data() + member.offset, text);
  const bool refused = text != nullptr && &kind != &kHeader;
  EXPECT_EQ(kind.set(opened.Get(), changed.data()), refused ? ERROR_INVALID_VALUE : SUCCESS);
  kind.free(owned.data());
  AnyInfo after(kind.size);
  EXPECT_EQ(kind.get(opened.Get(), after.data()), SUCCESS);
  return after;
}

TEST_P(Texts, MayBeNullAndEndASetWhereTheyAreTooLong) {
  const Member &member = GetParam();
  const RecordKind &kind = *member.kind;
  const Opened opened(FullFile().Build());
  AnyInfo before(kind.size);
  ASSERT_EQ(kind.get(opened.Get(), before.data()), SUCCESS);
  AnyInfo after = AfterSet(opened, member, {}, nullptr);
  EXPECT_EQ(ValueOf(member, after), ValueOf(member, before));
  kind.free(after.data());

  std::string tooLong = member.changed + std::string(90, 'x');
  const std::vector<Member> others = MembersOf(kind);
  after = AfterSet(opened, member, others, tooLong.data());
  EXPECT_EQ(ValueOf(member, after), ValueOf(member, before));
  const std::string order = OrderOf(kind);
  for (const Member &other : others) {
    // That of the file header passes over what it refuses.
    const std::size_t place = order.find(" " + other.name + " ");
    ASSERT_NE(place == std::string::npos, &kind != &kHeader) << other.name;
    const bool isStored = &kind == &kHeader ? other.name != member.name : place < order.find(" " + member.name + " ");
    // A field that grew has blanks more.
    const auto value = [&](const AnyInfo &info) {
      const std::string text = ValueOf(other, info);
      return text.substr(0, text.find_last_not_of(' ') + 1);
    };
    EXPECT_EQ(value(after), isStored ? other.changed : value(before)) << other.name;
  }
  kind.free(after.data());
  kind.free(before.data());
}

std::string NameOf(const testing::TestParamInfo<Member> &tested) {
  return tested.param.kind->name + tested.param.name + std::to_string(tested.index);
}
INSTANTIATE_TEST_SUITE_P(Headers, Members, testing::ValuesIn(AllMembers()), NameOf);
INSTANTIATE_TEST_SUITE_P(Headers, Texts, testing::ValuesIn(TextMembers()), NameOf);

}  // namespace
