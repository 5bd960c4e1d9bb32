#include "temporary_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "output.h"
#include "paths.h"
#include "text.h"

namespace {

// The paths that the signal handler deletes.
char filePath[PATH_MAX];
char directoryPath[PATH_MAX];

constexpr int kEndingSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGXCPU, SIGXFSZ};

extern "C" void deleteAndEnd(int signal) {
  unlink(filePath);
  rmdir(directoryPath);
  // The handler is reset, so that the signal now ends the program.
  raise(signal);
}

void setHandler(void (*handler)(int), int flags) {
  for (const int signal : kEndingSignals) {
    struct sigaction action {};
    // A signal that is ignored, as by nohup, stays so.
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(signal, &action, nullptr);
  }
}

void copyPath(const std::string& path, char (&to)[PATH_MAX]) {
  std::strncpy(to, path.c_str(), sizeof(to) - 1);
}

std::string pattern() {
  const char* const directory = std::getenv("TMPDIR");
  const bool isSet = directory != nullptr && *directory != '\0';
  return std::string(isSet ? directory : "/tmp") + "/vesk-fs-XXXXXX";
}

}  // namespace

FilePointer createPrivateFile(const std::string& path) {
  const int file = open(systemPath(path).c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  return FilePointer(file < 0 ? nullptr : fdopen(file, "w+"));
}

TemporaryDirectory::TemporaryDirectory() : path_(pattern()) {
  if (path_.size() >= PATH_MAX || mkdtemp(path_.data()) == nullptr) {
    throw Failure("cannot create a directory " + inQuotes(path_) + ": " + std::strerror(errno));
  }
  copyPath(path_, directoryPath);
  setHandler(deleteAndEnd, static_cast<int>(SA_RESETHAND));
}

TemporaryDirectory::~TemporaryDirectory() {
  remove();
  setHandler(SIG_DFL, 0);
}

std::string TemporaryDirectory::file(const std::string& name) {
  const std::string path = path_ + '/' + name;
  copyPath(path, filePath);
  return (path_.starts_with('/') ? "" : ".\\") + libraryPath(path);
}

void TemporaryDirectory::remove() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}
