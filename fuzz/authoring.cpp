// A byte string drives a sequence of calls on a handle: records out and in, segments added, saving, opening anew.
#include "access/header_info.h"
#include "target.h"

#include <algorithm>
#include <array>
#include <deque>
#include <string>

using namespace ksntfx;

namespace {

constexpr std::uint32_t kMostCalls = 40;

/** Longer than the data of any length that a member can tell. */
constexpr std::size_t kDataBytes = 100'000;

/** Holds what a record points to for the time of a Set. */
class RecordChange {
 public:
  explicit RecordChange(Choices &source) : choices(source), data(kDataBytes, 0x41) {}

  /** Changes some of the members that the rows tell, in the record at `info`. */
  void Apply(std::span<const InfoRow> rows, char *info) {
    for (const InfoRow &row : rows) {
      if (row.kind == InfoRow::Kind::Group) {
        Apply(row.rows, info + row.info);
      } else if (choices.Byte() >= 0xC0) {
        Change(row, info + row.info);
      }
    }
  }

 private:
  void Change(const InfoRow &row, char *place) {
    switch (row.kind) {
      case InfoRow::Kind::Text:
        texts.push_back(choices.Text(120));
        StoreInfo(place, texts.back().data());
        break;
      case InfoRow::Kind::Number:
        StoreInfo(place, choices.Word());
        break;
      case InfoRow::Kind::Characters: {
        const std::string characters = choices.Text(row.width);
        std::copy(characters.begin(), characters.end(), place);
        break;
      }
      case InfoRow::Kind::Location:
        StoreInfo(place, choices.Word());
        StoreInfo(place + sizeof(std::uint32_t), choices.Word());
        break;
      case InfoRow::Kind::Extension:
        StoreInfo(place, choices.Below(kDataBytes));
        StoreInfo(place + sizeof(std::uint32_t), choices.Word());
        StoreInfo(place + 2 * sizeof(std::uint32_t), choices.Byte() % 2 == 0 ? nullptr : data.data());
        break;
      default:  // arrays, whose counts a caller has to keep
        break;
    }
  }

  Choices &choices;
  std::deque<std::string> texts;
  std::string data;
};

class Calls {
 public:
  explicit Calls(Input input) : choices(input) {
    Require(K_NITFCreateA(&handle, nullptr) == SUCCESS, "an empty file can be made");
  }
  Calls(const Calls &) = delete;
  Calls &operator=(const Calls &) = delete;
  ~Calls() { K_NITFDestroy(&handle); }

  void Run() {
    using Call = void (Calls::*)();
    static constexpr std::array<Call, 11> kKinds = {&Calls::SetFileHeader, &Calls::SetImage,      &Calls::SetGraphic,
                                                    &Calls::SetText,       &Calls::AppendImage,   &Calls::AppendGraphic,
                                                    &Calls::AppendText,    &Calls::ChangeDrawing, &Calls::TakeText,
                                                    &Calls::Compose,       &Calls::Reopen};
    for (std::uint32_t calls = 0; calls < kMostCalls && !choices.AtEnd(); ++calls) {
      (this->*kKinds[choices.Byte() % kKinds.size()])();
    }
    Reopen();
  }

 private:
  template <class Record, class Get, class Set>
  void ChangeRecord(const InfoTable &table, Get get, Set set, std::int32_t (*release)(Record *)) {
    Record got{};
    if (get(&got) != SUCCESS) return;
    Record changed = got;
    RecordChange change(choices);
    change.Apply(table.rows, reinterpret_cast<char *>(&changed));
    set(&changed);
    Require(release(&got) == SUCCESS, "a record can be released");
  }

  template <class Record>
  void SetSegment(const InfoTable &table, std::int32_t (*get)(NitfHandle, std::uint32_t, Record *),
                  std::int32_t (*set)(NitfHandle, std::uint32_t, const Record *), std::int32_t (*release)(Record *)) {
    const std::uint32_t index = choices.Below(3);
    ChangeRecord(
        table, [&](auto *record) { return get(handle, index, record); },
        [&](auto *record) { return set(handle, index, record); }, release);
  }

  void SetFileHeader() {
    ChangeRecord(
        kFileHeaderInfo, [this](auto *record) { return K_NITFGetNITFHeader(handle, record); },
        [this](auto *record) { return K_NITFSetNITFHeader(handle, record); }, K_NITFFreeNITFHeader);
  }
  void SetImage() { SetSegment(kImageInfo, K_NITFGetImageHeader, K_NITFSetImageHeader, K_NITFFreeImageHeader); }
  void SetGraphic() {
    SetSegment(kGraphicInfo, K_NITFGetGraphicHeader, K_NITFSetGraphicHeader, K_NITFFreeGraphicHeader);
  }
  void SetText() { SetSegment(kTextInfo, K_NITFGetTextHeader, K_NITFSetTextHeader, K_NITFFreeTextHeader); }

