#include "rewriting.h"

#include "field_change.h"
#include "input_file.h"
#include "load_headers.h"
#include "saving.h"

#include <algorithm>

namespace ntf {
namespace {

/** The values that the changed fields have in a written file. */
Outcome CheckFields(const std::string &fileName, const std::string &written, const FileView &file,
                    const HeaderChoice &header, const std::vector<FieldValue> &fields) {
  LoadedFile loaded;
  if (Outcome unreadable = LoadHeaders(written, loaded, Door::Wide)) return unreadable;
  const auto differs = std::find_if(fields.begin(), fields.end(), [&](const FieldValue &field) {
    return loaded.View().FieldText(header, field.name) != file.FieldText(header, field.name);
  });
  if (differs == fields.end()) return {};
  // A file that was written before its lengths were known has its headers once more near its end, and those are valid.
  return Problem{fileName, differs->name + " can't be changed, because the file has a stream file header",
                 ERROR_NOT_SUPPORTED};
}

}  // namespace

Outcome RewriteFields(const std::string &fileName, const FileView &file, const HeaderChoice &header,
                      const std::vector<FieldValue> &fields, FileRewrite &rewrite) {
  const HeaderLayout layout = file.Layout(header);
  std::vector<std::string> names;
  for (const FieldValue &field : fields) {
    if (Outcome refused = ChangeField(fileName, file, header, field.name, field.value)) return refused;
    if (file.Layout(header).length != layout.length) {
      return Problem{fileName, field.name + " can't be changed, because the length of the header depends on it",
                     ERROR_INVALID_VALUE, true};
    }
    if (std::find(names.begin(), names.end(), field.name) == names.end()) names.push_back(field.name);
  }
  for (const std::string &name : names) {
    if (Outcome refused = CheckAttachment(fileName, file, header, name)) return refused;
  }
  const std::uint64_t start = header.kind ? file.Place(*header.kind, header.index).subheader : 0;
  for (const std::string &name : names) rewrite.Replace(start + layout.offsets.at(name), file.FieldText(header, name));
  return {};
}

void WarnOfLength(const std::string &fileName, const FileView &file) {
  const std::uint64_t declared = file.Numbers().fileLength;
  const std::uint64_t bytes = file.SourceBytes();
  if (declared == bytes) return;
  Warn(fileName, "FL is " + std::to_string(declared) + ", but the file has " + std::to_string(bytes) + " bytes");
}

Outcome SaveRewritten(const std::string &fileName, const FileView &file, const FileRewrite &rewrite,
                      const std::string &output, const HeaderChoice &header, const std::vector<FieldValue> &fields) {
  const auto write = [&](const std::string &place) -> std::int32_t { return rewrite.Write(Widen(place).c_str()); };
  return SaveChecked(fileName, output, write, [&](const std::string &place) -> Outcome {
    const std::int32_t status = rewrite.Compare(Widen(place).c_str());
    if (status == ERROR_FILE_WRITE) return Problem{output, "differs from what was written", ERROR_FILE_WRITE};
    if (status != SUCCESS) return StatusProblem(fileName, status);
    return CheckFields(fileName, place, file, header, fields);
  });
}

}  // namespace ntf
