// A file that was opened is saved, and what was written is opened and saved again.
#include "headers/length_tables.h"
#include "headers/nitffile.h"
#include "target.h"

using namespace ksntfx;

namespace {

bool Save(const OpenHandle &file, const std::string &to) {
  return file.Get() != nullptr && K_NITFSaveFileA(file.Get(), to.c_str()) == SUCCESS;
}

/** The bytes of the header, and of all segments as the header tells them. */
std::uint64_t ToldBytes(const NitfHeader &header) {
  std::uint64_t bytes = header.headerLength;
  for (const LengthTable &lengths :
       {kImageLengths, kGraphicLengths, kLabelLengths, kTextLengths, kDataExtensionLengths, kReservedLengths}) {
    for (std::uint32_t i = 0; i < header.*lengths.count; ++i) {
      bytes += (header.*lengths.subheader.table)[i];
      bytes += (header.*lengths.data.table)[i];
    }
  }
  return bytes;
}

}  // namespace

void FuzzOne(Input input) {
  const std::string path = TemporaryPath("input.ntf");
  const std::string saved = TemporaryPath("saved.ntf");
  const std::string savedAgain = TemporaryPath("saved-again.ntf");
  WriteInput(path, input);
  if (!Save(OpenHandle(path.c_str()), saved)) return;
  const Bytes bytes = ReadFile(saved);
  const OpenHandle again(saved.c_str());
  if (!Save(again, savedAgain)) return;
  // Lengths are saved as they were read. Where they were wrong, what follows them is read from other places next time.
  const bool sound = bytes.size() == input.size() && ToldBytes(again.Get()->header) == bytes.size();
  Require(!sound || ReadFile(savedAgain) == bytes, "a saved file comes back as it is");
}
