// Segments that are added in memory: what is encoded, the fields that suit it, and the lengths in the file header.
#pragma once

#include "headers/nitffile.h"

namespace ksntfx {

/** What an append is asked for; see the exports that these stand behind. On failure the file is as it was. */
Status AppendImage(NitfFile *file, const KsBitmap *bitmap, std::uint32_t format, std::uint32_t bits,
                   std::uint32_t quality);
Status AppendGraphic(NitfFile *file, KsVector *vector, const KsRect &rectangle);
Status AppendText(NitfFile *file, const char16_t *path);

/** Puts a drawing in the place of a graphic's data; see K_NITFSetVectorHandle. On failure all is as it was. */
Status ReplaceDrawing(NitfFile *file, std::uint32_t index, const KsVector *vector);

}  // namespace ksntfx
