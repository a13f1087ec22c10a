// What goes wrong in a command, in words for the user.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ntf {

/** A failure, which the error line reports as "ntf: SUBJECT: WORDS (status STATUS)". */
struct Problem {
  std::string subject; /* the file, or the option */
  std::string words;
  std::int32_t status;  /* a KsStatus or NitfStatus */
  bool isUsage = false; /* the command line is wrong, not the file */
};

/** The result of a step: empty on success. */
using Outcome = std::optional<Problem>;

/** The problem that a status of the library means. */
Problem StatusProblem(const std::string &subject, std::int32_t status);

/** The same, or none for SUCCESS. */
Outcome OutcomeOf(const std::string &subject, std::int32_t status);

/** The problem that an errno of the operating system means, in its words, with a status of ours. */
Problem SystemProblem(const std::string &subject, int error, std::int32_t status);

/** Writes the error line to standard error. */
void Report(const Problem &problem);

/** Writes a line to standard error about something that doesn't end the command. */
void Warn(const std::string &subject, const std::string &words);

}  // namespace ntf
