#include "nitffile.h"

#include "internal/ksclasses_.h"
#include "platform.h"
#include "strmfhdr.h"

#include <utility>

namespace {

/** All that one kind of segment has to differ in. */
struct KindTraits {
  std::uint32_t NitfFile::*count;
  std::uint32_t NitfFile::*countInFile;
  SegmentNode *NitfFile::*list;
  std::uint32_t NitfHeader::*tableCount;
  std::uint32_t *NitfHeader::*subheaderLengths;
  std::uint32_t *NitfHeader::*dataLengths;
  const HeaderTable *table;
  std::uint64_t recordBytes;
  void (*init)(void *record, NitfFile *file, std::uint32_t index);
  void (*release)(void *record);
  std::int32_t (*read)(void *record, NitfFile &file, StreamFileHeader &stream);
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

template <class Record, std::int32_t (*read)(Record *, NitfFile &, StreamFileHeader &, bool)>
std::int32_t Read(void *record, NitfFile &file, StreamFileHeader &stream) {
  return read(static_cast<Record *>(record), file, stream, false);
}

std::int32_t ReadDataExtension(void *record, NitfFile &file, StreamFileHeader &) {
  return DataExtensionSubheaderRead(static_cast<DataExtensionSubheader *>(record), file);
}

/** In the order of SegmentKind, which is the order in the file. */
constexpr KindTraits kKinds[] = {
    {&NitfFile::imageCount, &NitfFile::imageCountInFile, &NitfFile::imageList, &NitfHeader::imageTableCount,
     &NitfHeader::imageSubheaderLengths, &NitfHeader::imageDataLengths, &kImageTable, sizeof(ImageSubheader),
     Init<ImageSubheader, ImageSubheaderInit>, Release<ImageSubheader, ImageSubheaderFree>,
     Read<ImageSubheader, ImageSubheaderRead>},
    {&NitfFile::graphicCount, &NitfFile::graphicCountInFile, &NitfFile::graphicList, &NitfHeader::graphicTableCount,
     &NitfHeader::graphicSubheaderLengths, &NitfHeader::graphicDataLengths, &kGraphicTable, sizeof(GraphicSubheader),
     Init<GraphicSubheader, GraphicSubheaderInit>, Release<GraphicSubheader, GraphicSubheaderFree>,
     Read<GraphicSubheader, GraphicSubheaderRead>},
    {&NitfFile::labelCount, &NitfFile::labelCountInFile, &NitfFile::labelList, &NitfHeader::labelTableCount,
     &NitfHeader::labelSubheaderLengths, &NitfHeader::labelDataLengths, &kLabelTable, sizeof(LabelSubheader),
     Init<LabelSubheader, LabelSubheaderInit>, Release<LabelSubheader, LabelSubheaderFree>,
     Read<LabelSubheader, LabelSubheaderRead>},
    {&NitfFile::textCount, &NitfFile::textCountInFile, &NitfFile::textList, &NitfHeader::textTableCount,
     &NitfHeader::textSubheaderLengths, &NitfHeader::textDataLengths, &kTextTable, sizeof(TextSubheader),
     Init<TextSubheader, TextSubheaderInit>, Release<TextSubheader, TextSubheaderFree>,
     Read<TextSubheader, TextSubheaderRead>},
    {&NitfFile::dataExtensionCount, &NitfFile::dataExtensionCount, &NitfFile::dataExtensionList,
     &NitfHeader::dataExtensionTableCount, &NitfHeader::dataExtensionSubheaderLengths,
     &NitfHeader::dataExtensionDataLengths, &kDataExtensionTable, sizeof(DataExtensionSubheader), InitDataExtension,
     Release<DataExtensionSubheader, DataExtensionSubheaderFree>, ReadDataExtension},
};

const KindTraits &Traits(SegmentKind kind) {
  return kKinds[static_cast<std::size_t>(kind)];
}

std::uint32_t TableEntry(const NitfHeader &header, const KindTraits &kind, std::uint32_t *NitfHeader::*table,
                         std::uint32_t index) {
  return header.*table == nullptr || index >= header.*kind.tableCount ? 0 : (header.*table)[index];
}

/** The bytes of a kind's first `count` segments, in the format's 32 bits. */
std::uint32_t SegmentBytes(const NitfFile *file, const KindTraits &kind, std::uint32_t count) {
  std::uint32_t bytes = 0;
  for (std::uint32_t index = 0; index < count && index < file->header.*kind.tableCount; ++index) {
    bytes += TableEntry(file->header, kind, kind.subheaderLengths, index);
    bytes += TableEntry(file->header, kind, kind.dataLengths, index);
  }
  return bytes;
}

/** The position behind all segments of the kinds before `kind`. */
std::uint64_t StartOfKind(const NitfFile *file, SegmentKind kind) {
  std::uint64_t position = file->header.headerLength;
  for (const KindTraits &earlier : kKinds) {
    if (&earlier == &Traits(kind)) break;
    if (&earlier == &Traits(SegmentKind::Label) && file->nitf20Layout == 0) continue;
    if (file->*earlier.count != 0) position += SegmentBytes(file, earlier, file->*earlier.countInFile);
  }
  return position;
}

std::int64_t SeekTo(const NitfFile *file, std::uint64_t position) {
  return KsSeek(file->fileHandle, static_cast<std::int64_t>(position), KS_SEEK_START);
}

std::int64_t SeekSegment(const NitfFile *file, SegmentKind kind, std::int32_t index) {
  const std::uint32_t before = index < 1 ? 0 : static_cast<std::uint32_t>(index);
  return SeekTo(file, StartOfKind(file, kind) + SegmentBytes(file, Traits(kind), before));
}

void CopyCounts(NitfFile *file) {
  const NitfHeader &header = file->header;
  file->headerValid = header.valid;
  file->backgroundColor = header.backgroundColorValue;
  file->reservedExtensionCount = header.reservedExtensionTableCount;
  for (const KindTraits &kind : kKinds) {
    if (&kind == &Traits(SegmentKind::Label) && file->nitf20Layout == 0) continue;
    file->*kind.count = file->*kind.countInFile = header.*kind.tableCount;
  }
}

std::int32_t ReadSubheaders(NitfFile *file, SegmentKind kind, StreamFileHeader &stream) {
  const KindTraits &traits = Traits(kind);
  const std::uint64_t start = StartOfKind(file, kind);
  std::uint32_t before = 0;  // bytes of the kind, counted on from segment to segment, as SegmentBytes counts them
  std::uint32_t index = 0;
  for (SegmentNode *node = file->*traits.list; node != nullptr; node = node->next, ++index) {
    SeekTo(file, start + before);
    const std::int32_t status = traits.read(node->subheader, *file, stream);
    if (status < SUCCESS) return status;
    before += SubheaderLength(file, kind, index) + DataLength(file, kind, index);
  }
  return SUCCESS;
}

std::int32_t ReadAllHeaders(NitfFile *file, StreamFileHeader &stream) {
  std::int32_t status = NitfHeaderRead(&file->header, *file, stream, false);
  if (status < SUCCESS) return status;
  CopyCounts(file);
  status = AllocateObjects(file);
  for (const SegmentKind kind :
       {SegmentKind::Image, SegmentKind::Graphic, SegmentKind::Label, SegmentKind::Text, SegmentKind::DataExtension}) {
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

std::int32_t AllocateList(NitfFile *file, const KindTraits &kind) {
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
  file->backgroundColor = 0xFFFFFF;
}

void NitfFileDestroy(NitfFile *file) {
  FreeObjects(file);
  NitfHeaderFree(&file->header);
}

std::int32_t Load(NitfFile *file, const char16_t *name) {
  // A file that doesn't open shows in the first read.
  file->fileHandle = KsOpen(name, KS_OPEN_READ, KS_MODE_READ);
  StreamFileHeader stream{};
  const std::int32_t status = ReadAllHeaders(file, stream);
  StreamFileHeaderFree(&stream);
  return status;
}

std::int32_t AllocateObjects(NitfFile *file) {
  platform::OutputDebugStringA("\nAllocateObjects\n");
  for (const KindTraits &kind : kKinds) {
    const std::int32_t status = AllocateList(file, kind);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

std::int32_t FreeObjects(NitfFile *file) {
  platform::OutputDebugStringA("\nFreeObjects\n");
  if (file->fileHandle != KS_INVALID_HANDLE) KsClose(file->fileHandle);
  file->fileHandle = KS_INVALID_HANDLE;
  for (const KindTraits &kind : kKinds) FreeNodes(kind, std::exchange(file->*kind.list, nullptr));
  NitfHeaderFree(&file->header);
  return SUCCESS;
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
  return TableEntry(file->header, Traits(kind), Traits(kind).dataLengths, index);
}

std::uint32_t SubheaderLength(const NitfFile *file, SegmentKind kind, std::uint32_t index) {
  return TableEntry(file->header, Traits(kind), Traits(kind).subheaderLengths, index);
}

std::uint32_t TextDataLength(const NitfFile *file, std::uint32_t index) {
  return FindText(file, index) == nullptr ? 0 : DataLength(file, SegmentKind::Text, index);
}

const HeaderTable &SubheaderTable(SegmentKind kind) {
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
