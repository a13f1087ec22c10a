#include "host.h"

#include <array>
#include <csignal>
#include <unistd.h>

#include <climits>

namespace ntf {
namespace {

// A signal handler may touch little else than such a buffer.
std::array<char, PATH_MAX> removedOnInterrupt;

constexpr std::array kInterrupts = {SIGINT, SIGTERM, SIGHUP};

void HandleInterrupts(void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  for (const int signal : kInterrupts) {
    // What the parent process told us to ignore stays ignored.
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

void MakeStandardOutputBinary() {}

void RemoveOnInterrupt(const std::string &name) {
  HandleInterrupts(SIG_DFL);
  if (name.empty() || name.size() >= removedOnInterrupt.size()) return;
  name.copy(removedOnInterrupt.data(), name.size());
  removedOnInterrupt[name.size()] = '\0';
  HandleInterrupts(RemoveAndDie);
}

}  // namespace ntf
