#include "terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <iterator>

#include "interruption.h"

namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  int get() const { return number_; }

 private:
  const int number_;
};

sigset_t endingAndStoppingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP}) sigaddset(&signals, signal);
  return signals;
}

// Holds back the signals that end or stop the program. They are delivered at the end of the object,
// and do what they would have done without it.
class HeldSignals {
 public:
  HeldSignals() { pthread_sigmask(SIG_BLOCK, &signals_, &before_); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;
  ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  // Waits for bytes of the file. Returns false if a signal came first.
  bool waitFor(int file) const {
    pollfd waits[] = {{file, POLLIN, 0}, {arrived_.get(), POLLIN, 0}};
    while (poll(waits, std::size(waits), -1) < 0 && errno == EINTR) continue;
    return waits[1].revents == 0;
  }

 private:
  const sigset_t signals_ = endingAndStoppingSignals();
  sigset_t before_{};
  const Descriptor arrived_{signalfd(-1, &signals_, SFD_CLOEXEC)};
};

// Makes the terminal show nothing that is typed. At its end the terminal does as before.
class HiddenInput {
 public:
  HiddenInput(int terminal, const termios& shown) : terminal_(terminal), shown_(shown) {
    termios hidden = shown;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(terminal, TCSAFLUSH, &hidden);
  }
  HiddenInput(const HiddenInput&) = delete;
  HiddenInput& operator=(const HiddenInput&) = delete;
  ~HiddenInput() {
    tcsetattr(terminal_, TCSAFLUSH, &shown_);
    std::fputs("\n", stderr);
  }

 private:
  const int terminal_;
  const termios shown_;
};

// Reads a line, or what precedes the end of the input. Returns nothing if a signal came first; it is
// delivered when the terminal shows again what is typed.
std::optional<std::string> readHidden(int terminal, const termios& shown,
                                      const std::string& prompt) {
  const HeldSignals signals;
  const HiddenInput hidden(terminal, shown);
  std::fputs(prompt.c_str(), stderr);
  std::string line;
  ssize_t count = 1;
  while (count > 0 && !line.ends_with('\n')) {
    if (!signals.waitFor(terminal)) return std::nullopt;
    char block[512];
    count = read(terminal, block, sizeof(block));
    if (count > 0) line.append(block, static_cast<std::size_t>(count));
  }
  return line;
}

}  // namespace

// A file that is opened while a standard stream is closed would get its number, and what is written
// to the stream would get into the file. So each has a descriptor on which its use fails.
void prepareConsole() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) != -1) continue;
    open("/dev/null", (stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) | O_CLOEXEC);
  }
}

void passBytes(std::FILE*) {}

bool isTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

std::size_t terminalWidth() {
  constexpr std::size_t kUsual = 80;
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsual;
  return size.ws_col;
}

void clearLine(std::FILE* terminal) { std::fputs("\r\x1b[K", terminal); }

std::optional<std::string> askHidden(const std::string& prompt) {
  const Descriptor terminal(open("/dev/tty", O_RDONLY | O_CLOEXEC));
  termios shown{};
  if (tcgetattr(terminal.get(), &shown) != 0) return std::nullopt;
  std::optional<std::string> line;
  // Asks again after a signal that did not end the program: it was stopped and continues.
  while (!line && !isInterrupted()) line = readHidden(terminal.get(), shown, prompt);
  if (!line || line->empty()) return std::nullopt;
  if (line->back() == '\n') line->pop_back();
  return line;
}
