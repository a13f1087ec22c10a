#include "harness.h"

#include <filesystem>

namespace {

struct Delivery {
  Composition *composition;
  const ComposeOptions *options;
};

std::int32_t TakeRow(std::uint64_t, KsBitmap *canvas, void *row, std::uint32_t flags, std::uint32_t index,
                     std::uint32_t, std::uint64_t userData) {
  // The number is the address that the request carried.
  const auto &delivery = *reinterpret_cast<const Delivery *>(userData);  // NOLINT(performance-no-int-to-ptr)
  Composition &composition = *delivery.composition;
  composition.width = canvas->width;
  composition.height = canvas->height;
  composition.bits = canvas->bitsPerPixel;
  const auto *bytes = static_cast<const std::uint8_t *>(row);
  composition.rows.push_back({flags, index, Bytes(bytes, bytes + canvas->bytesPerLine)});
  if (delivery.options->stopAtRow == static_cast<std::int32_t>(index)) return delivery.options->stopWith;
  return SUCCESS;
}

template <class Work>
auto WithFile(const NitfBuilder &builder, Work work) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("file.ntf");
  builder.Write(path);
  return work(path);
}

}  // namespace

std::u16string Wide(const std::string &narrow) {
  return std::filesystem::path(narrow).u16string();
}

std::uint32_t Composition::At(std::uint32_t row, std::uint32_t column) const {
  const Bytes &bytes = rows.at(row).bytes;
  if (bits == 8) return bytes.at(column);
  const std::size_t at = std::size_t{column} * (bits / 8);
  return std::uint32_t{bytes.at(at + 2)} << 16 | std::uint32_t{bytes.at(at + 1)} << 8 | bytes.at(at);
}

Composition Compose(const std::string &path, const ComposeOptions &options) {
  Composition composition;
  const Delivery delivery{&composition, &options};
  const std::u16string name = Wide(path);
  FilterTargetInfo target{};
  target.bitsPerPixel = options.bits;
  KsLoadOptions loadOptions{};
  loadOptions.loadFlags = options.loadFlags;
  FilterLoadRecord request{};
  request.fileName = name.c_str();
  request.targetInfo = &target;
  request.rowCallback = TakeRow;
  request.rowUserData = reinterpret_cast<std::uintptr_t>(&delivery);
  request.loadOptions = &loadOptions;
  request.loadFromMemory = options.load;
  request.setRedirect = options.setRedirect;
  request.requiredEntry = [] {};
  request.skipRows = options.skipRows ? 1 : 0;
  composition.status = fltLoad(&request);
  return composition;
}

Composition Compose(const NitfBuilder &builder, const ComposeOptions &options) {
  return WithFile(builder, [&](const std::string &path) { return Compose(path, options); });
}

Information Inform(const std::string &path, std::uint32_t loadFlags) {
  Information information;
  const std::u16string name = Wide(path);
  KsLoadOptions loadOptions{};
  loadOptions.loadFlags = loadFlags;
  FilterInfoRecord request{};
  request.fileName = name.c_str();
  request.inputHandle = KS_INVALID_HANDLE;
  request.fileInfo = &information.info;
  request.loadOptions = &loadOptions;
  information.status = fltInfo(&request);
  information.loadFlags = loadOptions.loadFlags;
  return information;
}

Information Inform(const NitfBuilder &builder, std::uint32_t loadFlags) {
  return WithFile(builder, [&](const std::string &path) { return Inform(path, loadFlags); });
}

LoadedFile::LoadedFile(const Bytes &bytes) {
  const std::string path = folder.Path("file.ntf");
  WriteFile(path, bytes);
  status = Load(file.Get(), Wide(path).c_str()).Code();
}

PlatformWatch::PlatformWatch() {
  KsPlatformHandlers handlers{};
  handlers.messageBox = [](const char *text, const char *caption, std::uint32_t, void *watch) -> std::int32_t {
    static_cast<PlatformWatch *>(watch)->messages.push_back(std::string(caption) + ": " + text);
    return 1;
  };
  handlers.debugOutput = [](const char *text, void *watch) {
    static_cast<PlatformWatch *>(watch)->debugLines.emplace_back(text);
  };
  handlers.userData = this;
  KsSetPlatformHandlers(&handlers);
}

PlatformWatch::~PlatformWatch() {
  KsSetPlatformHandlers(nullptr);
}
