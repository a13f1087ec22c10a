#include "headers/nitffile.h"

#include "internal/ksclasses_.h"
#include "platform.h"
#include "table/header_reader.h"

#include <utility>

namespace ksntfx {

namespace {

/** All that the kinds of segments differ in. */
struct KindTraits {
  std::uint32_t NitfFile::*count;
  std::uint32_t NitfFile::*countInFile;
  SegmentNode *NitfFile::*list;
  const HeaderTable *table;
  std::uint64_t recordBytes;
  void (*init)(void *record, NitfFile *file, std::uint32_t index);
  void (*release)(void *record);
};

template <class Record, void (*init)(Record *, NitfFile *)>
void Init(void *record, NitfFile *file, std::uint32_t index) {
  static_assert(alignof(Record) <= alignof(SegmentNode), "records stand behind nodes");
  auto *made = static_cast<Record *>(record);
  init(made, file);
  made->index = index;
}

void InitDataExtension(void *record, NitfFile *, std::uint32_t) {
  DataExtensionSubheaderInit(static_cast<DataExtensionSubheader *>(record));
}

template <class Record, void (*free)(Record *)>
void Release(void *record) {
  free(static_cast<Record *>(record));
}

/** In the order of SegmentKind, which is the order in the file. */
constexpr KindTraits kKinds[] = {
    {&NitfFile::imageCount, &NitfFile::imageCountInFile, &NitfFile::imageList, &kImageTable, sizeof(ImageSubheader),
     Init<ImageSubheader, ImageSubheaderInit>, Release<ImageSubheader, ImageSubheaderFree>},
    {&NitfFile::graphicCount, &NitfFile::graphicCountInFile, &NitfFile::graphicList, &kGraphicTable,
     sizeof(GraphicSubheader), Init<GraphicSubheader, GraphicSubheaderInit>,
     Release<GraphicSubheader, GraphicSubheaderFree>},
    {&NitfFile::labelCount, &NitfFile::labelCountInFile, &NitfFile::labelList, &kLabelTable, sizeof(LabelSubheader),
     Init<LabelSubheader, LabelSubheaderInit>, Release<LabelSubheader, LabelSubheaderFree>},
    {&NitfFile::textCount, &NitfFile::textCountInFile, &NitfFile::textList, &kTextTable, sizeof(TextSubheader),
     Init<TextSubheader, TextSubheaderInit>, Release<TextSubheader, TextSubheaderFree>},
    {&NitfFile::dataExtensionCount, &NitfFile::dataExtensionCount, &NitfFile::dataExtensionList, &kDataExtensionTable,
     sizeof(DataExtensionSubheader), InitDataExtension, Release<DataExtensionSubheader, DataExtensionSubheaderFree>},
};

const KindTraits &Traits(SegmentKind kind) {
  return kKinds[static_cast<std::size_t>(kind)];
}

/** Labels are in files of the 2.0 layout only. */
bool HasKind(const NitfFile *file, SegmentKind kind) {
  return kind != SegmentKind::Label || file->nitf20Layout != 0;
}

/** The bytes of one segment. */
std::uint64_t BytesOf(const NitfFile *file, SegmentKind kind, std::uint32_t index) {
  const std::uint64_t data = file->longPlaces != 0 ? LongDataLength(file, kind, index) : DataLength(file, kind, index);
  return SubheaderLength(file, kind, index) + data;
}

/** A sum of segments' bytes: 32 bits, unless the file has `longPlaces`. */
std::uint64_t Wrapped(const NitfFile *file, std::uint64_t bytes) {
  return file->longPlaces != 0 ? bytes : static_cast<std::uint32_t>(bytes);
}

/** The bytes of a kind's first `count` segments. */
std::uint64_t SegmentBytes(const NitfFile *file, SegmentKind kind, std::uint32_t count) {
  std::uint64_t bytes = 0;
  for (std::uint32_t index = 0; index < count && index < file->header.*LengthsOf(kind).count; ++index) {
    bytes += BytesOf(file, kind, index);
  }
  return Wrapped(file, bytes);
}

std::int64_t SeekTo(const NitfFile *file, std::uint64_t position) {
  return KsSeek(file->fileHandle, static_cast<std::int64_t>(position), KS_SEEK_START);
}

std::int64_t SeekSegment(const NitfFile *file, SegmentKind kind, std::int32_t index) {
  const std::uint32_t before = index < 1 ? 0 : static_cast<std::uint32_t>(index);
  return SeekTo(file, StartOfKind(file, kind) + SegmentBytes(file, kind, before));
}

// ---- reading ------------------------------------------------------------------------------------------------------

/** Puts the file on the first replacement byte that no header has used yet; the first time it has to be found. */
Status SeekReplacementData(NitfFile *file, StreamFileHeader *stream) {
  if (file->streamHeaderLoaded == 0) {
    const Status status = ReadStreamFileHeader(file->fileHandle, stream, &file->streamBytesLeft);
    if (status != SUCCESS) return status;
    file->streamHeaderLoaded = 1;
  }
  KsSeek(file->fileHandle, -static_cast<std::int64_t>(file->streamBytesLeft), KS_SEEK_END);
  return SUCCESS;
}

/**
 * Reads a header once more, from the replacement bytes that the headers before it have left. Where they end early, the
 * first pass stands for the rest; only a header that was read whole has used its bytes. Sizes that are unknown there
 * too stay so: another reading would find the same bytes.
 */
Status Replay(NitfFile *file, const HeaderTable &table, void *record, const StreamFileHeader *stream) {
  const std::uint32_t used = file->streamBytesConsumed;
  const std::uint32_t left = stream->streamLengthFirst > used ? stream->streamLengthFirst - used : 0;
  HeaderReader reader({file->fileHandle, file->nitf20Layout != 0, left, file->notes}, record);
  const Status status = reader.Read(table);
  if (status == kBudgetSpent) return SUCCESS;
  if (status != SUCCESS) return status;
  const auto taken = static_cast<std::uint32_t>(reader.Taken());
  file->streamBytesConsumed += taken;
  file->streamBytesLeft -= taken;
  return SUCCESS;
}

Status ReadSubheaders(NitfFile *file, SegmentKind kind, StreamFileHeader *stream) {
  const std::uint64_t start = StartOfKind(file, kind);
  std::uint64_t before = 0;  // bytes of the kind, counted on from segment to segment, as SegmentBytes counts them
  std::uint32_t index = 0;
  for (SegmentNode *node = file->*Traits(kind).list; node != nullptr; node = node->next, ++index) {
    SeekTo(file, start + before);
    const Status status = ReadSubheader(file, kind, node->subheader, stream);
    if (status < SUCCESS) {
      file->faultyKind = static_cast<std::uint32_t>(kind);
      file->faultyIndex = index;
      return status;
    }
    before = Wrapped(file, before + BytesOf(file, kind, index));
  }
  return SUCCESS;
}

Status ReadAllHeaders(NitfFile *file, StreamFileHeader *stream) {
  Status status = ReadFileHeader(file, stream);
  if (status < SUCCESS) return status;
  CopyCounts(file);
  status = AllocateObjects(file);
  for (const SegmentKind kind : kSegmentKinds) {
    if (status == SUCCESS) status = ReadSubheaders(file, kind, stream);
  }
  return status;
}

/**
 * Linked nodes for the segments from `first` on, in one block with new records behind them, as a file may have
 * thousands. Null without memory.
 */
SegmentNode *MakeNodes(NitfFile *file, const KindTraits &kind, std::uint32_t first, std::uint32_t count) {
  auto *const nodes =
      static_cast<SegmentNode *>(KsAllocBlock(count, sizeof(SegmentNode) + kind.recordBytes, __LINE__, __FILE__));
  if (nodes == nullptr) return nullptr;
  auto *record = reinterpret_cast<char *>(nodes + count);
  for (std::uint32_t node = 0; node < count; ++node, record += kind.recordBytes) {
    nodes[node] = {record, node + 1 < count ? &nodes[node + 1] : nullptr};
    kind.init(record, file, first + node);
  }
  return nodes;
}

/** Releases the nodes of a list, block by block: a node that is not right behind the one before starts the next. */
void FreeNodes(const KindTraits &kind, SegmentNode *node) {
  SegmentNode *block = node;
  const SegmentNode *previous = nullptr;
  for (; node != nullptr; previous = std::exchange(node, node->next)) {
    if (previous != nullptr && node != previous + 1) KsFree(std::exchange(block, node), __LINE__, __FILE__);
    kind.release(node->subheader);
  }
  KsFree(block, __LINE__, __FILE__);
}

Status AllocateList(NitfFile *file, const KindTraits &kind) {
  const std::uint32_t count = file->*kind.count;
  if (count == 0) return SUCCESS;
  file->*kind.list = MakeNodes(file, kind, 0, count);
  return file->*kind.list == nullptr ? ERROR_NO_MEMORY : SUCCESS;
}

}  // namespace

void NitfFileInit(NitfFile *file) {
  *file = NitfFile{};
  NitfHeaderInit(&file->header);
  file->fileHandle = KS_INVALID_HANDLE;
  file->faultyKind = kFileHeaderFailed;
  file->backgroundColor = 0xFFFFFF;
}

void CopyCounts(NitfFile *file) {
  const NitfHeader &header = file->header;
  file->headerValid = header.valid;
  file->backgroundColor = header.backgroundColorValue;
  file->reservedExtensionCount = header.reservedExtensionTableCount;
  for (const SegmentKind kind : kSegmentKinds) {
    const KindTraits &traits = Traits(kind);
    if (HasKind(file, kind)) file->*traits.count = file->*traits.countInFile = header.*LengthsOf(kind).count;
  }
}

void NitfFileDestroy(NitfFile *file) {
  FreeObjects(file);
  NitfHeaderFree(&file->header);
}

Status Load(NitfFile *file, const char16_t *name) {
  // A file that doesn't open shows in the first read.
  file->fileHandle = KsOpen(name, KS_OPEN_READ, KS_MODE_READ);
  StreamFileHeader stream{};
  const Status status = ReadAllHeaders(file, &stream);
  StreamFileHeaderFree(&stream);
  return status;
}

Status ReadFileHeader(NitfFile *file, StreamFileHeader *stream) {
  HeaderReader reader({.file = file->fileHandle, .nitf20 = file->nitf20Layout != 0, .notes = file->notes},
                      &file->header);
  Status status = reader.Read(kFileHeaderTable);
  if (status != SUCCESS) file->fault = reader.Fault();
  if (status != SUCCESS || !reader.SawUnknown()) return status;
  status = SeekReplacementData(file, stream);
  return status != SUCCESS ? status : Replay(file, kFileHeaderTable, &file->header, stream);
}

Status ReadSubheader(NitfFile *file, SegmentKind kind, void *record, StreamFileHeader *stream) {
  const bool nitf20 = file->nitf20Layout != 0 || kind == SegmentKind::Label;
  const HeaderTable &table = SubheaderTable(file, kind);
  const std::int64_t start = KsSeek(file->fileHandle, 0, KS_SEEK_CURRENT);
  HeaderReader reader({.file = file->fileHandle, .nitf20 = nitf20, .notes = file->notes}, record);
  const Status status = reader.Read(table);
  if (status != SUCCESS) {
    file->fault = reader.Fault();
    return status;
  }
  if (kind == SegmentKind::Image && reader.SawUnknown()) {
    const Status found = SeekReplacementData(file, stream);
    if (found != SUCCESS) return found;
    // What a replay that fails has read is kept all the same.
    static_cast<void>(Replay(file, table, record, stream));
  }
  KsSeek(file->fileHandle, start, KS_SEEK_START);
  return SUCCESS;
}

HeaderSink SinkFor(const NitfFile *file, KsHandle out) {
  HeaderSink sink{.out = out, .nitf20 = file->nitf20Layout != 0, .isWide = file->notes != nullptr};
  for (const SegmentKind kind : kSegmentKinds) sink.listed[kind] = CountSegments(file, kind);
  return sink;
}

Status AllocateObjects(NitfFile *file) {
  platform::OutputDebugStringA("\nAllocateObjects\n");
  for (const KindTraits &kind : kKinds) {
    const Status status = AllocateList(file, kind);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

void FreeObjects(NitfFile *file) {
  platform::OutputDebugStringA("\nFreeObjects\n");
  if (file->fileHandle != KS_INVALID_HANDLE) KsClose(file->fileHandle);
  file->fileHandle = KS_INVALID_HANDLE;
  for (const KindTraits &kind : kKinds) FreeNodes(kind, std::exchange(file->*kind.list, nullptr));
  NitfHeaderFree(&file->header);
}

SegmentNode *NewSegmentNode(NitfFile *file, SegmentKind kind, std::uint32_t index) {
  return MakeNodes(file, Traits(kind), index, 1);
}

void LinkSegmentNode(NitfFile *file, SegmentKind kind, SegmentNode *node) {
  SegmentNode **link = &(file->*Traits(kind).list);
  while (*link != nullptr) link = &(*link)->next;
  *link = node;
}

void ReleaseSegmentNode(SegmentKind kind, SegmentNode *node) {
  FreeNodes(Traits(kind), node);
}

std::int64_t SeekEndOfImages(const NitfFile *file) {
  return SeekTo(file, StartOfKind(file, SegmentKind::Graphic));
}
std::int64_t SeekEndOfGraphics(const NitfFile *file) {
  return SeekTo(file, StartOfKind(file, SegmentKind::Label));
}
std::int64_t SeekEndOfLabels(const NitfFile *file) {
  return SeekTo(file, StartOfKind(file, SegmentKind::Text));
}
std::int64_t SeekEndOfTexts(const NitfFile *file) {
  return SeekTo(file, StartOfKind(file, SegmentKind::DataExtension));
}

void SeekImage(const NitfFile *file, std::int32_t index) {
  SeekSegment(file, SegmentKind::Image, index);
}
void SeekGraphic(const NitfFile *file, std::int32_t index) {
  SeekSegment(file, SegmentKind::Graphic, index);
}
void SeekLabel(const NitfFile *file, std::int32_t index) {
  SeekSegment(file, SegmentKind::Label, index);
}
void SeekText(const NitfFile *file, std::int32_t index) {
  SeekSegment(file, SegmentKind::Text, index);
}
void SeekDataExtension(const NitfFile *file, std::int32_t index) {
  SeekSegment(file, SegmentKind::DataExtension, index);
}

std::int64_t SeekSegmentData(const NitfFile *file, SegmentKind kind, std::uint32_t index) {
  SeekSegment(file, kind, static_cast<std::int32_t>(index));
  return KsSeek(file->fileHandle, SubheaderLength(file, kind, index), KS_SEEK_CURRENT);
}

std::uint32_t CountSegments(const NitfFile *file, SegmentKind kind) {
  std::uint32_t count = 0;
  for (const SegmentNode *node = file->*Traits(kind).list; node != nullptr; node = node->next) {
    if (node->subheader != nullptr) ++count;
  }
  return count;
}

std::uint32_t CountImages(const NitfFile *file) {
  return CountSegments(file, SegmentKind::Image);
}
std::uint32_t CountGraphics(const NitfFile *file) {
  return CountSegments(file, SegmentKind::Graphic);
}
std::uint32_t CountLabels(const NitfFile *file) {
  return CountSegments(file, SegmentKind::Label);
}
std::uint32_t CountTexts(const NitfFile *file) {
  return CountSegments(file, SegmentKind::Text);
}

std::uint32_t CountInFile(const NitfFile *file, SegmentKind kind) {
  return file->*Traits(kind).countInFile;
}

std::uint32_t DataLength(const NitfFile *file, SegmentKind kind, std::uint32_t index) {
  const LengthTable &lengths = LengthsOf(kind);
  return EntryOf(file->header, lengths, lengths.data.table, index);
}

std::uint64_t LongDataLength(const NitfFile *file, SegmentKind kind, std::uint32_t index) {
  const LengthTable &lengths = LengthsOf(kind);
  if (lengths.longData == nullptr || file->header.*lengths.longData == nullptr) return DataLength(file, kind, index);
  return index >= file->header.*lengths.count ? 0 : (file->header.*lengths.longData)[index];
}

std::uint64_t StartOfKind(const NitfFile *file, SegmentKind kind) {
  std::uint64_t position = file->header.headerLength;
  for (const SegmentKind earlier : kSegmentKinds) {
    if (earlier == kind) break;
    const KindTraits &traits = Traits(earlier);
    if (HasKind(file, earlier) && file->*traits.count != 0) {
      position += SegmentBytes(file, earlier, file->*traits.countInFile);
    }
  }
  return position;
}

std::uint64_t EndOfKind(const NitfFile *file, SegmentKind kind) {
  return StartOfKind(file, kind) + SegmentBytes(file, kind, CountInFile(file, kind));
}

std::uint32_t SubheaderLength(const NitfFile *file, SegmentKind kind, std::uint32_t index) {
  const LengthTable &lengths = LengthsOf(kind);
  return EntryOf(file->header, lengths, lengths.subheader.table, index);
}

std::uint32_t TextDataLength(const NitfFile *file, std::uint32_t index) {
  return FindText(file, index) == nullptr ? 0 : DataLength(file, SegmentKind::Text, index);
}

const HeaderTable &SubheaderTable(const NitfFile *file, SegmentKind kind) {
  if (kind == SegmentKind::DataExtension && file->notes != nullptr) return kWideDataExtensionTable;
  return *Traits(kind).table;
}

void *FindSubheader(const NitfFile *file, SegmentKind kind, std::uint32_t index) {
  const SegmentNode *node = file->*Traits(kind).list;
  for (std::uint32_t step = 0; node != nullptr && step < index; ++step) node = node->next;
  return node == nullptr ? nullptr : node->subheader;
}

ImageSubheader *FindImage(const NitfFile *file, std::uint32_t index) {
  return static_cast<ImageSubheader *>(FindSubheader(file, SegmentKind::Image, index));
}
GraphicSubheader *FindGraphic(const NitfFile *file, std::uint32_t index) {
  return static_cast<GraphicSubheader *>(FindSubheader(file, SegmentKind::Graphic, index));
}
LabelSubheader *FindLabel(const NitfFile *file, std::uint32_t index) {
  return static_cast<LabelSubheader *>(FindSubheader(file, SegmentKind::Label, index));
}
TextSubheader *FindText(const NitfFile *file, std::uint32_t index) {
  return static_cast<TextSubheader *>(FindSubheader(file, SegmentKind::Text, index));
}
DataExtensionSubheader *FindDataExtension(const NitfFile *file, std::uint32_t index) {
  return static_cast<DataExtensionSubheader *>(FindSubheader(file, SegmentKind::DataExtension, index));
}

}  // namespace ksntfx
