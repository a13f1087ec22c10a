#include "program_test.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/** Starts the program with its outputs in files, and waits for its end: the exit code, or -1. */
int Spawn(const std::string &folder, std::vector<std::string> arguments, const std::string &output,
          const std::string &errors) {
  arguments.insert(arguments.begin(), NTF_PROGRAM);
  std::vector<char *> argv;
  argv.reserve(arguments.size() + 1);
  for (std::string &argument : arguments) argv.push_back(argument.data());
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

ImageSpec SmallImage(const FieldTexts &fields) {
  ImageSpec image;
  image.rows = 2;
  image.columns = 3;
  image.data = {1, 2, 3, 4, 5, 6};
  image.fields = fields;
  return image;
}

ProgramRun ProgramTest::Run(const std::vector<std::string> &arguments, const std::string &outputFile) const {
  const std::string output = outputFile.empty() ? logs.Path("output") : outputFile;
  const std::string errors = logs.Path("errors");
  ProgramRun run;
  run.exitCode = Spawn(folder.Path(""), arguments, output, errors);
  if (outputFile.empty()) run.output = TextOf(ReadFile(output));
  run.errors = TextOf(ReadFile(errors));
  return run;
}

void ProgramTest::WriteText(const std::string &name, const std::string &text) const {
  WriteFile(PathOf(name), Bytes(text.begin(), text.end()));
}

std::string ProgramTest::ReadText(const std::string &name) const {
  return TextOf(ReadFile(PathOf(name)));
}

std::vector<std::string> ProgramTest::FilesInFolder() const {
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator(folder.Path(""))) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}
