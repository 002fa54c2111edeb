// SPDX-License-Identifier: Apache-2.0
#include "tests/host/programrun.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <utility>

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

// A pipe whose writing end does not wait, and holds no more than one page.
class ImpatientPipe {
 public:
  ImpatientPipe() {
    if (::pipe2(ends_, O_CLOEXEC) != 0 || ::fcntl(ends_[1], F_SETFL, O_NONBLOCK) != 0 ||
        ::fcntl(ends_[1], F_SETPIPE_SZ, 1) < 0) {
      throw std::runtime_error("cannot make a pipe");
    }
  }
  ~ImpatientPipe() {
    ::close(ends_[0]);
    closeWritingEnd();
  }
  ImpatientPipe(const ImpatientPipe&) = delete;
  ImpatientPipe& operator=(const ImpatientPipe&) = delete;

  int writingEnd() const { return ends_[1]; }

  void closeWritingEnd() {
    if (ends_[1] >= 0) ::close(std::exchange(ends_[1], -1));
  }

  // All that comes until no program has the writing end any more.
  std::string drained() {
    closeWritingEnd();
    std::string text;
    char block[512];
    for (ssize_t count = 1; count > 0;) {
      count = ::read(ends_[0], block, sizeof block);
      if (count > 0) text.append(block, static_cast<std::size_t>(count));
    }
    return text;
  }

 private:
  int ends_[2] = {-1, -1};
};

void redirect(const ProgramRun& run, FileActions& files) {
  if (!run.standardInput.empty()) {
    ::posix_spawn_file_actions_addopen(&files.actions, STDIN_FILENO, run.standardInput.c_str(),
                                       O_RDONLY, 0);
  }
  if (!run.standardOutput.empty()) {
    ::posix_spawn_file_actions_addopen(&files.actions, STDOUT_FILENO, run.standardOutput.c_str(),
                                       O_WRONLY, 0);
  }
  for (const int stream : run.closed) {
    ::posix_spawn_file_actions_addclose(&files.actions, stream);
  }
}

pid_t start(const std::string& program, const ProgramRun& run, const FileActions& files) {
  std::vector<std::string> words{program};
  words.insert(words.end(), run.arguments.begin(), run.arguments.end());
  pid_t child = 0;
  if (::posix_spawn(&child, program.c_str(), &files.actions, nullptr, pointersTo(words).data(),
                    environ) != 0) {
    throw std::runtime_error("cannot run " + program);
  }
  return child;
}

}  // namespace

ProgramOutcome runProgram(const std::string& program, const ProgramRun& run) {
  const Scratch out(std::tmpfile());
  const Scratch err(std::tmpfile());
  ImpatientPipe pipe;
  FileActions files;
  const int output = run.hasImpatientPipe ? pipe.writingEnd() : ::fileno(out.get());
  ::posix_spawn_file_actions_adddup2(&files.actions, output, STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&files.actions, ::fileno(err.get()), STDERR_FILENO);
  redirect(run, files);
  const pid_t child = start(program, run, files);
  const std::string piped = pipe.drained();
  const int status = waitFor(child);
  return {status, run.hasImpatientPipe ? piped : contents(out.get()), contents(err.get())};
}

}  // namespace velhost
