#include "process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

bench::Cost bench::runProgram(const std::vector<std::string>& command, const std::string& folder) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  if (!folder.empty()) posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  pid_t child = 0;
  int status = 0;
  const double start = now().wall;
  const int error =
      posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error(command[0] + ": " + std::strerror(error));
  rusage usage{};
  wait4(child, &status, 0, &usage);
  const double wall = now().wall - start;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error(command[0] + " failed with status " + std::to_string(status));
  }
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return {.wall = wall, .processor = seconds(usage.ru_utime) + seconds(usage.ru_stime)};
}

std::string bench::versionLine(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  if (!pipe) return {};
  char line[4096];
  std::string found;
  while (std::fgets(line, sizeof(line), pipe.get()) != nullptr) {
    if (found.empty() && std::strpbrk(line, "0123456789") != nullptr) {
      found = line;
      while (!found.empty() && (found.back() == '\n' || found.back() == ' ')) found.pop_back();
    }
  }
  return found;
}
