// Memory that runs out on purpose: that of the framework's allocations, and that of operator new.
#pragma once

#include <cstdint>

/** Where allocations come from. */
enum class MemorySource : std::uint8_t { Framework, Language };

/** From here on, `allowed` allocations succeed, and all further ones fail. */
void BeginShortage(MemorySource source, std::int64_t allowed);

/** Lets all allocations succeed again. Whether one failed, or the very next one would have. */
bool EndShortage(MemorySource source);
