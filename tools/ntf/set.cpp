#include "set.h"

#include "comparing.h"
#include "field_change.h"
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
  LocalHandle handle;
  if (Outcome failed = handle.Open(options.input)) return failed;
  const HeaderChoice choice = ChoiceOf(options);
  if (choice.kind) {
    if (Outcome missing = CheckSegment(options.input, handle.View(), *choice.kind, choice.index)) return missing;
  }
  for (const std::string &field : options.fields) {
    const std::size_t equals = field.find('=');
    if (equals == std::string::npos) return Problem{field, "is not FIELD=VALUE", ERROR_INVALID_VALUE, true};
    Outcome failed =
        ChangeField(options.input, handle.View(), choice, field.substr(0, equals), field.substr(equals + 1));
    if (failed) return failed;
  }
  if (Outcome taken = CheckOutput(options.output, options.force)) return taken;
  return SaveCompared(handle, options.output);
}

}  // namespace ntf
