#include "program_test.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

fs::path NewFolder() {
  std::string name = (fs::path(testing::TempDir()) / "ntf-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test's files");
  return name;
}

std::string Contents(const fs::path &path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/** Starts the program with its outputs in files, and waits for its end: the exit code, or -1. */
int Spawn(const fs::path &folder, const std::vector<std::string> &arguments, const fs::path &output,
          const fs::path &errors) {
  std::vector<char *> argv = {const_cast<char *>(NTF_PROGRAM)};
  for (const std::string &argument : arguments) argv.push_back(const_cast<char *>(argument.c_str()));
  argv.push_back(nullptr);

  constexpr int kCreate = O_WRONLY | O_CREAT | O_TRUNC;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), kCreate, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), kCreate, 0600);
  pid_t child = 0;
  const int failed = posix_spawn(&child, NTF_PROGRAM, &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failed != 0) throw std::runtime_error("the program can't be started");

  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

ProgramTest::ProgramTest() : folder(NewFolder()), logs(NewFolder()) {}

ProgramTest::~ProgramTest() {
  std::error_code ignored;
  fs::remove_all(folder, ignored);
  fs::remove_all(logs, ignored);
}

ProgramRun ProgramTest::Run(const std::vector<std::string> &arguments, const std::string &outputFile) const {
  const fs::path output = outputFile.empty() ? logs / "output" : fs::path(outputFile);
  ProgramRun run;
  run.exitCode = Spawn(folder, arguments, output, logs / "errors");
  if (outputFile.empty()) run.output = Contents(output);
  run.errors = Contents(logs / "errors");
  return run;
}

void ProgramTest::WriteFile(const std::string &name, const std::string &bytes) const {
  std::ofstream(PathOf(name), std::ios::binary) << bytes;
}

std::string ProgramTest::ReadFile(const std::string &name) const {
  return Contents(PathOf(name));
}

std::vector<std::string> ProgramTest::FilesInFolder() const {
  std::vector<std::string> names;
  for (const fs::directory_entry &entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}