  void AppendImage() {
    static constexpr std::uint32_t kDepths[] = {1, 8, 12, 16, 24, 32};
    KsBitmap bitmap;
    KsBitmapInit(&bitmap, sizeof bitmap, 0, 0, 0);
    const std::uint32_t width = 1 + choices.Below(40);
    const std::uint32_t height = 1 + choices.Below(40);
    const std::uint32_t depth = kDepths[choices.Below(std::size(kDepths))];
    const std::int32_t made =
        KsBitmapCreate(&bitmap, sizeof bitmap, KS_BITMAP_OWN, width, height, depth, 0, nullptr, 1, nullptr, 0);
    Require(made == SUCCESS, "a bitmap can be made");
    KsBitmapFill(&bitmap, choices.Word());
    const std::uint32_t format = choices.Byte() % 2 == 0 ? KS_FORMAT_JPEG : KS_FORMAT_JPEG_RGB;
    const std::uint32_t bits = choices.Byte() % 2 == 0 ? 24 : 8;
    K_NITFAppendImageSegment(handle, &bitmap, format, bits, choices.Byte());
    KsBitmapFree(&bitmap);
  }

  /** A drawing of a few boxes and lines. */
  void Draw(KsVector *vector) {
    KsVectorInit(vector);
    const std::uint32_t objects = choices.Below(4);
    for (std::uint32_t i = 0; i < objects; ++i) {
      KsVectorObject object;
      KsVectorObjectInit(&object);
      const KsVectorVertex from{static_cast<double>(choices.Word()), -static_cast<double>(choices.Word()), 0, 0};
      if (choices.Byte() % 2 == 0) {
        const KsVectorVertex to{static_cast<double>(choices.Word()), static_cast<double>(choices.Word()), 0, 0};
        object.line = {sizeof object.line, KS_VECTOR_LINE, {}, from, to, {sizeof(KsVectorPen), 0, 1, 0, 0xFF, {}}};
        KsVectorAddObject(vector, 0, KS_VECTOR_LINE, &object.line, 0);
      } else {
        object.box = {sizeof object.box,
                      KS_VECTOR_BOX,
                      {},
                      from,
                      {sizeof(KsVectorPen), 0, choices.Word(), 0, 0xFF00, {}},
                      {sizeof(KsVectorBrush), 1, choices.Word(), {}},
                      static_cast<double>(choices.Word()),
                      static_cast<double>(choices.Word())};
        KsVectorAddObject(vector, 0, KS_VECTOR_BOX, &object.box, 0);
      }
    }
  }

  void AppendGraphic() {
    KsVector vector{};
    Draw(&vector);
    const auto number = [this] { return static_cast<std::int32_t>(choices.Word()); };
    const KsRect rectangle{number(), number(), number(), number()};
    K_NITFAppendGraphicSegment(handle, &vector, &rectangle);
    KsVectorFree(&vector);
  }

  void AppendText() {
    const std::string path = TemporaryPath("text.txt");
    const std::string text = choices.Text(200);
    WriteInput(path, {reinterpret_cast<const std::uint8_t *>(text.data()), text.size()});
    K_NITFAppendTextSegmentA(handle, path.c_str());
  }

  void ChangeDrawing() {
    const std::uint32_t index = choices.Below(3);
    K_NITFGetVectorHandle(handle, index);
    KsVector vector{};
    Draw(&vector);
    K_NITFSetVectorHandle(handle, index, &vector);
    KsVectorFree(&vector);
  }

  void TakeText() {
    std::uint32_t size = 0;
    const std::uint32_t index = choices.Below(3);
    if (K_NITFGetTextSegment(handle, index, nullptr, &size) != SUCCESS) return;
    std::string text(std::size_t{size} + 1, '?');
    K_NITFGetTextSegment(handle, index, text.data(), &size);
  }

  void Compose() {
    KsBitmap canvas;
    KsBitmapInit(&canvas, sizeof canvas, 0, 0, 0);
    K_NtfRenderBitmap(&canvas, handle);
    KsBitmapFree(&canvas);
  }

  /** Saves, and goes on with what was written where that opens. */
  void Reopen() {
    const std::string path = TemporaryPath(file % 2 == 0 ? "even.ntf" : "odd.ntf");
    if (K_NITFSaveFileA(handle, path.c_str()) != SUCCESS) return;
    NitfHandle opened = nullptr;
    if (K_NITFCreateA(&opened, path.c_str()) != SUCCESS) return;
    K_NITFDestroy(&handle);
    handle = opened;
    ++file;
  }

  Choices choices;
  NitfHandle handle = nullptr;
  std::uint32_t file = 0;
};

}  // namespace

void FuzzOne(Input input) {
  KsSetBitmapLimit(kBitmapLimit);
  Calls(input).Run();
}
