// Functions of the operating system beyond the C++ library.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace ntf {

bool StandardErrorIsTerminal();
bool StandardOutputIsTerminal();

/** Moves to `offset` of a file. Returns false with an errno if that is impossible, as in a pipe. */
[[nodiscard]] bool SeekTo(std::FILE *stream, std::uint64_t offset);

/** Writes line ends to standard output unchanged. */
void MakeStandardOutputBinary();

/**
 * Removes the file `name` if the program is interrupted from now on; an empty name ends this. One file at a time. Names
 * that are too long for the system are ignored.
 */
void RemoveOnInterrupt(const std::string &name);

/** Gives `replacement` the permissions of `original`, and its owner if the user may; nothing if it doesn't exist. */
void KeepAccess(const std::string &original, const std::string &replacement);

}  // namespace ntf
