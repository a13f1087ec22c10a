// The headers of a file: opening it, and taking out all that the exports tell of it.
#include "target.h"

#include <filesystem>

namespace {

/** Takes all records of one kind out and releases them. */
template <class Record>
void TakeOut(NitfHandle handle, std::int32_t (*count)(NitfHandle),
             std::int32_t (*get)(NitfHandle, std::uint32_t, Record *), std::int32_t (*release)(Record *)) {
  const std::int32_t records = count(handle);
  Require(records >= 0, "counts are not negative");
  for (std::int32_t i = 0; i <= records; ++i) {
    Record record{};
    const std::int32_t status = get(handle, static_cast<std::uint32_t>(i), &record);
    Require((status == SUCCESS) == (i < records), "there are as many records as counted");
    Require(release(&record) == SUCCESS, "a record can be released");
  }
}

void TakeTexts(NitfHandle handle) {
  const std::int32_t texts = K_NITFGetTextHeaderCount(handle);
  for (std::int32_t i = 0; i < texts; ++i) {
    std::uint32_t size = 0;
    const auto index = static_cast<std::uint32_t>(i);
    if (K_NITFGetTextSegment(handle, index, nullptr, &size) != SUCCESS) continue;
    std::string text(std::size_t{size} + 1, '?');
    if (K_NITFGetTextSegment(handle, index, text.data(), &size) != SUCCESS) continue;
    Require(text[size] == 0, "a text ends in a zero");
  }
}

void TellSize(const std::string &path) {
  const std::u16string name = std::filesystem::path(path).u16string();
  KsFileInfo info{};
  KsLoadOptions options{};
  FilterInfoRecord request{};
  request.fileName = name.c_str();
  request.inputHandle = KS_INVALID_HANDLE;
  request.fileInfo = &info;
  request.loadOptions = &options;
  if (fltInfo(&request) == SUCCESS) Require(info.formatId == NITF_FORMAT_ID, "fltInfo tells the format");
}

}  // namespace

void FuzzOne(Input input) {
  const std::string path = TemporaryPath("input.ntf");
  WriteInput(path, input);
  TellSize(path);
  const OpenHandle file(path.c_str());
  if (file.Get() == nullptr) return;
  NitfHeaderInfo header{};
  Require(K_NITFGetNITFHeader(file.Get(), &header) == SUCCESS, "the header of an open file can be taken out");
  K_NITFFreeNITFHeader(&header);
  TakeOut(file.Get(), K_NITFGetImageHeaderCount, K_NITFGetImageHeader, K_NITFFreeImageHeader);
  TakeOut(file.Get(), K_NITFGetGraphicHeaderCount, K_NITFGetGraphicHeader, K_NITFFreeGraphicHeader);
  TakeOut(file.Get(), K_NITFGetTextHeaderCount, K_NITFGetTextHeader, K_NITFFreeTextHeader);
  TakeTexts(file.Get());
}
