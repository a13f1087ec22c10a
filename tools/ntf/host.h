// What the program asks of the operating system beyond the C++ library.
#pragma once

#include <string>

namespace ntf {

bool StandardErrorIsTerminal();
bool StandardOutputIsTerminal();

/** Keeps line ends in the standard output as they are written. */
void MakeStandardOutputBinary();

/**
 * From now on the file `name` is removed when the program is interrupted; an empty name ends that. One file at a time;
 * names too long for the system are left alone.
 */
void RemoveOnInterrupt(const std::string &name);

}  // namespace ntf
