// Pictures of files of every version.
#pragma once

#include "output_file.h"
#include "render_options.h"

#include <string>

namespace ntf {

/** Writes the composition of a file, or one image, as the wide reader shows them. */
Outcome RenderWide(const RenderOptions &options, OutputFile &output);

/** Reads "none", "minmax" or "percent:LOW,HIGH"; false for anything else. */
bool ParseStretch(const std::string &text, NitfShowOptions &show);

/** Reads "R,G,B", three numbers of bands; false for anything else. */
bool ParseBands(const std::string &text, NitfShowOptions &show);

}  // namespace ntf
