#include "set.h"

#include "load_headers.h"
#include "rewriting.h"
#include "saving.h"
#include "segment_choice.h"

namespace ntf {
namespace {

HeaderChoice ChoiceOf(const SetOptions &options) {
  if (options.image) return {SegmentKind::Image, *options.image};
  if (options.graphic) return {SegmentKind::Graphic, *options.graphic};
  if (options.text) return {SegmentKind::Text, *options.text};
  return {};
}

}  // namespace

Outcome Set(const SetOptions &options) {
  LoadedFile loaded;
  if (Outcome failed = LoadHeaders(options.input, loaded, Door::Wide)) return failed;
  const FileView file = loaded.View();
  const HeaderChoice choice = ChoiceOf(options);
  if (choice.kind) {
    if (Outcome missing = CheckSegment(options.input, file, *choice.kind, choice.index)) return missing;
  }
  std::vector<FieldValue> fields;
  for (const std::string &field : options.fields) {
    const std::size_t equals = field.find('=');
    if (equals == std::string::npos || equals == 0) {
      return Problem{"'" + field + "'", "is not FIELD=VALUE", ERROR_INVALID_VALUE, true};
    }
    fields.push_back({field.substr(0, equals), field.substr(equals + 1)});
  }
  FileRewrite rewrite(file);
  if (Outcome refused = RewriteFields(options.input, file, choice, fields, rewrite)) return refused;
  if (Outcome taken = CheckOutput(options.output, options.force)) return taken;
  WarnOfLength(options.input, file);
  return SaveRewritten(options.input, file, rewrite, options.output, choice, fields);
}

}  // namespace ntf
