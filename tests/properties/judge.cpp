// SPDX-License-Identifier: Apache-2.0
#include "tests/properties/judge.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

namespace velhost::properties {
namespace {

constexpr char kNothing[] = "ok";

std::filesystem::path madeFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "velhost-judge-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  return name;
}

struct Pipe {
  Pipe() {
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  }
  int ends[2] = {-1, -1};
};

// Of the program, with the pipes as its standard input and output.
pid_t started(std::vector<std::string> words, const Pipe& in, const Pipe& out) {
  posix_spawn_file_actions_t actions{};
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, in.ends[0], STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, out.ends[1], STDOUT_FILENO);
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child = 0;
  const int status =
      ::posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  if (status != 0) throw std::runtime_error("cannot run " + words[0]);
  return child;
}

std::string lineFrom(std::FILE* stream) {
  std::string line;
  for (int c = std::fgetc(stream); c != '\n'; c = std::fgetc(stream)) {
    if (c == EOF) throw std::runtime_error("judge.py has ended");
    line += static_cast<char>(c);
  }
  return line;
}

}  // namespace

Judge::Judge() : folder_(madeFolder()) {
  const Pipe in;
  const Pipe out;
  process_ = started({PYTHON, JUDGE, VELHOST, folder_.string()}, in, out);
  ::close(in.ends[0]);
  ::close(out.ends[1]);
  questions_ = ::fdopen(in.ends[1], "w");
  verdicts_ = ::fdopen(out.ends[0], "r");
}

Judge::~Judge() {
  static_cast<void>(std::fclose(questions_));  // which ends it
  static_cast<void>(std::fclose(verdicts_));
  ::waitpid(process_, nullptr, 0);
  std::filesystem::remove_all(folder_);
}

Judge& Judge::instance() {
  static Judge judge;
  return judge;
}

std::string Judge::complaint(const std::string& witness,
                             const std::vector<std::pair<std::string, std::string>>& files) {
  for (const auto& [name, text] : files) put(name, text);
  if (std::fprintf(questions_, "%s\n", witness.c_str()) < 0 || std::fflush(questions_) != 0) {
    throw std::runtime_error("judge.py does not listen");
  }
  const std::string verdict = lineFrom(verdicts_);
  return verdict == kNothing ? "" : verdict;
}

void Judge::put(const std::string& name, const std::string& text) const {
  std::ofstream(folder_ / (name + ".json"), std::ios::binary) << text;
}

}  // namespace velhost::properties
