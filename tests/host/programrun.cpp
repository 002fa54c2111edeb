// SPDX-License-Identifier: Apache-2.0
#include "programrun.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace velhost {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
};
using Scratch = std::unique_ptr<std::FILE, CloseFile>;

std::string contents(std::FILE* file) {
  std::string text;
  std::rewind(file);
  for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) text += static_cast<char>(c);
  return text;
}

struct FileActions {
  FileActions() { ::posix_spawn_file_actions_init(&actions); }
  ~FileActions() { ::posix_spawn_file_actions_destroy(&actions); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  posix_spawn_file_actions_t actions{};
};

std::vector<char*> pointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

int waitFor(pid_t child) {
  int status = 0;
  if (::waitpid(child, &status, 0) != child) throw std::runtime_error("waitpid failed");
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

ProgramOutcome runProgram(const std::string& program, const ProgramRun& run) {
  const Scratch out(std::tmpfile());
  const Scratch err(std::tmpfile());
  FileActions files;
  ::posix_spawn_file_actions_adddup2(&files.actions, ::fileno(out.get()), STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&files.actions, ::fileno(err.get()), STDERR_FILENO);
  if (!run.standardOutput.empty()) {
    ::posix_spawn_file_actions_addopen(&files.actions, STDOUT_FILENO, run.standardOutput.c_str(),
                                       O_WRONLY, 0);
  }
  std::vector<std::string> words{program};
  words.insert(words.end(), run.arguments.begin(), run.arguments.end());
  pid_t child = 0;
  if (::posix_spawn(&child, program.c_str(), &files.actions, nullptr, pointersTo(words).data(),
                    environ) != 0) {
    throw std::runtime_error("cannot run " + program);
  }
  const int status = waitFor(child);
  return {status, contents(out.get()), contents(err.get())};
}

}  // namespace velhost
