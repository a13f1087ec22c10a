// What goes wrong in a command, as it is told to the user.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ntf {

/** A failure in the words of the error line: "ntf: SUBJECT: WORDS (status STATUS)". */
struct Problem {
  std::string subject; /* the file it is about */
  std::string words;
  std::int32_t status; /* a KsStatus or NitfStatus */
};

/** The result of a step: empty where it went well. */
using Outcome = std::optional<Problem>;

/** The problem that a status of the library stands for. */
Problem StatusProblem(const std::string &subject, std::int32_t status);

/** That problem, or none for SUCCESS. */
Outcome OutcomeOf(const std::string &subject, std::int32_t status);

/** The problem that the operating system told with an errno, in its words; `status` is what it comes to. */
Problem SystemProblem(const std::string &subject, int error, std::int32_t status);

/** Writes the error line to the standard error output. */
void Report(const Problem &problem);

}  // namespace ntf
