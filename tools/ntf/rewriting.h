// Files that are written with changes: all bytes that were not named are carried as they are.
#pragma once

#include "core.h"
#include "problem.h"

#include <string>
#include <vector>

namespace ntf {

/** A field with the text that it gets, in UTF-8. */
struct FieldValue {
  std::string name;
  std::string value;
};

/**
 * Changes fields of a header, in memory and in the file that is written. Fails like ChangeField, and for a value that
 * would change the length of the header.
 */
Outcome RewriteFields(const std::string &fileName, const FileView &file, const HeaderChoice &header,
                      const std::vector<FieldValue> &fields, FileRewrite &rewrite);

/** Warns if FL is not the length of the file, whose bytes are carried all the same. */
void WarnOfLength(const std::string &fileName, const FileView &file);

/**
 * Writes a file as `output`, which appears only if all its bytes are as expected, and the fields of `header` in it have
 * the values that they have in `file`.
 */
Outcome SaveRewritten(const std::string &fileName, const FileView &file, const FileRewrite &rewrite,
                      const std::string &output, const HeaderChoice &header = {},
                      const std::vector<FieldValue> &fields = {});

}  // namespace ntf
