#include "host.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>

namespace ntf {
namespace {

// A signal handler may use little else than such a buffer.
std::array<char, PATH_MAX> removedOnInterrupt;

constexpr std::array kInterrupts = {SIGINT, SIGTERM, SIGHUP};

void HandleInterrupts(void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  for (const int signal : kInterrupts) {
    // A signal that the parent process ignores stays ignored.
    struct sigaction before = {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
}

void RemoveAndDie(int signal) {
  unlink(removedOnInterrupt.data());
  struct sigaction byDefault = {};
  byDefault.sa_handler = SIG_DFL;
  sigaction(signal, &byDefault, nullptr);
  raise(signal);
}

}  // namespace

bool StandardErrorIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}

bool StandardOutputIsTerminal() {
  return isatty(STDOUT_FILENO) == 1;
}

bool SeekTo(std::FILE *stream, std::uint64_t offset) {
  return fseeko(stream, static_cast<off_t>(offset), SEEK_SET) == 0;
}

void MakeStandardOutputBinary() {}

void RemoveOnInterrupt(const std::string &name) {
  HandleInterrupts(SIG_DFL);
  if (name.empty() || name.size() >= removedOnInterrupt.size()) return;
  name.copy(removedOnInterrupt.data(), name.size());
  removedOnInterrupt[name.size()] = '\0';
  HandleInterrupts(RemoveAndDie);
}

void KeepAccess(const std::string &original, const std::string &replacement) {
  struct stat status = {};
  if (stat(original.c_str(), &status) != 0) return;
  // Only root may change the owner.
  if (chown(replacement.c_str(), status.st_uid, status.st_gid) != 0) errno = 0;
  if (chmod(replacement.c_str(), status.st_mode & 0777U) != 0) errno = 0;
}

}  // namespace ntf
