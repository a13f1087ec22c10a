#include "problem.h"

#include "kskernel.h"
#include "printable.h"
#include "status_words.h"

#include <cctype>
#include <cstdio>
#include <system_error>

namespace ntf {

Problem StatusProblem(const std::string &subject, std::int32_t status) {
  return {subject, StatusWords(status), status};
}

Outcome OutcomeOf(const std::string &subject, std::int32_t status) {
  return status == SUCCESS ? Outcome() : StatusProblem(subject, status);
}

Problem SystemProblem(const std::string &subject, int error, std::int32_t status) {
  std::string words = std::generic_category().message(error);
  if (!words.empty()) words[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(words[0])));
  return {subject, words, status};
}

void Report(const Problem &problem) {
  const std::string subject = problem.subject.empty() ? "''" : WithoutControls(problem.subject);
  std::fprintf(stderr, "ntf: %s: %s (status %d)\n", subject.c_str(), WithoutControls(problem.words).c_str(),
               problem.status);
}

void Warn(const std::string &subject, const std::string &words) {
  std::fprintf(stderr, "ntf: %s: warning: %s\n", WithoutControls(subject).c_str(), words.c_str());
}

}  // namespace ntf
