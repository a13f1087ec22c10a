// A file that was opened is saved, and what was written is opened and saved again.
#include "target.h"

namespace {

bool Save(const OpenHandle &file, const std::string &to) {
  return file.Get() != nullptr && K_NITFSaveFileA(file.Get(), to.c_str()) == SUCCESS;
}

/** Whether a file is as long as its header tells. */
bool IsAsLongAsTold(const OpenHandle &file, std::size_t bytes) {
  NitfHeaderInfo header{};
  K_NITFGetNITFHeader(file.Get(), &header);
  const bool same = header.FL == bytes;
  K_NITFFreeNITFHeader(&header);
  return same;
}

}  // namespace

void FuzzOne(Input input) {
  const std::string path = TemporaryPath("input.ntf");
  const std::string saved = TemporaryPath("saved.ntf");
  const std::string savedAgain = TemporaryPath("saved-again.ntf");
  WriteInput(path, input);
  if (!Save(OpenHandle(path.c_str()), saved)) return;
  const std::vector<std::uint8_t> bytes = ReadAll(saved);
  const OpenHandle again(saved.c_str());
  if (!Save(again, savedAgain)) return;
  // Lengths are saved as they were read. Where they were wrong, what follows them is read from other places next time.
  const bool sound = bytes.size() == input.size() && IsAsLongAsTold(again, bytes.size());
  Require(!sound || ReadAll(savedAgain) == bytes, "a saved file comes back as it is");
}
