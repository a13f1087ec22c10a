// Why a file could not be loaded: the field, its place and its value.
#pragma once

#include "core.h"
#include "findings.h"
#include "problem.h"

#include <optional>
#include <string>

namespace ntf {

/** The field that a load failed at with a status; none if no field is at fault. */
std::optional<Finding> FindLoadFault(const FileView &file, std::int32_t status);

/** The problem of a load that failed: the words of that field, or else those of the status. */
Problem LoadProblem(const std::string &fileName, const FileView &file, std::int32_t status);

}  // namespace ntf
