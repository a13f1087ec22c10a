// ntf render: the picture of a file, or of one of its segments.
#pragma once

#include "problem.h"
#include "render_options.h"

namespace ntf {

Outcome Render(const RenderOptions &options);

}  // namespace ntf
