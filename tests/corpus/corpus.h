// The folder of sample files that the environment names.
#pragma once

#include <optional>
#include <string>

/** The folder that KSNTFX_CORPUS names; none where the variable is not set. */
std::optional<std::string> CorpusFolder();

/** The path of a sample file; none where there is no folder, or no such file in it. */
std::optional<std::string> CorpusFile(const std::string &name);

/** Why a test is skipped whose sample file there is not. */
constexpr char kNotAtHand[] = " is not in a folder named by KSNTFX_CORPUS";
